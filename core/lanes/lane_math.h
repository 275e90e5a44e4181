// exp and sincos of all lanes at once.
//
// Each keeps to its worst error on its range of arguments and means nothing outside it, NaN included. Where a kernel
// cannot vouch for its arguments, Arguments::any asks of every vector and leaves those with an outlier to libm.
#pragma once

#include <cmath>

#include "core/lanes/lanes.h"

namespace kesto {

enum class Arguments { in_range, any };

constexpr double exp_range = 700;         // |x| up to here
constexpr double exp_error = 1.6e-16;     // relative
constexpr double sincos_range = 3e6;      // |x| up to here
constexpr double sincos_error = 2.5e-16;  // absolute

// Adding it rounds to an integer and leaves that in the low bits.
constexpr double round_in_place = 0x1.8p52;

// Even and odd powers go separate ways: that halves the chain of dependent operations and gains 10 to 20 % on SSE2,
// where a few chains fill the scheduler. The lowest coefficient comes last, so that only its sum rounds at full size.
template <class T, int first, int n>
KESTO_INLINE Double<T> every_second_power(Double<T> x2, const double (&coefficients)[n]) {
  const Double<T> lowest = broadcast<T>(coefficients[first]);
  if constexpr (first + 2 >= n) {
    return lowest;
  } else {
    return multiply_add<T>(every_second_power<T, first + 2>(x2, coefficients), x2, lowest);
  }
}
template <class T, int n>
KESTO_INLINE Double<T> polynomial(Double<T> x, Double<T> x2, const double (&coefficients)[n]) {
  const Double<T> upper =
      multiply_add<T>(every_second_power<T, 2>(x2, coefficients), x, every_second_power<T, 1>(x2, coefficients));
  return multiply_add<T>(upper, x, broadcast<T>(coefficients[0]));
}

// Minimax fits: of (sin r - r) / r^3 and (cos r - 1 + r^2 / 2) / r^4 in powers of r^2 on |r| <= pi/2, which leave the
// sine and cosine with absolute errors of 2.5e-19 and 6e-18; of (e^r - 1 - r) / r^2 on |r| <= ln2/2, which leaves e^r
// with a relative error of 1e-17.
inline constexpr double sine_coefficients[] = {-0.16666666666666666,   0.008333333333333196,    -0.00019841269841207673,
                                               2.75573192107112e-06,   -2.5052106827326682e-08, 1.605893728768535e-10,
                                               -7.642927603438771e-13, 2.7205057717650345e-15};
inline constexpr double cosine_coefficients[] = {
    0.04166666666666583,    -0.0013888888888829974,  2.4801587285766972e-05, -2.7557317066659506e-07,
    2.0876592486543798e-09, -1.1463632385434582e-11, 4.6161001377363957e-14};
inline constexpr double exp_coefficients[] = {
    0.500000000000001,     0.16666666666666674,    0.04166666666652199,    0.0083333333333222,    0.0013888888947820805,
    0.0001984126988660907, 2.4801487326122068e-05, 2.7557242317811453e-06, 2.763265571335279e-07, 2.51100566756415e-08};

// The top bit is set in the lanes whose magnitude passes the range, NaN included. Results of several vectors may be
// joined by | before any_top_bit() is asked.
template <class T>
KESTO_INLINE Bits<T> outside(Double<T> x, double range) {
  constexpr std::uint64_t magnitude = ~(std::uint64_t{1} << 63);
  return reinterpret_cast<Bits<T>>(broadcast<T>(range)) - (reinterpret_cast<Bits<T>>(x) & magnitude);
}

__attribute__((noinline, cold)) inline void exp_by_libm(double* x, int n) {
  for (int i = 0; i < n; ++i) x[i] = std::exp(x[i]);
}
// Overwrites x with the sines.
__attribute__((noinline, cold)) inline void sincos_by_libm(double* x, double* cosines, int n) {
  for (int i = 0; i < n; ++i) {
    cosines[i] = std::cos(x[i]);
    x[i] = std::sin(x[i]);
  }
}

// exp in two steps, the reduction and the polynomial, for loops that keep several arguments under way.
template <class T>
struct ReducedExp {
  Double<T> r, rounded;
};
template <class T>
KESTO_INLINE ReducedExp<T> reduce_exp(Double<T> x) {
  constexpr double log2_e = 0x1.71547652b82fep+0;
  constexpr double ln2_high = 0x1.62e42fefa3800p-1, ln2_low = 0x1.ef35793c76730p-45;  // n ln2_high is exact
  const Double<T> rounded = multiply_add<T>(x, broadcast<T>(log2_e), broadcast<T>(round_in_place));
  const Double<T> minus_n = round_in_place - rounded;
  const Double<T> r = multiply_add<T>(minus_n, broadcast<T>(ln2_high), x);
  return {multiply_add<T>(minus_n, broadcast<T>(ln2_low), r), rounded};
}
template <class T>
KESTO_INLINE Double<T> exp(ReducedExp<T> x) {
  const Double<T> r2 = x.r * x.r;
  const Double<T> power = multiply_add<T>(r2, polynomial<T>(x.r, r2, exp_coefficients), x.r) + 1.0;
  return reinterpret_cast<Double<T>>(reinterpret_cast<Bits<T>>(power) + (reinterpret_cast<Bits<T>>(x.rounded) << 52));
}

template <class T, Arguments arguments = Arguments::in_range>
KESTO_INLINE Double<T> exp(Double<T> x) {
  if constexpr (arguments == Arguments::any) {
    if (any_top_bit(outside<T>(x, exp_range))) {
      double values[T::width];
      store<T::width>(values, x);
      exp_by_libm(values, T::width);
      return load<T::width>(values);
    }
  }
  return exp<T>(reduce_exp<T>(x));
}

template <class T>
struct SinCos {
  Double<T> sin, cos;
};

// Reduces modulo pi, so that one sign serves both. With fma, x - n pi is rounded once, with pi to 106 bits. Without,
// the first part of pi is short enough for an exact product with n < 2^20, which bounds the range; the rounding of the
// second product leaves an error of 2e-20. The sine of -0 is +0.
template <class T>
struct ReducedAngle {
  Double<T> r;
  Bits<T> sign;
};
template <class T>
KESTO_INLINE ReducedAngle<T> reduce_angle(Double<T> x) {
  constexpr double one_by_pi = 0x1.45f306dc9c883p-2;
  constexpr double pi_53 = 0x1.921fb54442d18p+1, pi_behind_53 = 0x1.1a62633145c07p-53;
  constexpr double pi_33 = 0x1.921fb54400000p+1, pi_behind_33 = 0x1.0b4611a626331p-33;
  const Double<T> rounded = multiply_add<T>(x, broadcast<T>(one_by_pi), broadcast<T>(round_in_place));
  const Double<T> minus_n = round_in_place - rounded;
  const Double<T> r = multiply_add<T>(minus_n, broadcast<T>(T::has_fma ? pi_53 : pi_33), x);
  return {multiply_add<T>(minus_n, broadcast<T>(T::has_fma ? pi_behind_53 : pi_behind_33), r),
          reinterpret_cast<Bits<T>>(rounded) << 63};
}
template <class T>
KESTO_INLINE SinCos<T> sincos(ReducedAngle<T> x) {
  const Double<T> r2 = x.r * x.r, r4 = r2 * r2;
  const Double<T> sine = multiply_add<T>(x.r * r2, polynomial<T>(r2, r4, sine_coefficients), x.r);
  const Double<T> cosine = multiply_add<T>(r4, polynomial<T>(r2, r4, cosine_coefficients),
                                           multiply_add<T>(r2, broadcast<T>(-0.5), broadcast<T>(1.0)));
  return {reinterpret_cast<Double<T>>(reinterpret_cast<Bits<T>>(sine) ^ x.sign),
          reinterpret_cast<Double<T>>(reinterpret_cast<Bits<T>>(cosine) ^ x.sign)};
}

template <class T, Arguments arguments = Arguments::in_range>
KESTO_INLINE SinCos<T> sincos(Double<T> x) {
  if constexpr (arguments == Arguments::any) {
    if (any_top_bit(outside<T>(x, sincos_range))) {
      double sines[T::width], cosines[T::width];
      store<T::width>(sines, x);
      sincos_by_libm(sines, cosines, T::width);
      return {load<T::width>(sines), load<T::width>(cosines)};
    }
  }
  return sincos<T>(reduce_angle<T>(x));
}

}  // namespace kesto
