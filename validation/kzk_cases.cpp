// Nonlinear beams: closed forms of the linear and of the plane wave, orders of convergence, conservation, the fast
// nearest method where beams are narrow, bursts against continuous waves, and the arrival of a shock.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "excitation/hanning_pulse.h"
#include "excitation/tone_burst.h"
#include "kzk/harmonic_march.h"
#include "transducers/circular_transducer.h"
#include "transducers/spherical_transducer.h"
#include "validation/cases.h"
#include "validation/points.h"

namespace kesto::validation {

namespace {

constexpr double beta = 3.5, c = 1500, rho = 1000, flat = std::numeric_limits<double>::infinity();

Medium medium_of(double frequency, double nonlinearity, double attenuation = 0, double exponent = 0) {
  Medium medium;
  medium._f0 = frequency, medium._soundspeed = c, medium._rho_density = rho;
  medium._beta = nonlinearity, medium._dBcmMHz = attenuation, medium._b = exponent;
  return medium;
}

struct Places {
  std::vector<double> r, z;
  void add(double radius, double height) { r.push_back(radius), z.push_back(height); }
  operator BeamPoints() const { return {r.size(), r.data(), z.data()}; }
};

Field harmonics_of(const BeamSource& source, double velocity, const Medium& medium, const HarmonicSteps& steps,
                   const Places& places, int last) {
  Field p(places.r.size() * static_cast<std::size_t>(last));
  march_harmonics(source, velocity, medium, steps, places, 1, last, p.data());
  return p;
}

std::vector<std::vector<double>> pulses_of(const BeamSource& source, const ExcitationFunction& v, double amplitude,
                                           const Medium& medium, const PulseSteps& steps, const Places& places,
                                           const std::vector<double>& times) {
  std::vector<std::vector<double>> traces(places.r.size());
  march_pulse(source, v, amplitude, 0, medium, steps, places, times.data(), static_cast<int>(times.size()),
              [&](std::size_t i, const double* trace) { traces[i].assign(trace, trace + times.size()); });
  return traces;
}

double turns(double frequency) { return 2 * pi * frequency / c; }  // k

// As far as the rim's wave is less than three half periods behind or ahead: what the defaults are made for.
void on_the_axis(Report& report) {
  Table table(report.path("kzk_axis.csv"), "source,phase,z,p,closed");
  const struct {
    const char* name;
    double ka, inner, gain;
  } sources[] = {{"disc, ka = 50", 50, 0, 0},
                 {"disc, ka = 300", 300, 0, 0},
                 {"annulus, ka = 50, hole 0.4", 50, 0.4, 0},
                 {"shell, ka = 50, gain 10", 50, 0, 10},
                 {"shell, ka = 300, gain 40", 300, 0, 40}};
  for (const auto& s : sources) {
    const double k = turns(1e6), a = s.ka / k, range = k * a * a / 2, d = s.gain > 0 ? range / s.gain : flat;
    Places places;
    std::vector<double> phases, times;
    for (const double phase : spaced(3 * pi, -3 * pi, report.quick ? 31 : 301)) {
      if (phase / range + 1 / d <= 1e-3 / range) continue;
      phases.push_back(phase), places.add(0, 1 / (phase / range + 1 / d));
    }
    const Field p = harmonics_of({a, s.inner * a, d}, 1, medium_of(1e6, 0), {}, places, 1);
    double worst = 0, largest = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
      const double z = places.z[i], hole = s.inner * s.inner;
      // At the centre of curvature itself the quotient has a limit.
      const double divisor = 1 - z / d, spread = phases[i] * (1 - hole) / 2;
      const double closed = std::fabs(divisor) < 1e-9 ? rho * c * range / d * (1 - hole)
                                                      : 2 * rho * c * std::fabs(std::sin(spread) / divisor);
      worst = std::max(worst, std::fabs(std::abs(p[i]) - closed)), largest = std::max(largest, closed);
      table.row("%s,%.4f,%.6g,%.8g,%.8g", std::string(s.name).substr(0, 5).c_str(), phases[i], z, std::abs(p[i]),
                closed);
    }
    report.add({std::string(s.name) + ", axis", worst / largest, 1e-3});
  }
  table.close();
}

// log2 of the ratio of the changes as a step is halved twice.
double order_of(const std::function<Field(double step)>& field_of, double step) {
  const Field first = field_of(step), second = field_of(step / 2), third = field_of(step / 4);
  double coarse = 0, fine = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    coarse += std::norm(first[i] - second[i]), fine += std::norm(second[i] - third[i]);
  }
  return 0.5 * std::log2(coarse / fine);
}

