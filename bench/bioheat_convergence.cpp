// How the error falls with the sweeps: the table in docs/solver.md.
//
// The source is the lowest sine mode of a cube with zero walls, for which the solution of the discrete balance is
// known. It is also the mode that relaxation removes last.
#include <cmath>
#include <cstdio>
#include <vector>

#include "heat/bioheat_solver.h"

namespace {

// Largest error over the grid, relative to the peak, in a cube of 40 mm with n points a side.
double error_after(int n, double perfusion, int sweeps) {
  const double pi = std::acos(-1.0), side = 40e-3, h = side / (n - 1), kappa = 0.5, blood = 3600, source = 1e6;
  const kesto::BioheatProblem p{n, n, n, h, h, h, 1.0, 1.0, perfusion, blood, kappa, sweeps};
  const std::size_t a = static_cast<std::size_t>(n), all = a * a * a;
  std::vector<double> wave(a), real(all), imag(all), heat(all), temperature(all);
  for (std::size_t i = 1; i + 1 < a; ++i) wave[i] = std::sin(pi * static_cast<double>(i) / (n - 1));
  const auto shape = [&](std::size_t m) { return wave[m % a] * wave[m / a % a] * wave[m / a / a]; };
  for (std::size_t m = 0; m < all; ++m) real[m] = std::sqrt(source * shape(m));
  solve_steady_bioheat(p, real.data(), imag.data(), heat.data(), temperature.data());
  const double eigenvalue = perfusion * blood + kappa * 12 / (h * h) * std::pow(std::sin(pi * h / 2 / side), 2);
  double worst = 0;
  for (std::size_t m = 0; m < all; ++m) {
    worst = std::fmax(worst, std::fabs(temperature[m] * eigenvalue / source - shape(m)));
  }
  return worst;
}

}  // namespace

int main() {
  const int sizes[] = {21, 41, 61, 81, 121, 161, 201};
  for (const double perfusion : {5.0, 0.0}) {
    std::printf("\nPerfusion %.0f kg/(m^3 s)\n\n| sweeps |", perfusion);
    for (const int n : sizes) std::printf(" %d^3 |", n);
    std::printf("\n|---:|");
    for (std::size_t s = 0; s < sizeof sizes / sizeof *sizes; ++s) std::printf("---:|");
    std::printf("\n");
    for (const int sweeps : {25, 50, 100, 200, 300, 500, 1000, 2000}) {
      std::printf("| %d |", sweeps);
      for (const int n : sizes) std::printf(" %.0e |", error_after(n, perfusion, sweeps));
      std::printf("\n");
      std::fflush(stdout);
    }
  }
  return 0;
}
