// The shared library as a module that comes and goes while threads that used it live on.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>

#include "include/orba_kam.h"

namespace {

// Beside the test program's folder in the build tree.
std::string library_path() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path().parent_path() / "lib" / "liborba.so";
}

class Module {
 public:
  Module() : handle_(dlopen(library_path().c_str(), RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(handle_, nullptr) << dlerror();
    if (handle_ == nullptr) return;
    set_status = function<decltype(&kamSetErrStatus)>("kamSetErrStatus");
    get_mode = function<decltype(&kamGetMode)>("kamGetMode");
    set_mode = function<decltype(&kamSetMode)>("kamSetMode");
  }
  ~Module() { unload(); }
  void unload() {
    if (handle_ != nullptr) dlclose(handle_);
    handle_ = nullptr;
  }

  decltype(&kamSetErrStatus) set_status = nullptr;
  decltype(&kamGetMode) get_mode = nullptr;
  decltype(&kamSetMode) set_mode = nullptr;

 private:
  template <class Pointer>
  Pointer function(const char* name) {
    return reinterpret_cast<Pointer>(dlsym(handle_, name));
  }
  void* handle_;
};

bool still_loaded() {
  void* handle = dlopen(library_path().c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

// Does each of the tasks it is given on one thread.
class Worker {
 public:
  ~Worker() {
    task_ = nullptr;
    start_.release();
    thread_.join();
  }
  void run(std::function<void()> task) {
    task_ = std::move(task);
    start_.release();
    done_.acquire();
  }

 private:
  std::function<void()> task_;
  std::binary_semaphore start_{0}, done_{0};
  std::thread thread_{[this] {
    for (start_.acquire(); task_; start_.acquire()) {
      task_();
      done_.release();
    }
  }};
};

TEST(Unload, ThreadsOutliveTheLibrary) {
  auto worker = std::make_unique<Worker>();
  const auto use = [](const Module& module) {
    // A library that was loaded afresh knows nothing of this thread.
    EXPECT_EQ(module.get_mode(), 0x1A02u);
    EXPECT_EQ(module.set_status(7), 0);
    EXPECT_EQ(module.set_status(8), 7);
    module.set_mode(KAM_EP);
  };
  for (int round = 0; round < 20; ++round) {
    Module module;
    ASSERT_NE(module.get_mode, nullptr);
    use(module);
    worker->run([&] { use(module); });
    std::thread([&] { use(module); }).join();
    module.unload();
    ASSERT_FALSE(still_loaded());
    if (round % 2 == 1) worker = std::make_unique<Worker>();  // the thread ends after the unload
  }
}

// Each load takes one of the system's thread-specific keys (1024 on Linux) and must return it.
TEST(Unload, KeysComeBack) {
  for (int round = 0; round < 1100; ++round) {
    Module module;
    ASSERT_NE(module.set_status, nullptr);
    ASSERT_EQ(module.set_status(1), 0);
  }
}

// At exit nothing is taken away from threads that still work.
TEST(UnloadDeathTest, ExitWithBusyThreads) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        auto* module = new Module;
        std::atomic<int> running{0};
        for (int i = 0; i < 3; ++i) {
          std::thread([&, module] {
            module->set_status(i);
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
