// Vectors of floats beside those of doubles, twice as many to a register; and arithmetic that names its precision, so
// that one kernel serves both.
#pragma once

#include <cstdint>

#include "core/lanes/lane_math.h"

namespace kesto {

template <int W>
struct FloatLanes;
template <>
struct FloatLanes<4> {
  typedef float Float __attribute__((vector_size(16)));
  typedef float Half __attribute__((vector_size(8)));
  typedef std::int32_t Int __attribute__((vector_size(16)));
};
template <>
struct FloatLanes<8> {
  typedef float Float __attribute__((vector_size(32)));
  typedef float Half __attribute__((vector_size(16)));
  typedef std::int32_t Int __attribute__((vector_size(32)));
};
template <>
struct FloatLanes<16> {
  typedef float Float __attribute__((vector_size(64)));
  typedef float Half __attribute__((vector_size(32)));
  typedef std::int32_t Int __attribute__((vector_size(64)));
};

#if KESTO_X86_64
// As assign_fma of doubles.
KESTO_TARGET_AVX2_FMA inline void assign_fma(FloatLanes<8>::Float& to, const FloatLanes<8>::Float& a,
                                             const FloatLanes<8>::Float& b, const FloatLanes<8>::Float& c) {
#if __has_builtin(__builtin_elementwise_fma)
  to = __builtin_elementwise_fma(a, b, c);
#else
  to = __builtin_ia32_vfmaddps256(a, b, c);
#endif
}
KESTO_TARGET_AVX512 inline void assign_fma(FloatLanes<16>::Float& to, const FloatLanes<16>::Float& a,
                                           const FloatLanes<16>::Float& b, const FloatLanes<16>::Float& c) {
#if __has_builtin(__builtin_elementwise_fma)
  to = __builtin_elementwise_fma(a, b, c);
#else
  constexpr int current_rounding = 4;
  to = __builtin_ia32_vfmaddps512_mask(a, b, c, static_cast<unsigned short>(-1), current_rounding);
#endif
}
// 1/v and 1/sqrt(v) to 14 bits.
KESTO_TARGET_AVX512 inline void assign_estimate(FloatLanes<16>::Float& to, const FloatLanes<16>::Float& v) {
  to = __builtin_ia32_rcp14ps512_mask(v, v, static_cast<unsigned short>(-1));
}
KESTO_TARGET_AVX512 inline void assign_root_estimate(FloatLanes<16>::Float& to, const FloatLanes<16>::Float& v) {
  to = __builtin_ia32_rsqrt14ps512_mask(v, v, static_cast<unsigned short>(-1));
}
#endif

template <class Target>
struct InDouble {
  using T = Target;
  using Scalar = double;
  using V = Double<T>;
  static constexpr int width = T::width;

  KESTO_INLINE static V of(double value) { return broadcast<T>(value); }
  KESTO_INLINE static V load(const double* from) { return kesto::load<width>(from); }
  KESTO_INLINE static void store(double* to, V v) { kesto::store<width>(to, v); }
  // From doubles, and to them.
  KESTO_INLINE static V load_narrowed(const double* from) { return load(from); }
  KESTO_INLINE static void store_wide(double* to, V v) { store(to, v); }
  KESTO_INLINE static V multiply_add(V a, V b, V c) { return kesto::multiply_add<T>(a, b, c); }
  KESTO_INLINE static V sqrt(V v) { return kesto::sqrt<T>(v); }
  KESTO_INLINE static V reciprocal(V v) { return 1.0 / v; }

