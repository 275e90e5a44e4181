// A program of somebody else's, built against the installed package.
#include <cmath>
#include <cstdio>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/time_samples.h"
#include "excitation/tone_burst.h"
#include "transducers/circular_transducer.h"

int main() {
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(0, 0, 0, 0, 0.01, 0.04, 0, 0, 0.01);
  NumericalIntegration rule;
  rule.allocate_memory(20);
  Medium water;
  water._f0 = 1e6, water._soundspeed = 1500, water._rho_density = 1000;
  CircularTransducer piston(5e-3, 1, 0);
  double re[4] = {}, im[4] = {}, worst = 0;
  piston.set_medium(&water), piston.set_global_coordinate_grid(&grid), piston.set_integral_pointer(&rule);
  piston.set_complex_pressure_pointers(re, im);
  piston.fnm_cw();
  for (int i = 0; i < grid.npoints; ++i) {
    const double z = grid.spatial_index_value(i).z, k = 2 * std::acos(-1.0) * 1e6 / 1500;
    const double on_axis = 2 * 1000 * 1500 * std::fabs(std::sin(k / 2 * (std::hypot(z, 5e-3) - z)));
    worst = std::fmax(worst, std::fabs(std::hypot(re[i], im[i]) - on_axis) / 1.5e6);
  }
  ToneBurst burst(1, 1e6, 3e-6, 0, 1);
  std::printf("%d points, off the closed form by %.0e, burst %.3f\n", grid.npoints, worst, burst.at(0.25e-6));
  return grid.npoints == 4 && worst < 1e-12 && burst.at(0.25e-6) > 0.999 ? 0 : 1;
}
