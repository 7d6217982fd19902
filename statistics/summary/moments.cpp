// The moments driver: one sweep over the observations for any mix of moments, sums and matrices,
// continuing from what the caller's arrays hold.
//
// All state of a call lives in one block of memory, so a failed allocation leaves every array of
// the caller as it was. Under the fast method sums of powers, and products of observations as they
// are, are all that is kept; what is asked follows from them by subtraction, and what mean and
// deviation differ by in size is lost in accuracy. The other methods sum around means.
#include "statistics/summary/moments.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "dense/dense.h"
#include "statistics/frame/threading.h"
#include "statistics/summary/moments_prior.h"
#include "statistics/summary/moments_range.h"
#include "statistics/summary/moments_results.h"
#include "statistics/summary/scratch.h"

namespace orba::statistics {
namespace summary {
namespace {

template <class Real>
struct Routines {
  dense::Syr<Real>* syr;
  dense::Syrk<Real>* syrk;
  dense::Gemm<Real>* gemm;
  AddBlock<Real>* add_block;
  MergeMoments<Real>* merge_moments;
  CopyBlock<Real>* copy_block;
  SumWeights<Real>* sum_weights;
};

template <class Real>
Routines<Real> routines_of(int c) noexcept {
  const dense::DenseRoutines& d = dense::dense_routines(c);
  const auto at = static_cast<size_t>(c);
  if constexpr (std::is_same_v<Real, double>) {
    return {d.dsyr,
            d.dsyrk,
            d.dgemm,
            ss_d_add_block_kernels[at],
            ss_d_merge_moments_kernels[at],
            ss_d_copy_block_kernels[at],
            ss_d_sum_weights_kernels[at]};
  } else {
    return {d.ssyr,
            d.ssyrk,
            d.sgemm,
            ss_s_add_block_kernels[at],
            ss_s_merge_moments_kernels[at],
            ss_s_copy_block_kernels[at],
            ss_s_sum_weights_kernels[at]};
  }
}

// Hands out parts of a block of memory on cache-line boundaries; without memory it only measures.
class Arena {
 public:
  explicit Arena(char* base) noexcept : base_(base) {}

  template <class T>
  T* take(int64_t count) noexcept {
    int64_t size;
    if (__builtin_mul_overflow(count, static_cast<int64_t>(sizeof(T)), &size) ||
        __builtin_add_overflow(size, kLine - 1, &size)) {
      overflow_ = true;
      return nullptr;
    }
    T* taken = base_ != nullptr ? reinterpret_cast<T*>(base_ + used_) : nullptr;
    overflow_ = __builtin_add_overflow(used_, size & -kLine, &used_) || overflow_;
    return taken;
  }
  int64_t used() const noexcept { return overflow_ ? -1 : used_; }

 private:
  static constexpr int64_t kLine = 64;
  char* base_;
  int64_t used_ = 0;
  bool overflow_ = false;
};

template <class Real>
struct ThreadState {
  MomentsPart<Real> part;
  MomentsWork<Real> work;
  Real* plain;  // copies of a block for products
  Real* weighted;
  void* packed;  // memory of the dense routines
};

template <class Real>
class Sweep {
 public:
  Sweep(SsTask& task, const MomentsPlan& plan) noexcept
      : task_(task),
        plan_(plan),
        results_(task, plan),
        statistics_class_(running_class()),
        call_(routines_of<Real>(statistics_class_)),
        weights_(static_cast<const Real*>(task.weights)) {
    // The memory of a single variable is both rows and columns.
    rows_ = plan.rows || plan.p == 1;
    leading_ = rows_ ? plan.n : plan.p;
    find_orders();
    chunk_ = std::min(chunk_size(), plan.n);
    threads_ = thread_count();
  }

