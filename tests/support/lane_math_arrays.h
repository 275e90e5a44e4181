// exp and sincos of whole arrays: for loops that are not kernels themselves, for tests and for benchmarks.
//
// Arrays of n values at any alignment. A result may overwrite an argument in place; other overlaps are not allowed.
// Errors are those of lane_math.h. A vector with an argument out of range is left to libm.
#pragma once

#include <cstddef>

#include "core/vector_target.h"

namespace kesto {

void exp_of_array(VectorTarget target, const double* x, double* result, std::size_t n);
void sincos_of_array(VectorTarget target, const double* x, double* sines, double* cosines, std::size_t n);

// e^(re + i im).
void complex_exp_of_array(VectorTarget target, const double* re, const double* im, double* result_re, double* result_im,
                          std::size_t n);

}  // namespace kesto
