// Measures every kernel of the function table, the exported calls, and the kernels' peers.
//
//   vdExp/class:5/acc:LA/n:1000            a kernel, called through its row
//   vdExp/class:0/acc:LA_HA_EP/n:1000      one that three accuracies share
//   vdExp/class:5/acc:LA/special:1/n:1000  the same with 1 % of special arguments among the others
//   vdExp/call/acc:LA/n:8                  the exported function, as an application calls it
//   vdExp/peer:sleef_u10/class:5/n:1000    a peer at the vector width of the class; special too
//
// --benchmark_filter=REGEX picks a subset. Counters: tsc_per_element, ticks of the time-stamp
// counter per element in the fastest batch of calls (other load on the machine slows some batches,
// hardly ever all); max_ulp (at n = 1000), the largest error over kSample arguments.
#include <benchmark/benchmark.h>
#include <gnu/libc-version.h>
#include <x86intrin.h>

#include <algorithm>
#include <any>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "bench/peers/sink.h"
#include "bench/reference.h"
#include "bench/tsc_frequency.h"
#include "services/detect/detect.h"
#include "vector/frame/rows.h"
#include "vector/words/shapes.h"

#if ORBA_BENCH_SLEEF
#  include <sleef.h>
#endif
#if ORBA_BENCH_XSIMD
#  include <xsimd/config/xsimd_config.hpp>
#endif

#define ORBA_BENCH_PEERS(kernel_class, entry) extern "C" void entry(orba::bench::PeerSink);
#include "peer_list.def"
#undef ORBA_BENCH_PEERS

namespace orba::bench {
namespace {

constexpr int kLengths[] = {8, 100, 1000, 100000};
constexpr int kCallLengths[] = {1, 4, 8, 100, 1000, 100000};
constexpr int kSpecialPercents[] = {1, 10};
constexpr int kBatch = 100000;  // elements in a batch of calls that is timed as one
constexpr int kMainLength =
    1000;  // the length whose run also reports the error, or has special lanes
constexpr int kSample = 200000;  // arguments of an error measurement; no length is above it

struct Peer {
  std::string function;
  std::string name;
  int kernel_class;
  vector::KamKernel entry;
};

bool live(int kernel_class) { return kernel_class <= services::kam_class() && kernel_class != 4; }

// All peers that this machine can run.
const std::vector<Peer>& peers() {
  static std::vector<Peer> all;
  static int current_class;
  if (all.empty()) {
    const PeerSink sink = [](const char* function, const char* peer, vector::KamKernel entry) {
      all.push_back({function, peer, current_class, entry});
    };
#define ORBA_BENCH_PEERS(kernel_class, entry) \
  if (current_class = kernel_class; live(kernel_class)) entry(sink);
#include "peer_list.def"
#undef ORBA_BENCH_PEERS
  }
  return all;
}

// Array of kSample elements. Arrays begin at different offsets within a page, as a store would else
// hold up the loads from the same offset of another page.
template <class E>
class Array {
 public:
  explicit Array(int stagger)
      : page_(static_cast<std::byte*>(std::aligned_alloc(kPage, round_up(sizeof(E) * kSample))),
              std::free),
        elements_(reinterpret_cast<E*>(page_.get() + stagger * kStagger)) {}
  E* data() { return elements_; }
  E& operator[](int i) { return elements_[i]; }

 private:
  static constexpr size_t kPage = 4096;
  static constexpr size_t kStagger = 13 * 64;
  static size_t round_up(size_t bytes) { return (bytes / kPage + 2) * kPage; }

  std::shared_ptr<std::byte> page_;
  E* elements_;
};

// Arguments: half of them uniform, the other half of uniform binary exponent, so that the small
// ones are among them. Timed runs take the first ones, which are uniform.
class Source {
 public:
  Source(double low, double high) : low_(low), high_(high) {}

  void next(int index, float& x) { x = static_cast<float>(real(index)); }
  void next(int index, double& x) { x = real(index); }
  template <class Complex>
  void next(int index, Complex& x) {
    next(index, x.real);
    next(index, x.imag);
  }

 private:
  double unit() { return std::ldexp(static_cast<double>(engine_() >> 11), -53); }
  double real(int index) {
    if (index >= kSample / 2) {
      double x = std::max(-low_, high_) * std::exp2(-40 * unit());
      if (low_ < 0 && unit() < 0.5) x = -x;
      if (low_ <= x && x <= high_) return x;
    }
    return low_ + (high_ - low_) * unit();
  }

