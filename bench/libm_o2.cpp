#include "bench/libm_o2.h"

#include <cmath>

void libm_exp(const double* x, double* result, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) result[i] = std::exp(x[i]);
}

// The argument is read once, so that the compilers join sine and cosine to libm's sincos.
void libm_sincos(const double* x, double* sines, double* cosines, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const double angle = x[i], sine = std::sin(angle), cosine = std::cos(angle);
    sines[i] = sine;
    cosines[i] = cosine;
  }
}

void libm_complex_exp(const double* re, const double* im, double* result_re, double* result_im, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const double modulus = std::exp(re[i]), angle = im[i], sine = std::sin(angle), cosine = std::cos(angle);
    result_re[i] = modulus * cosine;
    result_im[i] = modulus * sine;
  }
}
