// The rectangle in time against its impulse response, its continuous wave and brute sums over its face.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "core/constants.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "host/embedded_host.h"
#include "transducers/rectangular_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;
using Point = CartesianCoordinate;
using Field = std::vector<double>;

constexpr double rho = 1000, speed = 1500, a = 3e-3, b = 2e-3;

// In front, above an edge and a corner, beside both, on an edge and a corner of the face itself, far away; in the
// element's own coordinates.
const std::vector<Point> places = {{0, 0, 8e-3},        {1e-3, -0.7e-3, 5e-3}, {a, 0.5e-3, 6e-3},  {a, -b, 6e-3},
                                   {5e-3, 1e-3, 4e-3},  {1e-3, -4e-3, 7e-3},   {5e-3, 4e-3, 3e-3}, {a, 0.6e-3, 0},
                                   {0.5e-3, 0.4e-3, 0}, {4e-3, 3e-3, 0},       {0, 0, -1e-3},      {2e-3, 1e-3, 0.4}};
constexpr std::size_t behind = 10, far = 11;

struct Scene {
  explicit Scene(double step, double tmin, double tmax, int n, bool turned = true) : time(step, tmin, tmax) {
    medium._soundspeed = speed, medium._rho_density = rho, medium._f0 = 1e6;
    rule.allocate_memory(n);
    rule.gauss_quadrature();
    if (turned) element.set_euler(0.5, -0.3, 1.1);
    element.InitializeRotationMatrix();
    const auto& m = element.rotation_matrix;
    Field columns;
    for (int axis = 0; axis < 3; ++axis) {
      for (const Point& p : places) {  // turned, rounding is not to put a point of the face behind it
        const double z = p.z + (turned ? 1e-9 : 0);
        columns.push_back(m[0][axis] * p.x + m[1][axis] * p.y + m[2][axis] * z);
      }
    }
    grid.CoordinateGridVector(columns.data(), static_cast<int>(places.size()));
    element.set_medium(&medium), element.set_global_coordinate_grid(&grid), element.set_integral_pointer(&rule);
    element.set_time_vector(&time);
  }

  Field operator()(const std::function<int()>& compute) {
    Field field(places.size() * static_cast<std::size_t>(time.nt));
    element.set_transient_pressure_pointer(field.data());
    EXPECT_EQ(compute(), 0);
    return field;
  }
  double t(std::size_t k) const { return time.time_index_value(static_cast<int>(k)); }
  std::size_t samples() const { return static_cast<std::size_t>(time.nt); }

  Medium medium;
  CoordinateGrid grid;
  TimeSamples time;
  NumericalIntegration rule;
  RectangularTransducer element{2 * a, 2 * b, 1.7, 0.4};
};

double largest(const Field& field, std::size_t p) {
  double most = 0;
  for (std::size_t i = p; i < field.size(); i += places.size()) most = std::max(most, std::fabs(field[i]));
  return most;
}

void expect_near(const Field& found, const Field& expected, double tolerance, const char* what) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::size_t p = i % places.size();
    if (!(std::fabs(found[i] - expected[i]) <= tolerance * largest(expected, p))) {
      FAIL() << what << ", point " << p << ": " << found[i] << ", expected " << expected[i];
    }
  }
}

TEST(RectangleInTime, IsTheConvolutionOfTheImpulseResponse) {
  Scene s(2e-9, -1e-6, 12e-6, 160, false);
  s.element.set_time_delay(-0.3e-6);
  HanningPulse pulse(1, 1.3e6, 2e-6, 0, 2);
  s.element.excitation = &pulse;
  const Field h = s([&] { return s.element.impulse_response(); }), field = s([&] { return s.element.fnm_transient(); });
  Field slope;
  for (double t = 0; t < 2e-6; t += 2e-9) slope.push_back(rho * 2e-9 * pulse.derivative(t));
  for (std::size_t p = 0; p < far; ++p) {
    double worst = 0;
    for (std::size_t k = 0; k < s.samples(); ++k) {
      double convolved = 0;
      for (std::size_t i = 0; i < slope.size() && i <= k; ++i) convolved += slope[i] * h[p + (k - i) * places.size()];
      worst = std::max(worst, std::fabs(convolved - field[p + k * places.size()]));
    }
    EXPECT_LE(worst, 0.012 * largest(field, p)) << p;  // half a step by which a jump of h is misplaced
  }
  EXPECT_EQ(largest(h, behind) + largest(field, behind), 0);
  EXPECT_GT(largest(field, 0), 1e6);
}

