// The exported vector functions, all from the function table: four forms per name and type.
#include "vector/frame/call.h"

namespace orba::vector {

void refuse_arguments(const char* name, int32_t position, int32_t status) noexcept {
  constexpr int32_t longest_name = 25;
  int32_t length = 0;
  while (length < longest_name && name[length] != '\0') ++length;
  services::install_default_reporter();
  services::report_parameter(name, &position, length);
  set_status(status);
}

}  // namespace orba::vector

#define ORBA_EXPORT extern "C" __attribute__((visibility("default")))
#define ORBA_E(t) orba::vector::Type_##t::Element
#define ORBA_R(t) orba::vector::Type_##t::Real
#define ORBA_CALL(t, Name, shape)                       \
  orba::vector::Kernel_##shape<orba::vector::Type_##t>, \
      orba::vector::warns_of_accuracy("v" #t #Name)
#define ORBA_UNWRAP(...) __VA_ARGS__

// One function and type in its four forms. `by_value` and `by_pointer` are the parameters after n
// in the two spellings, `values` and `pointees` the arguments that they hand on.
#define ORBA_FORMS(t, Name, name, shape, by_value, values, by_pointer, pointees)                  \
  ORBA_EXPORT void v##t##Name(int32_t n, ORBA_UNWRAP by_value) {                                  \
    orba::vector::vector_call<ORBA_CALL(t, Name, shape)>(orba::vector::row_v##t##Name,            \
                                                         "v" #t #Name, n, ORBA_UNWRAP values);    \
  }                                                                                               \
  ORBA_EXPORT void vm##t##Name(int32_t n, ORBA_UNWRAP by_value, uint32_t mode) {                  \
    orba::vector::vector_call_with_mode<ORBA_CALL(t, Name, shape)>(                               \
        mode, orba::vector::row_v##t##Name, "v" #t #Name, n, ORBA_UNWRAP values);                 \
  }                                                                                               \
  ORBA_EXPORT void v##t##name(const int32_t* n, ORBA_UNWRAP by_pointer) {                         \
    orba::vector::vector_call<ORBA_CALL(t, Name, shape)>(orba::vector::row_v##t##Name,            \
                                                         "v" #t #Name, *n, ORBA_UNWRAP pointees); \
  }                                                                                               \
  ORBA_EXPORT void vm##t##name(const int32_t* n, ORBA_UNWRAP by_pointer, const uint32_t* mode) {  \
    orba::vector::vector_call_with_mode<ORBA_CALL(t, Name, shape)>(                               \
        mode, orba::vector::row_v##t##Name, "v" #t #Name, *n, ORBA_UNWRAP pointees);              \
  }

// Shapes without scalars hand the same arguments on in both spellings.
#define ORBA_ARRAYS_ONLY(t, Name, name, shape, parameters, arguments) \
  ORBA_FORMS(t, Name, name, shape, parameters, arguments, parameters, arguments)

#define ORBA_EXPORT_1i_1o(t, Name, name) \
  ORBA_ARRAYS_ONLY(t, Name, name, 1i_1o, (const ORBA_E(t) * a, ORBA_E(t) * y), (a, y))
#define ORBA_EXPORT_2i_1o(t, Name, name) \
  ORBA_ARRAYS_ONLY(t, Name, name, 2i_1o, \
                   (const ORBA_E(t) * a, const ORBA_E(t) * b, ORBA_E(t) * y), (a, b, y))
#define ORBA_EXPORT_1i_2o(t, Name, name)                                                      \
  ORBA_ARRAYS_ONLY(t, Name, name, 1i_2o, (const ORBA_E(t) * a, ORBA_E(t) * y, ORBA_E(t) * z), \
                   (a, y, z))
#define ORBA_EXPORT_complex_to_real(t, Name, name) \
  ORBA_ARRAYS_ONLY(t, Name, name, complex_to_real, (const ORBA_E(t) * a, ORBA_R(t) * y), (a, y))
#define ORBA_EXPORT_real_to_complex(t, Name, name) \
  ORBA_ARRAYS_ONLY(t, Name, name, real_to_complex, (const ORBA_R(t) * a, ORBA_E(t) * y), (a, y))
#define ORBA_EXPORT_1i_scalar_1o(t, Name, name)                                              \
  ORBA_FORMS(t, Name, name, 1i_scalar_1o, (const ORBA_E(t) * a, ORBA_E(t) b, ORBA_E(t) * y), \
             (a, b, y), (const ORBA_E(t) * a, const ORBA_E(t) * b, ORBA_E(t) * y), (a, *b, y))
#define ORBA_EXPORT_linear_fraction(t, Name, name)                                          \
  ORBA_FORMS(t, Name, name, linear_fraction,                                                \
             (const ORBA_E(t) * a, const ORBA_E(t) * b, ORBA_E(t) scalea, ORBA_E(t) shifta, \
              ORBA_E(t) scaleb, ORBA_E(t) shiftb, ORBA_E(t) * y),                           \
             (a, b, scalea, shifta, scaleb, shiftb, y),                                     \
             (const ORBA_E(t) * a, const ORBA_E(t) * b, const ORBA_E(t) * scalea,           \
              const ORBA_E(t) * shifta, const ORBA_E(t) * scaleb, const ORBA_E(t) * shiftb, \
              ORBA_E(t) * y),                                                               \
             (a, b, *scalea, *shifta, *scaleb, *shiftb, y))

#define ORBA_EXPORT_ROW(t, Name, name, shape) ORBA_EXPORT_##shape(t, Name, name)
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_EXPORT_ROW, Name, name, shape)
#include "vector/functions.def"
