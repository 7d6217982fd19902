// The exported vector functions, all from the function table: four forms per name and type.
#include "vector/frame/define_functions.h"

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

#define ORBA_KAM_FUNCTION ORBA_DEFINE_FORMS
#include "vector/functions.def"