TEST(RectangleInTime, LongBurstIsTheContinuousWaveAndFarAwayTheWholeFaceSoundsAtOnce) {
  Scene s(10e-9, 268e-6, 269e-6, 160), later(50e-9, 260e-6, 290e-6, 160);
  ToneBurst burst(1, 1e6, 300e-6, 0, 1);
  s.element.excitation = &burst;
  const Field field = s([&] { return s.element.fnm_transient(); });
  Field re(places.size()), im(places.size());
  s.element.set_complex_pressure_pointers(re.data(), im.data());
  s.element.set_phase(0);
  ASSERT_EQ(s.element.fnm_cw(), 0);
  for (std::size_t p = 0; p < far; ++p) {
    for (std::size_t k = 0; k < s.samples(); ++k) {
      const double angle = kesto::two_pi * 1e6 * s.t(k), wave = im[p] * std::cos(angle) + re[p] * std::sin(angle);
      ASSERT_NEAR(field[p + k * places.size()], wave, 1e-9 * std::hypot(re[p], im[p])) << p;
    }
  }
  HanningPulse pulse(1, 0.2e6, 20e-6, 0, 2);
  later.element.excitation = &pulse;
  const double R = std::hypot(places[far].x, places[far].y, places[far].z);
  const Field late = later([&] { return later.element.fnm_transient(); });
  for (std::size_t k = 0; k < later.samples(); ++k) {
    const double far_field = 1.7 * rho * 4 * a * b / (kesto::two_pi * R) * pulse.derivative(later.t(k) - R / speed);
    ASSERT_NEAR(late[far + k * places.size()], far_field, 5e-3 * largest(late, far));
  }
}

TEST(RectangleInTime, DecompositionEqualsTheDirectForm) {
  HanningPulse hanning(1, 1.3e6, 2e-6, 0, 2);
  ToneBurst tone(0.7, 1.1e6, 1.57e-6, 0, 1);
  TCubedPulse cubed(1e18, 1.2e6, 1.5e-6, 2e6, 3);
  struct {
    ExcitationFunction& pulse;
    double low_precision, tmin, tmax;
  } const cases[] = {{hanning, 1e-4, -1e-6, 12e-6},
                     {tone, 1, -1e-6, 12e-6},
                     {cubed, 1e-3, 3e-6, 5e-6},
                     {hanning, 1e-4, 270e-6, 300e-6},
                     {hanning, 1, -9e-6, -1e-6}};
  for (const auto& c : cases) {
    Scene s(21e-9, c.tmin, c.tmax, 50);
    RectangularTransducer& e = s.element;
    e.set_time_delay(-0.31e-6);
    e.excitation = &c.pulse;
    const Field direct = s([&] { return e.fnm_transient(); });
    expect_near(s([&] { return e.fnm_tsd(); }), direct, 1e-9, "fnm_tsd");
    expect_near(s([&] { return e.fnm_fdtsd(); }), direct, 1e-9, "fnm_fdtsd");
    if (c.low_precision < 1) expect_near(s([&] { return e.fnm_tsd_low_precision(); }), direct, c.low_precision, "low");
  }
}

TEST(RectangleInTime, StagesRefuseWhatTheyHaveNoRoomFor) {
  const Report report = guarded([] {
    Scene s(21e-9, -1e-6, 12e-6, 20);
    RectangularTransducer& e = s.element;
    HanningPulse hanning(1, 1.3e6, 2e-6, 0, 2);
    ToneBurst tone(1, 1.3e6, 2e-6, 0, 1);
    e.excitation = &hanning;
    const Field whole = s([&] { return e.fnm_tsd(); });
    const auto call = [&] { return e.call_fnm_tsd(); };
    const auto refused = [&](const char* text) {
      try {
        e.call_fnm_tsd();
        ADD_FAILURE() << text;
      } catch (const kesto::host::Error& error) {
        EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
      }
    };
    refused("has not been called");
    EXPECT_EQ(e.init_fnm_tsd() + e.init_fnm_tsd(), 0);
    EXPECT_EQ(s(call), whole);
    RectangularTransducer copy(e);
    EXPECT_EQ(copy.tsd_temporal, nullptr);
    EXPECT_EQ(s(call), whole);
    e.excitation = &tone;
    refused("another size");
    e.excitation = &hanning;
    s.time.generatetimevectorfromminmaxdeltat(21e-9, -1e-6, 13e-6);
    refused("another size");
    s.time.generatetimevectorfromminmaxdeltat(21e-9, -1e-6, 12e-6);
    s.rule.allocate_memory(30);
    s.rule.gauss_quadrature();
    refused("another size");
    s.rule.allocate_memory(20);
    s.rule.gauss_quadrature();
    s.grid.SinglePoint(1e-3, 2e-3, 5e-3);  // another grid is no other size
    Field one(s.samples()), again(s.samples());
    e.set_transient_pressure_pointer(one.data());
    EXPECT_EQ(e.call_fnm_tsd() + e.free_fnm_tsd() + e.free_fnm_tsd(), 0);
    e.set_transient_pressure_pointer(again.data());
    EXPECT_EQ(e.fnm_tsd(), 0);
    EXPECT_EQ(one, again);
    refused("has not been called");
  });
  EXPECT_TRUE(report.clean()) << report.error;
}

}  // namespace
