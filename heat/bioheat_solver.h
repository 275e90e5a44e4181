// The steady-state Pennes bioheat equation, kappa lap(T) - wb cb T + alpha |p|^2 / (rho c) = 0, on a regular grid with
// T = 0 on the boundary, by a fixed number of successive over-relaxation sweeps (omega = 1.86).
#pragma once

#include "core/vector_target.h"

namespace kesto {

struct BioheatProblem {
  int n0, n1, n2;                 // points along the first (fastest), second and third dimension; product < 2^31
  double dx, dy, dz;              // spacings, m
  double absorption;              // alpha, Np/m
  double impedance;               // rho c, kg/(m^2 s)
  double perfusion;               // wb, kg/(m^3 s)
  double specific_heat_of_blood;  // cb, J/(kg K)
  double conductivity;            // kappa, W/(m K)
  int sweeps;
};

// Arrays have n0 n1 n2 elements, point (i, j, k) at i + j n0 + k n0 n1.
//   pressure_real, pressure_imag  in, Pa
//   heat_source                   scratch of the thinnest grids; others leave it alone
//   temperature                   out, K above the boundary; 0 where there is no interior point
// The result is that of the plain triple loop over k, j, i, i innermost, updating in place, to the last bit and for
// every target (only the payload of a NaN may differ). The host lends some 17 bytes a point (docs/solver.md) meanwhile;
// error "Out of memory." when it refuses.
void solve_steady_bioheat(const BioheatProblem& problem, const double* pressure_real, const double* pressure_imag,
                          double* heat_source, double* temperature, VectorTarget target = chosen_vector_target());

}  // namespace kesto
