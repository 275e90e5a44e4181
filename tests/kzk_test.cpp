// Nonlinear beams: vectors against the plain march, closed forms, conservation, what is refused and what is said.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "excitation/hanning_pulse.h"
#include "host/embedded_host.h"
#include "kzk/harmonic_march.h"
#include "tests/plain_kzk.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using namespace kesto;
using kesto::host::guarded;
using kesto::host::Report;
using Complex = std::complex<double>;

constexpr double f0 = 1e6, speed = 1500, rho = 1000, pi = 3.14159265358979323846, k = 2 * pi * f0 / speed;

Medium water(double beta = 0, double attenuation = 0, double exponent = 0) {
  Medium medium;
  medium._f0 = f0, medium._soundspeed = speed, medium._rho_density = rho;
  medium._beta = beta, medium._dBcmMHz = attenuation, medium._b = exponent;
  return medium;
}

struct Points {
  std::vector<double> r, z;
  operator BeamPoints() const { return {r.size(), r.data(), z.data()}; }
};

class Kzk : public ::testing::Test {
 protected:
  ~Kzk() override { unsetenv("KESTO_VECTOR_TARGET"); }
};

TEST_F(Kzk, EveryWidthMarchesLikeThePlainForm) {
  const BeamSource bowl = {15e-3, 4e-3, 40e-3};
  const double r = 0, z = 30e-3, pressure = 2e6;
  for (const VectorTarget target : all_vector_targets) {
    if (!is_available(target)) continue;
    setenv("KESTO_VECTOR_TARGET", name_of(target), 1);
    for (const int harmonics : {1, 3, 10, 17, 70}) {
      BeamPlan plan = plan_beam(bowl, wave_of(water(3.5, 0.5, 1.5), pressure / rho / speed), 0, bowl.radius / 40.5, 0,
                                {1, &r, &z}, harmonic_resolution);
      plan.first_step = plan.step;
      plan.harmonics = harmonics;
      HarmonicMarch march(plan, bowl, std::polar(pressure, 0.4));
      test::PlainMarch plain(plan, bowl, std::polar(pressure, 0.4));
      for (int plane = 0; plane < 25; ++plane) march.step(), plain.step();
      double worst = 0;
      for (int n = 1; n <= harmonics; ++n) {
        for (int i = 0; i < plan.grid.nodes; ++i) {
          const Complex reference = plain.field[static_cast<std::size_t>(n - 1)][static_cast<std::size_t>(i)];
          worst = std::fmax(worst, std::abs(march.value(march.field(), i, n) - reference) / pressure);
        }
      }
      // The layer's table is a little older than its plane.
      EXPECT_LT(worst, 1e-9) << name_of(target) << ", " << harmonics << " harmonics";
      EXPECT_TRUE(harmonics == 1 || std::abs(plain.field[1][25]) > 1e-4 * pressure);
    }
  }
}

