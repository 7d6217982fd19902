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
  bool newest = false;
  Outcome outcome{};
  std::vector<double>* profile = nullptr;
};

struct Report {
  int32_t index, code;
  bool operator==(const Report&) const = default;
};

template <class Type>
class Measurer {
 public:
  using Real = typename Type::Real;

  Measurer(const Subject& subject, const Limits& limits, const Oracle& oracle, const Plan& plan)
      : subject_(subject),
        limits_(limits),
        oracle_(oracle),
        plan_(plan),
        evaluator_(oracle, limits.measure),
        parts_(subject.parts()),
        wide_(kWidens && oracle.wide != nullptr && subject.operands() == 1),
        references_(kBatch * parts_),
        results_(kBatch * parts_),
        slices_(kBatch) {}

  Measurement run() {
    Measurement measurement;
    find_contenders(measurement.profile);
    Sampler<Real, Measurer> sampler(limits_, parts_, subject_.operands(), *this);
    sampler.run(plan_.points);
    if constexpr (kWidens) {
      if (plan_.exhaustive && wide_) {
        newest_only_ = measurement.exhaustive = true;
        profile_ = nullptr;
        sampler.run_exhaustively();
      }
    }
    if (wide_) {
      for (Contender& contender : contenders_) {
        remeasure(contender.outcome.ulp, false);
        remeasure(contender.outcome.relative, true);
      }
    }
    if (limits_.measure == Measure::kExact) {
      for (Contender& contender : contenders_) contender.outcome.relative = contender.outcome.ulp;
    }
    measurement.points = points_;
    for (const int kernel_class : live_classes()) {
      for (const uint32_t accuracy : kAccuracies) {
        const auto it = find(subject_.kernel(kernel_class, accuracy));
        measurement.outcome[vector::row_index(kernel_class, accuracy)] = it->outcome;
      }
    }
    return measurement;
  }

  void operator()(const Batch<Real>& batch) {
    const bool two = subject_.operands() == 2;
    for (int i = 0; i < batch.count; ++i) {
      Reference* reference = &references_[i * parts_];
      if (wide_) {
        if constexpr (kWidens) *reference = evaluator_.wide(batch.a[i]);
      } else {
        evaluator_.exact(&batch.a[i * parts_], &batch.b[i * parts_], reference);
      }
    }
    if (profile_ != nullptr) {
      for (int i = 0; i < batch.count; ++i) slices_[i] = slice(batch, i);
    }
    if (!newest_only_) points_ += batch.count;
    for (Contender& contender : contenders_) {
      if (newest_only_ && !contender.newest) continue;
      std::fill(results_.begin(), results_.end(), static_cast<Real>(-0x1.234p+5));
      // An exhaustive run meets 2^31 arguments out of the domain of some functions: no reports
      // then.
      if (newest_only_) {
        const WordsScope words(contender.accuracy | KAM_ERRMODE_NOERR);
        call<Type>(subject_, contender.kernel, batch.count, batch.a.data(), batch.b.data(),
                   results_.data());
      } else {
        const Recorder recorder(contender.accuracy);
        call<Type>(subject_, contender.kernel, batch.count, batch.a.data(),
                   two ? batch.b.data() : nullptr, results_.data());
        compare_reports(batch, contender);
      }
      compare_results(batch, contender);
    }
  }

 private:
  static constexpr bool kWidens = std::is_same_v<Type, vector::Type_s>;
  static constexpr double kEpsilon = std::numeric_limits<Real>::epsilon();

  auto find(vector::KamKernel kernel) {
    return std::find_if(contenders_.begin(), contenders_.end(),
                        [&](const Contender& c) { return c.kernel == kernel; });
  }

  void find_contenders(Profile& profile) {
    for (const int kernel_class : live_classes()) {
      for (const uint32_t accuracy : {KAM_LA, KAM_HA, KAM_EP}) {
        const vector::KamKernel kernel = subject_.kernel(kernel_class, accuracy);
        if (find(kernel) == contenders_.end()) {
          contenders_.push_back({.kernel = kernel, .accuracy = static_cast<uint32_t>(accuracy)});
        }
        find(kernel)->newest |= kernel_class == live_classes().back();
      }
    }
    if (!plan_.profile) return;
    for (std::vector<double>* curve : {&profile.ha, &profile.la, &profile.ep}) {
      curve->assign(kProfileSlices, -1);
    }
    profile_ = &profile;
  }

  void compare_results(const Batch<Real>& batch, Contender& contender) {
    const int count = batch.count * parts_;
    for (int i = 0; i < count; ++i) {
      const Reference& reference = references_[i];
      const double error = error_of(results_[i], reference);
      if (error > contender.outcome.ulp.error) keep(contender.outcome.ulp, error, batch, i);
      // A unit is at most kEpsilon of the value, which spares most divisions.
      if ((error + 1) * kEpsilon <= contender.outcome.relative.error) continue;
      const double relative = relative_error(error, results_[i], reference);
      if (relative > contender.outcome.relative.error) {
        keep(contender.outcome.relative, relative, batch, i);
      }
    }
    if (profile_ != nullptr && contender.newest) add_to_profile(batch, contender);
  }