// A shell driven to a second harmonic of a tenth.
void convergence(Report& report) {
  const double k = turns(1e6), a = 50 / k, d = k * a * a / 2 / 5;
  const BeamSource shell = {a, 0, d};
  const Medium medium = medium_of(1e6, beta, 0.3);
  constexpr double velocity = 0.1;
  Places places;
  for (const double z : {0.5, 0.8, 1.0, 1.3}) {
    for (const double r : {0.0, 0.05, 0.15}) places.add(r * a, z * d);
  }
  const double dz = k * a * a / 8000, dr = a / 400.5;
  const double order_z = order_of(
      [&](double step) {
        return harmonics_of(shell, velocity, medium, {step, dr, 0, 4}, places, 2);
      },
      2 * dz);
  // The rim lies between two nodes at every step.
  const double order_r = order_of(
      [&](double part) {
        const double rings = std::round(100 / part);
        return harmonics_of(shell, velocity, medium, {dz, a / (rings + 0.5), 0, 4}, places, 2);
      },
      1);
  report.note("order in dz (2)", order_z);
  report.note("order in dr (2)", order_r);
  report.add({"order in dz, off 2", std::fabs(order_z - 2), 0.2});
  report.add({"order in dr, off 2", std::fabs(order_r - 2), 0.2});

  const Field narrow = harmonics_of(shell, velocity, medium, {0, 0, 0, 4}, places, 2);
  const Field wide = harmonics_of(shell, velocity, medium, {0, 0, 4 * a, 4}, places, 2);
  report.add({"a wider radial domain", error_of(narrow, wide), 1e-3});

  // Lossless, on all nodes of each plane.
  BeamPlan plan = plan_beam(shell, wave_of(medium_of(1e6, beta), 2 * velocity), 0, 0, 0, places, harmonic_resolution);
  plan.harmonics = 12;
  HarmonicMarch march(plan, shell, 2 * velocity * rho * c);
  double growth = -1, before = 0;
  for (int plane = 0; plane < (report.quick ? 200 : 1200); ++plane) {
    double energy = 0;
    for (int i = 0; i < plan.grid.nodes; ++i) {
      for (int n = 1; n <= plan.harmonics; ++n) {
        energy += plan.grid.area(i) * std::norm(march.value(march.field(), i, n));
      }
    }
    if (plane > 0) growth = std::max(growth, energy / before - 1);
    before = energy;
    march.step();
  }
  report.add({"growth of energy from plane to plane", growth, 1e-13});
}

// Averaged over 0.3 to 0.6 of the radius of a wide disc, where the rim's wave cancels.
void plane_waves(Report& report) {
  const double k = turns(1e6), shock = 0.15, pressure = rho * c * c * c / (beta * 2 * pi * 1e6 * shock);
  const double a = 1200 / k;
  Places places;
  const std::vector<double> sigmas = {0.5, 1.0};
  for (const double sigma : sigmas) {
    for (const double r : spaced(0.3, 0.6, 61)) places.add(r * a, sigma * shock);
  }
  const auto mean = [&](const Field& p, int n, std::size_t which) {
    double sum = 0;
    for (std::size_t i = 0; i < 61; ++i) {
      sum += std::abs(p[static_cast<std::size_t>(n - 1) * places.r.size() + which * 61 + i]) / 61;
    }
    return sum;
  };
  const Field p = harmonics_of({a}, pressure / rho / c, medium_of(1e6, beta), {0, a / 400.5, 0, 40}, places, 4);
  for (std::size_t which = 0; which < 2; ++which) {
    for (int n = 1; n <= 4; ++n) {
      const double sigma = sigmas[which], exact = 2 / (n * sigma) * jn(n, n * sigma);
      char name[60];
      std::snprintf(name, sizeof name, "Fubini, sigma %.1f, harmonic %d (%.6f)", sigma, n, exact);
      report.add({name, std::fabs(mean(p, n, which) / pressure / exact - 1), 5e-3});
    }
  }
  // So weak that harmonic 1 but decays.
  const double alpha = 100 * std::log(10.0) / 20;
  const Field weak = harmonics_of({a}, 1e-6, medium_of(1e6, beta, 1, 2), {0, a / 400.5, 0, 3}, places, 1);
  const Field still = harmonics_of({a}, 1e-6, medium_of(1e6, beta, 0), {0, a / 400.5, 0, 3}, places, 1);
  double off = 0;
  for (std::size_t i = 0; i < weak.size(); ++i) {
    off = std::max(off, std::fabs(std::abs(weak[i] / still[i]) / std::exp(-alpha * places.z[i]) - 1));
  }
  report.add({"thermoviscous decay", off, 1e-9});
}