// On the axis, in amplitude and phase, through the element classes: e^{-jkz} rho c w (e^{-jka_i^2/2 L} - e^{-jka^2/2
// L}) / (1 - z/d), 1/L = 1/z - 1/d, and in time with v for the waves.
TEST_F(Kzk, LinearFieldsOnTheAxisAreTheClosedForms) {
#ifdef KESTO_SANITIZED
  GTEST_SKIP() << "takes many minutes under the sanitizers, where the other marches run";
#endif
  RingTransducer disc(0, 50 / k, 1.5, 0.7), ring(20 / k, 50 / k, 1.5, 0.7);
  SphericalTransducer shell(50 / k, 1250 / k / 8, 1.5, 0.7);
  const struct {
    const char* name;
    Transducer& element;
    double inner, curvature;
  } cases[] = {{"disc", disc, 0, std::numeric_limits<double>::infinity()},
               {"annulus", ring, 20 / k, std::numeric_limits<double>::infinity()},
               {"shell", shell, 0, 1250 / k / 8}};
  const double a = 50 / k, turned = 0.3;
  for (const auto& c : cases) {
    Medium medium = water();
    NumericalIntegration rule;
    rule.allocate_memory(1);
    std::vector<double> z, xyz;
    for (const double phase : {9.0, 6.0, 3.0, 1.5, 0.5, -1.0, -3.0, -6.0}) {  // of the rim behind the centre
      const double inverse = phase / (k * a * a / 2) + 1 / c.curvature;
      if (inverse > 0) z.push_back(1 / inverse);
    }
    z.push_back(-0.01), z.push_back(0);
    const std::size_t count = z.size();
    xyz.resize(3 * count);
    for (std::size_t i = 0; i < count; ++i) {
      xyz[i] = 0.01 + z[i] * std::sin(turned), xyz[2 * count + i] = z[i] * std::cos(turned);
    }
    CoordinateGrid grid;
    grid.CoordinateGridVector(xyz.data(), static_cast<int>(count));
    std::vector<double> re(count, 1.0), im(count);
    c.element.set_center(0.01, 0, 0);
    c.element.set_euler(turned, 0, 0);
    c.element.set_medium(&medium);
    c.element.set_global_coordinate_grid(&grid);
    c.element.set_integral_pointer(&rule);
    c.element.set_complex_pressure_pointers(re.data(), im.data());
    const Report report = guarded([&] { EXPECT_EQ(c.element.kzk_cw(), 0); });
    EXPECT_TRUE(report.clean()) << report.error;
    EXPECT_NE(report.console.find("Nonlinear beam: 1 harmonics"), std::string::npos) << report.console;
    double largest = 0, worst = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const double path = 0.5 * (1 / z[i] - 1 / c.curvature);
      const Complex exact =
          z[i] > 0 ? rho * speed * std::polar(1.5, 0.7 - k * z[i]) / (1 - z[i] / c.curvature) *
                         (std::polar(1.0, -k * c.inner * c.inner * path) - std::polar(1.0, -k * a * a * path))
                   : 0;
      largest = std::fmax(largest, std::abs(exact));
      worst = std::fmax(worst, std::abs(Complex(re[i] - 1, im[i]) - exact));
    }
    EXPECT_LT(worst, 1e-3 * largest) << c.name;

    HanningPulse pulse(1, f0, 3e-6, 0, 2);
    constexpr double start = -1e-6, step = 4e-8, delay = 0.3e-6;
    std::vector<double> times;
    for (int s = 0; s < 200; ++s) times.push_back(start + delay + z[2] / speed + step * s);
    TimeSamples samples;
    guarded([&] { samples.vectoroftimevalues(times.data(), 200); });
    std::vector<double> trace(count * 200);
    c.element.excitation = &pulse;
    c.element.set_time_delay(delay);
    c.element.set_time_vector(&samples);
    c.element.set_transient_pressure_pointer(trace.data());
    rule.set_kzk_parameters(0, static_cast<float>(a / 250), 0, 1e-8f, 0);
    const Report in_time = guarded([&] { EXPECT_EQ(c.element.kzk_transient(), 0); });
    EXPECT_TRUE(in_time.clean()) << in_time.error;
    largest = worst = 0;
    for (int s = 0; s < 200; ++s) {
      const double tau = start + step * s, path = 0.5 * (1 / z[2] - 1 / c.curvature) / speed;
      const double exact = 1.5 * rho * speed / (1 - z[2] / c.curvature) *
                           (pulse.at(tau - c.inner * c.inner * path) - pulse.at(tau - a * a * path));
      largest = std::fmax(largest, std::fabs(exact));
      worst = std::fmax(worst, std::fabs(trace[2 + static_cast<std::size_t>(s) * count] - exact));
    }
    EXPECT_LT(worst, 0.015 * largest) << c.name << " in time";
  }
}

