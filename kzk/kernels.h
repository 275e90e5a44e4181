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

// Waveforms: sample after sample; at each sample the nodes in as many equal runs as there are lanes, node `run` j of
// lane l at [j][l].
struct PulseDiffractionWork {
  int samples, run;
  const double *pivots, *lower, *upper;  // [run][lanes]: 1 / pivot, and the off-diagonals over it
  const double *left, *right;            // [run][lanes]: what a unit in the neighbouring run adds
  const double* ends;                    // [2 lanes][2 lanes]: the neighbours' values from the ends of all runs
  const double* kept;                    // [run][lanes]: what the absorbing layer leaves of the field
  double *history, *solution;            // scratch, [run][lanes]
};

struct PulseDistortionWork {
  int samples, run;
  double strength;      // the shift in samples of a pressure of 1
  const double* shift;  // [run][lanes]: the shift in samples of all pressures
  bool absorb_first;
  int transform;         // length of the transform, 0 without absorption
  const double* roots;   // of the transform
  const double* factor;  // [transform / 2 + 1]: what absorption leaves of each frequency
  double* scratch;       // pulse_scratch(...) doubles
};

struct KzkKernels {
  int width;
  void (*factorise)(const DiffractionWork&);
  // A step forward in zeta: twice its half by backward Euler, or the whole by Crank-Nicolson.
  void (*backward_euler)(const DiffractionWork&, double* field);
  void (*crank_nicolson)(const DiffractionWork&, double* field);
  void (*nonlinear)(const NonlinearWork&, double* field);

  void (*pulse_backward_euler)(const PulseDiffractionWork&, double* field);
  void (*pulse_crank_nicolson)(const PulseDiffractionWork&, double* field);
  void (*distort)(const PulseDistortionWork&, double* field);
};

KzkKernels kzk_kernels(VectorTarget target);

// Doubles of NonlinearWork::scratch.
int nonlinear_scratch(int width, int harmonics, int transform);

// Doubles of PulseDistortionWork::scratch.
int pulse_scratch(int width, int samples, int transform);

// The shortest transform of this many values or more, and the shortest whose aliases miss the harmonics: 2^a or 3 2^a
// above 3 N.
int transform_of(int values);
int transform_length(int harmonics);

}  // namespace kesto
