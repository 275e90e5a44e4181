// The vector kernels of the marches, for the instruction set at hand.
#pragma once

#include "core/vector_target.h"

namespace kesto {

// Fields of harmonics: node after node, at each node the real parts of all harmonics and then the imaginary parts.
// `padded` counts the harmonics with those that fill the last vector, which are 0.
struct DiffractionWork {
  int nodes, padded;
  const double *lower, *upper;  // [nodes], of the Laplacian
  const double* well;           // [nodes]: (k xi dr / z0)^2 of the first harmonic
  const double* kept;           // [nodes]: what the absorbing layer leaves of the field
  const double* number;         // [padded]: n, repeated in the padding
  const double* inverse_step;   // [padded]: 2 n k dr^2 / half step
  double* pivots;               // [nodes][2][padded]
  double* eliminated;           // scratch, likewise
};

struct NonlinearWork {
  int first, last, padded, harmonics;  // nodes from first, a multiple of the width, up to last
  double strength;                     // omega beta / (4 rho c^3) times the step, over the frame's scale
  const double* factor;                // [harmonics]: half of the absorption of this step
  int transform;                       // length of the transform, 0 for direct sums
  const double* roots;                 // [2][transform]: cosines and sines of 2 pi i / transform
  double* scratch;                     // nonlinear_scratch(...) doubles
};

struct KzkKernels {
  int width;
  void (*factorise)(const DiffractionWork&);
  // A step forward in zeta: twice its half by backward Euler, or the whole by Crank-Nicolson.
  void (*backward_euler)(const DiffractionWork&, double* field);
  void (*crank_nicolson)(const DiffractionWork&, double* field);
  void (*nonlinear)(const NonlinearWork&, double* field);
};

KzkKernels kzk_kernels(VectorTarget target);

// Doubles of NonlinearWork::scratch.
int nonlinear_scratch(int width, int harmonics, int transform);

// The shortest transform whose aliases miss the harmonics: 2^a or 3 2^a above 3 N.
int transform_length(int harmonics);

}  // namespace kesto