  double low_, high_;
  std::mt19937_64 engine_{20231105};
};

// The arrays of one function and the exact results of its sample.
template <class Case, class Signature>
struct Workload;
template <class Case, class... P>
struct Workload<Case, void(int32_t, P...)> {
  template <bool input>
  struct ElementOf {  // element type of the first input or output array
    template <class First, class... Rest>
    static auto find() {
      using Pointee = std::remove_pointer_t<First>;
      if constexpr (std::is_pointer_v<First> && std::is_const_v<Pointee> == input) {
        return std::remove_const_t<Pointee>();
      } else {
        return find<Rest...>();
      }
    }
  };
  using In = decltype(ElementOf<true>::template find<P...>());
  using Out = decltype(ElementOf<false>::template find<P...>());

  static constexpr bool kScalar = (std::is_same_v<P, In> || ...);

  Array<In> in[2] = {Array<In>(0), Array<In>(1)};
  int percent = 0;  // of special arguments at present
  Array<Out> out[2] = {Array<Out>(2), Array<Out>(3)};
  std::vector<ExactValue> exact;

  Workload() {
    Source source(Case::kLow, Case::kHigh);
    exact.reserve(kSample);
    for (int i = 0; i < kSample; ++i) {
      source.next(i, in[0][i]);
      source.next(i, in[1][i]);
      if (kScalar) in[1][i] = in[1][0];
      exact.push_back(
          ExactValue::of(Case::at(exact::widen(in[0][i]), exact::widen(in[1][i])), Out()));
    }
  }

  // Puts the function's special argument, in the last input, at that many percent of the places of
  // a run of the main length; at 0 percent the ordinary ones are back.
  void mix(int wanted) {
    if (wanted == percent) return;
    constexpr int last =
        std::is_same_v<
            std::tuple_element_t<std::min<size_t>(1, sizeof...(P) - 1), std::tuple<P...>>,
            const In*>
            ? 1
            : 0;
    if (ordinary_.empty()) ordinary_.assign(in[last].data(), in[last].data() + kMainLength);
    std::copy(ordinary_.begin(), ordinary_.end(), in[last].data());
    std::mt19937_64 engine{7};
    for (int i = 0; i < kMainLength; ++i) {
      if (static_cast<int>(engine() % 100) < wanted) in[last][i] = special();
    }
    percent = wanted;
  }

  // The arguments that follow the count, in order: arrays as they come, the last input's first
  // element for every scalar.
  std::tuple<P...> arguments() {
    int inputs = 0, outputs = 0;
    return std::tuple<P...>{argument<P>(inputs, outputs)...};
  }

  template <class Function>
  double max_ulp(Function* function) {
    std::apply([&](P... rest) { function(kSample, rest...); }, arguments());
    double largest = 0;
    for (int i = 0; i < kSample; ++i) {
      const double ulps = exact[i].distance(out[0][i]);
      if (!(ulps <= largest)) largest = ulps;  // NaN stays
    }
    return largest;
  }

 private:
  static In special() {
    if constexpr (std::is_floating_point_v<In>) {
      return static_cast<In>(Case::special(In()));
    } else {
      return {Case::special(decltype(In::real)()), 1};
    }
  }

  template <class Parameter>
  Parameter argument(int& inputs, int& outputs) {
    if constexpr (!std::is_pointer_v<Parameter>) {
      return Parameter(in[1][0]);
    } else if constexpr (std::is_const_v<std::remove_pointer_t<Parameter>>) {
      return in[inputs++].data();
    } else {
      return out[outputs++].data();
    }
  }

  std::vector<In> ordinary_;
};

// The workload in use. Functions are measured one after the other, so one is enough.
std::any current_workload;

// One function to measure: a kernel, an exported call or a peer.
template <class Case, class Signature>
class Candidate {
 public:
  Candidate(Signature* function, uint32_t mode, int n, bool with_error, int special_percent = 0)
      : function_(function),
        mode_(mode),
        n_(n),
        with_error_(with_error),
        special_percent_(special_percent) {}

