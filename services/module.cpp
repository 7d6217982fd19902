#include "services/module.h"

#include "services/memory.h"
#include "services/messages.h"
#include "services/platform/platform.h"
#include "services/spin_lock.h"
#include "services/threads/thread_count.h"

namespace orba::services {
namespace {

// Exit code of failures that leave nothing to go on with.
constexpr int kExitFatal = 3;

struct Action {
  UnloadAction run;
  void* argument;
};

struct ActionList {
  Action* actions;
  int capacity;
  int count = 0;
  SpinLock lock{};      // of the entries
  SpinLock run_lock{};  // one walk at a time
};

constinit Action memory_actions[32] = {};
constinit Action thread_actions[8] = {};
constinit ActionList action_lists[] = {{memory_actions, 32}, {thread_actions, 8}};

ActionList& action_list(UnloadList list) { return action_lists[static_cast<int>(list)]; }

constinit SpinLock release_lock;
constinit bool released = false;

}  // namespace

void add_unload_action(UnloadList list, UnloadAction action, void* argument) noexcept {
  ActionList& entries = action_list(list);
  {
    SpinGuard guard(entries.lock);
    if (entries.count < entries.capacity) {
      entries.actions[entries.count++] = {action, argument};
      return;
    }
  }
  terminate(kExitFatal);
}

void run_unload_actions(UnloadList list) noexcept {
  ActionList& entries = action_list(list);
  SpinGuard walk(entries.run_lock);
  for (;;) {
    Action last;
    {
      SpinGuard guard(entries.lock);
      if (entries.count == 0) return;
      last = entries.actions[--entries.count];
    }
    last.run(last.argument);
  }
}

void* make_thread_block(uint32_t size) noexcept {
  if (platform::thread_slot != nullptr) return platform::thread_slot;
  void* block = platform::private_heap_allocate(size);
  if (block == nullptr || !platform::watch_thread_exit()) {
    platform::private_heap_free(block);
    print_message(MessageKind::error, kMessageOutOfMemory, 0);
    terminate(kExitFatal);
    return nullptr;
  }
  platform::thread_slot = block;
  return block;
}

void on_process_attach() noexcept {
  // Asks the loader now, in a call of its own, rather than from some thread in the middle of work.
  platform::loaded_as_module();
  keep_thread_runtime();
}

void on_thread_detach() noexcept {
  // Linked into the executable, the slot points at static words.
  if (platform::loaded_as_module()) platform::private_heap_free(platform::thread_slot);
  platform::thread_slot = nullptr;
  release_thread_memory();
}

void on_process_detach() noexcept {
  platform::thread_slot = nullptr;
  platform::destroy_private_heap();
  SpinGuard guard(release_lock);
  if (released) return;
  released = true;
  release_all_memory();
  run_unload_actions(UnloadList::memory);
  run_unload_actions(UnloadList::threads);
  release_messages();
}

}  // namespace orba::services
