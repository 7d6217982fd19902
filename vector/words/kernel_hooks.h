// What code that is built for one processor class may call of the vector layer: for an element that
// failed, and to read the mode. Plain functions only: such code is compiled for newer processors and
// must not emit any that others could run.
#pragma once

#include <stdint.h>

#include "services/platform/kernel_hooks.h"

namespace orba::vector {

// The mode word of this thread, which heads the words in its slot once they are there and set.
uint32_t kernel_mode() noexcept;

// One element in error: by the mode it sets the status, runs the callback, sets errno, prints,
// raises the exception, and writes the (possibly replaced) results back at `index`. One-input
// functions pass their input twice, one-output functions their output twice. Complex handlers read
// (re, im) pairs.
void element_error(int32_t code, int32_t index, const double* a, const double* b, double* r1,
                   double* r2, const char* name) noexcept;
void element_error(int32_t code, int32_t index, const float* a, const float* b, float* r1,
                   float* r2, const char* name) noexcept;
void element_error_complex(int32_t code, int32_t index, const double* a, const double* b,
                           double* r1, double* r2, const char* name) noexcept;
void element_error_complex(int32_t code, int32_t index, const float* a, const float* b, float* r1,
                           float* r2, const char* name) noexcept;
void element_error_strided(int32_t code, int32_t index, const double* a, int32_t inca,
                           const double* b, int32_t incb, double* r1, int32_t incr1, double* r2,
                           int32_t incr2, const char* name) noexcept;
void element_error_strided(int32_t code, int32_t index, const float* a, int32_t inca,
                           const float* b, int32_t incb, float* r1, int32_t incr1, float* r2,
                           int32_t incr2, const char* name) noexcept;

}  // namespace orba::vector
