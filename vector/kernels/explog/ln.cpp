// Ln: natural logarithm. KAM_STATUS_SING at both zeros, KAM_STATUS_ERRDOM below.
#include "vector/kernels/explog/log_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V, Accuracy accuracy>
using LnKernel = LogKernel<LogNatural, V, accuracy>;

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_LOG_KERNELS(Ln, LnKernel)
