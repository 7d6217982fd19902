// The exported forms of every vector function, as its type tells them: what is checked in which
// order, what a refused call leaves alone, and that all forms compute the same.
#include <gtest/gtest.h>
#include <string.h>

#include <array>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "include/orba_kam.h"
#include "tests/support/observe.h"
#include "vector/function_table.h"
#include "vector/words/thread_words.h"

namespace {

using orba::test::stdout_of;

constexpr int32_t kLength = 5;
constexpr uint32_t kMode = KAM_HA | KAM_ERRMODE_IGNORE;
constexpr uint32_t kModeOfCall = KAM_EP | KAM_DENORMALS_FLUSH;

// Arguments behind n, by type: arrays of elements around 1.7, and scalars.
template <class... A>
struct Arguments {
  std::array<std::array<double, 2 * kLength>, sizeof...(A)> memory;
  std::tuple<A...> values;

  // Arrays from number `null_from` on (of all arguments, 2 being the first) are null.
  explicit Arguments(size_t null_from = 99) {
    for (size_t i = 0; i < memory.size(); ++i) memory[i].fill(1.7 + static_cast<double>(i));
    [&]<size_t... i>(std::index_sequence<i...>) {
      (make(std::get<i>(values), i, i + 2 >= null_from), ...);
    }
    (std::index_sequence_for<A...>{});
  }

 private:
  template <class T>
  void make(T& argument, size_t i, bool null) {
    if constexpr (std::is_pointer_v<T>) {
      argument = null ? nullptr : reinterpret_cast<T>(memory[i].data());
    } else {
      memcpy(&argument, memory[i].data(), sizeof argument);
    }
  }
};

template <class T>
auto by_address(T& argument) {
  if constexpr (std::is_pointer_v<T>) {
    return argument;
  } else {
    return const_cast<const T*>(&argument);
  }
}

// One call in one of the four forms; the lower-case forms get `mode` as it is.
enum Form { kPlain, kWithMode, kLower, kLowerWithMode };

template <class... A>
void check_forms(const std::string& name, void (*plain)(int32_t, A...), auto* with_mode,
                 auto* lower, auto* lower_with_mode) {
  const auto call = [&](Form form, int32_t n, Arguments<A...>& arguments, const uint32_t* mode) {
    std::apply(
        [&](auto&... argument) {
          if (form == kPlain) plain(n, argument...);
          if (form == kWithMode) with_mode(n, argument..., kModeOfCall);
          if (form == kLower) lower(&n, by_address(argument)...);
          if (form == kLowerWithMode) lower_with_mode(&n, by_address(argument)..., mode);
        },
        arguments.values);
  };
  std::vector<decltype(Arguments<A...>::memory)> results;
  for (const Form form : {kPlain, kLower, kWithMode, kLowerWithMode}) {
    SCOPED_TRACE(name + ", form " + std::to_string(form));
    orba::vector::thread_words() = {kMode, 7, nullptr, nullptr};
    // Refused or nothing to do: the mode's address is not looked at.
    const auto refused = [&](int32_t n, size_t null_from) {
      Arguments<A...> arguments(null_from);
      const auto before = arguments.memory;
      const std::string text = stdout_of([&] { call(form, n, arguments, nullptr); });
      EXPECT_EQ(arguments.memory, before);
      EXPECT_EQ(kamGetMode(), kMode);
      return text;
    };
    const auto report = [&](size_t position) {
      return "\nTessel Orba ERROR: Parameter " + std::to_string(position) +
             " was incorrect on entry to " + name + ".\n";
    };
    EXPECT_EQ(refused(0, 2), "");
    EXPECT_EQ(kamSetErrStatus(7), 7);
    EXPECT_EQ(refused(-1, 2), report(1));
    EXPECT_EQ(kamSetErrStatus(7), KAM_STATUS_BADSIZE);
    constexpr bool is_array[] = {std::is_pointer_v<A>...};
    for (size_t i = 0; i < sizeof...(A); ++i) {
      if (!is_array[i]) continue;
      EXPECT_EQ(refused(kLength, i + 2), report(i + 2));
      EXPECT_EQ(kamSetErrStatus(7), KAM_STATUS_BADMEM);
    }

    // Fields of the call's mode that were zero before stay.
    const bool has_mode = form == kWithMode || form == kLowerWithMode;
    if (!has_mode) kamSetMode(kModeOfCall);
    Arguments<A...> arguments;
    const uint32_t mode = kModeOfCall;
    EXPECT_EQ(stdout_of([&] { call(form, kLength, arguments, &mode); }), "");
    EXPECT_EQ(kamGetErrStatus(), 7);
    EXPECT_EQ(kamGetMode(),
              KAM_ERRMODE_IGNORE | KAM_DENORMALS_FLUSH | (has_mode ? KAM_HA : KAM_EP));
    EXPECT_NE(arguments.memory, Arguments<A...>().memory);
    results.push_back(arguments.memory);
    EXPECT_EQ(results.back(), results.front());
  }
}

TEST(VectorCall, FormsOfEveryFunction) {
#define ORBA_CHECK_FORMS(t, Name, name) \
  check_forms("v" #t #Name, v##t##Name, vm##t##Name, v##t##name, vm##t##name);
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_CHECK_FORMS, Name, name)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
  orba::vector::thread_words() = {};
}

}  // namespace
