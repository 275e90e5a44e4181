// Writes the solver's temperatures and fields of every geometry for one scenario each, a line to a value: what
// scripts/compare-compilers holds builds by different compilers against.
#include <cstdio>
#include <random>
#include <vector>

#include "excitation/hanning_pulse.h"
#include "heat/bioheat_solver.h"
#include "tests/support/methods.h"

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
  scenes::Scene scene;
  for (int i = 0; i < 300; ++i) {
    const double x = uniform(-0.02, 0.02), y = uniform(-0.02, 0.02);
    scene.points.emplace_back(x, y, uniform(1e-3, 0.1));
  }
  scene.medium._soundspeed = 1540, scene.medium._rho_density = 1060, scene.medium._dBcmMHz = 0.5;
  scene.nodes = 60;
  const auto add = [&](const auto& method) {
    const scenes::Element e = scenes::make_element(method.shape, 9e-3, 4e-3, 30e-3, 7e-3);
    e.face->set_euler(0.1, -0.2, 0.3);
    write(method.name().c_str(), scenes::run(scene, *e.face, method.method->compute).values);
  };
  for (const auto& m : scenes::of_every_shape(scenes::wave_methods)) {
    if (m.method->kind == scenes::Kind::rim || m.method->kind == scenes::Kind::rayleigh) add(m);
  }
  HanningPulse pulse(1, 1e6, 3e-6, 0, 2);
  scene.pulse = &pulse, scene.tmax = 80e-6, scene.deltat = 1.0 / 20e6;
  for (const auto& m : scenes::of_every_shape(scenes::transient_methods)) {
    if (m.method->tolerance > 0 && m.method->tolerance < 1e-6) add(m);
  }
}

}  // namespace

int main() {
  solve();
  fields();
}