  int32_t run() noexcept {
    Arena size(nullptr);
    take_memory(size);
    const Scratch<char> memory(size.used());
    if (!memory) return RAU_SS_ERROR_MEM_FAILURE;
    Arena arena(memory.data());
    take_memory(arena);

    find_pivot();
    read_prior<Real>(task_, plan_, orders_, pivot_, &states_[0].part);
    for (int64_t t = 1; t < threads_; ++t) states_[t].part.clear(plan_.p);
    const auto body = [](int64_t item, int32_t, int32_t, void* context) {
      static_cast<Sweep*>(context)->sweep(item);
    };
    orba_rau_serv_threader_for(threads_, static_cast<int32_t>(threads_), this, body);
    MomentsPart<Real>& whole = states_[0].part;
    Real* const scratch = states_[0].work.difference;
    for (int64_t t = 1; t < threads_; ++t) {
      merge_parts(statistics_class_, orders_, plan_.p, &whole, states_[t].part, scratch);
    }

    const EndedSweep<Real> ended = {task_, plan_, orders_, pivot_, whole};
    if (RangeCheck<Real>(ended).any()) [[unlikely]] {
      WideSweep<Real> wide(ended);
      bool changed;
      if (const int32_t bad = wide.run(&changed)) return bad;
      if (changed) return finish(wide.part(), wide.scratch());
    }
    return finish(whole, scratch);
  }

 private:
  // ---- What to keep, and where ----

  void find_orders() noexcept {
    orders_ = {plan_.method, 1, 1, plan_.needs_product()};
    for (int k = 2; k <= 4; ++k) {
      if (results_.raw(k) != nullptr || results_.raw_sum(k) != nullptr) orders_.raw = k;
      // The fast method makes central results from raw moments.
      const bool central = results_.central(k) != nullptr || results_.central_sum(k) != nullptr;
      if (central && plan_.method != MomentsMethod::kFast) orders_.central = k;
    }
  }

  // Observations at a time. With products, what the dense routines can keep in the second-level
  // cache; else what stays in the first level (rows) or second (columns) while it is summed twice.
  int64_t chunk_size() const noexcept {
    constexpr int64_t size = sizeof(Real);
    if (orders_.product) return std::max<int64_t>(0x40000 / (size * plan_.p), 128);
    if (rows_) return 0x4000 / size;
    return std::max<int64_t>(0x20000 / (size * std::min<int64_t>(plan_.p, 512)), 16);
  }

  int64_t thread_count() const noexcept {
    int64_t work = plan_.p;
    if (__builtin_mul_overflow(work, plan_.n, &work) ||
        (orders_.product && __builtin_mul_overflow(work, plan_.p, &work))) {
      work = INT64_MAX;
    }
    return std::max<int64_t>(
        std::min({int64_t{orba_rau_serv_thread_count()}, work >> 13, plan_.n >> 4}), 1);
  }

  // Called twice: to measure and to take.
  void take_memory(Arena& arena) noexcept {
    const int64_t p = plan_.p, stride = (p + 15) & ~int64_t{15};
    states_ = arena.take<ThreadState<Real>>(threads_);
    own_pivot_ = arena.take<Real>(stride);
    for (int64_t t = 0; t < threads_; ++t) {
      ThreadState<Real> state = {};
      state.part.mean = arena.take<Real>(stride);
      for (int k = 0; k < orders_.raw - 1; ++k) state.part.raw[k] = arena.take<Real>(stride);
      for (int k = 0; k < orders_.central - 1; ++k) {
        state.part.central[k] = arena.take<Real>(stride);
      }
      state.work = {arena.take<Real>(4 * stride), stride, arena.take<Real>(stride),
                    arena.take<Real>(stride), arena.take<Real>(stride)};
      if (orders_.product) {
        int64_t square = 0;
        if (__builtin_mul_overflow(p, p, &square)) square = INT64_MAX;
        state.part.product = arena.take<Real>(square);
        int64_t copy = 0;
        if (__builtin_mul_overflow(chunk_, p, &copy)) copy = INT64_MAX;
        if (plan_.method != MomentsMethod::kFast) state.plain = arena.take<Real>(copy);
        if (weights_ != nullptr) state.weighted = arena.take<Real>(copy);
        state.packed = arena.take<char>(dense::kWorkspaceBytes);
      }
      if (states_ != nullptr) states_[t] = state;
    }
  }

