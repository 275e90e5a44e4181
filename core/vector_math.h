// Four floats at a time: the elementary functions of the single-precision field variants.
//
// Each states the arguments it serves and its worst error there; the tests take the same numbers. NaN gives NaN in its
// own lane. Pointers need no alignment.
#pragma once

// What the platform's own 4-wide type (__m128 on x86) converts to and from.
typedef float Float4 __attribute__((vector_size(16)));

// Natural logarithm for 0 < x <= infinity, denormal numbers included; NaN for x <= 0.
constexpr double log_ps_error = 8.3e-8;  // relative
Float4 log_ps(Float4 x);

// Arguments above the upper end are taken for it. Below the lower end, where floats would turn denormal, results are 0.
constexpr float exp_ps_lower = -87.33f, exp_ps_upper = 88.37626f;
constexpr double exp_ps_error = 8.2e-8;  // relative
Float4 exp_ps(Float4 x);

// For |x| <= sin_ps_range. Beyond, the error grows with |x|, results stay within [-1, 1], and infinity gives NaN.
constexpr float sin_ps_range = 8192;
constexpr double sin_ps_error = 8e-8;  // absolute, of sine and cosine
Float4 sin_ps(Float4 x);
Float4 cos_ps(Float4 x);
void sincos_ps(Float4 x, Float4* sine, Float4* cosine);

// e^(a + ib).
void complex_exp(Float4 a, Float4 b, Float4* re, Float4* im);

// (lane 0 + lane 2) + (lane 1 + lane 3).
float horizontal_add_ps(Float4 v);

// Prints "<%e %e %e %e>\n", lane 0 first, on the host's console.
void debug_m128(Float4 v);

// Rounded to float; d0 goes to lane 0, which comes first in memory.
Float4 _mm_set_doubles(double d0, double d1, double d2, double d3);
