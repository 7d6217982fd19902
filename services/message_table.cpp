// The built-in message texts. The catalogue's numbers run from 0 to 1454 with wide gaps, so the
// rows that have a text stand here in rising order and are searched.
#include <algorithm>
#include <iterator>

#include "services/messages.h"

namespace orba::services {
namespace {

constexpr MessageRow kRows[] = {
    {Severity::plain, kMessageNewline, "\n"},
    {Severity::error, kMessageBadParameter,
     "Tessel Orba ERROR: Parameter %d was incorrect on entry to %s."},
    {Severity::error, kMessageInternalCondition,
     "Tessel Orba INTERNAL ERROR: Condition %d detected in function %s."},
    {Severity::error, kMessageInsufficientWorkspace,
     "Tessel Orba INTERNAL ERROR: Insufficient workspace available in function %s."},
    {Severity::error, kMessageIncompatibleOptional,
     "Tessel Orba ERROR: Incompatible optional parameters on entry to %s."},
    {Severity::error, kMessageStatusBadSize,
     "Error (KAM_STATUS_BADSIZE) in %s: array size %d is not positive."},
    {Severity::error, kMessageStatusBadMem,
     "Error (KAM_STATUS_BADMEM) in %s: NULL pointer is passed."},
    {Severity::error, kMessageStatusErrDom,
     "Error (KAM_STATUS_ERRDOM) in %s: argument is out of domain."},
    {Severity::error, kMessageStatusSing,
     "Error (KAM_STATUS_SING) in %s: argument caused singularity."},
    {Severity::error, kMessageStatusOverflow,
     "Error (KAM_STATUS_OVERFLOW) in %s: argument caused overflow."},
    {Severity::error, kMessageStatusUnderflow,
     "Error (KAM_STATUS_UNDERFLOW) in %s: argument caused underflow."},
    {Severity::error, kMessageStatusUnknown, "Unknown error in %s."},
    {Severity::plain, kMessageValuesA, "a(%d)=%g"},
    {Severity::plain, kMessageValuesA + 1, "r(%d)=%g"},
    {Severity::plain, kMessageValuesAYZ, "a(%d)=%g"},
    {Severity::plain, kMessageValuesAYZ + 1, "y(%d)=%g"},
    {Severity::plain, kMessageValuesAYZ + 2, "z(%d)=%g"},
    {Severity::plain, kMessageValuesABY, "a(%d)=%g"},
    {Severity::plain, kMessageValuesABY + 1, "b(%d)=%g"},
    {Severity::plain, kMessageValuesABY + 2, "y(%d)=%g"},
    {Severity::plain, kMessageValuesABYZ, "a(%d)=%g"},
    {Severity::plain, kMessageValuesABYZ + 1, "b(%d)=%g"},
    {Severity::plain, kMessageValuesABYZ + 2, "y(%d)=%g"},
    {Severity::plain, kMessageValuesABYZ + 3, "z(%d)=%g"},
    {Severity::error, kMessageOutOfMemory, "Tessel Orba FATAL ERROR: memory allocation error."},
    {Severity::error, kMessageNoWorkMemory,
     "Tessel Orba INTERNAL ERROR: Not enough work memory in function %s"},
    {Severity::warning, kMessageBadReproducibility,
     "Tessel Orba WARNING: incorrect conditional numerical reproducibility mode, ORBA_CBWR_AUTO is "
     "set"},
    {Severity::error, kMessageUnsupportedProcessor,
     "Tessel Orba FATAL ERROR: This system does not meet the minimum requirements for use of the "
     "Tessel(R) Orba Library."},
    {Severity::error, kMessageCoprocessor,
     "Tessel Orba INTERNAL ERROR: Issue accessing coprocessor %s."},
    {Severity::error, kMessageSse3Required,
     "The processor must support the Tessel(R) Streaming SIMD 3 Extensions (Tessel(R) SSE3) "
     "instructions."},
    {Severity::warning, kMessageSsse3Deprecated,
     "Tessel Orba WARNING: Support of Tessel(R) Supplemental Streaming SIMD Extensions 3 "
     "(Tessel(R) "
     "SSSE3) enabled only processors has been deprecated. Tessel Orba Library will use Tessel(R) "
     "Streaming SIMD 2 Extensions (Tessel(R) SSE2) instructions instead."},
    {Severity::warning, kMessageAvxDeprecated,
     "Tessel Orba WARNING: Support of Tessel(R) Advanced Vector Extensions (Tessel(R) AVX) enabled "
     "only processors has been deprecated. Tessel Orba Library will use Tessel(R) Streaming SIMD "
     "Extensions 4.2 (Tessel(R) SSE4.2) instructions instead."},
};

constexpr bool by_number(const MessageRow& a, const MessageRow& b) { return a.number < b.number; }
static_assert(std::is_sorted(std::begin(kRows), std::end(kRows), by_number));
static_assert(std::end(kRows)[-1].number == kMessageCount - 1);

}  // namespace

MessageRow message_row(int number) noexcept {
  const MessageRow wanted = {Severity::plain, number, ""};
  const MessageRow* row = std::lower_bound(std::begin(kRows), std::end(kRows), wanted, by_number);
  return row != std::end(kRows) && row->number == number ? *row : wanted;
}

}  // namespace orba::services
