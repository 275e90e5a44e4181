// A warm spot of 1 MPa and 10 mm width in perfused tissue: the solver called from C++.
#include <cmath>
#include <cstdio>
#include <exception>
#include <vector>

#include "heat/bioheat_solver.h"

int main(int argc, char**) try {
  if (argc > 1) return std::puts("warm_spot: the rise in a warm spot of perfused tissue; it takes no options"), 0;
  const int n = 41, middle = 20;  // points a side, 1 mm apart
  std::vector<double> real, imag(n * n * n), heat(n * n * n), rise(n * n * n);
  for (int k = -middle; k <= middle; ++k)
    for (int j = -middle; j <= middle; ++j)
      for (int i = -middle; i <= middle; ++i) real.push_back(1e6 * std::exp(-(i * i + j * j + k * k) / 50.0));
  const double alpha = 5.8, density = 1060, soundspeed = 1540, perfusion = 5, blood_heat = 3617, kappa = 0.51;
  kesto::solve_steady_bioheat(
      {n, n, n, 1e-3, 1e-3, 1e-3, alpha, density * soundspeed, perfusion, blood_heat, kappa, 300}, real.data(),
      imag.data(), heat.data(), rise.data());
  std::printf("peak rise %.3f K\n", rise[middle * (1 + n + n * n)]);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s", error.what());
  return 1;
}
