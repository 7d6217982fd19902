/* Orba: random streams and variates, summary statistics (orba_rau_ss.h).
 *
 * A stream is the running state of one basic generator. Functions that draw numbers advance it;
 * a stream belongs to one thread at a time, different streams are independent. Every function
 * returns a status: 0 or one of the negative codes below. A fault in an argument is also reported
 * on the standard output with the argument's position.
 *
 * The names in lower case are the same functions for callers that pass everything by address:
 * every scalar, and a stream handle too, is given by its address. */
#ifndef ORBA_RAU_H
#define ORBA_RAU_H

#include <stdint.h>

#include "orba_rau_ss.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct StreamState StreamState;

/* Generators. Wichmann-Hill has 273 sub-generators, RAU_BRNG_WH + s for s = 0 ... 272. */
enum {
  RAU_BRNG_MCG31M1 = 0x100000,  /* multiplicative congruential, modulus 2^31 - 1 */
  RAU_BRNG_R250 = 0x200000,     /* generalised feedback shift register, lags 250 and 147 */
  RAU_BRNG_MRG32K3A = 0x300000, /* combined multiple recursive, two components of order 3 */
  RAU_BRNG_MCG59 = 0x400000,    /* multiplicative congruential, modulus 2^59 */
  RAU_BRNG_WH = 0x500000        /* Wichmann-Hill, sum of four congruential components */
};

/* Methods. RAU_METHOD_ACCURATE is a flag: results never leave the distribution's closed range. */
enum { RAU_METHOD_STD = 0, RAU_METHOD_ACCURATE = 0x40000000 };

enum {
  RAU_STATUS_OK = 0,
  RAU_ERROR_BAD_OPERATION = -2, /* a generator was asked for an unknown operation */
  RAU_ERROR_BADARGS = -3,
  RAU_ERROR_MEM_FAILURE = -4,
  RAU_ERROR_NULL_PTR = -5,
  RAU_ERROR_INVALID_BRNG_INDEX = -1000,
  RAU_ERROR_LEAPFROG_UNSUPPORTED = -1002,
  RAU_ERROR_SKIPAHEAD_UNSUPPORTED = -1003,
  RAU_ERROR_SKIPAHEADEX_UNSUPPORTED = -1004,
  RAU_ERROR_BAD_STREAM = -1006, /* not a live stream */
  RAU_ERROR_BAD_STREAM_STATE_SIZE = -1008,
  RAU_ERROR_BAD_WORD_SIZE = -1009,
  RAU_ERROR_BAD_NSEEDS = -1010,
  RAU_ERROR_BAD_NBITS = -1011,
  RAU_ERROR_QRNG_PERIOD_ELAPSED = -1012,
  RAU_ERROR_LEAPFROG_NSTREAMS_TOO_BIG = -1013,
  RAU_ERROR_NO_NUMBER_BITS = -1014, /* the generator's words are not uniform in all bits */
  RAU_ERROR_BAD_UPDATE = -1120,
  RAU_ERROR_NO_NUMBERS = -1121,
  RAU_ERROR_BAD_ABSTRACT_OUTPUT = -1122,
  RAU_ERROR_NONDETERM_NOT_SUPPORTED = -1130,
  RAU_ERROR_NONDETERM_RETRIES_EXCEEDED = -1131,
  RAU_ERROR_ARS5_NOT_SUPPORTED = -1140
};

/* What a generator is, and its entry points. A caller's own generator is registered with a record
 * of this kind. Its state follows the 16 bytes of the stream's head and is laid out as it likes;
 * StreamStateSize counts head and state.
 *   InitStream(0, stream, n, seed)        seeds from n 32-bit words (n may be 0 or less)
 *   InitStream(1, stream, count, &k)      leapfrog: keeps outputs k, k + count, k + 2 count ...
 *   InitStream(2, stream, 2, &nskip)      skips an unsigned 64-bit number of outputs
 *   InitStream(3, stream, count, words)   skips a number of `count` 64-bit words, low word first
 *   sBRng, dBRng(stream, n, r, a, b)      n uniform numbers in [a, b)
 *   iBRng(stream, n, r)                   n raw outputs of WordSize bytes
 * Each returns a status: 0, RAU_ERROR_..._UNSUPPORTED, or a negative code that the caller gets. A
 * state may be a copy of another generator's bytes (rauCopyStreamState). */
typedef struct {
  int32_t StreamStateSize; /* bytes */
  int32_t NSeeds;          /* 32-bit words of a full seed */
  int32_t IncludesZero;    /* 1 if a raw output can be 0 */
  int32_t WordSize;        /* bytes of a raw output: 4, 8 or 16 */
  int32_t NBits;           /* significant bits of a raw output */
  int32_t (*InitStream)(int32_t operation, StreamState* stream, int32_t count, const void* params);
  int32_t (*sBRng)(StreamState* stream, int32_t n, float* r, float a, float b);
  int32_t (*dBRng)(StreamState* stream, int32_t n, double* r, double a, double b);
  int32_t (*iBRng)(StreamState* stream, int32_t n, void* r);
} BrngProperties;

/* ---- Streams ---- */

/* Makes a stream of generator `brng` from one seed word, or from n seed words (with n of 0 or less:
 * the generator's default seed). Any seed is accepted; each generator says how it maps bad ones.
 * RAU_ERROR_INVALID_BRNG_INDEX, then for a null address RAU_ERROR_NULL_PTR (stream) and
 * RAU_ERROR_BADARGS (params with n above 0), then RAU_ERROR_MEM_FAILURE: *stream stays as it was. Any
 * other negative status is the generator's own refusal of the seed: the stream is there all the same,
 * to be deleted. */
