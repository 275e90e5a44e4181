// The road of a computation through its grid: fetch, rotate, classify, sum, weight, superpose.
#pragma once

#include <complex>

#include "core/transducer.h"
#include "fields/point_kernel.h"

namespace kesto {

// What a geometry makes of a point: one of its kernels, numbered from 0; nothing, for a point that it does not radiate
// to; or a value of its own, where the integral has a closed form or no value.
enum PointClass : int { special_point = -2, no_field = -1 };

// Whether the element's class leaves rotateTranslate as Transducer has it: then it is known and is inlined, for a call
// a point is a third of the time of a short integral.
bool is_placed_as_base(const Transducer& element);

// Calls visit(i, p) for every point i of the grid, p in the element's own coordinates.
template <class Visit>
void for_each_local_point(Transducer& element, Visit visit) {
  element.InitializeRotationMatrix();
  if (is_placed_as_base(element)) {
    const Placement placement = element.placement();
    element.global_coordinate_grid->for_each_point(
        [&](int i, const CartesianCoordinate& p) { visit(i, placement.local(p)); });
  } else {
    element.global_coordinate_grid->for_each_point(
        [&](int i, const CartesianCoordinate& p) { visit(i, element.rotateTranslate(p)); });
  }
}

// Whether a flat face radiates to the point.
inline bool is_in_front(const CartesianCoordinate& p) { return !(p.z < 0); }

// Adds evaluate(p) at every point where evaluated(p): for computations without lanes over points.
template <class Evaluated, class Evaluate>
void superpose_values(Transducer& element, Evaluated evaluated, Evaluate evaluate) {
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    if (evaluated(p)) element.superpose_complex_pressure(i, evaluate(p));
  });
}

// Adds at every point p scale times the sum of kernels[classify(p)], or special_pressure(p) where p is a special point.
// Points are gathered kernel by kernel, so that all lanes have work.
template <int count, class Classify, class SpecialPressure>
void superpose_sums(Transducer& element, const PointKernel (&kernels)[count], std::complex<double> scale,
                    Classify classify, SpecialPressure special_pressure) {
  const auto flush = [&](int kernel, PointBlock& block, bool in_range) {
    if (block.count == 0) return;
    kernels[kernel].sum(block, in_range);
    for (int n = 0; n < block.count; ++n) {  // by its parts: std::complex would look for infinities
      const double re = block.re[n], im = block.im[n];
      element.superpose_complex_pressure(
          block.index[n], {re * scale.real() - im * scale.imag(), re * scale.imag() + im * scale.real()});
    }
    block.count = 0;
  };
  PointBlock blocks[count][2];  // the second for points out of range
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    const int kernel = classify(p);
    if (kernel == no_field) return;
    if (kernel == special_point) return element.superpose_complex_pressure(i, special_pressure(p));
    const bool in_range = kernels[kernel].in_range(p.x, p.y, p.z);
    PointBlock& block = blocks[kernel][in_range ? 0 : 1];
    block.push(i, p.x, p.y, p.z);
    if (block.full()) flush(kernel, block, in_range);
  });
  for (int kernel = 0; kernel < count; ++kernel) {
    flush(kernel, blocks[kernel][0], true);
    flush(kernel, blocks[kernel][1], false);
  }
}

inline constexpr auto no_special_pressure = [](const CartesianCoordinate&) { return std::complex<double>(); };

// The one kernel of a flat face, without special points.
inline void superpose_sum_in_front(Transducer& element, const PointKernel& kernel, std::complex<double> scale) {
  superpose_sums(
      element, {kernel}, scale, [](const CartesianCoordinate& p) { return is_in_front(p) ? 0 : no_field; },
      no_special_pressure);
}

}  // namespace kesto
