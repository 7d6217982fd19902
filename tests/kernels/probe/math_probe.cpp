// The shared mathematics of a class within reach of the tests, which run on every live class.
#include "tests/kernels/probe/math_probe.h"

#include "vector/kernels/explog/exp_kernel.h"
#include "vector/kernels/explog/log_pair.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
Pair<V> apply(test::PairOperation operation, Pair<V> a, Pair<V> b) {
  switch (operation) {
    case test::kPlusNumber:
      return a + b.hi;
    case test::kPlus:
      return a + b;
    case test::kTimesNumber:
      return a * b.hi;
    case test::kTimes:
      return a * b;
    case test::kQuotient:
      return quotient(a, b, V(1) / b.hi);
    default:
      return sqrt(a);
  }
}

// Both words of the lanes, in turn through arrays of the type.
template <class V>
struct Lanes {
  using E = typename V::Element;
  alignas(64) E hi[V::lanes], lo[V::lanes];
  ORBA_INLINE Pair<V> pair() const { return {load(hi), load(lo)}; }
};

template <class V>
void run_vectors(test::PairOperation operation, int n, const test::Words* a, const test::Words* b,
                 test::Words* r) {
  using E = typename V::Element;
  for (int i = 0; i + V::lanes <= n; i += V::lanes) {
    Lanes<V> x, y;
    for (int j = 0; j < V::lanes; ++j) {
      x.hi[j] = static_cast<E>(a[i + j].hi), x.lo[j] = static_cast<E>(a[i + j].lo);
      y.hi[j] = static_cast<E>(b[i + j].hi), y.lo[j] = static_cast<E>(b[i + j].lo);
    }
    const Pair<V> z = apply(operation, x.pair(), y.pair());
    store(x.hi, z.hi), store(x.lo, z.lo);
    for (int j = 0; j < V::lanes; ++j) r[i + j] = {double{x.hi[j]}, double{x.lo[j]}};
  }
}

// Look-ups that differ from the table, over all rows in changing order.
template <class V, int rows, int width>
int wrong_rows() {
  using E = typename V::Element;
  alignas(64) static E table[rows][width];
  for (int i = 0; i < rows * width; ++i) table[i / width][i % width] = static_cast<E>(i + 1);
  int wrong = 0;
  for (int start = 0; start < rows; ++start) {
    alignas(64) E numbers[V::lanes];
    int index[V::lanes];
    for (int j = 0; j < V::lanes; ++j) {
      index[j] = (start + 5 * j * j) % rows;
      // The low bits of a shifted sum, with others above.
      numbers[j] = static_cast<E>(sizeof(E) == 8 ? 0x1.8p52 : 0x1.8p23) +
                   static_cast<E>(index[j] + rows * j);
    }
    const auto row = lookup(table, as_bits(load(numbers)));
    for (int word = 0; word < width; ++word) {
      alignas(64) E got[V::lanes];
      if constexpr (width == 2)
        store(got, word == 0 ? row.hi : row.lo);
      else
        store(got, row.word[word]);
      for (int j = 0; j < V::lanes; ++j) wrong += got[j] != table[index[j]][word] ? 1 : 0;
    }
  }
  return wrong;
}

void probe_pairs(test::PairOperation operation, test::Carrier carrier, int n, const test::Words* a,
                 const test::Words* b, test::Words* r) {
  if (carrier == test::kVectorOfFloat) return run_vectors<F32>(operation, n, a, b, r);
  if (carrier == test::kVectorOfDouble) return run_vectors<F64>(operation, n, a, b, r);
  for (int i = 0; i < n; ++i) {
    const Pair<double> z = apply<double>(operation, {a[i].hi, a[i].lo}, {b[i].hi, b[i].lo});
    r[i] = {z.hi, z.lo};
  }
}

test::Words probe_log(double x) {
  const Pair<double> log = log_pair(x);
  return {log.hi, log.lo};
}
test::Words probe_exp(test::Words x) {
  const ScaledExp e = scaled_exp({x.hi, x.lo});
  return {scaled(e.value.hi, e.n), scaled(e.value.lo, e.n)};
}
int probe_lookups() {
  return wrong_rows<F64, 32, 2>() + wrong_rows<F64, 32, 4>() + wrong_rows<F64, 64, 8>() +
         wrong_rows<F32, 32, 2>() + wrong_rows<F32, 32, 4>() + wrong_rows<F32, 64, 8>();
}

}  // namespace

extern const test::MathProbe math_probe;
constexpr test::MathProbe math_probe = {probe_pairs, probe_log, probe_exp, probe_lookups};

}  // namespace orba::ORBA_CLASS_NAMESPACE
