// exp and sincos of whole arrays, for tests and benchmarks: of n values at any alignment. A result may overwrite an
// argument in place. A vector with an argument out of range is left to libm.
#pragma once

#include <cstring>

#include "core/lanes/lane_math.h"

namespace kesto {

struct ExpOfArray {
  static constexpr int inputs = 1, outputs = 1;
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    out[0] = exp<T, Arguments::any>(in[0]);
  }
};

struct SincosOfArray {
  static constexpr int inputs = 1, outputs = 2;
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    const SinCos<T> both = sincos<T, Arguments::any>(in[0]);
    out[0] = both.sin, out[1] = both.cos;
  }
};

struct ComplexExpOfArray {
  static constexpr int inputs = 2, outputs = 2;
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    const Double<T> modulus = exp<T, Arguments::any>(in[0]);
    const SinCos<T> direction = sincos<T, Arguments::any>(in[1]);
    out[0] = modulus * direction.cos, out[1] = modulus * direction.sin;
  }
};

template <class Function>
struct ApplyToArrays {
  using Signature = void(const double* const* in, double* const* out, std::size_t n);

  template <class T>
  KESTO_INLINE static void run(const double* const* in, double* const* out, std::size_t n) {
    std::size_t i = 0;
    for (; i + T::width <= n; i += T::width) apply_at<T>(in, out, i, T::width);
    if (i < n) apply_at<T>(in, out, i, n - i);
  }

 private:
  // At most a vector; the lanes beyond `count` are 0.
  template <class T>
  KESTO_INLINE static void apply_at(const double* const* in, double* const* out, std::size_t first, std::size_t count) {
    Double<T> x[Function::inputs] = {}, y[Function::outputs];
    for (int a = 0; a < Function::inputs; ++a) std::memcpy(&x[a], in[a] + first, count * sizeof(double));
    Function::template apply<T>(x, y);
    for (int a = 0; a < Function::outputs; ++a) std::memcpy(out[a] + first, &y[a], count * sizeof(double));
  }
};

template <class Function>
void apply_to_arrays(VectorTarget target, const double* const (&in)[Function::inputs],
                     double* const (&out)[Function::outputs], std::size_t n) {
  kernel_on<ApplyToArrays<Function>>(target)(in, out, n);
}

}  // namespace kesto
