#include "tests/accuracy/measure.h"

#include <algorithm>
#include <cstdio>

#include "tests/accuracy/sampling.h"

namespace orba::test {
namespace {

// Kernels that fill several cells of the row are measured once.
struct Contender {
  vector::KamKernel kernel;
  uint32_t accuracy;
  bool callout;
  bool flushes = true;  // when the mode says so
  Outcome kept{}, flushed{};
};

struct Report {
  int32_t index, code;
  bool operator==(const Report&) const = default;
};

template <class Type>
class Measurer {
 public:
  using Real = typename Type::Real;

  Measurer(const Subject& subject, const Limits& limits, const Oracle& oracle)
      : subject_(subject),
        limits_(limits),
        oracle_(oracle),
        evaluator_(oracle, limits.measure),
        parts_(subject.parts()),
        wide_(kWidens && oracle.wide != nullptr && subject.operands() == 1),
        exact_(kBatch * parts_),
        exact_flushed_(kBatch * parts_),
        results_(kBatch * parts_),
        flushed_inputs_{0, std::vector<Real>(kBatch * parts_), std::vector<Real>(kBatch * parts_)} {
  }

  // give(measurer) hands over the arguments, batch by batch.
  template <class Give>
  Measurement run(bool profile, Give&& give) {
    Measurement measurement;
    std::vector<size_t> contender_of;
    for (const Cell& cell : cells(subject_)) {
      measurement.all.push_back({cell, false, {}, {}});
      contender_of.push_back(enter(cell, subject_.kernel(cell.classes[0], cell.accuracy), false));
    }
    for (const int kernel_class : kCalloutClasses) {
      const vector::KamKernel callouts = callouts_of(subject_, kernel_class);
      if (callouts == nullptr) continue;
      measurement.all.push_back({{KAM_HA, {kernel_class}}, true, {}, {}});
      contender_of.push_back(enter(measurement.all.back().cell, callouts, true));
    }
    if (profile) {
      for (Profile* p : {&measurement.whole, &measurement.zoom}) {
        p->ha = p->la = p->ep = std::vector<double>(kProfileSlices, -1);
      }
      profiled_ = &measurement;
    }
    give(*this);
    for (Contender& contender : contenders_) {
      for (Outcome* outcome : {&contender.kept, &contender.flushed}) {
        flushed_ = outcome == &contender.flushed;
        if (wide_) settle(outcome->ulp, false), settle(outcome->relative, true);
        if (limits_.measure == Measure::kExact) outcome->relative = outcome->ulp;
      }
    }
    measurement.points = points_;
    for (size_t i = 0; i < contender_of.size(); ++i) {
      measurement.all[i].kept = contenders_[contender_of[i]].kept;
      measurement.all[i].flushed = contenders_[contender_of[i]].flushed;
    }
    return measurement;
  }

  void operator()(const Batch<Real>& batch) {
    find_exact_values(batch);
    points_ += batch.count;
    for (Contender& contender : contenders_) {
      try_on(batch, contender, false);
      try_on(batch, contender, true);
    }
  }

 private:
  static constexpr bool kWidens = std::is_same_v<Type, vector::Type_s>;
  static constexpr double kEpsilon = std::numeric_limits<Real>::epsilon();
  static constexpr Real kLowest = std::numeric_limits<Real>::min();

  size_t enter(const Cell& cell, vector::KamKernel kernel, bool callout) {
    for (size_t i = 0; i < contenders_.size(); ++i) {
      if (contenders_[i].kernel == kernel) return i;
    }
    const bool flushes = oracle_.denormals == Denormals::kByMode ||
                         (oracle_.denormals == Denormals::kByCaller && cell.classes[0] >= 2);
    contenders_.push_back({kernel, cell.accuracy, callout, flushes});
    return contenders_.size() - 1;
  }

  // The stand-in has found the place.
  void settle(Peak& peak, bool relative) {
    if constexpr (kWidens) {
      const double argument = peak.a[0];
      if (flushed_ && std::abs(argument) < kLowest) peak.a[0] = std::copysign(0.0, argument);
      remeasure(evaluator_, peak, relative);
      peak.a[0] = argument;
    }
  }

