/* The vector functions; part of orba_kam.h, which includes this file.
 * Made by tools/make_header.py from vector/functions.def: change it there.
 *
 * Each function comes in four forms per element type (s float, d double, c and z their complex):
 *   vdAdd   runs under the mode of the calling thread (accuracy, error handling, denormals);
 *   vmdAdd  runs under `mode` merged into the thread's mode, and merges the old word back: a field
 *           that was zero there keeps the value that `mode` gave it;
 *   vdadd, vmdadd  the same with everything but the arrays passed by pointer.
 * A negative n sets KAM_STATUS_BADSIZE, a null array KAM_STATUS_BADMEM (Pack and Unpack do not look);
 * both are reported on the standard output and leave all arrays as they are. With n = 0 nothing
 * happens. What a function makes of an element out of its domain is said with the function. */

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

/* Inverse hyperbolic sine ln(a + sqrt(a^2 + 1)) of any argument; zeros keep their sign. */
void vsAsinh(int32_t n, const float* a, float* y);
void vmsAsinh(int32_t n, const float* a, float* y, uint32_t mode);
void vsasinh(const int32_t* n, const float* a, float* y);
void vmsasinh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAsinh(int32_t n, const double* a, double* y);
void vmdAsinh(int32_t n, const double* a, double* y, uint32_t mode);
void vdasinh(const int32_t* n, const double* a, double* y);
void vmdasinh(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Inverse hyperbolic cosine ln(a + sqrt(a^2 - 1)). Domain a >= 1, KAM_STATUS_ERRDOM below; 0 for 1
 * exactly. */
void vsAcosh(int32_t n, const float* a, float* y);
void vmsAcosh(int32_t n, const float* a, float* y, uint32_t mode);
void vsacosh(const int32_t* n, const float* a, float* y);
void vmsacosh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAcosh(int32_t n, const double* a, double* y);
void vmdAcosh(int32_t n, const double* a, double* y, uint32_t mode);
void vdacosh(const int32_t* n, const double* a, double* y);
void vmdacosh(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Inverse hyperbolic tangent ln((1 + a)/(1 - a))/2; zeros keep their sign. Domain -1 < a < 1,
 * KAM_STATUS_ERRDOM outside; KAM_STATUS_SING at -1 and 1, with infinity of that sign. */
void vsAtanh(int32_t n, const float* a, float* y);
void vmsAtanh(int32_t n, const float* a, float* y, uint32_t mode);
void vsatanh(const int32_t* n, const float* a, float* y);
void vmsatanh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdAtanh(int32_t n, const double* a, double* y);
void vmdAtanh(int32_t n, const double* a, double* y, uint32_t mode);
void vdatanh(const int32_t* n, const double* a, double* y);
void vmdatanh(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Largest whole number that is not above a. Exact, with the sign of a; raises the inexact exception
 * where a is not whole (on processors with SSE4.2 and later). */
void vsFloor(int32_t n, const float* a, float* y);
void vmsFloor(int32_t n, const float* a, float* y, uint32_t mode);
void vsfloor(const int32_t* n, const float* a, float* y);
void vmsfloor(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdFloor(int32_t n, const double* a, double* y);
void vmdFloor(int32_t n, const double* a, double* y, uint32_t mode);
void vdfloor(const int32_t* n, const double* a, double* y);
void vmdfloor(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Smallest whole number that is not below a. Exact, with the sign of a (-0.5 gives -0); the inexact
 * exception as with Floor. */
void vsCeil(int32_t n, const float* a, float* y);
void vmsCeil(int32_t n, const float* a, float* y, uint32_t mode);
void vsceil(const int32_t* n, const float* a, float* y);
void vmsceil(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdCeil(int32_t n, const double* a, double* y);
void vmdCeil(int32_t n, const double* a, double* y, uint32_t mode);
void vdceil(const int32_t* n, const double* a, double* y);
void vmdceil(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Whole part of a, towards zero. Exact, with the sign of a; the inexact exception as with Floor. */
void vsTrunc(int32_t n, const float* a, float* y);
void vmsTrunc(int32_t n, const float* a, float* y, uint32_t mode);
void vstrunc(const int32_t* n, const float* a, float* y);
void vmstrunc(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdTrunc(int32_t n, const double* a, double* y);
void vmdTrunc(int32_t n, const double* a, double* y, uint32_t mode);
void vdtrunc(const int32_t* n, const double* a, double* y);
void vmdtrunc(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Whole number nearest to a, half away from zero. Exact, with the sign of a, without the inexact
 * exception. */
void vsRound(int32_t n, const float* a, float* y);
void vmsRound(int32_t n, const float* a, float* y, uint32_t mode);
void vsround(const int32_t* n, const float* a, float* y);
void vmsround(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdRound(int32_t n, const double* a, double* y);
void vmdRound(int32_t n, const double* a, double* y, uint32_t mode);
void vdround(const int32_t* n, const double* a, double* y);
void vmdround(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Whole number nearest to a, ties to the even one, whatever the caller's rounding mode. Exact, with the
 * sign of a. NearbyInt does not raise the inexact exception, Rint does as Floor. */
void vsNearbyInt(int32_t n, const float* a, float* y);
void vmsNearbyInt(int32_t n, const float* a, float* y, uint32_t mode);
void vsnearbyint(const int32_t* n, const float* a, float* y);
void vmsnearbyint(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdNearbyInt(int32_t n, const double* a, double* y);
void vmdNearbyInt(int32_t n, const double* a, double* y, uint32_t mode);
void vdnearbyint(const int32_t* n, const double* a, double* y);
void vmdnearbyint(const int32_t* n, const double* a, double* y, const uint32_t* mode);
void vsRint(int32_t n, const float* a, float* y);
void vmsRint(int32_t n, const float* a, float* y, uint32_t mode);
void vsrint(const int32_t* n, const float* a, float* y);
void vmsrint(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdRint(int32_t n, const double* a, double* y);
void vmdRint(int32_t n, const double* a, double* y, uint32_t mode);
void vdrint(const int32_t* n, const double* a, double* y);
void vmdrint(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Whole part of a, towards zero, and fraction, both with the sign of a. Exact, without the inexact
 * exception. The fraction of an infinity is a zero. */
void vsModf(int32_t n, const float* a, float* y, float* z);
void vmsModf(int32_t n, const float* a, float* y, float* z, uint32_t mode);
void vsmodf(const int32_t* n, const float* a, float* y, float* z);
void vmsmodf(const int32_t* n, const float* a, float* y, float* z, const uint32_t* mode);
void vdModf(int32_t n, const double* a, double* y, double* z);
void vmdModf(int32_t n, const double* a, double* y, double* z, uint32_t mode);
void vdmodf(const int32_t* n, const double* a, double* y, double* z);
void vmdmodf(const int32_t* n, const double* a, double* y, double* z, const uint32_t* mode);

/* (a*scalea + shifta) / (b*scaleb + shiftb), each operation rounded in this order, none of them fused;
 * the same at every accuracy. No element is reported: a zero divisor gives infinity or NaN. A call under
 * LA or HA leaves KAM_STATUS_ACCURACYWARNING unless it goes over several threads, as the accuracy of
 * sums that cancel is not that of the mode. */
void vsLinearFrac(int32_t n, const float* a, const float* b, float scalea, float shifta,
                  float scaleb, float shiftb, float* y);
void vmsLinearFrac(int32_t n, const float* a, const float* b, float scalea, float shifta,
                   float scaleb, float shiftb, float* y, uint32_t mode);
void vslinearfrac(const int32_t* n, const float* a, const float* b, const float* scalea,
                  const float* shifta, const float* scaleb, const float* shiftb, float* y);
void vmslinearfrac(const int32_t* n, const float* a, const float* b, const float* scalea,
                   const float* shifta, const float* scaleb, const float* shiftb, float* y,
                   const uint32_t* mode);
void vdLinearFrac(int32_t n, const double* a, const double* b, double scalea, double shifta,
                  double scaleb, double shiftb, double* y);
void vmdLinearFrac(int32_t n, const double* a, const double* b, double scalea, double shifta,
                   double scaleb, double shiftb, double* y, uint32_t mode);
void vdlinearfrac(const int32_t* n, const double* a, const double* b, const double* scalea,
                  const double* shifta, const double* scaleb, const double* shiftb, double* y);
void vmdlinearfrac(const int32_t* n, const double* a, const double* b, const double* scalea,
                   const double* shifta, const double* scaleb, const double* shiftb, double* y,
                   const uint32_t* mode);

/* y[i] = a[i * inca]: elements at equal distances, of any sign, counted in 64 bits. All Pack
 * and Unpack functions move bits, whatever they mean, run in the calling thread and check n alone: a null
 * array is no error that is reported. */
void vsPackI(int32_t n, const float* a, int32_t inca, float* y);
void vmsPackI(int32_t n, const float* a, int32_t inca, float* y, uint32_t mode);
void vspacki(const int32_t* n, const float* a, const int32_t* inca, float* y);
void vmspacki(const int32_t* n, const float* a, const int32_t* inca, float* y,
              const uint32_t* mode);
void vdPackI(int32_t n, const double* a, int32_t inca, double* y);
void vmdPackI(int32_t n, const double* a, int32_t inca, double* y, uint32_t mode);
void vdpacki(const int32_t* n, const double* a, const int32_t* inca, double* y);
void vmdpacki(const int32_t* n, const double* a, const int32_t* inca, double* y,
              const uint32_t* mode);
void vcPackI(int32_t n, const KamComplex8* a, int32_t inca, KamComplex8* y);
void vmcPackI(int32_t n, const KamComplex8* a, int32_t inca, KamComplex8* y, uint32_t mode);
void vcpacki(const int32_t* n, const KamComplex8* a, const int32_t* inca, KamComplex8* y);
void vmcpacki(const int32_t* n, const KamComplex8* a, const int32_t* inca, KamComplex8* y,
              const uint32_t* mode);
void vzPackI(int32_t n, const KamComplex16* a, int32_t inca, KamComplex16* y);
void vmzPackI(int32_t n, const KamComplex16* a, int32_t inca, KamComplex16* y, uint32_t mode);
void vzpacki(const int32_t* n, const KamComplex16* a, const int32_t* inca, KamComplex16* y);
void vmzpacki(const int32_t* n, const KamComplex16* a, const int32_t* inca, KamComplex16* y,
              const uint32_t* mode);

/* y[j] = a[i] for the j-th i whose ma[i] is not 0: the elements that a mask selects. */
void vsPackM(int32_t n, const float* a, const int32_t* ma, float* y);
void vmsPackM(int32_t n, const float* a, const int32_t* ma, float* y, uint32_t mode);
void vspackm(const int32_t* n, const float* a, const int32_t* ma, float* y);
void vmspackm(const int32_t* n, const float* a, const int32_t* ma, float* y, const uint32_t* mode);
void vdPackM(int32_t n, const double* a, const int32_t* ma, double* y);
void vmdPackM(int32_t n, const double* a, const int32_t* ma, double* y, uint32_t mode);
void vdpackm(const int32_t* n, const double* a, const int32_t* ma, double* y);
void vmdpackm(const int32_t* n, const double* a, const int32_t* ma, double* y,
              const uint32_t* mode);
void vcPackM(int32_t n, const KamComplex8* a, const int32_t* ma, KamComplex8* y);
void vmcPackM(int32_t n, const KamComplex8* a, const int32_t* ma, KamComplex8* y, uint32_t mode);
void vcpackm(const int32_t* n, const KamComplex8* a, const int32_t* ma, KamComplex8* y);
void vmcpackm(const int32_t* n, const KamComplex8* a, const int32_t* ma, KamComplex8* y,
              const uint32_t* mode);
void vzPackM(int32_t n, const KamComplex16* a, const int32_t* ma, KamComplex16* y);
void vmzPackM(int32_t n, const KamComplex16* a, const int32_t* ma, KamComplex16* y, uint32_t mode);
void vzpackm(const int32_t* n, const KamComplex16* a, const int32_t* ma, KamComplex16* y);
void vmzpackm(const int32_t* n, const KamComplex16* a, const int32_t* ma, KamComplex16* y,
              const uint32_t* mode);

/* y[i] = a[ia[i]]: elements by an index vector. */
void vsPackV(int32_t n, const float* a, const int32_t* ia, float* y);
void vmsPackV(int32_t n, const float* a, const int32_t* ia, float* y, uint32_t mode);
void vspackv(const int32_t* n, const float* a, const int32_t* ia, float* y);
void vmspackv(const int32_t* n, const float* a, const int32_t* ia, float* y, const uint32_t* mode);
void vdPackV(int32_t n, const double* a, const int32_t* ia, double* y);
void vmdPackV(int32_t n, const double* a, const int32_t* ia, double* y, uint32_t mode);
void vdpackv(const int32_t* n, const double* a, const int32_t* ia, double* y);
void vmdpackv(const int32_t* n, const double* a, const int32_t* ia, double* y,
              const uint32_t* mode);
void vcPackV(int32_t n, const KamComplex8* a, const int32_t* ia, KamComplex8* y);
void vmcPackV(int32_t n, const KamComplex8* a, const int32_t* ia, KamComplex8* y, uint32_t mode);
void vcpackv(const int32_t* n, const KamComplex8* a, const int32_t* ia, KamComplex8* y);
void vmcpackv(const int32_t* n, const KamComplex8* a, const int32_t* ia, KamComplex8* y,
              const uint32_t* mode);
void vzPackV(int32_t n, const KamComplex16* a, const int32_t* ia, KamComplex16* y);
void vmzPackV(int32_t n, const KamComplex16* a, const int32_t* ia, KamComplex16* y, uint32_t mode);
void vzpackv(const int32_t* n, const KamComplex16* a, const int32_t* ia, KamComplex16* y);
void vmzpackv(const int32_t* n, const KamComplex16* a, const int32_t* ia, KamComplex16* y,
              const uint32_t* mode);

/* y[i * incy] = a[i], in ascending order, so that the last element stays where incy is 0. */
void vsUnpackI(int32_t n, const float* a, float* y, int32_t incy);
void vmsUnpackI(int32_t n, const float* a, float* y, int32_t incy, uint32_t mode);
void vsunpacki(const int32_t* n, const float* a, float* y, const int32_t* incy);
void vmsunpacki(const int32_t* n, const float* a, float* y, const int32_t* incy,
                const uint32_t* mode);
void vdUnpackI(int32_t n, const double* a, double* y, int32_t incy);
void vmdUnpackI(int32_t n, const double* a, double* y, int32_t incy, uint32_t mode);
void vdunpacki(const int32_t* n, const double* a, double* y, const int32_t* incy);
void vmdunpacki(const int32_t* n, const double* a, double* y, const int32_t* incy,
                const uint32_t* mode);
void vcUnpackI(int32_t n, const KamComplex8* a, KamComplex8* y, int32_t incy);
void vmcUnpackI(int32_t n, const KamComplex8* a, KamComplex8* y, int32_t incy, uint32_t mode);
void vcunpacki(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* incy);
void vmcunpacki(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* incy,
                const uint32_t* mode);
void vzUnpackI(int32_t n, const KamComplex16* a, KamComplex16* y, int32_t incy);
void vmzUnpackI(int32_t n, const KamComplex16* a, KamComplex16* y, int32_t incy, uint32_t mode);
void vzunpacki(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* incy);
void vmzunpacki(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* incy,
                const uint32_t* mode);

/* y[i] = a[j] for the j-th i whose my[i] is not 0; the other elements of y are not touched. */
void vsUnpackM(int32_t n, const float* a, float* y, const int32_t* my);
void vmsUnpackM(int32_t n, const float* a, float* y, const int32_t* my, uint32_t mode);
void vsunpackm(const int32_t* n, const float* a, float* y, const int32_t* my);
void vmsunpackm(const int32_t* n, const float* a, float* y, const int32_t* my,
                const uint32_t* mode);
void vdUnpackM(int32_t n, const double* a, double* y, const int32_t* my);
void vmdUnpackM(int32_t n, const double* a, double* y, const int32_t* my, uint32_t mode);
void vdunpackm(const int32_t* n, const double* a, double* y, const int32_t* my);
void vmdunpackm(const int32_t* n, const double* a, double* y, const int32_t* my,
                const uint32_t* mode);
void vcUnpackM(int32_t n, const KamComplex8* a, KamComplex8* y, const int32_t* my);
void vmcUnpackM(int32_t n, const KamComplex8* a, KamComplex8* y, const int32_t* my, uint32_t mode);
void vcunpackm(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* my);
void vmcunpackm(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* my,
                const uint32_t* mode);
void vzUnpackM(int32_t n, const KamComplex16* a, KamComplex16* y, const int32_t* my);
void vmzUnpackM(int32_t n, const KamComplex16* a, KamComplex16* y, const int32_t* my,
                uint32_t mode);
void vzunpackm(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* my);
void vmzunpackm(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* my,
                const uint32_t* mode);

/* y[iy[i]] = a[i], in ascending order: of the elements that share an index the last one stays. */
void vsUnpackV(int32_t n, const float* a, float* y, const int32_t* iy);
void vmsUnpackV(int32_t n, const float* a, float* y, const int32_t* iy, uint32_t mode);
void vsunpackv(const int32_t* n, const float* a, float* y, const int32_t* iy);
void vmsunpackv(const int32_t* n, const float* a, float* y, const int32_t* iy,
                const uint32_t* mode);
void vdUnpackV(int32_t n, const double* a, double* y, const int32_t* iy);
void vmdUnpackV(int32_t n, const double* a, double* y, const int32_t* iy, uint32_t mode);
void vdunpackv(const int32_t* n, const double* a, double* y, const int32_t* iy);
void vmdunpackv(const int32_t* n, const double* a, double* y, const int32_t* iy,
                const uint32_t* mode);
void vcUnpackV(int32_t n, const KamComplex8* a, KamComplex8* y, const int32_t* iy);
void vmcUnpackV(int32_t n, const KamComplex8* a, KamComplex8* y, const int32_t* iy, uint32_t mode);
void vcunpackv(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* iy);
void vmcunpackv(const int32_t* n, const KamComplex8* a, KamComplex8* y, const int32_t* iy,
                const uint32_t* mode);
void vzUnpackV(int32_t n, const KamComplex16* a, KamComplex16* y, const int32_t* iy);
void vmzUnpackV(int32_t n, const KamComplex16* a, KamComplex16* y, const int32_t* iy,
                uint32_t mode);
void vzunpackv(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* iy);
void vmzunpackv(const int32_t* n, const KamComplex16* a, KamComplex16* y, const int32_t* iy,
                const uint32_t* mode);

/* Power a^b. Special arguments as C99, annex F.9.4.4, has them: 1 for b = 0 and for a = 1, of anything.
 * KAM_STATUS_ERRDOM for a zero to a negative power, with infinity, and for a negative number to a power
 * that is no integer, with NaN; KAM_STATUS_OVERFLOW and KAM_STATUS_UNDERFLOW for finite arguments whose
 * result is infinite, or below the normal numbers. A denormal result is rounded once. The logarithm and
 * its product with b are pairs of numbers. */
void vsPow(int32_t n, const float* a, const float* b, float* y);
void vmsPow(int32_t n, const float* a, const float* b, float* y, uint32_t mode);
void vspow(const int32_t* n, const float* a, const float* b, float* y);
void vmspow(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdPow(int32_t n, const double* a, const double* b, double* y);
void vmdPow(int32_t n, const double* a, const double* b, double* y, uint32_t mode);
void vdpow(const int32_t* n, const double* a, const double* b, double* y);
void vmdpow(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);

/* Power a^b of one exponent b for all elements: results, statuses and limits of Pow. The exponents 0, 1,
 * 2, 3, 1/2 and -1 take no logarithm. */
void vsPowx(int32_t n, const float* a, float b, float* y);
void vmsPowx(int32_t n, const float* a, float b, float* y, uint32_t mode);
void vspowx(const int32_t* n, const float* a, const float* b, float* y);
void vmspowx(const int32_t* n, const float* a, const float* b, float* y, const uint32_t* mode);
void vdPowx(int32_t n, const double* a, double b, double* y);
void vmdPowx(int32_t n, const double* a, double b, double* y, uint32_t mode);
void vdpowx(const int32_t* n, const double* a, const double* b, double* y);
void vmdpowx(const int32_t* n, const double* a, const double* b, double* y, const uint32_t* mode);

/* Hyperbolic sine; zeros keep their sign. KAM_STATUS_OVERFLOW for a finite argument from 710.4758600739440
 * on, of either sign (in single precision 89.41599). By the exponentials of a and -a from one reduction.
 */
void vsSinh(int32_t n, const float* a, float* y);
void vmsSinh(int32_t n, const float* a, float* y, uint32_t mode);
void vssinh(const int32_t* n, const float* a, float* y);
void vmssinh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdSinh(int32_t n, const double* a, double* y);
void vmdSinh(int32_t n, const double* a, double* y, uint32_t mode);
void vdsinh(const int32_t* n, const double* a, double* y);
void vmdsinh(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Hyperbolic cosine; 1 for 0 exactly. KAM_STATUS_OVERFLOW and method: see Sinh. */
void vsCosh(int32_t n, const float* a, float* y);
void vmsCosh(int32_t n, const float* a, float* y, uint32_t mode);
void vscosh(const int32_t* n, const float* a, float* y);
void vmscosh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdCosh(int32_t n, const double* a, double* y);
void vmdCosh(int32_t n, const double* a, double* y, uint32_t mode);
void vdcosh(const int32_t* n, const double* a, double* y);
void vmdcosh(const int32_t* n, const double* a, double* y, const uint32_t* mode);

/* Hyperbolic tangent; any argument. Zeros keep their sign, infinities give 1 with theirs, as do all
 * arguments from 19.0616 on (in single precision 9.0110). Addition theorem about multiples of ln2/2.
 */
void vsTanh(int32_t n, const float* a, float* y);
void vmsTanh(int32_t n, const float* a, float* y, uint32_t mode);
void vstanh(const int32_t* n, const float* a, float* y);
void vmstanh(const int32_t* n, const float* a, float* y, const uint32_t* mode);
void vdTanh(int32_t n, const double* a, double* y);
void vmdTanh(int32_t n, const double* a, double* y, uint32_t mode);
void vdtanh(const int32_t* n, const double* a, double* y);
void vmdtanh(const int32_t* n, const double* a, double* y, const uint32_t* mode);
