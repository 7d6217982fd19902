// Environment read, as every control of the library uses it.
#pragma once

#include <stddef.h>

#include <array>

namespace orba::services {

// Length of the value copied to `buffer`; 0 when the variable is absent or empty; negative when the
// value does not fit into `size` bytes with its NUL (the buffer is then undefined).
int read_environment(const char* name, char* buffer, int size) noexcept;

// As above for a variable whose name is kept scrambled: byte i of `scrambled` is the name's byte
// XORed with `scramble_key(i)`. `length` is the name's length, at most 31.
int read_scrambled_environment(const char* scrambled, int length, char* buffer, int size) noexcept;

constexpr char scramble_key(size_t i) { return static_cast<char>((2 * i) % 5 + 1); }

// Scrambles a name while compiling: the source shows the name, the binary doesn't.
template <size_t N>
consteval std::array<char, N - 1> scramble(const char (&name)[N]) {
  std::array<char, N - 1> bytes{};
  for (size_t i = 0; i < N - 1; ++i) bytes[i] = static_cast<char>(name[i] ^ scramble_key(i));
  return bytes;
}

}  // namespace orba::services
