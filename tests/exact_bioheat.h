// The solution of the discrete balance itself, which the sweeps approach: by sine transforms along the three
// dimensions, whose modes are the eigenvectors of the differences with zero walls.
#pragma once

#include <cmath>
#include <vector>

#include "heat/bioheat_solver.h"

// b <- sum over the interior points of one dimension of b sin(pi i m / (n - 1)), for all m. `stride` is the distance of
// neighbours along it.
inline void sine_transform(std::vector<double>& b, size_t n, size_t stride) {
  std::vector<double> sines(2 * n), line(n);
  for (size_t i = 0; i < 2 * (n - 1); ++i) sines[i] = std::sin(std::acos(-1.0) * double(i) / double(n - 1));
  for (size_t begin = 0; begin < b.size(); ++begin) {
    if (begin / stride % n != 0) continue;
    for (size_t m = 1; m + 1 < n; ++m) {
      double sum = 0;
      for (size_t i = 1, phase = m; i + 1 < n; ++i) {
        sum += b[begin + i * stride] * sines[phase];
        phase += m;
        if (phase >= 2 * (n - 1)) phase -= 2 * (n - 1);
      }
      line[m] = sum;
    }
    for (size_t m = 0; m < n; ++m) b[begin + m * stride] = line[m];
  }
}

// `heat` in W/m^3, point (i, j, k) at i + j n0 + k n0 n1. To some 1e-14 of the peak.
inline std::vector<double> exact_bioheat(const kesto::BioheatProblem& p, std::vector<double> heat) {
  const size_t n0 = size_t(p.n0), n1 = size_t(p.n1), n2 = size_t(p.n2);
  const auto transform = [&] {
    sine_transform(heat, n0, 1);
    sine_transform(heat, n1, n0);
    sine_transform(heat, n2, n0 * n1);
  };
  const auto eigenvalue = [](size_t m, size_t n, double h) {
    return std::pow(2 / h * std::sin(std::acos(-1.0) * double(m) / double(2 * (n - 1))), 2);
  };
  transform();
  for (size_t m = 0; m < heat.size(); ++m) {
    const double laplacian =
        eigenvalue(m % n0, n0, p.dx) + eigenvalue(m / n0 % n1, n1, p.dy) + eigenvalue(m / n0 / n1, n2, p.dz);
    heat[m] *= 8 / double((n0 - 1) * (n1 - 1) * (n2 - 1)) /
               (p.perfusion * p.specific_heat_of_blood + p.conductivity * laplacian);
  }
  transform();
  return heat;
}
