// What the program measures, family by family.
#pragma once

#include <string>

namespace orba::bench {

void add_streams();
void add_summary();

std::string stream_peer_versions();
std::string summary_peer_versions();

}  // namespace orba::bench
