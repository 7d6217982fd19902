// What the programs that write tables share: frames of the two kinds of output, and rows.
//
//   a header of class code   small tables and constants, a copy in every class; the program alone
//   a source of the base     tables that are large for that, once in the library, declared in
//                            vector/tables/tables.h; the program with the argument "shared"
#pragma once

#include <cstdio>
#include <functional>

inline void begin_class_header(const char* program, const char* include) {
  std::printf(
      "// Written by tools/tables/%s.cpp; do not edit.\n// clang-format off\n#pragma once\n\n",
      program);
  if (include != nullptr) std::printf("#include \"%s\"\n\n", include);
  std::printf("namespace orba::ORBA_CLASS_NAMESPACE {\nnamespace {\n\n");
}
inline void end_class_header() {
  std::printf("\n}  // namespace\n}  // namespace orba::ORBA_CLASS_NAMESPACE\n");
}

inline void begin_shared_source(const char* program) {
  std::printf(
      "// Written by tools/tables/%s.cpp; do not edit.\n// clang-format off\n"
      "#include \"vector/tables/tables.h\"\n\nnamespace orba::vector {\n\n",
      program);
}
inline void end_shared_source() { std::printf("\n}  // namespace orba::vector\n"); }

struct Words {
  double hi, lo;
};

// Values as numbers of the type, in which they are exact, in lines of `per_line`.
inline void write_numbers(int count, int per_line, bool single,
                          const std::function<double(int)>& number) {
  for (int i = 0; i < count; ++i)
    std::printf("%s%a%s%s", i % per_line == 0 ? "\n    " : " ", number(i), single ? "f" : "",
                i + 1 < count ? "," : "");
}
inline void write_pairs(int count, bool single, const std::function<Words(int)>& row) {
  const char* suffix = single ? "f" : "";
  for (int i = 0; i < count; ++i) {
    const Words w = row(i);
    std::printf("    {%a%s, %a%s},\n", w.hi, suffix, w.lo, suffix);
  }
}
