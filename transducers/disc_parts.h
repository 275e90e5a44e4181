// What the double and the single-precision fields of a disc share.
#pragma once

#include <complex>
#include <cstddef>

#include "core/constants.h"
#include "core/medium.h"
#include "core/transducer.h"
#include "transducers/continuous_wave.h"
#include "transducers/disc.h"

namespace kesto {

// Calls compute(radius, weight) for the disc and, with the weight negated, for the one it lacks.
template <class Compute>
void for_each_disc(const Transducer& element, DiscFace face, Compute compute) {
  compute(face.outer, element.complex_weight);
  if (face.inner > 0) compute(face.inner, -element.complex_weight);
}

inline Complex rim_factor(const Medium& medium, double radius, Complex weight) {
  return medium._rho_density * medium._soundspeed * radius / pi * weight;
}

inline Complex rayleigh_factor(const Medium& medium, Complex weight) {
  return Complex(0, 2 * medium._rho_density * medium._f0) * weight;
}

}  // namespace kesto