  double error_of(Real got, const Reference& reference) const {
    const double error = ulp_error(got, reference);
    if (limits_.measure != Measure::kExact) return error;
    return same_value(got, rounded<Real>(reference)) ? 0.0 : std::max(error, 1.0);
  }

  void keep(Peak& peak, double error, const Batch<Real>& batch, int at) {
    peak.error = error;
    const int first = at - at % parts_;
    for (int part = 0; part < parts_; ++part) {
      peak.a[part] = static_cast<double>(batch.a[first + part]);
      peak.b[part] = static_cast<double>(batch.b[first + part]);
      peak.got[part] = static_cast<double>(results_[first + part]);
      peak.wanted[part] = references_[first + part].head;
    }
  }

  // The stand-in has found the place; the figure comes from MPFR.
  void remeasure(Peak& peak, bool relative) {
    if (peak.error == 0) return;
    const auto a = static_cast<Real>(peak.a[0]);
    const Real unused = 0;
    Reference reference;
    evaluator_.exact(&a, &unused, &reference);
    const auto got = static_cast<Real>(peak.got[0]);
    const double error = error_of(got, reference);
    peak.error = relative ? relative_error(error, got, reference) : error;
    peak.wanted[0] = reference.head;
  }

  void compare_reports(const Batch<Real>& batch, Contender& contender) {
    expected_.clear();
    for (int i = 0; i < batch.count; ++i) {
      Lane lane{};
      lane.accuracy = contender.accuracy;
      lane.single = sizeof(Real) == 4;
      for (int part = 0; part < parts_; ++part) {
        lane.a[part] = static_cast<double>(batch.a[i * parts_ + part]);
        if (subject_.operands() == 2)
          lane.b[part] = static_cast<double>(batch.b[i * parts_ + part]);
        lane.overflow |= std::isinf(results_[i * parts_ + part]);
      }
      if (const int code = oracle_.status(lane); code != KAM_STATUS_OK)
        expected_.push_back({i, code});
    }
    const std::vector<KamErrorContext>& seen = Recorder::reports();
    const auto same = [](const Report& want, const KamErrorContext& got) {
      return want.index == got.index && want.code == got.code;
    };
    if (std::equal(expected_.begin(), expected_.end(), seen.begin(), seen.end(), same)) return;
    ++contender.outcome.wrong_reports;
    if (!contender.outcome.first_wrong_report.empty()) return;
    const auto [want, got] =
        std::mismatch(expected_.begin(), expected_.end(), seen.begin(), seen.end(), same);
    const int want_at = want != expected_.end() ? want->index : batch.count;
    const int got_at = got != seen.end() ? got->index : batch.count;
    Peak where;
    keep(where, 0, batch, std::min(want_at, got_at) * parts_);
    contender.outcome.first_wrong_report =
        describe(subject_, where) + " expected status " +
        std::to_string(want_at <= got_at ? want->code : KAM_STATUS_OK) + ", reported " +
        std::to_string(got_at <= want_at ? got->code : KAM_STATUS_OK);
  }

  // Slice of the plot's axis that an element falls into, -1 for none.
  int slice(const Batch<Real>& batch, int i) const {
    double x = static_cast<double>(batch.a[i * parts_]);
    if (limits_.plot.axis == Axis::kNone) return -1;
    if (limits_.plot.axis == Axis::kResultBinade) {
      x = 0;
      for (int part = 0; part < parts_; ++part) {
        x = std::max(x, std::abs(references_[i * parts_ + part].head));
      }
    }
    if (limits_.plot.axis != Axis::kArgument) x = std::log2(x);
    const double place = (x - limits_.plot.low) / (limits_.plot.high - limits_.plot.low);
    return place >= 0 && place < 1 ? static_cast<int>(place * kProfileSlices) : -1;
  }

  void add_to_profile(const Batch<Real>& batch, const Contender& contender) {
    const int newest = live_classes().back();
    for (const uint32_t accuracy : kAccuracies) {
      if (subject_.kernel(newest, accuracy) != contender.kernel) continue;
      std::vector<double>& curve = accuracy == KAM_HA   ? profile_->ha
                                   : accuracy == KAM_LA ? profile_->la
                                                        : profile_->ep;
      for (int i = 0; i < batch.count * parts_; ++i) {
        const int at = slices_[i / parts_];
        if (at < 0) continue;
        const double error = error_of(results_[i], references_[i]);
        curve[at] = std::max(curve[at], accuracy == KAM_EP
                                            ? relative_error(error, results_[i], references_[i])
                                            : error);
      }
    }
  }

  const Subject& subject_;
  const Limits& limits_;
  const Oracle& oracle_;
  const Plan plan_;
  Evaluator evaluator_;
  const int parts_;
  const bool wide_;
  bool newest_only_ = false;
  int64_t points_ = 0;
  Profile* profile_ = nullptr;
  std::vector<Contender> contenders_;
  std::vector<Reference> references_;
  std::vector<Real> results_;
  std::vector<int> slices_;
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
                    const Plan& plan) {
  return with_type(subject, [&]<class Type>(Type) {
    return Measurer<Type>(subject, limits, oracle, plan).run();
  });
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
