#include "statistics/summary/task.h"

#include <stddef.h>

#include <array>

#include "services/memory.h"

namespace orba::statistics {
namespace {

constexpr int kAlignment = 128;
constexpr int8_t kFormatTag = 2;
constexpr int32_t kLastId = RAU_SS_ED_SORTED_OBSERV_STORAGE;

struct Parameter {
  char type;  // F or I
  uint16_t offset;
  int32_t null_code;
};

consteval std::array<Parameter, kLastId + 1> parameters_by_id() {
  std::array<Parameter, kLastId + 1> table = {};
#define ORBA_SS_PARAMETER(id, NAME, type, field, null_code) \
  table[id] = {#type[0], offsetof(SsTask, field), null_code};
#include "statistics/summary/parameters.def"
#undef ORBA_SS_PARAMETER
  return table;
}
constexpr std::array<Parameter, kLastId + 1> kParameters = parameters_by_id();

int32_t edit(SsTask* task, int32_t id, const void* address, char type) noexcept {
  if (task == nullptr) return RAU_SS_ERROR_NULL_TASK;
  if (id < 1 || id > kLastId) return RAU_ERROR_BADARGS;
  const Parameter& parameter = kParameters[static_cast<size_t>(id)];
  if (parameter.type != type) return RAU_ERROR_BADARGS;
  if (address == nullptr) return parameter.null_code;
  *reinterpret_cast<const void**>(reinterpret_cast<char*>(task) + parameter.offset) = address;
  return RAU_STATUS_OK;
}

}  // namespace

int32_t new_task(SsTask** task, const void* dimension, const void* observation_count,
                 const void* observation_storage, const void* observations, const void* weights,
                 const void* indices, bool is_double, int32_t integer_width) noexcept {
  SsTask shape = {};  // what is known before there is memory
  shape.integer_width = integer_width;
  shape.format_tag = kFormatTag;
  shape.is_double = is_double;
  shape.dimension = dimension;
  shape.observation_count = observation_count;
  shape.observations = const_cast<void*>(observations);
  shape.observation_storage = observation_storage;
  shape.weights = const_cast<void*>(weights);
  shape.indices = indices;

  if (task == nullptr) return RAU_SS_ERROR_NULL_TASK;
  if (dimension == nullptr || shape.integer(dimension) < 1) return RAU_SS_ERROR_BAD_DIMEN;
  if (observations != nullptr) {
    if (observation_storage == nullptr) return RAU_SS_ERROR_BAD_STORAGE_ADDR;
    const int64_t storage = shape.integer(observation_storage);
    if (storage != RAU_SS_MATRIX_STORAGE_ROWS && storage != RAU_SS_MATRIX_STORAGE_COLS) {
      return RAU_SS_ERROR_STORAGE_NOT_SUPPORTED;
    }
    if (observation_count == nullptr || shape.integer(observation_count) < 1) {
      return RAU_SS_ERROR_BAD_OBSERV_N;
    }
  }
  *task = static_cast<SsTask*>(services::allocate(sizeof(SsTask), kAlignment));
  if (*task == nullptr) return RAU_SS_ERROR_MEM_FAILURE;
  **task = shape;
  return RAU_STATUS_OK;
}

int32_t delete_task(SsTask** task) noexcept {
  if (task == nullptr || *task == nullptr) return RAU_SS_ERROR_NULL_TASK;
  SsTask& old = **task;
  services::free_memory(old.saved_mean);
  for (int32_t i = 0; i < old.release_count; ++i) old.release_hooks[i](old);
  services::free_memory(&old);
  *task = nullptr;
  return RAU_STATUS_OK;
}

int32_t edit_floating(SsTask* task, int32_t id, const void* address) noexcept {
  return edit(task, id, address, 'F');
}
int32_t edit_integer(SsTask* task, int32_t id, const void* address) noexcept {
  return edit(task, id, address, 'I');
}

}  // namespace orba::statistics
