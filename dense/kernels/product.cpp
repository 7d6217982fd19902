// DSYRK, DGEMM and their single-precision twins.
//
// After K. Goto and R. van de Geijn, Anatomy of high-performance matrix multiplication (ACM TOMS
// 34, 2008): blocks of both operands are packed in the order in which a small kernel reads them,
// and the kernel keeps a tile of C in registers. Here both operands are packed alike, in panels of
// as many rows as a tile has; the kernel takes its columns as slices of such a panel, so a
// symmetric product packs a block once. Of the triangle's tiles only those that touch it are
// computed.
//
// An element of C is alpha times a sum over k, in ascending order within a depth block, and the
// blocks are added in ascending order: results depend on the class and the sizes alone.
#include "dense/dense.h"
#include "dense/kernels/common.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// A tile is kVectors x kColumns accumulators: with the operands they fill the 16 (class 5: 32)
// registers.
constexpr int kVectors = kFused ? 3 : 2;
constexpr int kColumns = kClass == 5 ? 8 : 4;

template <class V>
struct Tile {
  static constexpr int rows = kVectors * V::lanes;
  // The last panel of a block can be narrower by multiples of this.
  static constexpr int unit = V::lanes > kColumns ? V::lanes : kColumns;
  static_assert(rows % unit == 0 && unit % V::lanes == 0 && unit % kColumns == 0);
};

// Rows and depth of a packed block. A slice of kColumns then stays in the first-level cache, the
// blocks in the second.
constexpr int64_t kBlockRows = 192;
template <class V>
constexpr int64_t kBlockDepth = 192 * sizeof(double) / sizeof(typename V::Element);
template <class V>
constexpr int64_t kBlockSize = kBlockRows* kBlockDepth<V>;
static_assert(2 * kBlockSize<F64> * sizeof(double) <= dense::kWorkspaceBytes &&
              2 * kBlockSize<F32> * sizeof(float) <= dense::kWorkspaceBytes);

// An operand as a matrix of rows (or of columns of the right-hand one) by depth.
template <class Real>
struct Operand {
  const Real* data;
  int64_t ld;
  bool by_depth;  // the elements of a row lie side by side
};

template <class V>
ORBA_INLINE V load_some(const typename V::Element* p, int64_t live) {
  if (live >= V::lanes) return load(p);
  return live > 0 ? load_partial(p, static_cast<int>(live), 0) : V(0);
}

// `lanes` rows of a panel, of which `live` exist; the others read as zero.
template <class V, class Real = typename V::Element>
void pack_rows(const Real* data, int64_t ld, int64_t live, int64_t depth, Real* out,
               int64_t width) {
  for (int64_t l = 0; l < depth; ++l) store(out + l * width, load_some<V>(data + l * ld, live));
}

// The same for rows along the depth: square blocks, transposed by rounds of perfect shuffles, each
// of which rotates the bits of (row, column) by one.
template <class V, class Real = typename V::Element>
void pack_rows_by_depth(const Real* data, int64_t ld, int64_t live, int64_t depth, Real* out,
                        int64_t width) {
  constexpr int half = V::lanes / 2;
  for (int64_t l = 0; l < depth; l += V::lanes) {
    V block[V::lanes];
    ORBA_UNROLL
    for (int i = 0; i < half; ++i) {
      block[i] = i < live ? load_some<V>(data + i * ld + l, depth - l) : V(0);
      block[i + half] =
          i + half < live ? load_some<V>(data + (i + half) * ld + l, depth - l) : V(0);
    }
    ORBA_UNROLL
    for (int round = 0; round < __builtin_ctz(V::lanes); ++round) {
      V shuffled[V::lanes];
      ORBA_UNROLL
      for (int i = 0; i < half; ++i) {
        interleave(block[i], block[i + half], shuffled[2 * i], shuffled[2 * i + 1]);
      }
      ORBA_UNROLL
      for (int i = 0; i < half; ++i) {
        block[i] = shuffled[i];
        block[i + half] = shuffled[i + half];
      }
    }
    const int64_t columns = smaller(depth - l, V::lanes);
    ORBA_UNROLL
    for (int i = 0; i < half; ++i) {
      if (2 * i < columns) store(out + (l + 2 * i) * width, block[2 * i]);
      if (2 * i + 1 < columns) store(out + (l + 2 * i + 1) * width, block[2 * i + 1]);
    }
  }
}

// A block of an operand, packed.
template <class V>
struct Block {
  using Real = typename V::Element;
  const Real* data;
  int64_t first, rows, depth;

  int64_t panel_width(int64_t row) const {
    return smaller(Tile<V>::rows, (rows - row + Tile<V>::unit - 1) / Tile<V>::unit * Tile<V>::unit);
  }
  const Real* panel(int64_t row) const { return data + row * depth; }
};

