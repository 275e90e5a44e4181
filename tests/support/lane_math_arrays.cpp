#include "tests/support/lane_math_arrays.h"

#include <cstring>

#include "core/lanes/lane_math.h"

namespace kesto {

namespace {

constexpr Arguments any_argument = Arguments::any;

struct Exp {
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    out[0] = exp<T, any_argument>(in[0]);
  }
};

struct Sincos {
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    const SinCos<T> both = sincos<T, any_argument>(in[0]);
    out[0] = both.sin;
    out[1] = both.cos;
  }
};

struct ComplexExp {
  template <class T>
  KESTO_INLINE static void apply(const Double<T>* in, Double<T>* out) {
    const Double<T> modulus = exp<T, any_argument>(in[0]);
    const SinCos<T> direction = sincos<T, any_argument>(in[1]);
    out[0] = modulus * direction.cos;
    out[1] = modulus * direction.sin;
  }
};

template <int inputs, int outputs>
struct Arrays {
  const double* in[inputs];
  double* out[outputs];
  std::size_t n;
};

// At most a vector; the lanes beyond `count` are 0.
template <class Function, class T, int inputs, int outputs>
KESTO_INLINE void apply_at(const Arrays<inputs, outputs>& arrays, std::size_t first, std::size_t count) {
  Double<T> in[inputs] = {}, out[outputs];
  for (int a = 0; a < inputs; ++a) std::memcpy(&in[a], arrays.in[a] + first, count * sizeof(double));
  Function::template apply<T>(in, out);
  for (int a = 0; a < outputs; ++a) std::memcpy(arrays.out[a] + first, &out[a], count * sizeof(double));
}

template <class Function, int inputs, int outputs>
struct ApplyToAll {
  using Signature = void(const Arrays<inputs, outputs>& arrays);

  template <class T>
  KESTO_INLINE static void run(const Arrays<inputs, outputs>& arrays) {
    std::size_t i = 0;
    for (; i + T::width <= arrays.n; i += T::width) apply_at<Function, T>(arrays, i, T::width);
    if (i < arrays.n) apply_at<Function, T>(arrays, i, arrays.n - i);
  }
};

template <class Function, int inputs, int outputs>
void apply_on(VectorTarget target, const Arrays<inputs, outputs>& arrays) {
  kernel_on<ApplyToAll<Function, inputs, outputs>>(target)(arrays);
}

}  // namespace

void exp_of_array(VectorTarget target, const double* x, double* result, std::size_t n) {
  apply_on<Exp>(target, Arrays<1, 1>{{x}, {result}, n});
}

void sincos_of_array(VectorTarget target, const double* x, double* sines, double* cosines, std::size_t n) {
  apply_on<Sincos>(target, Arrays<1, 2>{{x}, {sines, cosines}, n});
}

void complex_exp_of_array(VectorTarget target, const double* re, const double* im, double* result_re, double* result_im,
                          std::size_t n) {
  apply_on<ComplexExp>(target, Arrays<2, 2>{{re, im}, {result_re, result_im}, n});
}

}  // namespace kesto