int32_t rauNewStream(StreamState** stream, int32_t brng, uint32_t seed);
int32_t raunewstream(StreamState** stream, const int32_t* brng, const uint32_t* seed);
int32_t rauNewStreamEx(StreamState** stream, int32_t brng, int32_t n, const uint32_t* params);
int32_t raunewstreamex(StreamState** stream, const int32_t* brng, const int32_t* n,
                       const uint32_t* params);

/* Frees a stream and sets the handle to null. */
int32_t rauDeleteStream(StreamState** stream);
int32_t raudeletestream(StreamState** stream);

/* A new stream in the state of `source`, with all that distributions have stored in it. */
int32_t rauCopyStream(StreamState** newstream, const StreamState* source);
int32_t raucopystream(StreamState** newstream, const StreamState* const* source);

/* Gives `dest` the seed part of the state of `source` (NSeeds * WordSize bytes, or what either state
 * has) and what distributions have stored there. The generators are not compared. */
int32_t rauCopyStreamState(StreamState* dest, const StreamState* source);
int32_t raucopystreamstate(StreamState* const* dest, const StreamState* const* source);

/* Makes the stream give outputs k, k + nstreams, k + 2 nstreams ... of its present sequence
 * (MCG31m1, MCG59, Wichmann-Hill). Not undone but by a new stream. A refusal changes nothing. */
int32_t rauLeapfrogStream(StreamState* stream, int32_t k, int32_t nstreams);
int32_t rauleapfrogstream(StreamState* const* stream, const int32_t* k, const int32_t* nstreams);

/* Moves on by nskip outputs, taken as an unsigned number, in logarithmic time (all but R250). */
int32_t rauSkipAheadStream(StreamState* stream, int64_t nskip);
int32_t rauskipaheadstream(StreamState* const* stream, const int64_t* nskip);

/* The identifier that the stream was made with, or a negative status. */
int32_t rauGetStreamStateBrng(const StreamState* stream);
int32_t raugetstreamstatebrng(const StreamState* const* stream);

/* Bytes of the stream's saved image, or a negative status. */
int32_t rauGetStreamSize(const StreamState* stream);
int32_t raugetstreamsize(const StreamState* const* stream);

/* Adds a generator of the caller's; returns its identifier or a negative status
 * (RAU_ERROR_MEM_FAILURE once 512 generators are known). Not to be called while other threads use
 * streams. */
int32_t rauRegisterBrng(const BrngProperties* properties);
int32_t rauregisterbrng(const BrngProperties* properties);

/* The record of a generator, and how many generators are known. */
int32_t rauGetBrngProperties(int32_t brng, BrngProperties* properties);
int32_t raugetbrngproperties(const int32_t* brng, BrngProperties* properties);
int32_t rauGetNumRegBrngs(void);
int32_t raugetnumregbrngs(void);

/* ---- Variates: n values into r, RAU_ERROR_BADARGS for a fault in an argument ---- */

/* Uniform real numbers in [a, b), a < b: the generator's integer u becomes u * ((b - a) * c) + a,
 * c the inverse of its range, so for long intervals rounding can give b itself. With
 * RAU_METHOD_ACCURATE results are kept within [a, b]. A NaN for a or b passes and gives NaN. */
int32_t vdRngUniform(int32_t method, StreamState* stream, int32_t n, double* r, double a, double b);
int32_t vdrnguniform(const int32_t* method, StreamState* const* stream, const int32_t* n, double* r,
                     const double* a, const double* b);
int32_t vsRngUniform(int32_t method, StreamState* stream, int32_t n, float* r, float a, float b);
int32_t vsrnguniform(const int32_t* method, StreamState* const* stream, const int32_t* n, float* r,
                     const float* a, const float* b);

/* Uniform integers a ... b - 1, the floor of a uniform real number in [a, b); INT32_MIN for a number of
 * a registered generator that no int32_t can hold. */
int32_t viRngUniform(int32_t method, StreamState* stream, int32_t n, int32_t* r, int32_t a,
                     int32_t b);
int32_t virnguniform(const int32_t* method, StreamState* const* stream, const int32_t* n,
                     int32_t* r, const int32_t* a, const int32_t* b);

/* The generator's raw outputs, WordSize bytes each. */
int32_t viRngUniformBits(int32_t method, StreamState* stream, int32_t n, uint32_t* r);
int32_t virnguniformbits(const int32_t* method, StreamState* const* stream, const int32_t* n,
                         uint32_t* r);

/* Uniformly distributed bits, 32 or 64 an element, from generators whose words are uniform in all
 * bits (MCG59 of the linear ones: the upper 32 bits of each output); from the others
 * RAU_ERROR_NO_NUMBER_BITS, with the stream as it was. 64 bits take two outputs, the first one in
 * the low half. */
int32_t viRngUniformBits32(int32_t method, StreamState* stream, int32_t n, uint32_t* r);
int32_t virnguniformbits32(const int32_t* method, StreamState* const* stream, const int32_t* n,
                           uint32_t* r);
int32_t viRngUniformBits64(int32_t method, StreamState* stream, int32_t n, uint64_t* r);
int32_t virnguniformbits64(const int32_t* method, StreamState* const* stream, const int32_t* n,
                           uint64_t* r);

#ifdef __cplusplus
}
#endif

#endif
