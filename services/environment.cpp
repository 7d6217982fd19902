#include "services/environment.h"

#include "services/platform/platform.h"

namespace orba::services {

int read_environment(const char* name, char* buffer, int size) noexcept {
  return platform::read_environment(name, buffer, size);
}

int read_scrambled_environment(const char* scrambled, int length, char* buffer, int size) noexcept {
  char name[32];
  if (length < 0 || length >= static_cast<int>(sizeof name)) return 0;
  for (int i = 0; i < length; ++i) {
    name[i] = static_cast<char>(scrambled[i] ^ scramble_key(static_cast<size_t>(i)));
  }
  name[length] = '\0';
  return read_environment(name, buffer, size);
}

}  // namespace orba::services
