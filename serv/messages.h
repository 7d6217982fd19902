// The output road of the library: the message catalogue, printing, the fatal exit.
#pragma once

#include <stdarg.h>
#include <stdio.h>

namespace orba::serv {

enum class MessageKind { plain = 0, error = 1 };  // both go to the standard output stream

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
  kMessageValues = 755,  // 755 to 766: the value lines of the standard-error mode
  kMessageOutOfMemory = 773,
  kMessageNoWorkMemory = 1102,
  kMessageBadReproducibility = 1222,
  kMessageUnsupportedProcessor = 1223,
  kMessageCoprocessor = 1225,
  kMessageSse3Required = 1450,
  kMessageSsse3Deprecated = 1453,
  kMessageAvxDeprecated = 1454,
};

// Prints a catalogue message and a line feed; number 0 prints the line feed alone.
void print_message(MessageKind kind, int number, int argument_count, ...) noexcept;

// Prints by a format of the caller's when `argument_count` is above 0, without a line feed.
void print_format(MessageKind kind, const char* format, int argument_count, ...) noexcept
    __attribute__((format(printf, 2, 4)));

// Formats into a bounded buffer and writes to `stream`.
void print_to_file(FILE* stream, const char* format, int argument_count, ...) noexcept
    __attribute__((format(printf, 2, 4)));

// Calls the exit handler if one is set, otherwise ends the process with `exit_code`.
using ExitHandler = void (*)(int exit_code);
void set_exit_handler(ExitHandler handler) noexcept;
void terminate(int exit_code) noexcept;

}  // namespace orba::serv
