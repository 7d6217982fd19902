// All 2^32 single-precision arguments of a function of one input.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>

#include "tools/accuracy/exhaustive.h"

namespace orba::test {
namespace {

constexpr int kChunk = 1 << 12;
constexpr int kCodes = KAM_STATUS_UNDERFLOW + 1;
using Counts = std::array<int, kCodes>;

// A chunk of neighbouring arguments with what is expected of them.
struct Chunk {
  std::array<float, kChunk> a;
  std::array<double, kChunk> exact;
  Counts reports;
  bool alike;  // all in error, with one result

  // Where both ends call for the same status all elements between them do.
  void fill(uint32_t index, const Oracle& oracle) {
    for (int i = 0; i < kChunk; ++i) {
      a[i] = std::bit_cast<float>(index * kChunk + i);
      exact[i] = oracle.wide(static_cast<double>(a[i]));
    }
    reports = {};
    const int first = status(0, oracle), last = status(kChunk - 1, oracle);
    reports[first] = kChunk;
    for (int i = 0; first != last && i < kChunk; ++i)
      --reports[first], ++reports[status(i, oracle)];
    alike = reports[0] == 0 &&
            same_value(static_cast<float>(exact[0]), static_cast<float>(exact[kChunk - 1]));
  }

 private:
  int status(int i, const Oracle& oracle) const {
    Lane lane{};
    lane.single = true;
    lane.a[0] = static_cast<double>(a[i]);
    lane.overflow = std::isinf(static_cast<float>(exact[i]));
    return oracle.status(lane);
  }
};

// Is a result off by more than `peak` units (times its size at EP)? Those around the largest number
// are called so too.
__attribute__((target("avx2"))) bool exceeds(const float* got, const double* exact, bool relative,
                                             double peak) {
  using Floats [[gnu::vector_size(16)]] = float;
  using Doubles [[gnu::vector_size(32)]] = double;
  using Bits [[gnu::vector_size(32)]] = int64_t;
  constexpr double kLowest = std::numeric_limits<float>::min();
  Bits exceeding = {};
  for (int i = 0; i < kChunk; i += 4) {
    Floats narrow;
    Doubles e;
    std::memcpy(&narrow, got + i, sizeof narrow);
    std::memcpy(&e, exact + i, sizeof e);
    const Doubles g = __builtin_convertvector(narrow, Doubles);
    const auto size = (Doubles)((Bits)e & INT64_MAX);
    const auto error = (Doubles)((Bits)(g - e) & INT64_MAX);
    Doubles unit = relative ? size : (Doubles)((Bits)e & (INT64_MAX << 52 & INT64_MAX));
    unit = (unit > kLowest ? unit : unit - unit + kLowest) * (relative ? 1 : 0x1p-23);
    exceeding |= ~((error <= peak * unit) | ((g != g) & (e != e)) | (g == e) |
                   ((g > 0x1p128) & (e > 0x1p128)));
  }
  return (exceeding[0] | exceeding[1] | exceeding[2] | exceeding[3]) != 0;
}

class Search {
 public:
  Search(const Subject& subject, const Oracle& oracle) : subject_(subject), oracle_(oracle) {}

  // A kernel, how its errors count, and the worst that it did.
  struct Contender {
    vector::KamKernel kernel;
    uint32_t accuracy;
    bool relative;
    Peak peak{};
    int64_t wrong_reports = 0;
    float first_wrong = 0;
  };

  void run(std::vector<Contender>& contenders) {
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i) {
      threads.emplace_back([&] { work(contenders); });
    }
    work(contenders);
    for (std::thread& thread : threads) thread.join();
  }

 private:
  static constexpr uint32_t kChunks = 1U << 20, kStride = 256;

  void work(std::vector<Contender>& shared) {
    std::vector<Contender> mine = shared;
    Chunk chunk;
    std::array<float, kChunk> results;
    for (uint32_t first; (first = next_.fetch_add(kStride)) < kChunks;) {
      for (uint32_t index = first; index < first + kStride; ++index) {
        chunk.fill(index, oracle_);
        for (size_t i = 0; i < mine.size(); ++i) {
          if (chunk.alike && index % mine.size() != i) continue;
          try_on(mine[i], chunk, chunk.reports[0] == 0 && index / mine.size() % 16 != 0, results);
        }
      }
    }
    const std::lock_guard lock(mutex_);
    for (size_t i = 0; i < mine.size(); ++i) {
      if (mine[i].peak.error > shared[i].peak.error) shared[i].peak = mine[i].peak;
      if (shared[i].wrong_reports == 0) shared[i].first_wrong = mine[i].first_wrong;
      shared[i].wrong_reports += mine[i].wrong_reports;
    }
  }

