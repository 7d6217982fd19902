/* The vector functions; part of orba_kam.h, which includes this file.
 * Made by tools/make_header.py from vector/functions.def: change it there.
 *
 * Each function comes in four forms per element type (s float, d double, c and z their complex):
 *   vdAdd   runs under the mode of the calling thread (accuracy, error handling, denormals);
 *   vmdAdd  runs under `mode` merged into the thread's mode, and merges the old word back: a field
 *           that was zero there keeps the value that `mode` gave it;
 *   vdadd, vmdadd  the same with everything but the arrays passed by pointer.
 * A negative n sets KAM_STATUS_BADSIZE, a null array KAM_STATUS_BADMEM; both are reported on the
 * standard output and leave all arrays as they are. With n = 0 nothing happens. What a function
 * makes of an element out of its domain is said with the function. */

/* Sum a + b. IEEE 754 addition, correctly rounded at every accuracy.
 * Complex: KAM_STATUS_OVERFLOW at LA and HA when finite parts give an infinite part. */
void vsAdd(int32_t n, const float* a, const float* b, float* y);
void vmsAdd(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vsadd(const int32_t* n, const float* a, const float* b, float* y);
void vmsadd(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdAdd(int32_t n, const double* a, const double* b, double* y);
void vmdAdd(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdadd(const int32_t* n, const double* a, const double* b, double* y);
void vmdadd(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);
void vcAdd(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcAdd(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y, uint32_t mode);
void vcadd(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcadd(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
            const uint32_t* mode);
void vzAdd(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzAdd(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            uint32_t mode);
void vzadd(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzadd(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            const uint32_t* mode);

/* Difference a - b. IEEE 754 subtraction, correctly rounded at every accuracy.
 * Complex: KAM_STATUS_OVERFLOW at LA and HA when finite parts give an infinite part. */
void vsSub(int32_t n, const float* a, const float* b, float* y);
void vmsSub(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vssub(const int32_t* n, const float* a, const float* b, float* y);
void vmssub(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdSub(int32_t n, const double* a, const double* b, double* y);
void vmdSub(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdsub(const int32_t* n, const double* a, const double* b, double* y);
void vmdsub(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);
void vcSub(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcSub(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y, uint32_t mode);
void vcsub(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcsub(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
            const uint32_t* mode);
void vzSub(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzSub(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            uint32_t mode);
void vzsub(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzsub(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            const uint32_t* mode);

/* Product a * b. Real: IEEE 754 multiplication, correctly rounded at every accuracy.
 * Complex: KAM_STATUS_OVERFLOW when finite parts give an infinite part. */
void vsMul(int32_t n, const float* a, const float* b, float* y);
void vmsMul(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vsmul(const int32_t* n, const float* a, const float* b, float* y);
void vmsmul(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdMul(int32_t n, const double* a, const double* b, double* y);
void vmdMul(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdmul(const int32_t* n, const double* a, const double* b, double* y);
void vmdmul(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);
void vcMul(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcMul(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y, uint32_t mode);
void vcmul(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcmul(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
            const uint32_t* mode);
void vzMul(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzMul(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            uint32_t mode);
void vzmul(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzmul(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            const uint32_t* mode);

/* Product a * conj(b). KAM_STATUS_OVERFLOW when finite parts give an infinite part. */
void vcMulByConj(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcMulByConj(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
                  uint32_t mode);
void vcmulbyconj(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcmulbyconj(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
                  const uint32_t* mode);
void vzMulByConj(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzMulByConj(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
                  uint32_t mode);
void vzmulbyconj(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzmulbyconj(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
                  const uint32_t* mode);

/* Conjugate of a. */
void vcConj(int32_t n, const KamComplex8* a, KamComplex8* y);
void vmcConj(int32_t n, const KamComplex8* a, KamComplex8* y, uint32_t mode);
void vcconj(const int32_t* n, const KamComplex8* a, KamComplex8* y);
void vmcconj(const int32_t* n, const KamComplex8* a, KamComplex8* y, const uint32_t* mode);
void vzConj(int32_t n, const KamComplex16* a, KamComplex16* y);
void vmzConj(int32_t n, const KamComplex16* a, KamComplex16* y, uint32_t mode);
void vzconj(const int32_t* n, const KamComplex16* a, KamComplex16* y);
void vmzconj(const int32_t* n, const KamComplex16* a, KamComplex16* y, const uint32_t* mode);

/* Square a * a. IEEE 754 multiplication, correctly rounded at every accuracy. */
void vsSqr(int32_t n, const float* a, float* y);
void vmsSqr(int32_t n, const float* a, float* y, uint32_t mode);
void vssqr(const int32_t* n, const float* a, float* y);
void vmssqr(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdSqr(int32_t n, const double* a, double* y);
void vmdSqr(int32_t n, const double* a, double* y, uint32_t mode);
void vdsqr(const int32_t* n, const double* a, double* y);
void vmdsqr(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Magnitude |a|. Clears the sign bit, of NaN too. */
void vsAbs(int32_t n, const float* a, float* y);
void vmsAbs(int32_t n, const float* a, float* y, uint32_t mode);
void vsabs(const int32_t* n, const float* a, float* y);
void vmsabs(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAbs(int32_t n, const double* a, double* y);
void vmdAbs(int32_t n, const double* a, double* y, uint32_t mode);
void vdabs(const int32_t* n, const double* a, double* y);
void vmdabs(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Quotient a / b. Real: KAM_STATUS_SING for a zero divisor, 0/0 included.
 * Complex: KAM_STATUS_OVERFLOW when finite parts give an infinite part; a zero divisor is silent.
 */
void vsDiv(int32_t n, const float* a, const float* b, float* y);
void vmsDiv(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vsdiv(const int32_t* n, const float* a, const float* b, float* y);
void vmsdiv(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdDiv(int32_t n, const double* a, const double* b, double* y);
void vmdDiv(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vddiv(const int32_t* n, const double* a, const double* b, double* y);
void vmddiv(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);
void vcDiv(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcDiv(int32_t n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y, uint32_t mode);
void vcdiv(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y);
void vmcdiv(const int32_t* n, const KamComplex8* a, const KamComplex8* b, KamComplex8* y,
            const uint32_t* mode);
void vzDiv(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzDiv(int32_t n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            uint32_t mode);
void vzdiv(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y);
void vmzdiv(const int32_t* n, const KamComplex16* a, const KamComplex16* b, KamComplex16* y,
            const uint32_t* mode);

/* Reciprocal 1 / a. KAM_STATUS_SING at both zeros. */
void vsInv(int32_t n, const float* a, float* y);
void vmsInv(int32_t n, const float* a, float* y, uint32_t mode);
void vsinv(const int32_t* n, const float* a, float* y);
void vmsinv(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdInv(int32_t n, const double* a, double* y);
void vmdInv(int32_t n, const double* a, double* y, uint32_t mode);
void vdinv(const int32_t* n, const double* a, double* y);
void vmdinv(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Square root. Domain a >= 0, KAM_STATUS_ERRDOM below; -0 gives -0. */
void vsSqrt(int32_t n, const float* a, float* y);
void vmsSqrt(int32_t n, const float* a, float* y, uint32_t mode);
void vssqrt(const int32_t* n, const float* a, float* y);
void vmssqrt(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdSqrt(int32_t n, const double* a, double* y);
void vmdSqrt(int32_t n, const double* a, double* y, uint32_t mode);
void vdsqrt(const int32_t* n, const double* a, double* y);
void vmdsqrt(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Reciprocal square root 1 / sqrt(a). Domain a > 0, KAM_STATUS_ERRDOM below zero,
 * KAM_STATUS_SING at both zeros (infinity by the sign of zero); infinity gives 0. */
void vsInvSqrt(int32_t n, const float* a, float* y);
void vmsInvSqrt(int32_t n, const float* a, float* y, uint32_t mode);
void vsinvsqrt(const int32_t* n, const float* a, float* y);
void vmsinvsqrt(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdInvSqrt(int32_t n, const double* a, double* y);
void vmdInvSqrt(int32_t n, const double* a, double* y, uint32_t mode);
void vdinvsqrt(const int32_t* n, const double* a, double* y);
void vmdinvsqrt(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Cube root a^(1/3); any argument, zeros keep their sign. */
void vsCbrt(int32_t n, const float* a, float* y);
void vmsCbrt(int32_t n, const float* a, float* y, uint32_t mode);
void vscbrt(const int32_t* n, const float* a, float* y);
void vmscbrt(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdCbrt(int32_t n, const double* a, double* y);
void vmdCbrt(int32_t n, const double* a, double* y, uint32_t mode);
void vdcbrt(const int32_t* n, const double* a, double* y);
void vmdcbrt(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Reciprocal cube root a^(-1/3); any argument. KAM_STATUS_SING at both zeros (infinity by the sign of
 * zero); infinities give zeros of their sign. */
void vsInvCbrt(int32_t n, const float* a, float* y);
void vmsInvCbrt(int32_t n, const float* a, float* y, uint32_t mode);
void vsinvcbrt(const int32_t* n, const float* a, float* y);
void vmsinvcbrt(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdInvCbrt(int32_t n, const double* a, double* y);
void vmdInvCbrt(int32_t n, const double* a, double* y, uint32_t mode);
void vdinvcbrt(const int32_t* n, const double* a, double* y);
void vmdinvcbrt(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Square of the cube root, |a|^(2/3); any argument. */
void vsPow2o3(int32_t n, const float* a, float* y);
void vmsPow2o3(int32_t n, const float* a, float* y, uint32_t mode);
void vspow2o3(const int32_t* n, const float* a, float* y);
void vmspow2o3(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdPow2o3(int32_t n, const double* a, double* y);
void vmdPow2o3(int32_t n, const double* a, double* y, uint32_t mode);
void vdpow2o3(const int32_t* n, const double* a, double* y);
void vmdpow2o3(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* a^(3/2). Domain a >= 0, KAM_STATUS_ERRDOM below; 0 for both zeros, and in double precision below
 * 0x1.ffp-717, where only the smallest number could be nearer. Results that overflow are infinite and not
 * reported; denormal ones are rounded once. */
void vsPow3o2(int32_t n, const float* a, float* y);
void vmsPow3o2(int32_t n, const float* a, float* y, uint32_t mode);
void vspow3o2(const int32_t* n, const float* a, float* y);
void vmspow3o2(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdPow3o2(int32_t n, const double* a, double* y);
void vmdPow3o2(int32_t n, const double* a, double* y, uint32_t mode);
void vdpow3o2(const int32_t* n, const double* a, double* y);
void vmdpow3o2(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Hypotenuse sqrt(a^2 + b^2), of any arguments: no square overflows or underflows on the way. Infinity
 * if either argument is infinite, whatever the other; a result that overflows is not reported. */
void vsHypot(int32_t n, const float* a, const float* b, float* y);
void vmsHypot(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vshypot(const int32_t* n, const float* a, const float* b, float* y);
void vmshypot(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdHypot(int32_t n, const double* a, const double* b, double* y);
void vmdHypot(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdhypot(const int32_t* n, const double* a, const double* b, double* y);
void vmdhypot(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);

/* Exponential e^a. KAM_STATUS_OVERFLOW for a finite argument above 709.78 (in single precision
 * 88.72), KAM_STATUS_UNDERFLOW for a finite one whose result is denormal or zero. */
void vsExp(int32_t n, const float* a, float* y);
void vmsExp(int32_t n, const float* a, float* y, uint32_t mode);
void vsexp(const int32_t* n, const float* a, float* y);
void vmsexp(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdExp(int32_t n, const double* a, double* y);
void vmdExp(int32_t n, const double* a, double* y, uint32_t mode);
void vdexp(const int32_t* n, const double* a, double* y);
void vmdexp(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* e^a - 1, accurate near zero too; -0 gives -0. KAM_STATUS_OVERFLOW for a finite argument above
 * 709.78 (single precision: 88.72). */
void vsExpm1(int32_t n, const float* a, float* y);
void vmsExpm1(int32_t n, const float* a, float* y, uint32_t mode);
void vsexpm1(const int32_t* n, const float* a, float* y);
void vmsexpm1(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdExpm1(int32_t n, const double* a, double* y);
void vmdExpm1(int32_t n, const double* a, double* y, uint32_t mode);
void vdexpm1(const int32_t* n, const double* a, double* y);
void vmdexpm1(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Natural logarithm. Domain a > 0, KAM_STATUS_ERRDOM below; KAM_STATUS_SING at both zeros, with
 * -infinity. */
void vsLn(int32_t n, const float* a, float* y);
void vmsLn(int32_t n, const float* a, float* y, uint32_t mode);
void vsln(const int32_t* n, const float* a, float* y);
void vmsln(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdLn(int32_t n, const double* a, double* y);
void vmdLn(int32_t n, const double* a, double* y, uint32_t mode);
void vdln(const int32_t* n, const double* a, double* y);
void vmdln(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Decimal logarithm. Domain a > 0, KAM_STATUS_ERRDOM below; KAM_STATUS_SING at both zeros, with
 * -infinity. Powers of ten give exact results at HA. */
void vsLog10(int32_t n, const float* a, float* y);
void vmsLog10(int32_t n, const float* a, float* y, uint32_t mode);
void vslog10(const int32_t* n, const float* a, float* y);
void vmslog10(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdLog10(int32_t n, const double* a, double* y);
void vmdLog10(int32_t n, const double* a, double* y, uint32_t mode);
void vdlog10(const int32_t* n, const double* a, double* y);
void vmdlog10(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* ln(1 + a), accurate near zero too; -0 gives -0. Domain a > -1, KAM_STATUS_ERRDOM below;
 * KAM_STATUS_SING at -1, with -infinity. */
void vsLog1p(int32_t n, const float* a, float* y);
void vmsLog1p(int32_t n, const float* a, float* y, uint32_t mode);
void vslog1p(const int32_t* n, const float* a, float* y);
void vmslog1p(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdLog1p(int32_t n, const double* a, double* y);
void vmdLog1p(int32_t n, const double* a, double* y, uint32_t mode);
void vdlog1p(const int32_t* n, const double* a, double* y);
void vmdlog1p(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Sine of an angle a in radians, of any size; -0 gives -0. KAM_STATUS_ERRDOM at both infinities, with
 * NaN. Reduction by Cody and Waite, of huge arguments by Payne and Hanek. */
void vsSin(int32_t n, const float* a, float* y);
void vmsSin(int32_t n, const float* a, float* y, uint32_t mode);
void vssin(const int32_t* n, const float* a, float* y);
void vmssin(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdSin(int32_t n, const double* a, double* y);
void vmdSin(int32_t n, const double* a, double* y, uint32_t mode);
void vdsin(const int32_t* n, const double* a, double* y);
void vmdsin(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Cosine of an angle a in radians, of any size; 1 for 0 exactly. KAM_STATUS_ERRDOM at both infinities,
 * with NaN. Method: see Sin. */
void vsCos(int32_t n, const float* a, float* y);
void vmsCos(int32_t n, const float* a, float* y, uint32_t mode);
void vscos(const int32_t* n, const float* a, float* y);
void vmscos(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdCos(int32_t n, const double* a, double* y);
void vmdCos(int32_t n, const double* a, double* y, uint32_t mode);
void vdcos(const int32_t* n, const double* a, double* y);
void vmdcos(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Sine and cosine of an angle a in radians. KAM_STATUS_ERRDOM at both infinities, with NaN twice.
 */
void vsSinCos(int32_t n, const float* a, float* y, float* z);
void vmsSinCos(int32_t n, const float* a, float* y, float* z, uint32_t mode);
void vssincos(const int32_t* n, const float* a, float* y, float* z);
void vmssincos(const int32_t* n, const float* a, float* y, float* z, const uint32_t* mode);
void vdSinCos(int32_t n, const double* a, double* y, double* z);
void vmdSinCos(int32_t n, const double* a, double* y, double* z, uint32_t mode);
void vdsincos(const int32_t* n, const double* a, double* y, double* z);
void vmdsincos(const int32_t* n, const double* a, double* y, double* z, const uint32_t* mode);

/* Tangent of an angle a in radians, of any size; -0 gives -0. KAM_STATUS_ERRDOM at both infinities,
 * with NaN; no argument is so near a pole that the result overflows. */
void vsTan(int32_t n, const float* a, float* y);
void vmsTan(int32_t n, const float* a, float* y, uint32_t mode);
void vstan(const int32_t* n, const float* a, float* y);
void vmstan(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdTan(int32_t n, const double* a, double* y);
void vmdTan(int32_t n, const double* a, double* y, uint32_t mode);
void vdtan(const int32_t* n, const double* a, double* y);
void vmdtan(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Arcsine, in [-pi/2, pi/2]. Domain -1 <= a <= 1, KAM_STATUS_ERRDOM outside; zeros keep their sign.
 */
void vsAsin(int32_t n, const float* a, float* y);
void vmsAsin(int32_t n, const float* a, float* y, uint32_t mode);
void vsasin(const int32_t* n, const float* a, float* y);
void vmsasin(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAsin(int32_t n, const double* a, double* y);
void vmdAsin(int32_t n, const double* a, double* y, uint32_t mode);
void vdasin(const int32_t* n, const double* a, double* y);
void vmdasin(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Arccosine, in [0, pi]. Domain -1 <= a <= 1, KAM_STATUS_ERRDOM outside. */
void vsAcos(int32_t n, const float* a, float* y);
void vmsAcos(int32_t n, const float* a, float* y, uint32_t mode);
void vsacos(const int32_t* n, const float* a, float* y);
void vmsacos(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAcos(int32_t n, const double* a, double* y);
void vmdAcos(int32_t n, const double* a, double* y, uint32_t mode);
void vdacos(const int32_t* n, const double* a, double* y);
void vmdacos(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Arctangent, in [-pi/2, pi/2]; any argument. Zeros keep their sign. */
void vsAtan(int32_t n, const float* a, float* y);
void vmsAtan(int32_t n, const float* a, float* y, uint32_t mode);
void vsatan(const int32_t* n, const float* a, float* y);
void vmsatan(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAtan(int32_t n, const double* a, double* y);
void vmdAtan(int32_t n, const double* a, double* y, uint32_t mode);
void vdatan(const int32_t* n, const double* a, double* y);
void vmdatan(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Angle of the point (b, a), the arctangent of a/b in its quadrant, in [-pi, pi]; any arguments. Zeros
 * and infinities as C99, annex F.9.1.4, has them: the sign of a zero tells the side of an axis. A
 * denormal result is rounded once. */
void vsAtan2(int32_t n, const float* a, const float* b, float* y);
void vmsAtan2(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vsatan2(const int32_t* n, const float* a, const float* b, float* y);
void vmsatan2(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdAtan2(int32_t n, const double* a, const double* b, double* y);
void vmdAtan2(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdatan2(const int32_t* n, const double* a, const double* b, double* y);
void vmdatan2(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);
