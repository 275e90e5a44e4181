#include "kzk/harmonic_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"

namespace kesto {

namespace {

// The frame and the steps are made for the part of the axis where the path from the rim differs from that from the
// centre by up to this phase: past the second minimum before the last maximum of a disc, as far before and behind a
// focus.
constexpr double phase_of_rim = 10;
constexpr int planes_of_first_stages = 256;
// Radius of the domain over that of the source, at least. The waves of the rim that meet the axis far behind a focus
// come from farther off it.
constexpr double extent = 2, extent_beyond_focus = 3;
constexpr double layer_width = 0.75;  // over the radius of the source

void check_length(double value, const char* text) {
  if (!(value >= 0) || value > 1e9) fail(text);
}

// A grid whose rings end on the rim, and nearly so on the inner rim.
double fitted_dr(const BeamSource& source, double rings) {
  const int fewest = static_cast<int>(std::ceil(rings));
  const int tries = source.inner_radius > 0 ? fewest / 8 + 1 : 1;
  double best = 0, least = 2;
  for (int m = fewest; m < fewest + tries; ++m) {
    const double dr = source.radius / (m + 0.5), inner = source.inner_radius / dr;
    const double off = source.inner_radius > 0 ? std::fabs(inner - std::floor(inner) - 0.5) : 0;
    if (off < least) least = off, best = dr;
  }
  return best;
}

}  // namespace

double BeamWave::attenuation(int n) const { return alpha * std::pow(n, exponent); }

BeamPlace place_of(const ScaledFrame& frame, double r, double z) {
  if (!(z > 0)) return {0, 0};
  return {std::fabs(r) / frame.scale(z), frame.zeta_of(z)};
}

BeamWave wave_of(const Medium& medium, double velocity) {
  if (!(medium._soundspeed > 0) || !(medium._rho_density > 0)) {
    fail("A nonlinear beam needs a medium with a positive sound speed and density.\n");
  }
  if (!(medium._dBcmMHz >= 0) || !(medium._beta >= 0)) {
    fail("A nonlinear beam needs a medium whose attenuation and nonlinearity parameter are not negative.\n");
  }
  BeamWave wave;
  wave.frequency = medium._f0;
  if (!(wave.frequency > 1e-10)) {
    warn("f0 not set; using default of 1 MHz to calculate wavelength.");
    wave.frequency = 1e6;
  }
  wave.k = two_pi / (medium._soundspeed / wave.frequency);
  wave.alpha = medium._dBcmMHz * 100 * medium._f0 / 1e6 / decibels_per_neper;
  wave.exponent = medium._b > 0 ? medium._b : 1;
  wave.pressure = medium._rho_density * medium._soundspeed * velocity;
  wave.nonlinearity = two_pi * wave.frequency * medium._beta / (medium._rho_density * std::pow(medium._soundspeed, 3));
  return wave;
}

void check_source(const BeamSource& source) {
  if (!(source.radius > 0) || source.radius > 1e9) fail("A nonlinear beam needs a source with a positive radius.\n");
  if (!(source.inner_radius >= 0) || source.inner_radius >= source.radius) {
    fail("The inner radius of a nonlinear beam's source must lie below its radius.\n");
  }
  if (!(source.curvature > 0)) fail("The radius of curvature of a nonlinear beam's source must be positive.\n");
}

BeamPlan plan_beam(const BeamSource& source, const BeamWave& wave, double dz, double dr, double rmax,
                   const BeamPoints& points, BeamResolution resolution) {
  check_length(dz, "The axial step of a nonlinear beam must not be negative.\n");
  check_length(dr, "The radial step of a nonlinear beam must not be negative.\n");
  check_length(rmax, "The radius of a nonlinear beam's domain must not be negative.\n");
  const double a = source.radius, wavelength = two_pi / wave.k;
  if (rmax > 0 && rmax < a) fail("The domain of a nonlinear beam must hold its source: rmax is below the radius.\n");
  if (dr > a) fail("The radial step of a nonlinear beam is wider than its source.\n");

  BeamPlan plan;
  plan.wave = wave;
  plan.frame.inverse_curvature = 1 / source.curvature;
  plan.frame.rayleigh = wave.k * a * a / (2 * phase_of_rim);
  double widest = 0;
  for (std::size_t i = 0; i < points.count; ++i) {
    const BeamPlace place = place_of(plan.frame, points.r[i], points.z[i]);
    plan.end = std::max(plan.end, place.zeta);
    if (place.zeta > 0) widest = std::max(widest, place.xi);
  }
  const double reach = plan.end > 0 ? plan.end : plan.frame.rayleigh;
  if (dz > reach) fail("The axial step of a nonlinear beam is wider than its domain.\n");

  constexpr double fewest_planes = 100;
  plan.step = dz > 0 ? dz : std::min(plan.frame.rayleigh / resolution.planes, reach / fewest_planes);
  plan.first_step = dz > 0 ? dz : std::min(plan.step, 0.1 * wavelength);
  plan.planes_of_stage = planes_of_first_stages;
  if (dz <= 0) plan.first_step = plan.step / std::exp2(std::ceil(std::log2(plan.step / plan.first_step)));

  RadialGrid& grid = plan.grid;
  grid.dr = dr > 0 ? dr : fitted_dr(source, std::max(resolution.nodes, 10 * a / wavelength));
  constexpr double widest_by_default = 20;
  const double least = plan.end > half_pi * plan.frame.rayleigh ? extent_beyond_focus : extent;
  grid.rmax = rmax > 0 ? rmax : a * std::min(std::max(least, 1.02 * widest / a), widest_by_default);
  const double nodes = std::ceil((grid.rmax + layer_width * a) / grid.dr);
  if (nodes > 4e6) fail("The radial step of a nonlinear beam is too fine for its domain.\n");
  grid.nodes = static_cast<int>(nodes);
  for (std::size_t i = 0; i < points.count; ++i) {
    if (points.z[i] > 0 && place_of(plan.frame, points.r[i], points.z[i]).xi > grid.rmax) ++plan.outside;
  }
  if ((plan.end / plan.step) > 1e8) fail("The axial step of a nonlinear beam is too fine for its range.\n");
  return plan;
}

void warn_of_points_outside(const BeamPlan& plan) {
  if (plan.outside == 0) return;
  char text[160];
  std::snprintf(text, sizeof text, "%zu points lie outside the domain of the nonlinear beam and get no pressure.",
                plan.outside);
  warn(text);
}

int harmonics_for(const BeamSource& source, const BeamWave& wave, double farthest) {
  if (!(wave.nonlinearity * wave.pressure > 0) || !(farthest > 0)) return 1;
  // sigma of the ray that runs in the strongest part of the beam: the integral of the gain along the axis.
  const double rayleigh = wave.k * source.radius * source.radius / 2, bend = 1 / source.curvature;
  constexpr int intervals = 2000;
  double sigma = 0, strongest = 0;
  for (int i = 0; i < intervals; ++i) {
    const double z = (i + 0.5) * farthest / intervals;
    const double gain = std::exp(-wave.alpha * z) / std::hypot(1 - z * bend, z / rayleigh);
    sigma += wave.nonlinearity * wave.pressure * gain * farthest / intervals;
    strongest = std::max(strongest, gain);
  }
  // Fubini's harmonics fall off as e^{-n (arsech sigma - sqrt(1 - sigma^2))}. Beyond a shock they fall as 1/n until
  // absorption stops them.
  constexpr double kept = 9.2;  // e^-9.2 = 1e-4
  constexpr int most = 128, fewest = 5;
  const double below = std::min(sigma, 0.95), root = std::sqrt(1 - below * below);
  double n = kept / (std::log((1 + root) / below) - root);
  if (sigma > 0.95) n *= sigma / 0.95;
  if (wave.alpha > 0) {
    const double balance = wave.nonlinearity * wave.pressure * strongest / wave.alpha;  // of steepening and loss
    if (wave.exponent > 1) n = std::min(n, 4 * std::pow(std::max(balance, 1.0), 1 / (wave.exponent - 1)) + fewest);
    if (balance < 1) n = std::min(n, fewest + kept / std::log(1 / balance));
  }
  return static_cast<int>(std::min(std::max(std::ceil(n), double{fewest}), double{most}));
}

}  // namespace kesto
