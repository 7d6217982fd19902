// A task with its observations, through the exported entries.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "orba_rau.h"
#include "tests/support/rau_class.h"

namespace orba::test {

template <class Real>
constexpr bool is_double = sizeof(Real) == sizeof(double);

template <class Real>
class Task {
 public:
  Task(int32_t variables, int32_t observations, bool in_rows)
      : p(variables),
        n(observations),
        storage(in_rows ? RAU_SS_MATRIX_STORAGE_ROWS : RAU_SS_MATRIX_STORAGE_COLS),
        rows(in_rows),
        x(static_cast<size_t>(p) * static_cast<size_t>(n)) {
    const auto make = [&](auto* entry) {
      EXPECT_EQ(entry(&handle, &p, &n, &storage, x.data(), nullptr, nullptr), 0);
    };
    if constexpr (is_double<Real>) make(raudSSNewTask);
    if constexpr (!is_double<Real>) make(rausSSNewTask);
  }
  ~Task() { rauSSDeleteTask(&handle); }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  // Normal numbers with some ties.
  void fill(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(3, 10);
    for (Real& value : x) {
      value = static_cast<Real>(normal(random));
      if (random() % 8 == 0) value = std::round(value);
    }
  }
  Real& at(int32_t j, int32_t i) {
    return x[static_cast<size_t>(rows ? int64_t{j} * n + i : int64_t{i} * p + j)];
  }
  std::vector<Real> variable(int32_t j) {
    std::vector<Real> values;
    for (int32_t i = 0; i < n; ++i) values.push_back(at(j, i));
    return values;
  }
  // Selects every variable that is no multiple of 3 from the second on.
  void mask_some() {
    mask.assign(static_cast<size_t>(p), 0);
    for (int32_t j = 0; j < p; ++j) mask[static_cast<size_t>(j)] = j % 3 != 1 ? -7 : 0;
    edit(RAU_SS_ED_INDC, mask.data());
  }
  bool selects(int32_t j) const { return mask.empty() || mask[static_cast<size_t>(j)] != 0; }

  void edit(int32_t id, Real* address) {
    const auto call = [&](auto* entry) { EXPECT_EQ(entry(handle, id, address), 0); };
    if constexpr (is_double<Real>) call(raudSSEditTask);
    if constexpr (!is_double<Real>) call(rausSSEditTask);
  }
  void edit(int32_t id, const int32_t* address) {
    EXPECT_EQ(rauiSSEditTask(handle, id, address), 0);
  }
  int32_t compute(uint64_t estimates, uint32_t method) {
    if constexpr (is_double<Real>) return raudSSCompute(handle, estimates, method);
    if constexpr (!is_double<Real>) return rausSSCompute(handle, estimates, method);
  }

  int32_t p, n, storage;
  bool rows;
  std::vector<Real> x;
  std::vector<int32_t> mask;
  SsTask* handle = nullptr;
};

// Calls test(Real{}, rows) for both types, all live classes, both layouts.
template <class Test>
void for_all_variants(Test test) {
  for (int number = 0; number <= highest_rau_class(); ++number) {
    const RauClass running(number);
    for (const bool rows : {true, false}) {
      SCOPED_TRACE(testing::Message() << "class " << number << (rows ? ", rows" : ", columns"));
      test(double{}, rows);
      test(float{}, rows);
    }
  }
}

}  // namespace orba::test
