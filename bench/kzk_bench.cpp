// The march of nonlinear beams beside a plain scalar march: time per plane and harmonic, its growth with the harmonics
// and with the nodes, direct sums against the transform, memory, and whole runs.
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include "bench/plain_kzk_o2.h"
#include "bench/timing.h"
#include "core/medium.h"
#include "kzk/harmonic_march.h"

namespace {

using kesto::BeamPlan;
using kesto::BeamSource;
using kesto::HarmonicMarch;
using Complex = std::complex<double>;

const BeamSource bowl = {25e-3, 0, 60e-3};
constexpr double pressure = 200e3;

Medium tissue() {
  Medium medium;
  medium._f0 = 1.5e6, medium._soundspeed = 1540, medium._rho_density = 1050, medium._dBcmMHz = 0.3, medium._beta = 4;
  return medium;
}

BeamPlan plan_of(int harmonics, double nodes_over_radius) {
  const double r = 0, z = 90e-3;
  BeamPlan plan = kesto::plan_beam(bowl, kesto::wave_of(tissue(), pressure / (1540 * 1050)), 0,
                                   nodes_over_radius > 0 ? bowl.radius / (nodes_over_radius + 0.5) : 0, 0, {1, &r, &z},
                                   kesto::harmonic_resolution);
  plan.first_step = plan.step;
  plan.harmonics = harmonics;
  return plan;
}

// Seconds a plane, the median over planes.
template <class March>
double seconds_of_plane(March& march, int planes) {
  std::vector<double> times;
  for (int k = 0; k < planes; ++k) times.push_back(own_seconds([&] { march.step(); }));
  return median(times);
}

constexpr int never = std::numeric_limits<int>::max();

void compare_sums(bool quick) {
  std::printf("\nQuadratic sums, us a plane and harmonic (750 nodes over the radius)\n\n");
  std::printf("| harmonics | direct | transform |\n|---:|---:|---:|\n");
  for (const int n : {5, 10, 16, 24, 32, 40, 48, 63, 64, 96, 127, 200}) {
    if (quick && n > 10) break;
    const BeamPlan plan = plan_of(n, quick ? 100 : 750);
    const int planes = quick ? 3 : n < 64 ? 31 : 9;
    HarmonicMarch direct(plan, bowl, pressure, never), transform(plan, bowl, pressure, 1);
    const double scale = 1e6 / n;
    std::printf("| %d | %.2f | %.2f |\n", n, scale * seconds_of_plane(direct, planes),
                scale * seconds_of_plane(transform, planes));
  }
}

// The largest difference between the two marches over the source's radius, relative to the pressure.
bool compare_with_plain(bool quick) {
  std::printf("\nAgainst the plain scalar march\n\n");
  std::printf("| harmonics | nodes | us a plane and harmonic | plain | ratio | difference | memory, MB |\n");
  std::printf("|---:|---:|---:|---:|---:|---:|---:|\n");
  bool agrees = true;
  const struct {
    int harmonics;
    double nodes;
  } cases[] = {{1, 1000},  {2, 1000},  {5, 1000},  {10, 250},  {10, 500},
               {10, 1000}, {10, 2000}, {20, 1000}, {40, 1000}, {100, 500}};
  for (const auto& c : cases) {
    if (quick && c.harmonics * c.nodes > 3000) continue;
    const BeamPlan plan = plan_of(c.harmonics, c.nodes);
    const int planes = quick ? 5 : c.harmonics > 30 ? 9 : 25;
    HarmonicMarch march(plan, bowl, pressure);
    PlainMarchO2 plain(plan, bowl, pressure);
    const double ours = seconds_of_plane(march, planes), theirs = seconds_of_plane(plain, planes);
    double difference = 0;
    for (int n = 1; n <= c.harmonics; ++n) {
      for (int i = 0; i <= c.nodes; ++i) {
        difference = std::fmax(difference, std::abs(march.value(march.field(), i, n) - plain.value(i, n)) / pressure);
      }
    }
    agrees = agrees && difference < 1e-4;
    std::printf("| %d | %d | %.2f | %.2f | %.1f | %.1e | %.1f |\n", c.harmonics, plan.grid.nodes,
                1e6 * ours / c.harmonics, 1e6 * theirs / c.harmonics, theirs / ours, difference,
                1e-6 * static_cast<double>(march.bytes()));
  }
  return agrees;
}

void whole_runs() {
  std::vector<double> r, z;
  for (int i = 1; i <= 90; ++i) r.push_back(0), z.push_back(1e-3 * i);
  for (int i = 0; i <= 40; ++i) r.push_back(1e-4 * i), z.push_back(60e-3);
  std::vector<Complex> p(10 * r.size());
  kesto::BeamReport report;
  std::printf("\nWhole runs, 1.5 MHz, aperture 50 mm, curvature 60 mm, %zu points\n\n", r.size());
  for (const double v : {0.05, 0.12}) {
    const double t = seconds([&] {
      march_harmonics(bowl, v, tissue(), {0, 0, 0, 10}, {r.size(), r.data(), z.data()}, 1, 10, p.data(), {}, &report);
    });
    std::printf("10 harmonics, %.2f m/s: %.2f s, %d planes, %d nodes, %.1f MB\n", v, t, report.planes, report.nodes,
                1e-6 * static_cast<double>(report.bytes));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
  compare_sums(quick);
  const bool agrees = compare_with_plain(quick);
  if (!quick) whole_runs();
  std::printf(agrees ? "\nThe marches agree.\n" : "\nThe march differs from the plain one.\n");
  return agrees ? 0 : 1;
}
