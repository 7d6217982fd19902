// Environment read, as every control of the library uses it.
#pragma once

namespace orba::serv {

// Length of the value copied to `buffer`; 0 when the variable is absent or empty; negative when the
// value does not fit into `size` bytes with its NUL (the buffer is then undefined).
int read_environment(const char* name, char* buffer, int size) noexcept;

// As above for a variable whose name is kept scrambled: byte i of `scrambled` is the name's byte
// XORed with ((2i) mod 5) + 1. `length` is the name's length, at most 31.
int read_scrambled_environment(const char* scrambled, int length, char* buffer, int size) noexcept;

}  // namespace orba::serv
