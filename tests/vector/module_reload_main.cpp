// Loads and unloads the library that is named on the command line, many times over. What it brings
// along must not pile up, and the workers of its last call must find their code when it is gone.
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

#include "include/orba_kam.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::vector<double> a(200000, 2.0), y(a.size());
  for (int round = 0; round < 200; ++round) {
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      printf("round %d: %s\n", round, dlerror());
      return 1;
    }
    if (round % 4 == 3) {
      const auto inv = reinterpret_cast<decltype(&vdInv)>(dlsym(library, "vdInv"));
      inv(static_cast<int32_t>(a.size()), a.data(), y.data());
      if (y.front() != 0.5 || y.back() != 0.5) return 1;
    }
    dlclose(library);
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr) {
      puts("still loaded");
      return 1;
    }
  }
  // Nobody calls what went with it.
  const pid_t child = fork();
  if (child == 0) _exit(0);
  int status = -1;
  if (waitpid(child, &status, 0) != child || status != 0) return 1;
  // Workers that still spin for the next task come to rest.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  puts("loaded and unloaded");
  return 0;
}