  void operator()(benchmark::State& state) {
    Workload<Case, Signature>& workload = load();
    workload.mix(special_percent_);
    kamSetMode(mode_);
    kamClearErrStatus();
    const auto arguments = workload.arguments();
    const int batch = std::max(1, kBatch / n_);
    uint64_t fastest = UINT64_MAX;
    while (state.KeepRunningBatch(batch)) {
      const uint64_t begin = __rdtsc();
      for (int call = 0; call < batch; ++call) {
        std::apply([&](auto... rest) { function_(n_, rest...); }, arguments);
        benchmark::ClobberMemory();
      }
      fastest = std::min<uint64_t>(fastest, __rdtsc() - begin);
    }
    state.counters["tsc_per_element"] = static_cast<double>(fastest) / (1.0 * batch * n_);
    if (with_error_) {
      if (!max_ulp_) max_ulp_ = workload.max_ulp(function_);
      state.counters["max_ulp"] = *max_ulp_;
    }
    const int status = kamGetErrStatus();
    if (special_percent_ == 0 && status != KAM_STATUS_OK && status != KAM_STATUS_ACCURACYWARNING) {
      state.SkipWithError("an argument was reported as an error");
    }
  }

 private:
  static Workload<Case, Signature>& load() {
    auto* workload = std::any_cast<Workload<Case, Signature>>(&current_workload);
    return workload != nullptr ? *workload : current_workload.emplace<Workload<Case, Signature>>();
  }

  Signature* function_;
  uint32_t mode_;
  int n_;
  bool with_error_;
  int special_percent_;
  std::optional<double> max_ulp_;
};

constexpr const char* kAccuracyNames[] = {"LA", "HA", "EP"};

// Registers everything that is measured of one function and type.
template <class Case, class Signature>
void add_function(const std::string& function, const vector::KamKernelRow& row,
                  Signature* exported) {
  const auto add = [&](const std::string& what, int n, Candidate<Case, Signature> candidate) {
    benchmark::RegisterBenchmark((function + what + "/n:" + std::to_string(n)).c_str(), candidate);
  };
  const auto add_lengths = [&](const std::string& what, Signature* entry) {
    for (const int n : kLengths) add(what, n, {entry, KAM_HA, n, n == kMainLength});
    if constexpr (Case::kHasSpecial) {
      for (const int percent : kSpecialPercents) {
        add(what + "/special:" + std::to_string(percent), kMainLength,
            {entry, KAM_HA | KAM_ERRMODE_IGNORE, kMainLength, false, percent});
      }
    }
  };

  for (int kernel_class = 0; kernel_class < vector::kClassCount; ++kernel_class) {
    if (!live(kernel_class)) continue;
    const std::string class_part = "/class:" + std::to_string(kernel_class);
    std::vector<std::pair<vector::KamKernel, std::string>>
        kernels;  // with the accuracies they serve
    for (const uint32_t mode : {KAM_LA, KAM_HA, KAM_EP}) {
      const vector::KamKernel kernel = row.kernel[vector::row_index(kernel_class, mode)];
      const std::string accuracy = kAccuracyNames[mode - KAM_LA];
      const auto same = std::find_if(kernels.begin(), kernels.end(),
                                     [&](const auto& known) { return known.first == kernel; });
      if (same != kernels.end()) {
        same->second += "_" + accuracy;
      } else {
        kernels.emplace_back(kernel, accuracy);
      }
    }
    for (const auto& [kernel, accuracies] : kernels) {
      add_lengths(class_part + "/acc:" + accuracies, reinterpret_cast<Signature*>(kernel));
    }
    for (const Peer& peer : peers()) {
      if (peer.function == function && peer.kernel_class == kernel_class) {
        add_lengths("/peer:" + peer.name + class_part, reinterpret_cast<Signature*>(peer.entry));
      }
    }
  }
  for (const uint32_t mode : {KAM_LA, KAM_HA, KAM_EP}) {
    for (const int n : kCallLengths) {
      add(std::string("/call/acc:") + kAccuracyNames[mode - KAM_LA], n, {exported, mode, n, false});
    }
  }
}

// Pack and unpack: every second element, a random mask of a half, a random order within runs of 1000.
// Masks go on from call to call: a processor would learn by heart the branches of a loop over the same
// thousand entries.
template <class Element, class Signature>
struct Packing;
template <class Element, class... P>
struct Packing<Element, void(int32_t, P...)> {
  static constexpr int32_t kIncrement = 2;
  Array<Element> in = Array<Element>(0), out = Array<Element>(1);
  Array<int32_t> entries = Array<int32_t>(2);