Field fast_nearest(Transducer& element, Medium medium, const Places& places) {
  std::vector<double> xyz(3 * places.r.size()), re(places.r.size()), im(places.r.size());
  std::copy(places.r.begin(), places.r.end(), xyz.begin());
  std::copy(places.z.begin(), places.z.end(), xyz.begin() + static_cast<std::ptrdiff_t>(2 * places.r.size()));
  CoordinateGrid grid;
  grid.CoordinateGridVector(xyz.data(), static_cast<int>(places.r.size()));
  NumericalIntegration rule;
  rule.allocate_memory(400);
  rule.gauss_quadrature();
  element.set_medium(&medium), element.set_global_coordinate_grid(&grid), element.set_integral_pointer(&rule);
  element.set_complex_pressure_pointers(re.data(), im.data());
  element.fnm_cw();
  Field field;
  for (std::size_t i = 0; i < re.size(); ++i) field.push_back({re[i], im[i]});
  return field;
}

// Where beams are narrow the parabolic equation gives the whole field; the table says where it departs.
void fast_nearest_method(Report& report) {
  const double k = turns(1e6), a = 50 / k, last_minimum = k * a * a / (4 * pi);
  CircularTransducer disc(a, 1, 0);
  // Next to the minimum itself the axis is steep, and the minimum lies (lambda/a)^2 of its distance off.
  Places beyond;
  for (const double z : spaced(1.5 * last_minimum, 20 * last_minimum, 40)) {
    for (const double r : {0.0, 0.03, 0.06}) beyond.add(r * z, z);  // to 3.4 degrees off the axis
  }
  const Field exact = fast_nearest(disc, medium_of(1e6, 0), beyond);
  const Field marched = harmonics_of({a}, 1, medium_of(1e6, 0), {}, beyond, 1);
  double worst = 0, largest = 0;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    worst = std::max(worst, std::fabs(std::abs(exact[i]) - std::abs(marched[i])));
    largest = std::max(largest, std::abs(exact[i]));
  }
  report.add({"disc, ka = 50, past 1.5 times the last minimum: fnm_cw", worst / largest, 0.01});

  Table table(report.path("kzk_departs.csv"), "aperture,curvature,frequency,half_angle,peak_kzk,peak_fnm,departs");
  const struct {
    double aperture, roc, frequency;
  } shells[] = {{20e-3, 150e-3, 1.7e6}, {41e-3, 150e-3, 1.7e6}, {82e-3, 150e-3, 1.7e6}, {110e-3, 150e-3, 1.7e6}};
  for (const auto& s : shells) {
    const double radius = s.aperture / 2;
    Places axis;
    for (const double z : spaced(0.6 * s.roc, 1.3 * s.roc, 400)) axis.add(0, z);
    SphericalTransducer shell(radius, s.roc, 1.0, 0.0);
    const double whole = validation::largest(fast_nearest(shell, medium_of(s.frequency, 0), axis));
    const double beam =
        validation::largest(harmonics_of({radius, 0, s.roc}, 1, medium_of(s.frequency, 0), {}, axis, 1));
    const double angle = std::asin(radius / s.roc) * 180 / pi, departs = beam / whole - 1;
    table.row("%.4g,%.4g,%.4g,%.4g,%.8g,%.8g,%.4f", s.aperture, s.roc, s.frequency, angle, beam, whole, departs);
    char name[80];
    std::snprintf(name, sizeof name, "peak of a shell of %.1f degrees half angle against fnm_cw", angle);
    report.note(name, departs);
    if (s.aperture == 82e-3) report.add({"8.2 cm, 15 cm, 1.7 MHz: peak off by 1.9 %", std::fabs(departs), 0.025});
  }
  table.close();
}

// Amplitude of a harmonic in one period of a trace sampled `count` times.
double harmonic_of(const std::vector<double>& period, int n) {
  Complex sum = 0;
  const double count = static_cast<double>(period.size());
  for (std::size_t i = 0; i < period.size(); ++i) {
    sum += period[i] * std::polar(2 / count, -2 * pi * n * static_cast<double>(i) / count);
  }
  return std::abs(sum);
}

