// How far the sweeps are from the solution of the discrete balance: the tables in docs/solver.md.
//
// The source is a focus of 3 x 3 x 12 mm (Gaussian, standard deviations 1.5, 1.5 and 6 mm) in the middle of the grid.
#include <cmath>
#include <cstdio>
#include <vector>

#include "heat/bioheat_solver.h"
#include "tests/exact_bioheat.h"

namespace {

struct Grid {
  int n0, n1, n2;
  double spacing;  // mm
};

// Largest errors over the grid after each number of sweeps, relative to the peak.
std::vector<double> errors_on(const Grid& g, double perfusion, const std::vector<int>& sweeps) {
  const double h = g.spacing * 1e-3;
  kesto::BioheatProblem p{g.n0, g.n1, g.n2, h, h, h, 1.0, 1.0, perfusion, 3617, 0.51, 0};
  std::vector<double> real;
  for (int k = 0; k < g.n2; ++k)
    for (int j = 0; j < g.n1; ++j)
      for (int i = 0; i < g.n0; ++i) {
        const double x = (i - (g.n0 - 1) / 2.0) * h / 1.5e-3, y = (j - (g.n1 - 1) / 2.0) * h / 1.5e-3;
        const double z = (k - (g.n2 - 1) / 2.0) * h / 6e-3;
        real.push_back(1e3 * std::exp(-(x * x + y * y + z * z) / 4));
      }
  std::vector<double> imag(real.size()), heat(real.size()), temperature(real.size()), errors;
  for (std::size_t n = 0; n < real.size(); ++n) heat[n] = real[n] * real[n];
  const std::vector<double> exact = exact_bioheat(p, heat);
  double peak = 0;
  for (const double t : exact) peak = std::fmax(peak, t);
  for (const int count : sweeps) {
    p.sweeps = count;
    solve_steady_bioheat(p, real.data(), imag.data(), heat.data(), temperature.data());
    double worst = 0;
    for (std::size_t n = 0; n < exact.size(); ++n) worst = std::fmax(worst, std::fabs(temperature[n] - exact[n]));
    errors.push_back(worst / peak);
  }
  return errors;
}

}  // namespace

int main() {
  const Grid grids[] = {
      {41, 41, 41, 1}, {81, 81, 121, 0.5}, {121, 121, 141, 0.5}, {61, 201, 121, 0.5}, {201, 201, 201, 0.25}};
  const std::vector<int> sweeps = {50, 100, 200, 300, 500, 1000, 2000};
  for (const double perfusion : {5.0, 0.0}) {
    std::printf("\nPerfusion %.0f kg/(m^3 s)\n\n| grid | spacing |", perfusion);
    for (const int count : sweeps) std::printf(" %d |", count);
    std::printf("\n|---|---:|");
    for (std::size_t s = 0; s < sweeps.size(); ++s) std::printf("---:|");
    std::printf("\n");
    for (const Grid& g : grids) {
      std::printf("| %d x %d x %d | %.2g mm |", g.n0, g.n1, g.n2, g.spacing);
      for (const double error : errors_on(g, perfusion, sweeps)) std::printf(" %.0e |", error);
      std::printf("\n");
      std::fflush(stdout);
    }
  }
  return 0;
}
