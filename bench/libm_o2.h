// The standard library's functions over arrays, compiled at -O2 whatever the rest is compiled with.
#pragma once

#include <cstddef>

void libm_exp(const double* x, double* result, std::size_t n);
void libm_sincos(const double* x, double* sines, double* cosines, std::size_t n);
void libm_complex_exp(const double* re, const double* im, double* result_re, double* result_im, std::size_t n);
