#include "services/platform/topology.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>

namespace orba::services::platform {
namespace {

// A list like "0-3,8,10-11" out of a file; empty when there is no such file.
ProcessorSet read_list(const char* path) {
  ProcessorSet set;
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return set;
  char text[4096];
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  text[std::max<ssize_t>(length, 0)] = '\0';

  const char* at = text;
  while (*at >= '0' && *at <= '9') {
    char* end;
    const size_t first = strtoul(at, &end, 10);
    const size_t last = *end == '-' ? strtoul(end + 1, &end, 10) : first;
    for (size_t i = first; i <= last && i < set.size(); ++i) set[i] = true;
    at = *end == ',' ? end + 1 : end;
  }
  return set;
}

template <class... Arguments>
ProcessorSet read_list_of(const char* format, Arguments... arguments) {
  char path[256];
  snprintf(path, sizeof path, format, arguments...);
  return read_list(path);
}

int32_t count_cores(ProcessorSet processors, const char* directory) {
  int32_t cores = 0;
  for (size_t i = 0; i < processors.size(); ++i) {
    if (!processors[i]) continue;
    ++cores;
    processors &= ~read_list_of("%s/cpu/cpu%zu/topology/thread_siblings_list", directory, i);
  }
  return cores;
}

int32_t count_nodes(const ProcessorSet& processors, const char* directory) {
  const ProcessorSet online = read_list_of("%s/node/online", directory);
  int32_t nodes = 0;
  for (size_t i = 0; i < online.size(); ++i) {
    if (!online[i]) continue;
    nodes += (read_list_of("%s/node/node%zu/cpulist", directory, i) & processors).any();
  }
  return nodes;
}

}  // namespace

ProcessorSet allowed_processors() noexcept {
  ProcessorSet set;
  cpu_set_t masks[set.size() / CPU_SETSIZE];
  if (sched_getaffinity(0, sizeof masks, masks) != 0) return set;
  for (size_t i = 0; i < set.size(); ++i) set[i] = CPU_ISSET_S(i, sizeof masks, masks);
  return set;
}

ProcessorCounts count_processors(const ProcessorSet& processors, const char* directory) noexcept {
  ProcessorCounts counts;
  if (processors.none()) return counts;
  counts.logical = static_cast<int32_t>(processors.count());
  counts.cores = count_cores(processors, directory);
  counts.nodes = std::clamp(count_nodes(processors, directory), 1, counts.cores);
  return counts;
}

ProcessorCounts count_processors(const ProcessorSet& processors) noexcept {
  return count_processors(processors, "/sys/devices/system");
}

void keep_loaded(const void* code) noexcept {
  Dl_info module;
  if (dladdr(code, &module) == 0) return;
  dlopen(module.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace orba::services::platform
