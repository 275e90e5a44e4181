// Writes the solver's temperatures and fields of every geometry for one scenario each, a line to a value: what
// scripts/compare-compilers holds builds by different compilers against.
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "excitation/hanning_pulse.h"
#include "heat/bioheat_solver.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_ring_transducer.h"

namespace {

void write(const char* name, const std::vector<double>& values) {
  for (const double v : values) std::printf("%s %a\n", name, v);
}

// A generator of its own: the standard library's distributions differ.
double uniform(double low, double high) {
  static std::mt19937_64 bits(7);
  return low + (high - low) * static_cast<double>(bits() >> 11) * 0x1p-53;
}

void solve() {
  const int n = 23;
  std::vector<double> re(n * n * n), im(re), heat(re), rise(re);
  for (std::size_t i = 0; i < re.size(); ++i) re[i] = uniform(-1e6, 1e6), im[i] = uniform(-1e6, 1e6);
  kesto::solve_steady_bioheat({n, n, n, 1e-3, 1.1e-3, 0.9e-3, 5.8, 1060 * 1540, 5, 3617, 0.51, 40}, re.data(),
                              im.data(), heat.data(), rise.data());
  write("solver", rise);
}

void fields() {
  std::vector<double> points(3 * 300);
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = i < 600 ? uniform(-0.02, 0.02) : uniform(1e-3, 0.1);
  CoordinateGrid grid;
  grid.CoordinateGridVector(points.data(), 300);
  Medium medium;
  medium._f0 = 1e6, medium._soundspeed = 1540, medium._rho_density = 1060, medium._dBcmMHz = 0.5;
  TimeSamples time(1.0 / 20e6, 0, 80e-6);
  HanningPulse pulse(1, 1e6, 3e-6, 0, 2);
  CircularTransducer disc(8e-3, 1, 0.3);
  RectangularTransducer rectangle(9e-3, 14e-3, 1, 0.3);
  SphericalRingTransducer bowl(4e-3, 12e-3, 30e-3, 1, 0.3);
  const struct {
    const char* name;
    Transducer& element;
    std::function<int()> compute;
    bool transient;
  } computations[] = {
      {"disc_fnm", disc, [&] { return disc.fnm_cw(); }, false},
      {"disc_rayleigh", disc, [&] { return disc.rayleigh_cw(); }, false},
      {"rectangle_fnm", rectangle, [&] { return rectangle.fnm_cw(); }, false},
      {"rectangle_rayleigh", rectangle, [&] { return rectangle.rayleigh_cw(); }, false},
      {"bowl_fnm", bowl, [&] { return bowl.fnm_cw(); }, false},
      {"disc_transient", disc, [&] { return disc.fnm_transient(); }, true},
      {"bowl_tsd", bowl, [&] { return bowl.fnm_tsd(); }, true},
  };
  for (const auto& c : computations) {
    NumericalIntegration rule;
    rule.allocate_memory(60);
    rule.gauss_quadrature();
    c.element.set_medium(&medium), c.element.set_global_coordinate_grid(&grid), c.element.set_integral_pointer(&rule);
    c.element.set_time_vector(&time), c.element.excitation = &pulse;
    c.element.set_euler(0.1, -0.2, 0.3);
    std::vector<double> re(300), im(300), traces(300 * static_cast<std::size_t>(time.nt));
    if (c.transient) {
      c.element.set_transient_pressure_pointer(traces.data());
    } else {
      c.element.set_complex_pressure_pointers(re.data(), im.data());
    }
    c.compute();
    write(c.name, c.transient ? traces : re);
    if (!c.transient) write(c.name, im);
  }
}

}  // namespace

int main() {
  solve();
  fields();
}