  // Those of the flushed arguments differ where there are denormal ones.
  void find_exact_values(const Batch<Real>& batch) {
    for (int i = 0; i < batch.count; ++i) {
      const int first = i * parts_;
      exact_value(batch, i, &exact_[first]);
      bool differs = false;
      for (int at = first; at < first + parts_; ++at) {
        const auto flush = [&](Real x) {
          const bool denormal = x != 0 && std::abs(x) < kLowest;
          differs |= denormal;
          return denormal ? std::copysign(Real{0}, x) : x;
        };
        flushed_inputs_.a[at] = flush(batch.a[at]);
        flushed_inputs_.b[at] = two() ? flush(batch.b[at]) : Real{0};
      }
      if (differs)
        exact_value(flushed_inputs_, i, &exact_flushed_[first]);
      else
        std::copy_n(&exact_[first], parts_, &exact_flushed_[first]);
    }
  }
  void exact_value(const Batch<Real>& batch, int i, Reference* references) {
    if constexpr (kWidens) {
      if (wide_) {
        *references = evaluator_.wide(batch.a[i]);
        return;
      }
    }
    evaluator_.exact(&batch.a[i * parts_], &batch.b[i * parts_], references);
  }

  void try_on(const Batch<Real>& batch, Contender& contender, bool flush) {
    std::fill(results_.begin(), results_.end(), static_cast<Real>(-0x1.234p+5));
    flushed_ = flush && contender.flushes;
    Outcome& outcome = flush ? contender.flushed : contender.kept;
    {
      const Recorder recorder(contender.accuracy |
                              (flush ? KAM_DENORMALS_FLUSH : KAM_DENORMALS_KEEP));
      call<Type>(subject_, contender.kernel, batch.count, batch.a.data(),
                 two() ? batch.b.data() : nullptr, results_.data());
      compare_reports(batch, contender, outcome);
    }
    if (!contender.callout) compare_without_errors(batch, contender, flush, outcome);
    const Reference* exact = flushed_ ? exact_flushed_.data() : exact_.data();
    for (int i = 0; i < batch.count * parts_; ++i) {
      if (!takes(contender, batch, i / parts_)) continue;
      const Reference& reference = exact[i];
      if (flushed_ && results_[i] == 0 && may_be_zero(results_[i], reference, contender.accuracy)) {
        continue;
      }
      const double error = error_of(results_[i], reference);
      if (error > outcome.ulp.error) keep(outcome.ulp, error, batch, i);
      // A unit is at most kEpsilon of the value, which spares most divisions.
      if ((error + 1) * kEpsilon <= outcome.relative.error) continue;
      const double relative = relative_error(error, results_[i], reference);
      if (relative > outcome.relative.error) keep(outcome.relative, relative, batch, i);
    }
    if (profiled_ != nullptr && !flush && !contender.callout) add_to_profiles(batch, contender);
  }

  // A value within the limit of the exact one is denormal.
  bool may_be_zero(Real zero, const Reference& reference, uint32_t accuracy) const {
    if (parts_ == 1 && std::signbit(zero) != std::signbit(reference.head)) return false;
    const double limit = limits_.limit(accuracy);
    const double slack = accuracy == KAM_EP ? limit * reference.size
                                            : limit / reference.scale[0] / reference.scale[1];
    return std::abs(reference.head) < static_cast<double>(kLowest) + slack;
  }

  double error_of(Real got, const Reference& reference) const {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    // Where the exact value is a zero of a real function, its sign is known.
    const bool zero = parts_ == 1 && got == 0 && reference.head == 0 && reference.tail == 0;
    if (zero && std::signbit(got) != std::signbit(reference.head)) return kInfinity;
    const double error = ulp_error(got, reference);
    if (limits_.measure != Measure::kExact) return error;
    return same_value(got, rounded<Real>(reference)) ? 0.0 : std::max(error, 1.0);
  }

  void keep(Peak& peak, double error, const Batch<Real>& batch, int at) {
    peak.error = error;
    const int first = at - at % parts_;
    const Reference* exact = flushed_ ? exact_flushed_.data() : exact_.data();
    for (int part = 0; part < parts_; ++part) {
      peak.a[part] = static_cast<double>(batch.a[first + part]);
      peak.b[part] = static_cast<double>(batch.b[first + part]);
      peak.got[part] = static_cast<double>(results_[first + part]);
      peak.wanted[part] = exact[first + part].head;
    }
  }

