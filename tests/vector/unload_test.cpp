// The shared library as a module that comes and goes while threads that used it live on.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <barrier>
#include <filesystem>
#include <string>
#include <thread>

#include "include/orba_kam.h"

namespace {

// Beside the test program's folder in the build tree.
std::string library_path() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path().parent_path() / "lib" / "liborba.so";
}

struct Module {
  Module() : handle(dlopen(library_path().c_str(), RTLD_NOW)) {
    if (handle == nullptr) {
      ADD_FAILURE() << dlerror();
      abort();
    }
    set_status = reinterpret_cast<decltype(set_status)>(dlsym(handle, "kamSetErrStatus"));
    set_mode = reinterpret_cast<decltype(set_mode)>(dlsym(handle, "kamSetMode"));
  }
  ~Module() {
    dlclose(handle);
    EXPECT_EQ(dlopen(library_path().c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  }

  void* handle;
  decltype(&kamSetErrStatus) set_status;
  decltype(&kamSetMode) set_mode;
};

TEST(Unload, ThreadsOutliveTheLibrary) {
  Module* loaded = nullptr;
  const auto use = [&loaded] {
    // A library that was loaded afresh knows nothing of this thread.
    EXPECT_EQ(loaded->set_mode(KAM_EP), 0x1A02u);
    EXPECT_EQ(loaded->set_status(7), 0);
    EXPECT_EQ(loaded->set_status(8), 7);
  };
  std::barrier turn(2);
  std::thread survivor([&] {
    for (turn.arrive_and_wait(); loaded != nullptr; turn.arrive_and_wait()) {
      use();
      turn.arrive_and_wait();
    }
  });
  for (int round = 0; round < 20; ++round) {
    Module module;
    loaded = &module;
    use();
    std::thread(use).join();
    turn.arrive_and_wait();  // the survivor's turn
    turn.arrive_and_wait();
  }
  loaded = nullptr;  // the survivor ends after the last unload
  turn.arrive_and_wait();
  survivor.join();
}

// Each load takes one of the system's thread-specific keys (1024 on Linux) and must return it.
TEST(Unload, KeysComeBack) {
  for (int round = 0; round < 1100; ++round) {
    Module module;
    ASSERT_EQ(module.set_status(1), 0);
  }
}

// At exit nothing is taken away from threads that still work.
TEST(UnloadDeathTest, ExitWithBusyThreads) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        auto* module = new Module;
        static std::atomic<int> running{0};
        for (int i = 0; i < 3; ++i) {
          std::thread([module] {
            module->set_status(0);
            ++running;
            for (int32_t status = 0;; ++status) {
              module->set_status(status);
              if (module->set_status(status + 1) != status) abort();
            }
          }).detach();
        }
        while (running < 3) std::this_thread::yield();
        exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