  // Under kOnePass any number near the observations will do: means are kept as differences from
  // it, so that they lose nothing by being far from 0. Under kUserMean it is the caller's mean, or
  // 0 where nothing asked for is about one.
  void find_pivot() noexcept {
    pivot_ = own_pivot_;
    if (plan_.method != MomentsMethod::kOnePass) {
      const bool user = plan_.method == MomentsMethod::kUserMean;
      if (user && results_.raw(1) != nullptr) pivot_ = results_.raw(1);
      std::fill_n(own_pivot_, plan_.p, Real(0));
      return;
    }
    int64_t i = 0;
    while (weights_ != nullptr && i < plan_.n && weights_[i] == 0) ++i;
    const auto* x = static_cast<const Real*>(task_.observations);
    const auto* kept = static_cast<const Real*>(task_.accumulated_weight);
    const Real *mean = results_.raw(1), *sum = results_.raw_sum(1);
    const bool continues = kept != nullptr && kept[0] > 0 && (mean != nullptr || sum != nullptr);
    for (int64_t j = 0; j < plan_.p; ++j) {
      Real near = 0;
      if (continues) {
        near = mean != nullptr ? mean[j] : sum[j] / kept[0];
      } else if (i < plan_.n) {
        near = rows_ ? x[j * leading_ + i] : x[i * leading_ + j];
      }
      own_pivot_[j] = std::isfinite(near) ? near : 0;
    }
  }

  // ---- The sweep of a thread ----

  void sweep(int64_t t) noexcept {
    const int64_t share = plan_.n / threads_;
    int64_t first = t * share;
    const int64_t last = t == threads_ - 1 ? plan_.n : first + share;
    // Observations without weight at the front are not looked at; should all be, nothing changes.
    while (weights_ != nullptr && first < last && weights_[first] == 0) ++first;
    if (first == last) return;

    ThreadState<Real>& state = states_[t];
    MomentsPart<Real>& part = state.part;
    const bool sums = plan_.method != MomentsMethod::kOnePass;
    const bool raw_products = orders_.product && plan_.method == MomentsMethod::kFast;
    if (raw_products && part.weight > 0) {
      call_.syr('u', plan_.p, part.weight, part.mean, part.product, plan_.p);
    }
    if (sums) scale_averages(part, part.weight);
    for (int64_t i = first; i < last; i += chunk_) add(state, i, std::min(chunk_, last - i));
    if (sums && part.weight != 0) scale_averages(part, 1 / part.weight);
    if (raw_products) {
      call_.syr('u', plan_.p, -part.weight, part.mean, part.product, plan_.p);
    }
  }

  void scale_averages(const MomentsPart<Real>& part, Real factor) const noexcept {
    for (int64_t j = 0; j < plan_.p; ++j) part.mean[j] *= factor;
    for (Real* x : part.raw) {
      if (x == nullptr) continue;
      for (int64_t j = 0; j < plan_.p; ++j) x[j] *= factor;
    }
  }

  void add(ThreadState<Real>& state, int64_t i, int64_t count) noexcept {
    MomentsPart<Real>& part = state.part;
    MomentsBlock<Real> block = {};
    block.x = static_cast<const Real*>(task_.observations) + i * (rows_ ? 1 : leading_);
    block.leading = leading_;
    block.rows = rows_;
    block.observations = count;
    block.pivot = pivot_;
    block.weight = block.squared_weight = static_cast<Real>(count);
    if (weights_ != nullptr) {
      block.weights = weights_ + i;
      call_.sum_weights(block.weights, count, &block.weight, &block.squared_weight);
    }
    for (int64_t j = 0; next_variables(j, block); j = block.last) {
      call_.add_block(orders_, block, part, state.work);
    }
    if (orders_.product) {
      block.first = 0;
      block.last = plan_.p;
      add_products(state, block);
    }
    part.weight += block.weight;
    part.squared_weight += block.squared_weight;
  }

  // The next variables that count, from j on: in rows a run of selected ones, in columns all from
  // the first selected to the last one.
  bool next_variables(int64_t j, MomentsBlock<Real>& block) const noexcept {
    const int64_t p = plan_.p;
    if (task_.indices == nullptr || orders_.product) {
      block.first = j;
      block.last = p;
      return j < p;
    }
    while (j < p && !task_.selects(j)) ++j;
    block.first = j;
    if (rows_) {
      while (j < p && task_.selects(j)) ++j;
      block.last = j;
    } else {
      for (block.last = j; j < p; ++j) {
        if (task_.selects(j)) block.last = j + 1;
      }
    }
    return block.first < block.last;
  }

