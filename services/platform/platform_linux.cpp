#include <cxxabi.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <locale.h>
#include <nl_types.h>
#include <pthread.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/single_threaded.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "services/module.h"
#include "services/platform/errno_keeper.h"
#include "services/platform/platform.h"
#include "services/spin_lock.h"

extern "C" void* __dso_handle;  // names this module to the C++ runtime

namespace orba::services::platform {

thread_local constinit void* thread_slot __attribute__((tls_model("initial-exec"))) = nullptr;

namespace {

// The private heap: blocks of the C runtime, chained so that an unload finds those of threads that
// are still alive. The header keeps the user part aligned at 16.
struct alignas(16) HeapBlock {
  HeapBlock* previous;
  HeapBlock* next;
};
constinit HeapBlock heap_ring = {&heap_ring, &heap_ring};
constinit SpinLock heap_lock;

void unchain(HeapBlock* block) noexcept {
  block->previous->next = block->next;
  block->next->previous = block->previous;
}

// The thread-specific key whose destructor tells of a thread's end, made on first need.
constexpr int kNoKey = -1;
constexpr int kKeyGone = -2;  // after detach: nobody is watched any more
constinit std::atomic<int> exit_key{kNoKey};
constinit SpinLock exit_key_lock;

constinit std::atomic<bool> process_exiting{false};

void note_exit(void*) { process_exiting.store(true, std::memory_order_relaxed); }

void thread_ends(void*) { on_thread_detach(); }

int make_exit_key() noexcept {
  SpinGuard guard(exit_key_lock);
  int key = exit_key.load(std::memory_order_relaxed);
  if (key != kNoKey) return key;
  pthread_key_t created;
  if (pthread_key_create(&created, thread_ends) != 0) return kNoKey;
  // From here on there is something to leave alone at exit. The handler belongs to this module, so
  // an unload takes it away. Without it an exit could not be told: then nothing is ever released.
  if (abi::__cxa_atexit(note_exit, nullptr, &__dso_handle) != 0) note_exit(nullptr);
  key = static_cast<int>(created);
  exit_key.store(key, std::memory_order_release);
  return key;
}

constinit bool lost_threads = false;
constinit bool forks_alone = true;  // of the fork in progress

void before_fork() {
  forks_alone = __libc_single_threaded;
  hold_locks_for_fork();
}
void after_fork_in_parent() { release_locks_after_fork(); }
void after_fork_in_child() {
  lost_threads = lost_threads || !forks_alone;
  release_locks_in_forked_child();
}

// An unload takes the handlers away: they, too, belong to this module.
__attribute__((constructor)) void attach() {
  pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
  on_process_attach();
}

// Runs at exit and at unload. Exit handlers run before the modules' destructors, the loader having
// registered its own handler first, so at exit `note_exit` was here before. At unload it comes
// afterwards: the compiler's start-up code stands first in the list of destructors, which runs
// backwards. (Only a first call out of another start-up library's constructor is early enough to
// turn the order round.)
//
// The key goes in both cases: threads that end later must not call code that was unmapped. Values
// of a deleted key are never handed to a destructor. As with any call into the library, no thread
// may be ending at the very moment of an unload.
__attribute__((destructor)) void detach() {
  int key;
  {
    SpinGuard guard(exit_key_lock);
    key = exit_key.exchange(kKeyGone, std::memory_order_acq_rel);
  }
  if (key >= 0) pthread_key_delete(static_cast<pthread_key_t>(key));
  if (loaded_as_module() && !process_exiting.load(std::memory_order_relaxed)) on_process_detach();
}

}  // namespace

int read_environment(const char* name, char* buffer, int size) noexcept {
  const char* value = secure_getenv(name);
  if (value == nullptr || *value == '\0') return 0;
  const size_t needed = strlen(value) + 1;
  if (size < 0 || needed > static_cast<size_t>(size)) return -static_cast<int>(needed);
  memcpy(buffer, value, needed);
  return static_cast<int>(needed - 1);
}

void yield_processor() noexcept { sched_yield(); }

void terminate_process(int exit_code) noexcept { _exit(exit_code); }

bool loaded_as_module() noexcept {
  static constinit std::atomic<int> word{-1};
  int known = word.load(std::memory_order_relaxed);
  if (known < 0) {
    // The program headers lie in the executable itself, wherever it was loaded.
    Dl_info own, executable;
    const bool found = dladdr(reinterpret_cast<void*>(&loaded_as_module), &own) != 0 &&
                       dladdr(reinterpret_cast<void*>(getauxval(AT_PHDR)), &executable) != 0;
    known = found && own.dli_fbase != executable.dli_fbase;
    word.store(known, std::memory_order_relaxed);
  }
  return known != 0;
}

void* private_heap_allocate(size_t size) noexcept {
  auto* block = static_cast<HeapBlock*>(calloc(1, sizeof(HeapBlock) + size));
  if (block == nullptr) return nullptr;
  SpinGuard guard(heap_lock);
  block->previous = &heap_ring;
  block->next = heap_ring.next;
  heap_ring.next->previous = block;
  heap_ring.next = block;
  return block + 1;
}

void private_heap_free(void* block) noexcept {
  if (block == nullptr) return;
  auto* header = static_cast<HeapBlock*>(block) - 1;
  {
    SpinGuard guard(heap_lock);
    unchain(header);
  }
  free(header);
}

void destroy_private_heap() noexcept {
  SpinGuard guard(heap_lock);
  while (heap_ring.next != &heap_ring) {
    HeapBlock* block = heap_ring.next;
    unchain(block);
    free(block);
  }
}

bool lost_threads_in_fork() noexcept { return lost_threads; }

bool watch_thread_exit() noexcept {
  int key = exit_key.load(std::memory_order_acquire);
  if (key == kNoKey) key = make_exit_key();
  if (key == kNoKey) return false;
  // Any value but null arms the destructor. A thread that comes while the process exits finds the
  // key gone, before or during the call, and needs no watch.
  return key == kKeyGone || pthread_setspecific(static_cast<pthread_key_t>(key), &exit_key) == 0 ||
         exit_key.load(std::memory_order_acquire) == kKeyGone;
}

int format_text(char* buffer, size_t size, const char* format, va_list arguments) noexcept {
  const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
  const locale_t callers = uselocale(c_locale);
  const int length = vsnprintf(buffer, size, format, arguments);
  uselocale(callers);
  freelocale(c_locale);
  return length;
}

void write_standard_output(const char* text) noexcept {
  const ErrnoKeeper keeper;
  fputs(text, stdout);
  fflush(stdout);
  fflush(stderr);
}

StandardOutputLock::StandardOutputLock() noexcept { flockfile(stdout); }
StandardOutputLock::~StandardOutputLock() { funlockfile(stdout); }

void write_standard_output_line(const char* line) noexcept {
  const ErrnoKeeper keeper;
  const StandardOutputLock stream;
  fflush(stdout);  // an empty buffer takes the whole line
  fputs(line, stdout);
  fflush(stdout);
}

bool append_to_file(const char* path, const char* text) noexcept {
  const ErrnoKeeper keeper;
  const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const size_t length = strlen(text);
  const bool complete = length == 0 || write(file, text, length) == static_cast<ssize_t>(length);
  return close(file) == 0 && complete;
}

uint64_t clock_count() noexcept {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

uint64_t clock_frequency() noexcept { return 1'000'000'000; }

void* open_message_catalog() noexcept {
  const ErrnoKeeper keeper;
  const nl_catd catalog = catopen("orba_msg.cat", NL_CAT_LOCALE);
  return catalog == reinterpret_cast<nl_catd>(-1) ? nullptr : catalog;
}

const char* catalog_text(void* catalog, int number) noexcept {
  const ErrnoKeeper keeper;
  constexpr int kMessageSet = 1;
  return catgets(static_cast<nl_catd>(catalog), kMessageSet, number, nullptr);
}

void close_message_catalog(void* catalog) noexcept { catclose(static_cast<nl_catd>(catalog)); }

void set_runtime_errno(int value) noexcept { errno = value; }

}  // namespace orba::services::platform
