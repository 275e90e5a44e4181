// The parts of a step in plain form, one system or one point at a time: source plane, coefficients, tridiagonal solves,
// nonlinear step. The marches do the same for many harmonics or samples at once, in vectors.
#pragma once

#include <complex>

#include "kzk/beam.h"

namespace kesto {

// Nodes xi_i = i dr, each the centre of a ring from (i - 1/2) dr to (i + 1/2) dr. On ring i the Laplacian is
// [lower_i (q_{i-1} - q_i) + upper_i (q_{i+1} - q_i)] / dr^2.
struct RadialGrid {
  double dr = 0;
  int nodes = 0;
  double rmax = 0;  // where the absorbing layer begins

  double lower(int i) const { return i == 0 ? 0 : 1 - 0.5 / i; }
  double upper(int i) const { return i == 0 ? 4 : 1 + 0.5 / i; }
  double area(int i) const;  // of ring i over 2 pi
  // What the layer leaves of the field over a step that is this part of the way from the source. Waves that come from
  // the source cross the layer the faster the earlier they reach it, so it absorbs by the way they have come.
  double kept(int i, double part_of_way) const;
};

// The share of each ring that the source covers, smoothed over some rings: of a sharp edge, waves as short as two nodes
// would stay where they are. What is lost is of second order in dr.
void source_plane(const BeamSource& source, const RadialGrid& grid, double* share);

// The rows lower x_{i-1} + diagonal x_i + upper x_{i+1} = right side of one implicit half step of length half in zeta,
// of a harmonic with wavenumber nk.
void tridiagonal_coefficients(const RadialGrid& grid, double wavenumber, double rayleigh, double half,
                              std::complex<double>* lower, std::complex<double>* diagonal, std::complex<double>* upper);

// Overwrites the right side x with the solution. scratch: n values.
void solve_tridiagonal(int n, const std::complex<double>* lower, const std::complex<double>* diagonal,
                       const std::complex<double>* upper, std::complex<double>* x, std::complex<double>* scratch);
void solve_tridiagonal(int n, const double* lower, const double* diagonal, const double* upper, double* x,
                       double* scratch);

// One step of dp_n/dz = j n strength [sum_{m<n} p_m p_{n-m} + 2 sum_{m>n} p_m p*_{m-n}], of third order: the strength
// is omega beta / (4 rho c^3) times the step. p holds harmonics 1..N. scratch: 2 N values.
void nonlinear_step(int harmonics, double strength, std::complex<double>* p, std::complex<double>* scratch);

}  // namespace kesto