void bursts(Report& report) {
  const double k = turns(1e6), a = 40 / k, d = k * a * a / 2 / 4;
  const BeamSource shell = {a, 0, d};
  constexpr double velocity = 0.15;
  const ToneBurst burst(1, 1e6, 6e-6, 0, 1);
  Places focus;
  focus.add(0, 0.9 * d);
  std::vector<double> times;
  for (int i = 0; i < 200; ++i) times.push_back(focus.z[0] / c + 4e-6 + i * 5e-9);
  const Medium medium = medium_of(1e6, beta, 0.3);
  const std::vector<double> period =
      pulses_of(shell, burst, velocity, medium, {0, a / 250.5, 0, 8e-9, 0}, focus, times)[0];
  const Field p = harmonics_of(shell, velocity, medium, {0, 0, 0, 16}, focus, 3);
  for (int n = 1; n <= 3; ++n) {
    char name[80];
    std::snprintf(name, sizeof name, "burst against continuous wave, harmonic %d (%.0f kPa)", n,
                  1e-3 * std::abs(p[static_cast<std::size_t>(n - 1)]));
    report.add({name, std::fabs(harmonic_of(period, n) / std::abs(p[static_cast<std::size_t>(n - 1)]) - 1), 0.01});
  }
}

// A plane pulse beyond its shock distance. By the area rule the potential is the largest of those that arrive,
//   A(tau) = max_y [A_0(y) - (y - tau)^2 / 2 e],  p = (y - tau) / e,  e = beta z / (rho c^3),
// and a front stands where the largest changes over from one y to another.
void shock(Report& report) {
  const double a = 1200 / turns(1e6), z = 0.3, amplitude = 1.0, e = beta * z / (rho * c * c * c);
  const HanningPulse v(1, 1e6, 2e-6, 0, 2);
  Places places;
  places.add(0, z);
  std::vector<double> times;
  constexpr double dtau = 1e-9;
  for (int i = 0; i < 3500; ++i) times.push_back(z / c - 0.7e-6 + i * dtau);
  const auto trace =
      pulses_of({a}, v, amplitude, medium_of(1e6, beta), {z / 100, a / 60.5, 0, 2e-9, 6e-6}, places, times)[0];
  std::vector<double> area = {0};
  for (int i = 0; i < 2000; ++i) {
    area.push_back(area.back() + amplitude * rho * c * dtau * v.at((i + 0.5) * dtau));
  }
  std::vector<double> ruled;
  for (int i = 0; i < 3500; ++i) {
    const double tau = -0.7e-6 + i * dtau;
    double best = -HUGE_VAL, p = 0;
    for (std::size_t y = 0; y < area.size(); ++y) {
      const double moved = static_cast<double>(y) * dtau - tau, potential = area[y] - moved * moved / (2 * e);
      if (potential > best) best = potential, p = moved / e;
    }
    // Before and behind the pulse nothing moves.
    if (tau < 0 && best < 0) p = 0;
    if (tau > 2e-6 && best < area.back()) p = 0;
    ruled.push_back(p);
  }
  const auto front = [&](const std::vector<double>& p) {  // the steepest rise
    std::size_t at = 2;
    for (std::size_t i = 4; i + 4 < p.size(); ++i) {
      if (p[i + 4] - p[i - 4] > p[at + 4 > p.size() ? 0 : at + 4] - p[at < 4 ? 0 : at - 4]) at = i;
    }
    return static_cast<double>(at) * dtau;
  };
  Table table(report.path("kzk_shock.csv"), "tau,p,area_rule");
  double peak = 0, ruled_peak = 0;
  for (std::size_t i = 0; i < trace.size(); ++i) {
    table.row("%.6g,%.6g,%.6g", -0.7e-6 + static_cast<double>(i) * dtau, trace[i], ruled[i]);
    peak = std::max(peak, trace[i]), ruled_peak = std::max(ruled_peak, ruled[i]);
  }
  table.close();
  report.add({"arrival of a shock against the area rule, ns", 1e9 * std::fabs(front(trace) - front(ruled)), 6});
  report.add({"its peak", std::fabs(peak / ruled_peak - 1), 0.01});
}

}  // namespace

void kzk_cases(Report& report) {
  report.heading("K  nonlinear beams: closed forms, convergence, conservation, other methods");
  on_the_axis(report);
  convergence(report);
  plane_waves(report);
  fast_nearest_method(report);
  if (report.quick) return;
  bursts(report);
  shock(report);
}

}  // namespace kesto::validation
