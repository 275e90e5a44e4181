#include "bench/libm_o2.h"

#include <cmath>

void libm_exp(const double* x, double* result, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) result[i] = std::exp(x[i]);
}

void libm_sincos(const double* x, double* sines, double* cosines, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    sines[i] = std::sin(x[i]);
    cosines[i] = std::cos(x[i]);
  }
}

void libm_complex_exp(const double* re, const double* im, double* result_re, double* result_im, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const double modulus = std::exp(re[i]);
    result_re[i] = modulus * std::cos(im[i]);
    result_im[i] = modulus * std::sin(im[i]);
  }
}
