// Four floats at a time: the elementary functions of the single-precision field computations.
//
// Polynomials of the Cephes library's single-precision functions (S. L. Moshier). Pointers need no alignment.
#pragma once

typedef float Float4 __attribute__((vector_size(16)));  // what x86 intrinsics call __m128

// Natural logarithm. Error below 1e-7 of the larger of 1 and the result; a denormal counts as the smallest normal
// number. NaN for x <= 0.
Float4 log_ps(Float4 x);

// Relative error below 1.2e-7 from -87.3 to 88.37. Arguments are held within +-88.376: beyond, the results stay at 0
// and at 2.4e38.
Float4 exp_ps(Float4 x);

// Absolute error below 1e-7 for |x| <= 8192.
Float4 sin_ps(Float4 x);
Float4 cos_ps(Float4 x);
void sincos_ps(Float4 x, Float4* s, Float4* c);

// e^{a + jb}, lane by lane.
void complex_exp(Float4 a, Float4 b, Float4* re, Float4* im);

// (lane 0 + lane 2) + (lane 1 + lane 3)
float horizontal_add_ps(Float4 v);

// Prints the lanes on the host's console.
void debug_m128(Float4 v);

// d0 becomes lane 0.
Float4 _mm_set_doubles(double d0, double d1, double d2, double d3);
