// What tests/kernels/probe/math_probe.cpp offers of each processor class.
#pragma once

namespace orba::test {

struct Words {
  double hi, lo;
};

enum PairOperation { kPlusNumber, kPlus, kTimesNumber, kTimes, kQuotient, kSqrt };
enum Carrier { kNumber, kVectorOfDouble, kVectorOfFloat };

struct MathProbe {
  void (*pairs)(PairOperation, Carrier, int n, const Words* a, const Words* b, Words* r);
  Words (*log)(double x);
  Words (*exp)(Words x);
  int (*wrong_lookups)();
};

}  // namespace orba::test
