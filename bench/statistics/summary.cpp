// Estimates of tasks, beside what Eigen, OpenBLAS, Armadillo and the C++ standard library offer. An
// element is a value: one observation of one variable.
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include "bench/statistics/families.h"
#include "bench/statistics/peers/estimates.h"
#include "bench/statistics/timing.h"
#include "include/orba_rau.h"

namespace orba::bench {
namespace {

struct Shape {
  int32_t p, n;
  int32_t storage;

  bool rows() const { return storage == RAU_SS_MATRIX_STORAGE_ROWS; }
  bool contiguous() const { return rows() || p == 1; }
  int64_t values() const { return int64_t{p} * n; }
  std::string name() const { return (rows() ? "/rows/p:" : "/columns/p:") + std::to_string(p); }
};

constexpr Shape kOneInRows = {1, 1000000, RAU_SS_MATRIX_STORAGE_ROWS};
constexpr Shape kOneInColumns = {1, 1000000, RAU_SS_MATRIX_STORAGE_COLS};
constexpr Shape kManyInRows = {100, 10000, RAU_SS_MATRIX_STORAGE_ROWS};
constexpr Shape kManyInColumns = {100, 10000, RAU_SS_MATRIX_STORAGE_COLS};
constexpr Shape kLongInRows = {100, 100000, RAU_SS_MATRIX_STORAGE_ROWS};
constexpr Shape kLongInColumns = {100, 100000, RAU_SS_MATRIX_STORAGE_COLS};
constexpr Shape kForked = {20, 1000000, RAU_SS_MATRIX_STORAGE_ROWS};

using Numbers = std::shared_ptr<double[]>;

Numbers allocate(int64_t count) {
  const auto bytes = (static_cast<size_t>(count) * sizeof(double) + 63) / 64 * 64;
  return {static_cast<double*>(std::aligned_alloc(64, bytes)), std::free};
}

// At least `count` normal numbers, the same ones for all who ask.
Numbers sample(int64_t count) {
  static Numbers numbers;
  static int64_t size = 0;
  if (size < count) {
    numbers = allocate(count);
    std::mt19937_64 engine(777);
    std::normal_distribution<double> normal(1.0, 1.0);
    for (size = 0; size < count; ++size) numbers[static_cast<size_t>(size)] = normal(engine);
  }
  return numbers;
}

// A task with all the arrays that its estimates may want.
class Task {
 public:
  Task(const Shape& shape, uint64_t estimates, uint32_t method)
      : shape_(shape), estimates_(estimates), method_(method), x_(sample(shape.values())) {
    raudSSNewTask(&task_, &shape_.p, &shape_.n, &shape_.storage, x_.get(), nullptr, nullptr);
    raudSSEditMoments(task_, array(shape.p), array(shape.p), array(shape.p), array(shape.p),
                      array(shape.p), array(shape.p), array(shape.p));
    raudSSEditCovCor(task_, nullptr, array(shape.p * shape.p), &kFull, nullptr, nullptr);
    raudSSEditQuantiles(task_, &kOrderCount, kOrders, array(shape.p * kOrderCount), nullptr,
                        nullptr);
    raudSSEditTask(task_, RAU_SS_ED_MIN, lowest_ = array(shape.p));
    raudSSEditTask(task_, RAU_SS_ED_MAX, highest_ = array(shape.p));
    if ((estimates & RAU_SS_SORTED_OBSERV) != 0) {
      raudSSEditTask(task_, RAU_SS_ED_SORTED_OBSERV, array(shape.values()));
      rauiSSEditTask(task_, RAU_SS_ED_SORTED_OBSERV_STORAGE, &shape_.storage);
    }
  }
  ~Task() { rauSSDeleteTask(&task_); }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  void compute() {
    for (int32_t j = 0; j < shape_.p; ++j) lowest_[j] = highest_[j] = x_[0];
    const int32_t status = raudSSCompute(task_, estimates_, method_);
    if (status != RAU_STATUS_OK) std::abort();
  }

