#include "tests/accuracy/limits.h"

#include <algorithm>
#include <limits>

namespace orba::test {

const std::vector<Limits>& limits_table() {
  using enum Measure;
  using enum Axis;
  using enum Pairs;
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kTinyS = std::numeric_limits<float>::min();
  constexpr double kTinyD = std::numeric_limits<double>::min();
  constexpr double kHugeS = std::numeric_limits<float>::max();
  constexpr double kHugeD = std::numeric_limits<double>::max();
  static const std::vector<Limits> table = {
#include "tests/accuracy/limits.def"
  };
  return table;
}

const Limits* find_limits(std::string_view function, char type) {
  const auto& table = limits_table();
  const auto found = std::find_if(table.begin(), table.end(), [&](const Limits& row) {
    return row.function == function && row.type == type;
  });
  return found != table.end() ? &*found : nullptr;
}

}  // namespace orba::test
