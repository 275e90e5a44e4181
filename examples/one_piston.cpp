// The shortest way to a pressure field: one piston, four points on its axis.
#include <cmath>
#include <cstdio>
#include <exception>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "transducers/circular_transducer.h"

int main(int argc, char**) try {
  if (argc > 1) return std::puts("one_piston: the pressure at four points on a piston's axis; it takes no options"), 0;
  CoordinateGrid grid;  // 10 mm to 40 mm before the piston, on its axis
  grid.RegularCoordinateGrid(0, 0, 0, 0, 10e-3, 40e-3, 1e-3, 1e-3, 10e-3);
  Medium water;
  water._f0 = 1e6, water._soundspeed = 1500, water._rho_density = 1000;
  NumericalIntegration rule;
  rule.allocate_memory(40);
  rule.gauss_quadrature();
  CircularTransducer piston(7.5e-3, 0.04, 0);  // radius (m), normal velocity (m/s), phase
  double re[4] = {}, im[4] = {};
  piston.set_medium(&water);
  piston.set_global_coordinate_grid(&grid);
  piston.set_integral_pointer(&rule);
  piston.set_complex_pressure_pointers(re, im);
  if (piston.fnm_cw() != 0) return 1;  // not offered by this geometry
  for (int i = 0; i < 4; ++i) std::printf("%d mm: %6.0f Pa\n", 10 + 10 * i, std::hypot(re[i], im[i]));
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s", error.what());
  return 1;
}