 private:
  static constexpr int32_t kFull = RAU_SS_MATRIX_STORAGE_FULL, kOrderCount = 9;
  static constexpr double kOrders[kOrderCount] = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9};

  double* array(int64_t size) { return arrays_.emplace_back(allocate(size)).get(); }

  Shape shape_;
  uint64_t estimates_;
  uint32_t method_;
  Numbers x_;
  std::vector<Numbers> arrays_;
  double *lowest_, *highest_;
  SsTask* task_ = nullptr;
};

Prepare prepare_task(const Shape& shape, uint64_t estimates, uint32_t method) {
  return [=] {
    auto task = std::make_shared<Task>(shape, estimates, method);
    return [=] { task->compute(); };
  };
}

EstimatePeers estimate_peers() {
#ifdef ORBA_BENCH_ESTIMATES
  if (best_class() >= 4) return orba_bench_estimates_c5();
  if (best_class() == 3) return orba_bench_estimates_c3();
#endif
  return {{}, ""};
}

void add_estimate(const std::string& estimate, const std::string& method_name,
                  std::initializer_list<Shape> shapes, uint64_t estimates, uint32_t method) {
  for (const Shape& shape : shapes) {
    const std::string what = estimate + "/" + method_name + shape.name();
    add_classes(what, shape.values(), prepare_task(shape, estimates, method));
    if (method == RAU_SS_METHOD_1PASS) continue;
    for (const EstimatePeer& peer : estimate_peers().peers) {
      if (peer.estimate != estimate || !(shape.contiguous() ? peer.rows : peer.columns)) continue;
      add_peer(what, peer.name, shape.values(), [=, run = peer.run] {
        const Numbers x = sample(shape.values());
        const Numbers out = allocate(int64_t{shape.p} * (shape.p + 10));
        const Numbers workspace = allocate(shape.values());
        return [=] { run({x.get(), shape.p, shape.n, shape.rows()}, out.get(), workspace.get()); };
      });
    }
  }
}

}  // namespace

void add_summary() {
  constexpr uint64_t mean_variance = RAU_SS_MEAN | RAU_SS_2C_MOM;
  constexpr uint64_t all_moments =
      mean_variance | RAU_SS_2R_MOM | RAU_SS_3R_MOM | RAU_SS_4R_MOM | RAU_SS_3C_MOM | RAU_SS_4C_MOM;
  constexpr uint32_t fast = RAU_SS_METHOD_FAST, one_pass = RAU_SS_METHOD_1PASS;
  const auto medium = {kOneInRows, kOneInColumns, kManyInRows, kManyInColumns};
  add_estimate("mean_variance", "FAST", medium, mean_variance, fast);
  add_estimate("mean_variance", "1PASS", medium, mean_variance, one_pass);
  add_estimate("all_moments", "FAST", medium, all_moments, fast);
  add_estimate("all_moments", "1PASS", medium, all_moments, one_pass);
  add_estimate("extremes", "FAST", medium, RAU_SS_MIN | RAU_SS_MAX, fast);
  add_estimate("covariance", "FAST", {kLongInRows, kLongInColumns}, RAU_SS_COV, fast);
  add_estimate("nine_quantiles", "FAST", {kOneInRows}, RAU_SS_QUANTS, fast);
  add_estimate("sorted_observations", "RADIX", {kOneInRows}, RAU_SS_SORTED_OBSERV,
               RAU_SS_METHOD_RADIX);
  const Prepare forked = prepare_task(kForked, RAU_SS_COV, fast);
  for (const int threads : {1, 2}) {
    add("covariance/FAST" + kForked.name(), "threads:" + std::to_string(threads), kForked.values(),
        forked, -1, threads);
  }
}

std::string summary_peer_versions() { return estimate_peers().versions; }

}  // namespace orba::bench
