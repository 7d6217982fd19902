#include "statistics/streams/generators/table.h"

#include "statistics/streams/generators/brng_kernels.h"

namespace orba::statistics {
namespace {

struct BuiltInRows {
  BrngProperties rows[kBuiltInBrngs];
  FloorsEntry floors[kBuiltInBrngs];
};

constexpr std::array<BuiltInRows, kClassCount> make_rows() {
  std::array<BuiltInRows, kClassCount> tables = {};
  for (size_t c = 0; c < kClassCount; ++c) {
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs) \
  tables[c].rows[row] = {size,                                    \
                         seeds,                                   \
                         zero,                                    \
                         word,                                    \
                         bits,                                    \
                         Name##_InitStream_kernels[c],            \
                         Name##_sBRng_kernels[c],                 \
                         Name##_dBRng_kernels[c],                 \
                         Name##_iBRng_kernels[c]};                \
  tables[c].floors[row] = Name##_floors_kernels[c];
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
  }
  return tables;
}

constinit const std::array<BuiltInRows, kClassCount> built_in = make_rows();

constexpr std::array<int32_t, kBuiltInBrngs> kSubGenerators = {
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs) subs,
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
};

constinit BrngProperties registered[kMaxBrngs - kBuiltInBrngs] = {};
constinit int32_t row_count = kBuiltInBrngs;

const BrngProperties& row_of(int rau_class, int32_t row) noexcept {
  return row < kBuiltInBrngs ? built_in[static_cast<size_t>(rau_class)].rows[row]
                             : registered[row - kBuiltInBrngs];
}

int class_of(int build) noexcept { return build == kBuildOfClass.back() ? kClassCount - 1 : build; }

}  // namespace

const BrngProperties* find_brng(int rau_class, int32_t brng) noexcept {
  const BrngIndex index = resolve_brng(brng);
  if (index.row < 0 || index.row >= row_count) return nullptr;
  const int32_t subs =
      index.row < kBuiltInBrngs ? kSubGenerators[static_cast<size_t>(index.row)] : 1;
  return index.sub_generator < subs ? &row_of(rau_class, index.row) : nullptr;
}

const BrngProperties& brng_of(int build, const StreamState& stream) noexcept {
  return row_of(class_of(build), resolve_brng(stream.brng).row);
}

FloorsEntry floors_of(int build, const StreamState& stream) noexcept {
  const int32_t row = resolve_brng(stream.brng).row;
  return row < kBuiltInBrngs ? built_in[static_cast<size_t>(class_of(build))].floors[row] : nullptr;
}

int32_t register_brng(const BrngProperties& properties) noexcept {
  if (row_count >= kMaxBrngs) return RAU_ERROR_MEM_FAILURE;
  registered[row_count - kBuiltInBrngs] = properties;
  return (row_count++ << 20) + 0x100000;
}

int32_t registered_brngs() noexcept { return row_count; }

}  // namespace orba::statistics
