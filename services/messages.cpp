#include "services/messages.h"

#include <stdarg.h>
#include <string.h>

#include <atomic>

#include "services/platform/platform.h"

namespace orba::services {
namespace {

constexpr int kBufferSize = 512;

constinit std::atomic<ExitHandler> exit_handler{nullptr};

// The localised catalogue: tried at the first message, then either open or absent for good. Threads
// that meet here each try, and one of them publishes: what may wait for the file system is not done
// under a lock.
constinit char untried = 0;
constinit std::atomic<void*> catalog{&untried};

void close_catalog(void* open_catalog) noexcept {
  if (open_catalog != nullptr && open_catalog != &untried) {
    platform::close_message_catalog(open_catalog);
  }
}

void* message_catalog() noexcept {
  void* known = catalog.load(std::memory_order_acquire);
  if (known != &untried) return known;
  void* opened = platform::open_message_catalog();
  if (catalog.compare_exchange_strong(known, opened, std::memory_order_acq_rel)) return opened;
  close_catalog(opened);
  return known;
}

// Whether two formats take the same arguments in the same order. The texts use bare conversions
// only (%d, %s, %g), so any other spelling in a translation counts as different.
bool same_conversions(const char* a, const char* b) noexcept {
  for (;;) {
    a = strchr(a, '%');
    b = strchr(b, '%');
    if (a == nullptr || b == nullptr) return a == b;
    if (a[1] != b[1] || a[1] == '\0') return false;
    a += 2;
    b += 2;
  }
}

// Format of a message: the translation, unless it would misread the arguments.
const char* message_format(int number) noexcept {
  const char* text = message_row(number).text;
  if (void* open_catalog = message_catalog()) {
    const char* translation = platform::catalog_text(open_catalog, number);
    if (translation != nullptr && same_conversions(text, translation)) return translation;
  }
  return text;
}

void print_overflow(int length) noexcept;

// Formats into a buffer of kBufferSize, cutting what is longer.
__attribute__((format(printf, 2, 0))) void format_bounded(char* buffer, const char* format,
                                                          va_list arguments) noexcept {
  buffer[0] = '\0';
  const int length = platform::format_text(buffer, kBufferSize, format, arguments);
  if (length >= kBufferSize) print_overflow(length);
}

void print_overflow(int length) noexcept {
  platform::write_standard_output("\nORBA INTERNAL ERROR: message buffer overflow.");
  print_format(MessageKind::error, "\n       Lenght: %d   Buffer size: %d\n", 2, length,
               kBufferSize);
}

}  // namespace

// All messages, errors too, go to the standard output stream. The buffers are on the stack and a
// message is one write, so messages of several threads come out whole.

void print_message(MessageKind, int number, int argument_count, ...) noexcept {
  char text[kBufferSize + 1] = "";
  if (number > 0) {
    va_list arguments;
    va_start(arguments, argument_count);
    format_bounded(text, message_format(number), arguments);
    va_end(arguments);
  }
  strcat(text, "\n");
  platform::write_standard_output(text);
}

void print_format(MessageKind, const char* format, int argument_count, ...) noexcept {
  if (argument_count <= 0) return;
  char text[kBufferSize];
  va_list arguments;
  va_start(arguments, argument_count);
  format_bounded(text, format, arguments);
  va_end(arguments);
  platform::write_standard_output(text);
}

void print_to_file(FILE* stream, const char* format, int argument_count, ...) noexcept {
  char text[kBufferSize];
  va_list arguments;
  va_start(arguments, argument_count);
  format_bounded(text, format, arguments);
  va_end(arguments);
  fputs(text, stream);
}

void set_exit_handler(ExitHandler handler) noexcept {
  exit_handler.store(handler, std::memory_order_release);
}

void terminate(int exit_code) noexcept {
  if (const ExitHandler handler = exit_handler.load(std::memory_order_acquire)) {
    handler(exit_code);
  } else {
    platform::terminate_process(exit_code);
  }
}

void release_messages() noexcept {
  close_catalog(catalog.exchange(nullptr, std::memory_order_acq_rel));
}

}  // namespace orba::services