  // Sine and cosine of x/2 up to a common sign: for products of the two. |x| <= sincos_range.
  KESTO_INLINE static void unsigned_sincos_of_half(V x, V& sine, V& cosine) {
    ReducedAngle<T> angle = reduce_angle<T>(0.5 * x);
    angle.sign = Bits<T>{};
    const SinCos<T> both = kesto::sincos<T>(angle);
    sine = both.sin, cosine = both.cos;
  }
  // e^x - 1 with a small relative error.
  static constexpr double exp_minus_1_range = exp_range;  // |x| up to here
  KESTO_INLINE static V exp_minus_1(V x) {
    const ReducedExp<T> reduced = reduce_exp<T>(x);
    const V r2 = reduced.r * reduced.r;
    const V rest = multiply_add(r2, polynomial<T>(reduced.r, r2, exp_coefficients), reduced.r);
    const Bits<T> one = reinterpret_cast<Bits<T>>(of(1.0));
    const V power = reinterpret_cast<V>(one + (reinterpret_cast<Bits<T>>(reduced.rounded) << 52));
    return multiply_add(power, rest, power - 1.0);
  }
};

template <class Target>
struct InSingle {
  using T = Target;
  using Scalar = float;
  using Int = typename FloatLanes<2 * T::width>::Int;
  using V = typename FloatLanes<2 * T::width>::Float;
  static constexpr int width = 2 * T::width;

  // By its bits: of floats GCC 12 makes sixteen masked moves.
  KESTO_INLINE static V of(float value) {
    std::int32_t bits;
    __builtin_memcpy(&bits, &value, sizeof bits);
    return reinterpret_cast<V>(Int{} + bits);
  }
  KESTO_INLINE static V load(const float* from) {
    V v;
    __builtin_memcpy(&v, from, sizeof v);
    return v;
  }
  KESTO_INLINE static void store(float* to, V v) { __builtin_memcpy(to, &v, sizeof v); }
  KESTO_INLINE static V multiply_add(V a, V b, V c) {
    if constexpr (T::has_fma) {
      V fused;
      assign_fma(fused, a, b, c);
      return fused;
    } else {
      return a * b + c;
    }
  }
  KESTO_INLINE static V sqrt(V v) {
    V root;
    for (int lane = 0; lane < width; ++lane) root[lane] = __builtin_sqrtf(v[lane]);  // becomes one instruction
    return root;
  }
  // To some 1.5 units in the last place.
  KESTO_INLINE static V reciprocal(V v) {
    if constexpr (width == 16) {  // an estimate and a Newton step: the divider is busy with square roots
      V y;
      assign_estimate(y, v);
      return multiply_add(y, multiply_add(-v, y, of(1.0f)), y);
    } else {
      return 1.0f / v;
    }
  }
  // To 1e-4, for v >= 0.
  KESTO_INLINE static V rough_sqrt(V v) {
    if constexpr (width == 16) {
      const V at_least = max(v, of(1e-37f));
      V y;
      assign_root_estimate(y, at_least);
      return at_least * y;
    } else {
      return sqrt(v);
    }
  }
  using Half = typename FloatLanes<2 * T::width>::Half;
  KESTO_INLINE static void store_wide(double* to, V v) {
    Half halves[2];
    __builtin_memcpy(halves, &v, sizeof v);
    kesto::store<T::width>(to, __builtin_convertvector(halves[0], Double<T>));
    kesto::store<T::width>(to + T::width, __builtin_convertvector(halves[1], Double<T>));
  }
  KESTO_INLINE static V load_narrowed(const double* from) {
    const Half halves[2] = {__builtin_convertvector(kesto::load<T::width>(from), Half),
                            __builtin_convertvector(kesto::load<T::width>(from + T::width), Half)};
    V v;
    __builtin_memcpy(&v, halves, sizeof v);
    return v;
  }
  KESTO_INLINE static V min(V a, V b) { return a < b ? a : b; }
  KESTO_INLINE static V max(V a, V b) { return a > b ? a : b; }