  Lane lane_of(const Contender& contender, const Batch<Real>& inputs, int i) const {
    Lane lane{};
    const Reference& reference = (flushed_ ? exact_flushed_ : exact_)[i * parts_];
    lane.underflow = underflows(reference);
    lane.accuracy = contender.accuracy;
    lane.single = sizeof(Real) == 4;
    for (int part = 0; part < parts_; ++part) {
      lane.a[part] = static_cast<double>(inputs.a[i * parts_ + part]);
      if (two()) lane.b[part] = static_cast<double>(inputs.b[i * parts_ + part]);
      lane.overflow |= std::isinf(results_[i * parts_ + part]);
    }
    return lane;
  }
  // Below the normal numbers as rounded to the precision of a double: half a unit there is a quarter of
  // one here.
  static bool underflows(const Reference& reference) {
    const double size = std::abs(reference.head);
    const double tail = std::copysign(1.0, reference.head) * reference.tail;
    return size < kLowest || (size == kLowest && tail < -0.25);
  }
  bool takes(const Contender& contender, const Batch<Real>& batch, int i) const {
    return !contender.callout || oracle_.callout_takes == nullptr ||
           oracle_.callout_takes(lane_of(contender, batch, i));
  }

  void compare_reports(const Batch<Real>& batch, const Contender& contender, Outcome& outcome) {
    expected_.clear();
    const Batch<Real>& inputs = flushed_ ? flushed_inputs_ : batch;
    for (int i = 0; i < batch.count; ++i) {
      const int code = oracle_.status(lane_of(contender, inputs, i));
      if (code != KAM_STATUS_OK && takes(contender, batch, i)) expected_.push_back({i, code});
    }
    std::vector<KamErrorContext>& seen = Recorder::reports();
    std::erase_if(seen, [&](const auto& got) { return !takes(contender, batch, got.index); });
    const auto same = [](const Report& want, const KamErrorContext& got) {
      return want.index == got.index && want.code == got.code;
    };
    if (std::equal(expected_.begin(), expected_.end(), seen.begin(), seen.end(), same)) return;
    ++outcome.wrong_reports;
    if (!outcome.first_wrong_report.empty()) return;
    const auto [want, got] =
        std::mismatch(expected_.begin(), expected_.end(), seen.begin(), seen.end(), same);
    const int want_at = want != expected_.end() ? want->index : batch.count;
    const int got_at = got != seen.end() ? got->index : batch.count;
    Peak where;
    keep(where, 0, batch, std::min(want_at, got_at) * parts_);
    outcome.first_wrong_report = describe(subject_, where) + " expected status " +
                                 std::to_string(want_at <= got_at ? want->code : KAM_STATUS_OK) +
                                 ", reported " +
                                 std::to_string(got_at <= want_at ? got->code : KAM_STATUS_OK);
  }

  // Without error handling some functions take shorter roads: to the same results.
  void compare_without_errors(const Batch<Real>& batch, const Contender& contender, bool flush,
                              Outcome& outcome) {
    const WordsScope words(contender.accuracy | KAM_ERRMODE_NOERR |
                           (flush ? KAM_DENORMALS_FLUSH : KAM_DENORMALS_KEEP));
    std::vector<Real> with = results_;
    call<Type>(subject_, contender.kernel, batch.count, batch.a.data(), batch.b.data(),
               results_.data());
    const auto end = results_.begin() + batch.count * parts_;
    const auto other = std::mismatch(results_.begin(), end, with.begin(), same_value<Real>).first;
    if (other != end || vector::status() != KAM_STATUS_OK) {
      Peak where;
      keep(where, 0, batch, static_cast<int>(std::min(other, end - 1) - results_.begin()));
      if (outcome.wrong_reports++ == 0) {
        outcome.first_wrong_report = describe(subject_, where) + " without error handling";
      }
    }
    results_.swap(with);
  }

  // Place of an element on the axis of the plot, and on that of its zoom panel: 0 to 1, or outside.
  double place(const Batch<Real>& batch, int i) const {
    double x = static_cast<double>(batch.a[i * parts_]);
    if (limits_.plot.axis == Axis::kResultBinade) {
      x = 0;
      for (int part = 0; part < parts_; ++part) {
        x = std::max(x, std::abs(exact_[i * parts_ + part].head));
      }
    }
    if (limits_.plot.axis != Axis::kArgument) x = std::log2(x);
    return (x - limits_.plot.low) / (limits_.plot.high - limits_.plot.low);
  }
  double zoom_place(const Batch<Real>& batch, int i) const {
    if (!limits_.plot.zoom) return -1;
    const double distance = static_cast<double>(batch.a[i * parts_]) - *limits_.plot.zoom;
    const double share = 1 - std::log2(std::abs(distance)) / limits_.zoom_low();
    return share >= 0 ? 0.5 + std::copysign(share / 2, distance) : -1;
  }

