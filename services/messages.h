// The output road of the library: the message catalogue, printing, the fatal exit.
#pragma once

#include <stdint.h>
#include <stdio.h>

namespace orba::services {

enum class MessageKind { plain = 0, error = 1 };  // both go to the standard output stream

// A row of the catalogue. Of the numbers 0 to 1454 only those below have a text.
enum class Severity : int32_t { plain = 1, warning = 2, error = 4 };
struct MessageRow {
  Severity severity;
  int32_t number;
  const char* text;  // in printf form
};
inline constexpr int kMessageCount = 1455;

// The built-in row of any number from 0 to 1454; its text is empty where the library has none.
MessageRow message_row(int number) noexcept;

// Rows of the message table that the library uses by name.
enum MessageNumber : int {
  kMessageNewline = 0,
  kMessageBadParameter = 6,
  kMessageInternalCondition = 7,
  kMessageInsufficientWorkspace = 8,
  kMessageIncompatibleOptional = 9,
  kMessageStatusBadSize = 748,
  kMessageStatusBadMem = 749,
  kMessageStatusErrDom = 750,
  kMessageStatusSing = 751,
  kMessageStatusOverflow = 752,
  kMessageStatusUnderflow = 753,
  kMessageStatusUnknown = 754,
  kMessageValuesA = 755,     // 755, 756: value lines of the standard-error mode: a and r
  kMessageValuesAYZ = 757,   // 757 to 759
  kMessageValuesABY = 760,   // 760 to 762
  kMessageValuesABYZ = 763,  // 763 to 766
  kMessageOutOfMemory = 773,
  kMessageNoWorkMemory = 1102,
  kMessageBadReproducibility = 1222,
  kMessageUnsupportedProcessor = 1223,
  kMessageCoprocessor = 1225,
  kMessageSse3Required = 1450,
  kMessageSsse3Deprecated = 1453,
  kMessageAvxDeprecated = 1454,
};

// Prints a catalogue message, cut at 511 characters, and a line feed; number 0 prints the line feed
// alone. The text comes from the localised catalogue file where there is one, which is tried once
// per process.
void print_message(MessageKind kind, int number, int argument_count, ...) noexcept;

// Prints by a format of the caller's when `argument_count` is above 0, without a line feed.
void print_format(MessageKind kind, const char* format, int argument_count, ...) noexcept
    __attribute__((format(printf, 2, 4)));

// Formats into a bounded buffer and writes to `stream`.
void print_to_file(FILE* stream, const char* format, int argument_count, ...) noexcept
    __attribute__((format(printf, 2, 4)));

// Calls the exit handler if one is set, otherwise ends the process with `exit_code`.
// A handler may return; so may then `terminate`.
using ExitHandler = void (*)(int exit_code);
void set_exit_handler(ExitHandler handler) noexcept;
void terminate(int exit_code) noexcept;

// Closes the catalogue file; for the unload of the library.
void release_messages() noexcept;

}  // namespace orba::services
