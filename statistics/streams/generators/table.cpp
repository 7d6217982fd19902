#include "statistics/streams/generators/table.h"

#include "statistics/streams/generators/brng_entries.h"

namespace orba::statistics {
namespace {

using BuiltInRows = std::array<Brng, kBuiltInBrngs>;

constexpr std::array<BuiltInRows, kBuildCount> make_rows() {
  std::array<BuiltInRows, kBuildCount> tables = {};
  for (size_t c = 0; c < kBuildCount; ++c) {
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs, abilities, uniform, blocks)    \
  tables[c][row] = {{size, seeds, zero, word, bits, Name##_InitStream_kernels[c],                \
                     Name##_sBRng_kernels[c], Name##_dBRng_kernels[c], Name##_iBRng_kernels[c]}, \
                    Name##_floors_kernels[c],                                                    \
                    abilities,                                                                   \
                    UniformBits::uniform,                                                        \
                    subs};
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
  }
  return tables;
}

constinit const std::array<BuiltInRows, kBuildCount> built_in = make_rows();
constinit Brng registered[kMaxBrngs - kBuiltInBrngs] = {};
constinit int32_t row_count = kBuiltInBrngs;

const Brng& row_of(int rau_class, int32_t row) noexcept {
  return row < kBuiltInBrngs ? built_in[static_cast<size_t>(rau_class)][static_cast<size_t>(row)]
                             : registered[row - kBuiltInBrngs];
}

}  // namespace

const Brng* find_brng(int rau_class, int32_t brng) noexcept {
  const BrngIndex index = resolve_brng(brng);
  if (index.row < 0 || index.row >= row_count) return nullptr;
  const Brng& row = row_of(rau_class, index.row);
  return index.sub_generator < row.sub_generators ? &row : nullptr;
}

const Brng& brng_of(int rau_class, const StreamState& stream) noexcept {
  return row_of(rau_class, resolve_brng(stream.brng).row);
}

int32_t register_brng(const BrngProperties& properties) noexcept {
  if (row_count >= kMaxBrngs) return RAU_ERROR_MEM_FAILURE;
  constexpr uint32_t kAsked = kSeeded | kAllOutputs;  // moves are asked for and may be refused
  registered[row_count - kBuiltInBrngs] = {properties, nullptr, kAsked, UniformBits::kNone, 1};
  return (row_count++ << 20) + 0x100000;
}

int32_t registered_brngs() noexcept { return row_count; }

}  // namespace orba::statistics
