// The solver as the mathematics states it: the reference to the bit, and the benchmark's yardstick.
#pragma once

#include <cmath>
#include <cstring>
#include <vector>

#include "heat/bioheat_solver.h"

inline void plain_bioheat(const kesto::BioheatProblem& p, const double* real, const double* imag, double* q,
                          double* T) {
  const int P = p.n0 * p.n1, n_all = P * p.n2;
  const double s = p.absorption / p.impedance, kappa = p.conductivity, ik = 1.0 / kappa;
  const double ax = 1.0 / (p.dx * p.dx), ay = 1.0 / (p.dy * p.dy), az = 1.0 / (p.dz * p.dz);
  const double f = (1.86 * kappa) / (p.perfusion * p.specific_heat_of_blood + (ax + ay + az) * (kappa + kappa));
  for (int n = 0; n < n_all; ++n) q[n] = (imag[n] * imag[n] + real[n] * real[n]) * s;
  for (int n = 0; n < n_all; ++n) T[n] = 0;
  for (int sweep = 0; sweep < p.sweeps; ++sweep)
    for (int k = 1; k <= p.n2 - 2; ++k)
      for (int j = 1; j <= p.n1 - 2; ++j)
        for (int i = 1; i <= p.n0 - 2; ++i) {
          const int n = i + j * p.n0 + k * P;
          const double Sx = T[n + 1] + T[n - 1], Sy = T[n + p.n0] + T[n - p.n0], Sz = T[n + P] + T[n - P];
          T[n] = T[n] * -0.8600000000000001 + f * (Sz * az + (Sy * ay + (Sx * ax + q[n] * ik)));
        }
}

// Equal to the bit, NaN equal to NaN whatever its payload.
inline bool same_bits(const double* a, const std::vector<double>& b) {
  for (size_t n = 0; n < b.size(); ++n) {
    if (std::memcmp(&a[n], &b[n], sizeof(double)) != 0 && !(std::isnan(a[n]) && std::isnan(b[n]))) return false;
  }
  return true;
}