  void add_to_profiles(const Batch<Real>& batch, const Contender& contender) {
    const int newest = live_classes().back();
    for (const uint32_t accuracy : kAccuracies) {
      if (subject_.kernel(newest, accuracy) != contender.kernel) continue;
      for (int i = 0; i < batch.count * parts_; ++i) {
        const double units = error_of(results_[i], exact_[i]);
        const double error =
            accuracy == KAM_EP ? relative_error(units, results_[i], exact_[i]) : units;
        const auto add = [&](Profile& profile, double at) {
          if (!(at >= 0 && at < 1)) return;
          double& slice = profile.of(accuracy)[static_cast<int>(at * kProfileSlices)];
          slice = std::max(slice, error);
        };
        add(profiled_->whole, place(batch, i / parts_));
        add(profiled_->zoom, zoom_place(batch, i / parts_));
      }
    }
  }

  bool two() const { return subject_.operands() == 2; }

  const Subject& subject_;
  const Limits& limits_;
  const Oracle& oracle_;
  Evaluator evaluator_;
  const int parts_;
  const bool wide_;
  bool flushed_ = false;  // the results at hand are of flushed arguments
  int64_t points_ = 0;
  Measurement* profiled_ = nullptr;
  std::vector<Contender> contenders_;
  std::vector<Reference> exact_, exact_flushed_;
  std::vector<Real> results_;
  Batch<Real> flushed_inputs_;
  std::vector<Report> expected_;
};

std::string number(const Subject& subject, const double* parts) {
  char text[80];
  if (subject.parts() == 2) {
    std::snprintf(text, sizeof text, "(%a, %a)", parts[0], parts[1]);
  } else {
    std::snprintf(text, sizeof text, "%a", parts[0]);
  }
  return text;
}

}  // namespace

Measurement measure(const Subject& subject, const Limits& limits, const Oracle& oracle,
                    int64_t points, bool profile) {
  return with_type(subject, [&]<class Type>(Type) {
    return Measurer<Type>(subject, limits, oracle).run(profile, [&](auto& measurer) {
      Sampler<typename Type::Real, Measurer<Type>>(limits, subject, measurer).run(points);
    });
  });
}

Measurement measure_at(const Subject& subject, const Limits& limits, const Oracle& oracle,
                       const std::vector<std::array<double, 2>>& arguments) {
  return with_type(subject, [&]<class Type>(Type) {
    using Real = typename Type::Real;
    return Measurer<Type>(subject, limits, oracle).run(false, [&](auto& measurer) {
      Batch<Real> batch;
      batch.a.resize(kBatch), batch.b.resize(kBatch);
      for (const auto& [a, b] : arguments) {
        batch.a[batch.count] = static_cast<Real>(a);
        batch.b[batch.count] = static_cast<Real>(b);
        if (++batch.count < kBatch && &b != &arguments.back()[1]) continue;
        measurer(batch);
        batch.count = 0;
      }
    });
  });
}

void remeasure(Evaluator& evaluator, Peak& peak, bool relative) {
  if (peak.error == 0 || std::isinf(peak.error)) return;
  const auto a = static_cast<float>(peak.a[0]), got = static_cast<float>(peak.got[0]);
  Reference reference;
  evaluator.exact(&a, &a, &reference);
  const double units = ulp_error(got, reference);
  peak.error = relative ? relative_error(units, got, reference) : units;
  peak.wanted[0] = reference.head;
}

std::string arguments(const Subject& subject, const Peak& peak) {
  std::string text = number(subject, peak.a);
  if (subject.operands() == 2) text += ", " + number(subject, peak.b);
  return text;
}

std::string describe(const Subject& subject, const Peak& peak) {
  return subject.name() + "(" + arguments(subject, peak) + ") = " + number(subject, peak.got) +
         ", exactly " + number(subject, peak.wanted);
}

}  // namespace orba::test