  // After the block's moments have joined the part's, and before its weight does.
  void add_products(ThreadState<Real>& state, const MomentsBlock<Real>& block) noexcept {
    const int64_t p = plan_.p, k = block.observations;
    const MomentsPart<Real>& part = state.part;
    const Real* plain = block.x;
    int64_t ld = block.leading, weighted_ld = rows_ ? k : p;
    if (plan_.method != MomentsMethod::kFast) {
      const Real* centre =
          plan_.method == MomentsMethod::kOnePass ? state.work.centre : block.pivot;
      call_.copy_block(block, centre, state.plain, state.weighted);
      plain = state.plain;
      ld = weighted_ld;
    } else if (weights_ != nullptr) {
      call_.copy_block(block, nullptr, nullptr, state.weighted);
    }
    // The triangle below the diagonal, seen by columns, is the upper one.
    if (weights_ == nullptr) {
      call_.syrk('u', rows_ ? 't' : 'n', p, k, 1, plain, ld, 1, part.product, p, state.packed);
    } else {
      call_.gemm(rows_ ? 't' : 'n', rows_ ? 'n' : 't', p, p, k, 1, plain, ld, state.weighted,
                 weighted_ld, 1, part.product, p, state.packed);
    }
    if (plan_.method == MomentsMethod::kOnePass) {
      call_.syr('u', p, -block.weight, state.work.residual, part.product, p);
      const Real whole = part.weight + block.weight;
      if (whole != 0) {
        call_.syr('u', p, part.weight * (block.weight / whole), state.work.difference, part.product,
                  p);
      }
    }
  }

  template <class Number>
  int32_t finish(const MomentsPart<Number>& part, Number* scratch) noexcept {
    const bool carries = Carried<Real>::wanted(task_, plan_, orders_);
    if (carries && !Carried<Real>::prepare(task_, plan_.p)) return RAU_SS_ERROR_MEM_FAILURE;
    const Weight<Real, Number> weight = {part.weight, part.squared_weight};
    write_moments(task_, plan_, part, pivot_);
    if (orders_.product) write_matrices(task_, plan_, weight, part.product, scratch);
    if (auto* kept = static_cast<Real*>(task_.accumulated_weight)) {
      kept[0] = static_cast<Real>(weight.w);
      kept[1] = static_cast<Real>(weight.v);
    }
    if (carries) Carried<Real>::leave(task_, plan_, orders_, part, pivot_);
    return RAU_STATUS_OK;
  }

  SsTask& task_;
  const MomentsPlan& plan_;
  const ResultArrays<Real> results_;
  const int statistics_class_;
  const Routines<Real> call_;
  const Real* const weights_;
  bool rows_;
  int64_t leading_;
  MomentsOrders orders_;
  int64_t chunk_;    // observations
  int64_t threads_;  // also parts
  ThreadState<Real>* states_;
  Real* own_pivot_;
  const Real* pivot_;
};

}  // namespace

template <class Real>
void merge_parts(int statistics_class, const MomentsOrders& orders, int64_t p, MomentsPart<Real>* a,
                 const MomentsPart<Real>& b, Real* difference) noexcept {
  if (b.weight == 0) return;
  const Routines<Real> call = routines_of<Real>(statistics_class);
  call.merge_moments(orders, p, *a, b, difference);
  const Real whole = a->weight + b.weight;
  if (orders.product) {
    for (int64_t j = 0; j < p; ++j) {
      for (int64_t k = 0; k <= j; ++k) a->product[j * p + k] += b.product[j * p + k];
    }
    if (orders.method != MomentsMethod::kUserMean) {
      call.syr('u', p, a->weight * (b.weight / whole), difference, a->product, p);
    }
  }
  a->weight = whole;
  a->squared_weight += b.squared_weight;
}

template void merge_parts<double>(int, const MomentsOrders&, int64_t, MomentsPart<double>*,
                                  const MomentsPart<double>&, double*) noexcept;
template void merge_parts<float>(int, const MomentsOrders&, int64_t, MomentsPart<float>*,
                                 const MomentsPart<float>&, float*) noexcept;

}  // namespace summary

template <class Real>
int32_t compute_moments(SsTask& task, uint64_t estimates, uint32_t method) noexcept {
  MomentsPlan plan;
  if (const int32_t bad = validate_moments(task, estimates, method, &plan)) return bad;
  if (plan.method == MomentsMethod::kConversion) return summary::convert<Real>(task, plan);
  return summary::Sweep<Real>(task, plan).run();
}

template int32_t compute_moments<double>(SsTask&, uint64_t, uint32_t) noexcept;
template int32_t compute_moments<float>(SsTask&, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