  explicit Packing(bool mask) {
    std::mt19937_64 engine{11};
    for (int i = 0; i < kSample; ++i) {
      in[i] = out[i] = {};
      entries[i] = mask ? static_cast<int32_t>(engine() & 1) : i;
    }
    for (int i = 0; i < kSample && !mask; i += 1000) {
      std::shuffle(&entries[i], &entries[i] + 1000, engine);
    }
  }
  template <class Parameter>
  Parameter argument(int first) {
    if constexpr (!std::is_pointer_v<Parameter>)
      return kIncrement;
    else if constexpr (std::is_same_v<Parameter, const int32_t*>)
      return entries.data() + first;
    else if constexpr (std::is_const_v<std::remove_pointer_t<Parameter>>)
      return in.data();
    else
      return out.data();
  }
  void operator()(benchmark::State& state, void (*function)(int32_t, P...), int n, bool mask) {
    const int batch = std::max(1, kBatch / n);
    uint64_t fastest = UINT64_MAX;
    int first = 0;
    while (state.KeepRunningBatch(batch)) {
      const uint64_t begin = __rdtsc();
      for (int call = 0; call < batch; ++call) {
        function(n, argument<P>(first)...);
        benchmark::ClobberMemory();
        if (mask) first = first + 2 * n <= kSample ? first + n : 0;
      }
      fastest = std::min<uint64_t>(fastest, __rdtsc() - begin);
    }
    state.counters["tsc_per_element"] = static_cast<double>(fastest) / (1.0 * batch * n);
  }
};

template <class Element, class Signature>
void add_packing(const std::string& function, const vector::KamKernelRow& row) {
  const bool mask = function.back() == 'M';
  const auto add = [&](const std::string& what, vector::KamKernel entry) {
    for (const int n : kLengths) {
      benchmark::RegisterBenchmark((function + what + "/n:" + std::to_string(n)).c_str(),
                                   [=](benchmark::State& state) {
                                     Packing<Element, Signature> packing(mask);
                                     packing(state, reinterpret_cast<Signature*>(entry), n, mask);
                                   });
    }
  };
  for (int kernel_class = 0; kernel_class < vector::kClassCount; ++kernel_class) {
    if (!live(kernel_class)) continue;
    const std::string class_part = "/class:" + std::to_string(kernel_class);
    add(class_part + "/acc:LA_HA_EP", row.kernel[vector::row_index(kernel_class, KAM_HA)]);
    for (const Peer& peer : peers()) {
      if (peer.function == function && peer.kernel_class == kernel_class)
        add("/peer:" + peer.name + class_part, peer.entry);
    }
  }
}

void add_all_functions() {
#define ORBA_BENCH_threaded(t, Name, shape)                                                        \
  add_function<exact::Case_##Name, ORBA_SIGNATURE(shape, t)>("v" #t #Name, vector::row_v##t##Name, \
                                                             v##t##Name);
#define ORBA_BENCH_warning ORBA_BENCH_threaded
#define ORBA_BENCH_lean(t, Name, shape)                                          \
  add_packing<vector::Type_##t::Element, ORBA_SIGNATURE(shape, t)>("v" #t #Name, \
                                                                   vector::row_v##t##Name);
#define ORBA_BENCH_FUNCTION(t, Name, shape, call) ORBA_BENCH_##call(t, Name, shape)
#define ORBA_KAM_FUNCTION(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_BENCH_FUNCTION, Name, shape, call)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
#undef ORBA_BENCH_FUNCTION
#undef ORBA_BENCH_threaded
#undef ORBA_BENCH_warning
#undef ORBA_BENCH_lean
}

// What a reader of the results must know about the run.
void describe_run() {
  std::string libraries = std::string("glibc ") + gnu_get_libc_version();
#if ORBA_BENCH_SLEEF
  libraries += ", SLEEF " + std::to_string(SLEEF_VERSION_MAJOR) + "." +
               std::to_string(SLEEF_VERSION_MINOR) + "." + std::to_string(SLEEF_VERSION_PATCHLEVEL);
#endif
#if ORBA_BENCH_XSIMD
  libraries += ", xsimd " + std::to_string(XSIMD_VERSION_MAJOR) + "." +
               std::to_string(XSIMD_VERSION_MINOR) + "." + std::to_string(XSIMD_VERSION_PATCH);
#endif
  benchmark::AddCustomContext("compiler", ORBA_BENCH_COMPILERS);
  benchmark::AddCustomContext("libraries", libraries);
  benchmark::AddCustomContext("tsc_hz", std::to_string(tsc_frequency()));
  benchmark::AddCustomContext("kernel_class", std::to_string(services::kam_class()));
  benchmark::AddCustomContext("error_sample", std::to_string(kSample));
}

}  // namespace
}  // namespace orba::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  orba::bench::describe_run();
  orba::bench::add_all_functions();
  return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