  // Errors cost far more than results. Where a chunk is nothing but one of them, the contenders take
  // turns; such reports are counted in every 16th chunk, all others in all.
  void try_on(Contender& contender, const Chunk& chunk, bool uncounted,
              std::array<float, kChunk>& results) {
    const WordsScope words(
        contender.accuracy | (uncounted ? KAM_ERRMODE_NOERR : KAM_ERRMODE_CALLBACK),
        uncounted ? nullptr : &count);
    counted() = {};
    const float* const no_second = nullptr;
    call<vector::Type_s>(subject_, contender.kernel, kChunk, chunk.a.data(), no_second,
                         results.data());
    if (exceeds(results.data(), chunk.exact.data(), contender.relative, contender.peak.error)) {
      for (int i = 0; i < kChunk; ++i) weigh(contender, chunk, i, results[i]);
    }
    if (!uncounted &&
        !std::equal(counted().begin() + 1, counted().end(), chunk.reports.begin() + 1)) {
      if (contender.wrong_reports++ == 0) contender.first_wrong = chunk.a[0];
    }
  }

  static void weigh(Contender& contender, const Chunk& chunk, int i, float got) {
    const Reference reference = wide_reference(chunk.exact[i]);
    const double units = ulp_error(got, reference);
    const double error = contender.relative ? relative_error(units, got, reference) : units;
    if (!(error > contender.peak.error)) return;
    Peak& peak = contender.peak;
    peak.error = error;
    peak.a[0] = static_cast<double>(chunk.a[i]);
    peak.got[0] = static_cast<double>(got);
  }

  static Counts& counted() {
    thread_local Counts counts;
    return counts;
  }
  static int count(KamErrorContext* context) {
    ++counted()[context->code];
    return 1;
  }

  const Subject& subject_;
  const Oracle& oracle_;
  std::atomic<uint32_t> next_{0};
  std::mutex mutex_;
};

}  // namespace

bool has_exhaustive(const Subject& subject, const Limits& limits, const Oracle& oracle) {
  return subject.type == 's' && subject.operands() == 1 && oracle.wide != nullptr &&
         limits.measure != Measure::kExact && live_classes().back() >= 3;
}

void measure_exhaustively(const Subject& subject, const Limits& limits, const Oracle& oracle,
                          Measurement& measurement) {
  std::vector<Search::Contender> contenders;
  std::vector<std::pair<Measured*, size_t>> entries;
  for (Measured& measured : measurement.all) {
    const uint32_t accuracy = measured.cell.accuracy;
    if (measured.cell.classes.back() < 3 || measured.callout) continue;
    const vector::KamKernel kernel = subject.kernel(measured.cell.classes.back(), accuracy);
    const bool relative = accuracy == KAM_EP;
    size_t at = 0;
    while (at < contenders.size() &&
           (contenders[at].kernel != kernel || contenders[at].relative != relative)) {
      ++at;
    }
    if (at == contenders.size()) contenders.push_back({kernel, accuracy, relative});
    entries.emplace_back(&measured, at);
  }
  Search(subject, oracle).run(contenders);
  Evaluator evaluator(oracle, limits.measure);
  for (auto& contender : contenders) remeasure(evaluator, contender.peak, contender.relative);
  for (const auto& [measured, at] : entries) {
    const Search::Contender& contender = contenders[at];
    Outcome& outcome = measured->kept;
    Peak& known = contender.relative ? outcome.relative : outcome.ulp;
    if (contender.peak.error > known.error) known = contender.peak;
    if (contender.wrong_reports > 0 && outcome.wrong_reports == 0) {
      outcome.first_wrong_report =
          "among the 4096 from " + std::to_string(contender.first_wrong) + " on";
    }
    outcome.wrong_reports += contender.wrong_reports;
  }
  measurement.exhaustive = true;
}

}  // namespace orba::test
