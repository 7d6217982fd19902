// The accuracy as a parameter of kernels whose three forms differ by a few steps.
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

enum Accuracy { kEp, kLa, kHa };

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
