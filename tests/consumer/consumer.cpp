// A program of somebody else's, built against the installed package.
#include <cmath>
#include <cstdio>

#include "core/coordinate_grid.h"
#include "core/numerical_integration.h"
#include "core/time_samples.h"
#include "excitation/tone_burst.h"

int main() {
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(0, 0.3, 0, 0, 1, 1, 0.1, 0, 0);
  NumericalIntegration rule;
  rule.allocate_memory(20);
  rule.gauss_quadrature(0, 1);
  double integral = 0;
  for (int i = 0; i < rule.get_npoints(); ++i) integral += rule.get_weight(i) * std::exp(rule.get_abscissa(i));
  ToneBurst burst(1, 1e6, 3e-6, 0, 1);
  std::printf("%d points, integral of e^x off by %.0e, burst %.3f\n", grid.npoints, integral - std::expm1(1.0),
              burst.at(0.25e-6));
  return grid.npoints == 4 && std::abs(integral - std::expm1(1.0)) < 1e-14 && burst.at(0.25e-6) > 0.999 ? 0 : 1;
}