template <class V, class Real = typename V::Element>
Block<V> pack(const Operand<Real>& from, int64_t first, int64_t rows, int64_t begin, int64_t depth,
              Real* out) {
  const Block<V> block = {out, first, rows, depth};
  for (int64_t row = 0; row < rows; row += Tile<V>::rows) {
    const int64_t width = block.panel_width(row);
    for (int64_t i = 0; i < width; i += V::lanes) {
      const int64_t live = larger(0, rows - row - i);
      if (from.by_depth) {
        pack_rows_by_depth<V>(from.data + (first + row + i) * from.ld + begin, from.ld, live, depth,
                              out + row * depth + i, width);
      } else {
        pack_rows<V>(from.data + begin * from.ld + (first + row + i), from.ld, live, depth,
                     out + row * depth + i, width);
      }
    }
  }
  return block;
}

// Where a tile goes.
template <class V>
struct Target {
  typename V::Element* c;  // its first element
  int64_t ldc;
  typename V::Element alpha;
  Region region;
  int64_t top, left, rows, columns;  // place in C and live size
  bool whole;                        // all of the tile is live
};

template <class V, int vectors, class Real = typename V::Element>
void add_tile(const Real* a, int64_t a_width, const Real* b, int64_t b_width, int64_t depth,
              const Target<V>& target) {
  V sum[vectors][kColumns];
  ORBA_UNROLL
  for (int j = 0; j < kColumns; ++j) {
    ORBA_UNROLL
    for (int v = 0; v < vectors; ++v) sum[v][j] = V(0);
  }
  for (int64_t l = 0; l < depth; ++l) {
    V x[vectors];
    ORBA_UNROLL
    for (int v = 0; v < vectors; ++v) x[v] = load(a + v * V::lanes);
    ORBA_UNROLL
    for (int j = 0; j < kColumns; ++j) {
      const V y = V(b[j]);
      ORBA_UNROLL
      for (int v = 0; v < vectors; ++v) sum[v][j] = mul_add(x[v], y, sum[v][j]);
    }
    a += a_width;
    b += b_width;
  }
  if (target.whole) {
    ORBA_UNROLL
    for (int j = 0; j < kColumns; ++j) {
      Real* c = target.c + j * target.ldc;
      ORBA_UNROLL
      for (int v = 0; v < vectors; ++v) {
        store(c + v * V::lanes, mul_add(V(target.alpha), sum[v][j], load(c + v * V::lanes)));
      }
    }
    return;
  }
  Real tile[kColumns][vectors * V::lanes];
  ORBA_UNROLL
  for (int j = 0; j < kColumns; ++j) {
    ORBA_UNROLL
    for (int v = 0; v < vectors; ++v) store(tile[j] + v * V::lanes, sum[v][j]);
  }
  for (int64_t j = 0; j < target.columns; ++j) {
    const Rows rows = rows_of_column(target.region, target.left + j, target.top, target.rows);
    if (rows.first < rows.last) {
      add_scaled<V>(rows.last - rows.first, target.alpha, tile[j] + rows.first,
                    target.c + j * target.ldc + rows.first);
    }
  }
}

// The tiles of a block of C that touch the region.
template <class V, class Real = typename V::Element>
void add_block(Region region, Real alpha, const Block<V>& a, const Block<V>& b, Real* c,
               int64_t ldc) {
  for (int64_t j = 0; j < b.rows; j += kColumns) {
    const int64_t slice = j % Tile<V>::rows;
    const Real* columns = b.panel(j - slice) + slice;
    const int64_t b_width = b.panel_width(j - slice);
    const int64_t left = b.first + j;
    const int64_t live_columns = smaller(kColumns, b.rows - j);
    for (int64_t i = 0; i < a.rows; i += Tile<V>::rows) {
      // Of the panel, the vectors that touch the region.
      const int64_t diagonal = left - a.first - i;
      const int64_t begin = region == Region::lower ? larger(diagonal, 0) / V::lanes * V::lanes : 0;
      const int64_t panel_end = smaller(i + Tile<V>::rows, a.rows) - i;
      const int64_t end =
          region == Region::upper ? smaller(diagonal + live_columns, panel_end) : panel_end;
      if (begin >= end) continue;
      const int64_t vectors = (end - begin + V::lanes - 1) / V::lanes;
      const bool whole = end - begin == vectors * V::lanes && live_columns == kColumns &&
                         !(region == Region::upper && end - 1 > diagonal) &&
                         !(region == Region::lower && begin < diagonal + live_columns - 1);
      const int64_t top = a.first + i + begin;
      const Target<V> target = {c + left * ldc + top, ldc,          alpha, region, top, left,
                                end - begin,          live_columns, whole};
      const auto add = vectors == kVectors ? add_tile<V, kVectors>
                       : vectors == 2      ? add_tile<V, 2>
                                           : add_tile<V, 1>;
      add(a.panel(i) + begin, a.panel_width(i), columns, b_width, a.depth, target);
    }
  }
}