  // Absolute error 5e-8 and, near 0, a relative one of this size; |x| <= 2e5.
  KESTO_INLINE static void unsigned_sincos_of_half(V x, V& sine, V& cosine) {
    constexpr float one_by_2_pi = 0x1.45f306p-3f, magic = 0x1.8p23f;
    const V minus_n = magic - multiply_add(x, of(one_by_2_pi), of(magic));
    V r;
    if constexpr (T::has_fma) {
      r = multiply_add(minus_n, of(-1.7484556e-7f), multiply_add(minus_n, of(6.28318548f), x));
    } else {  // the first part has 8 bits: its products are exact
      r = multiply_add(minus_n, of(6.28125f), x);
      r = multiply_add(minus_n, of(1.93500518798828125e-3f), r);
      r = multiply_add(minus_n, of(3.019915981956752864e-7f), r);
    }
    const V r2 = r * r, r4 = r2 * r2;
    const V s = multiply_add(r4, multiply_add(r2, of(5.14589299e-09f), of(-1.5486501e-06f)),
                             multiply_add(r2, of(0.000260413812f), of(-0.0208333325f)));
    const V c = multiply_add(r4, multiply_add(r2, of(-2.59234078e-10f), of(9.68205747e-08f)),
                             multiply_add(r2, of(-2.17012694e-05f), of(0.00260416663f)));
    sine = r * multiply_add(r2, s, of(0.5f));
    cosine = multiply_add(r4, c, multiply_add(r2, of(-0.125f), of(1.0f)));
  }
  // e^x - 1, relative error 3e-7.
  static constexpr float exp_minus_1_range = 80;  // |x| up to here
  KESTO_INLINE static V exp_minus_1(V x) {
    constexpr float log2_e = 0x1.715476p+0f, magic = 0x1.8p23f;
    const V rounded = multiply_add(x, of(log2_e), of(magic)), minus_n = magic - rounded;
    const V r = multiply_add(minus_n, of(-2.12194440e-4f), multiply_add(minus_n, of(0.693359375f), x));
    V p = multiply_add(r, of(1.3926213e-3f), of(8.363203e-3f));
    p = multiply_add(r, p, of(0.041666554f));
    p = multiply_add(r, p, of(0.16666577f));
    p = multiply_add(r, p, of(0.5f));
    const V rest = multiply_add(r * r, p, r);
    const Int one = reinterpret_cast<Int>(of(1.0f));
    const V power = reinterpret_cast<V>(one + (reinterpret_cast<Int>(rounded) << 23));
    return multiply_add(power, rest, power - 1.0f);
  }
  KESTO_INLINE static V exp(V x) { return exp_minus_1(max(min(x, of(80)), of(-80))) + 1.0f; }

  // Bounds of log x for x > 0: the logarithm of a power of two and straight on, no more than 0.06 off; and x^(1/3) to
  // 5 %.
  KESTO_INLINE static V log_at_least(V x) {
    const V bits = __builtin_convertvector(reinterpret_cast<Int>(x) - 0x3f800000, V);
    return bits * 8.262958e-8f;  // log(2) 2^-23
  }
  KESTO_INLINE static V log_at_most(V x) { return log_at_least(x) + 0.0597f; }
  KESTO_INLINE static V rough_cube_root(V x) {
    const V bits = __builtin_convertvector(reinterpret_cast<Int>(x), V);
    return reinterpret_cast<V>(__builtin_convertvector(bits * (1.0f / 3), Int) + 709921077);
  }

  // For x > 0 and normal: absolute error 1e-7 below |log x| = 1, else relative.
  KESTO_INLINE static V log(V x) {
    constexpr std::int32_t root_of_half = 0x3f3504f3;
    const Int exponent = (reinterpret_cast<Int>(x) - root_of_half) >> 23;
    const V f = reinterpret_cast<V>(reinterpret_cast<Int>(x) - (exponent << 23)) - 1.0f;
    const V e = __builtin_convertvector(exponent, V);
    V p = multiply_add(f, of(0.090487844f), of(-0.14030892f));
    p = multiply_add(f, p, of(0.14703897f));
    p = multiply_add(f, p, of(-0.16602719f));
    p = multiply_add(f, p, of(0.19984223f));
    p = multiply_add(f, p, of(-0.25000703f));
    p = multiply_add(f, p, of(0.33333415f));
    const V f2 = f * f, log_of_fraction = multiply_add(f2 * f, p, multiply_add(f2, of(-0.5f), f));
    return multiply_add(e, of(0.693147181f), log_of_fraction);
  }
};

}  // namespace kesto
