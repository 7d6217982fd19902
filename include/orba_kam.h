/* Orba: elementwise mathematics over arrays.
 *
 * Every function computes y[i] = f(a[i]) (or f(a[i], b[i])) for i = 0 ... n-1. Arrays are
 * contiguous, need no alignment, and an output may be the same array as an input. Functions return
 * nothing: results are in the arrays, the outcome is in the calling thread's status word. */
#ifndef ORBA_KAM_H
#define ORBA_KAM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Complex elements: real part first. */
typedef struct {
  float real, imag;
} KamComplex8;
typedef struct {
  double real, imag;
} KamComplex16;

/* Fields of the mode word. A field of zero given to kamSetMode keeps what is there. */
enum {
  /* accuracy, bits 0 to 3 */
  KAM_LA = 0x1, /* low: error below 1 unit in the last place */
  KAM_HA = 0x2, /* high: error close to half a unit (the default) */
  KAM_EP = 0x3, /* enhanced performance: half of the significant bits */
  KAM_ACCURACY_MASK = 0xF,
  /* error mode, bits 8 to 15: what an element in error causes */
  KAM_ERRMODE_IGNORE = 0x100,    /* sets the status, nothing more */
  KAM_ERRMODE_ERRNO = 0x200,     /* sets errno */
  KAM_ERRMODE_STDERR = 0x400,    /* prints a text */
  KAM_ERRMODE_EXCEPT = 0x800,    /* raises the floating-point exception */
  KAM_ERRMODE_CALLBACK = 0x1000, /* calls the callback */
  KAM_ERRMODE_NOERR = 0x2000,    /* nothing, not even the status */
  KAM_ERRMODE_DEFAULT = 0x1A00,
  KAM_ERRMODE_MASK = 0xFF00,
  /* denormal numbers, bits 18 to 21 */
  KAM_DENORMALS_FLUSH = 0x280000, /* denormal arguments and results count as zero */
  KAM_DENORMALS_KEEP = 0x140000,
  KAM_DENORMALS_MASK = 0x3C0000,
  /* exceptions left unmasked by KAM_ERRMODE_EXCEPT, bits 24 to 27 */
  KAM_TRAP_INVALID = 0x1000000,
  KAM_TRAP_DIVBYZERO = 0x2000000,
  KAM_TRAP_OVERFLOW = 0x4000000,
  KAM_TRAP_UNDERFLOW = 0x8000000,
  KAM_TRAP_MASK = 0xF000000
};

/* Values of the status word. Every write replaces it; only the caller clears it. */
enum {
  KAM_STATUS_OK = 0,
  KAM_STATUS_BADSIZE = -1, /* n is negative */
  KAM_STATUS_BADMEM = -2,  /* an array is a null pointer */
  KAM_STATUS_ERRDOM = 1,   /* an argument is out of the domain */
  KAM_STATUS_SING = 2,     /* an argument is a singularity */
  KAM_STATUS_OVERFLOW = 3,
  KAM_STATUS_UNDERFLOW = 4,
  KAM_STATUS_ACCURACYWARNING = 1000 /* the function has no such accuracy; results are valid */
};

/* What the error callback receives about one element. Values of single precision are widened. The
 * imaginary fields are set for complex functions only. */
typedef struct KamErrorContext {
  int32_t code;  /* KAM_STATUS_... */
  int32_t index; /* of the element in the caller's array */
  double a1, a2; /* arguments, real parts */
  double r1, r2; /* results, real parts; the callback may change them */
  char func_name[64];
  int32_t func_name_len;
  double a1_im, a2_im;
  double r1_im, r2_im;
} KamErrorContext;

/* A result other than 0 says that the error is finished: the results stay as they are and nothing
 * further is done. With 0 the other error modes follow and r1, r2 are stored. After an in-place call
 * the record shows the result as the argument.
 *
 * It runs on the thread that met the error: a long vector may be computed by several threads, so
 * calls of one callback may overlap. It must return: no longjmp and no exception may leave it.
 *
 * It may call the library, vector functions too, whose errors come to it in their turn. The status
 * of the thread is set before it runs and is not set again: what it leaves there stays, be it by
 * kamClearErrStatus or by vector calls of its own, of which a long one leaves its own status, also
 * of 0. A vector that several threads compute ends with the status of one of those whose status is
 * not 0. A mode or callback set in it holds for the thread it runs on; the other threads, and this
 * one unless it is the caller's, get the caller's again with the next long vector.
 *
 * Floating-point exceptions are masked while it runs, rounding is to nearest, and denormals are
 * flushed if the mode says so; it must leave these controls as it finds them. */
typedef int (*KamErrorCallBack)(KamErrorContext* context);

/* Mode, status and callback of the calling thread; setters return the old value. The lower-case
 * forms take their value by pointer. */
uint32_t kamSetMode(uint32_t mode);
uint32_t kamsetmode(const uint32_t* mode);
uint32_t kamGetMode(void);
uint32_t kamgetmode(void);
int32_t kamSetErrStatus(int32_t status);
int32_t kamseterrstatus(const int32_t* status);
int32_t kamGetErrStatus(void);
int32_t kamgeterrstatus(void);
int32_t kamClearErrStatus(void);
int32_t kamclearerrstatus(void);
KamErrorCallBack kamSetErrorCallBack(KamErrorCallBack callback);
KamErrorCallBack kamseterrorcallback(KamErrorCallBack callback);
KamErrorCallBack kamGetErrorCallBack(void);
KamErrorCallBack kamgeterrorcallback(void);
KamErrorCallBack kamClearErrorCallBack(void);
KamErrorCallBack kamclearerrorcallback(void);

#include "orba_kam_functions.h"

#ifdef __cplusplus
}
#endif

#endif