// A plane wave where the rim is not heard: Fubini's harmonics, and the quasi-linear second one with its attenuation.
TEST_F(Kzk, PlaneWavesSteepenAndDecay) {
  const double shock = 0.15, pressure = rho * std::pow(speed, 3) / (3.5 * 2 * pi * f0 * shock), a = 800 / k;
  Points points;
  for (int i = 0; i <= 60; ++i) points.r.push_back(a * (0.3 + 0.005 * i)), points.z.push_back(0.5 * shock);
  const auto mean = [&](const std::vector<Complex>& p, int n) {
    double sum = 0;
    for (std::size_t i = 0; i < 61; ++i) sum += std::abs(p[static_cast<std::size_t>(n - 1) * 61 + i]) / 61;
    return sum;
  };
  std::vector<Complex> p(4 * 61);
  const HarmonicSteps steps = {0, a / 300.5, 0, 16};
  guarded([&] { march_harmonics({a}, pressure / rho / speed, water(3.5), steps, points, 1, 4, p.data()); });
  for (int n = 1; n <= 4; ++n) {
    const double exact = 2 / (0.5 * n) * jn(n, 0.5 * n) * pressure;
    EXPECT_NEAR(mean(p, n) / exact, 1, 0.005) << "harmonic " << n;
  }

  const double weak = 1e-4 * pressure, z = 0.5 * shock, exponent = 2;
  const double alpha = 1.0 * 100 / 8.685889638065037, alpha_2 = alpha * std::pow(2, exponent);
  guarded([&] { march_harmonics({a}, weak / rho / speed, water(3.5, 1, exponent), steps, points, 1, 4, p.data()); });
  EXPECT_NEAR(mean(p, 1) / (weak * std::exp(-alpha * z)), 1, 1e-3);
  const double growth = 3.5 * 2 * pi * f0 / (2 * rho * std::pow(speed, 3)) * weak * weak;
  EXPECT_NEAR(mean(p, 2) / (growth * (std::exp(-2 * alpha * z) - std::exp(-alpha_2 * z)) / (alpha_2 - 2 * alpha)), 1,
              2e-3);
}

TEST_F(Kzk, RefusesWhatCannotWorkAndSaysWhatDoesNotFit) {
  const Points points = {{0, 1e-3}, {20e-3, 30e-3}};
  const double no_value = std::numeric_limits<double>::quiet_NaN();
  const struct {
    BeamSource source;
    HarmonicSteps steps;
    int last;
    const char* text;
  } refused[] = {
      {{0}, {}, 1, "positive radius"},
      {{5e-3, 5e-3}, {}, 1, "inner radius"},
      {{5e-3, 0, -1}, {}, 1, "curvature"},
      {{5e-3}, {-1}, 1, "axial step of a nonlinear beam must not be negative"},
      {{5e-3}, {no_value}, 1, "axial step of a nonlinear beam must not be negative"},
      {{5e-3}, {1}, 1, "axial step of a nonlinear beam is wider"},
      {{5e-3}, {0, -1}, 1, "radial step of a nonlinear beam must not be negative"},
      {{5e-3}, {0, 6e-3}, 1, "radial step of a nonlinear beam is wider"},
      {{5e-3}, {0, 0, 4e-3}, 1, "must hold its source"},
      {{5e-3}, {0, 0, 0, -3}, 1, "number of harmonics"},
      {{5e-3}, {0, 0, 0, 4}, 5, "beyond the harmonics"},
      {{5e-3}, {}, 0, "counted from 1"},
  };
  for (const auto& c : refused) {
    std::vector<Complex> p(10, 7);
    const Report report =
        guarded([&] { march_harmonics(c.source, 1, water(3.5), c.steps, points, 1, c.last, p.data()); });
    EXPECT_NE(report.error.find(c.text), std::string::npos) << c.text << ": " << report.error;
    EXPECT_EQ(p, std::vector<Complex>(10, 7)) << c.text;
  }

  // Three harmonics of a shock, and a point a hundred radii off: two warnings. Stopped: nothing is written.
  std::vector<Complex> p(2, 7);
  const Points astray = {{0, 0.5}, {20e-3, 20e-3}};
  const Report report = guarded([&] {
    EXPECT_TRUE(march_harmonics({5e-3}, 3, water(3.5), {0, 1e-4, 10e-3, 3}, astray, 1, 1, p.data()));
  });
  ASSERT_EQ(report.warnings.size(), 2u);
  EXPECT_NE(report.warnings[0].find("1 points lie outside"), std::string::npos) << report.warnings[0];
  EXPECT_NE(report.warnings[1].find("The 3 harmonics"), std::string::npos) << report.warnings[1];
  EXPECT_EQ(p[1], Complex(0));
  p.assign(2, 7);
  const Report stopped = guarded([&] {
    EXPECT_FALSE(
        march_harmonics({5e-3}, 1, water(), {}, points, 1, 1, p.data(), [](double done) { return done < 0.5; }));
  });
  EXPECT_TRUE(stopped.clean());
  EXPECT_EQ(p, std::vector<Complex>(2, 7));
}

}  // namespace
