// An outside program in C++: a call with bad arguments, the error callback and a replaced result.
#include <orba.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {
int reported_index = -1;

int replace(KamErrorContext* context) {
  if (std::strcmp(context->func_name, "vdInv") == 0 && context->code == KAM_STATUS_SING) {
    reported_index = context->index;
    context->r1 = 42.0;
  }
  return 0;
}
}  // namespace

int main() {
  std::vector<double> x(100, 4.0), y(100);
  x[57] = 0.0;
  kamSetErrorCallBack(replace);
  vdInv(static_cast<int32_t>(x.size()), x.data(), y.data());
  if (reported_index != 57 || y[57] != 42.0 || y[0] != 0.25 || y[99] != 0.25) {
    return std::puts("C++ consumer: wrong element or result"), 1;
  }
  if (kamClearErrStatus() != KAM_STATUS_SING) return std::puts("C++ consumer: wrong status"), 1;
  vdInv(1, nullptr, y.data());
  if (kamGetErrStatus() != KAM_STATUS_BADMEM) return std::puts("C++ consumer: wrong status"), 1;
  std::puts("C++ consumer: ok");
}