template <class V, class Real = typename V::Element>
void scale(Region region, int64_t m, int64_t n, Real beta, Real* c, int64_t ldc) {
  if (beta == 1) return;
  for (int64_t j = 0; j < n; ++j) {
    const Rows rows = rows_of_column(region, j, 0, m);
    for (int64_t i = rows.first; i < rows.last; ++i) {
      c[j * ldc + i] = beta == 0 ? 0 : beta * c[j * ldc + i];
    }
  }
}

// C := alpha A B^T + beta C on a region. On a triangle B is A.
template <class V, class Real = typename V::Element>
void multiply(Region region, int64_t m, int64_t n, int64_t k, Real alpha, const Operand<Real>& a,
              const Operand<Real>& b, Real beta, Real* c, int64_t ldc, void* workspace) {
  scale<V>(region, m, n, beta, c, ldc);
  if (alpha == 0 || k <= 0) return;
  Real* const packed_a = static_cast<Real*>(workspace);
  Real* const packed_b = packed_a + kBlockSize<V>;
  const int64_t depth_blocks = (k + kBlockDepth<V> - 1) / kBlockDepth<V>;
  const int64_t depth = (k + depth_blocks - 1) / depth_blocks;
  for (int64_t l = 0; l < k; l += depth) {
    for (int64_t j = 0; j < n; j += kBlockRows) {
      const Block<V> right =
          pack<V>(b, j, smaller(kBlockRows, n - j), l, smaller(depth, k - l), packed_b);
      const int64_t begin = region == Region::lower ? j : 0;
      const int64_t end = region == Region::upper ? smaller(j + kBlockRows, m) : m;
      for (int64_t i = begin; i < end; i += kBlockRows) {
        const bool shared = region != Region::whole && i == j;
        const Block<V> left =
            shared ? right : pack<V>(a, i, smaller(kBlockRows, m - i), l, right.depth, packed_a);
        add_block<V>(region, alpha, left, right, c, ldc);
      }
    }
  }
}

template <class V, class Real = typename V::Element>
ORBA_INLINE void rank_k(char uplo, char trans, int64_t n, int64_t k, Real alpha, const Real* a,
                        int64_t lda, Real beta, Real* c, int64_t ldc, void* workspace) {
  const Operand<Real> operand = {a, lda, !is_letter(trans, 'n')};
  multiply<V>(triangle(uplo), n, n, k, alpha, operand, operand, beta, c, ldc, workspace);
}

template <class V, class Real = typename V::Element>
ORBA_INLINE void general(char trans_a, char trans_b, int64_t m, int64_t n, int64_t k, Real alpha,
                         const Real* a, int64_t lda, const Real* b, int64_t ldb, Real beta, Real* c,
                         int64_t ldc, void* workspace) {
  const Operand<Real> left = {a, lda, !is_letter(trans_a, 'n')};
  const Operand<Real> right = {b, ldb, is_letter(trans_b, 'n')};
  multiply<V>(Region::whole, m, n, k, alpha, left, right, beta, c, ldc, workspace);
}

}  // namespace

extern "C" void ORBA_DENSE_NAME(dsyrk)(char uplo, char trans, int64_t n, int64_t k, double alpha,
                                       const double* a, int64_t lda, double beta, double* c,
                                       int64_t ldc, void* workspace) {
  rank_k<F64>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc, workspace);
}
extern "C" void ORBA_DENSE_NAME(ssyrk)(char uplo, char trans, int64_t n, int64_t k, float alpha,
                                       const float* a, int64_t lda, float beta, float* c,
                                       int64_t ldc, void* workspace) {
  rank_k<F32>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc, workspace);
}
extern "C" void ORBA_DENSE_NAME(dgemm)(char trans_a, char trans_b, int64_t m, int64_t n, int64_t k,
                                       double alpha, const double* a, int64_t lda, const double* b,
                                       int64_t ldb, double beta, double* c, int64_t ldc,
                                       void* workspace) {
  general<F64>(trans_a, trans_b, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, workspace);
}
extern "C" void ORBA_DENSE_NAME(sgemm)(char trans_a, char trans_b, int64_t m, int64_t n, int64_t k,
                                       float alpha, const float* a, int64_t lda, const float* b,
                                       int64_t ldb, float beta, float* c, int64_t ldc,
                                       void* workspace) {
  general<F32>(trans_a, trans_b, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, workspace);
}

}  // namespace orba::ORBA_CLASS_NAMESPACE
