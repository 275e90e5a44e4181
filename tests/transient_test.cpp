// Transient fields against plain scalar forms of the direct and the decomposed sum, which serve every geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "core/constants.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "host/embedded_host.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_ring_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;
using Point = CartesianCoordinate;
using Trace = std::vector<double>;

constexpr double rho = 1000, speed = 1500, outer = 4e-3, inner = 1.5e-3, roc = 9e-3;

// A pulse of nobody's making: a half sine, with terms of its own, complex ones included.
class HalfSine : public ExcitationFunction {
 public:
  HalfSine() : ExcitationFunction(1.3, 0, 0.8e-6, 0, 0), rate_(3.9e6) {}
  using ExcitationFunction::spatial_tsd;
  using ExcitationFunction::temporal_tsd;
  void spatial_tsd(double* out, double const& d) override {
    out[0] = std::cos(rate_ * d), out[1] = std::sin(rate_ * d);
  }
  void temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift) override {
    for (int k = 0; k < n; ++k) {
      const double tau = ts->time_index_value(k) - shift;
      out[k] = A0 * std::sin(rate_ * tau), out[n + k] = -A0 * std::cos(rate_ * tau);
    }
  }
  void spatial_tsd(std::complex<double>* out, double const& d) override {  // v = Re(-j e^{j rate (tau - d)})
    out[0] = std::polar(1.0, -rate_ * d), out[1] = 0;
  }
  void temporal_tsd(std::complex<double>* out, TimeSamples const* ts, int const& n, double const& shift) override {
    for (int k = 0; k < n; ++k) {
      out[k] = std::complex<double>(0, -A0) * std::polar(1.0, rate_ * (ts->time_index_value(k) - shift));
      out[n + k] = 7;
    }
  }
  double at(double const& t) const override { return t > 0 && t < pulse_width ? A0 * std::sin(rate_ * t) : 0; }
  double derivative(double const& t) const override {
    return t > 0 && t < pulse_width ? A0 * rate_ * std::cos(rate_ * t) : 0;
  }
  int number_of_tsd_terms() const override { return 2; }

 private:
  double rate_;
};

struct Setting {
  ExcitationFunction* pulse;
  double amplitude_of_decomposition;  // of its terms to the pulse
  double tmin, tmax, deltat, delay;
};

struct Scene {
  explicit Scene(const Setting& s, int n) : setting(s) {
    medium._soundspeed = speed, medium._rho_density = rho;
    time.generatetimevectorfromminmaxdeltat(s.deltat, s.tmin, s.tmax);
    rule.allocate_memory(n);
    rule.gauss_quadrature();
    for (int i = 0; i < n; ++i) x.push_back(rule.abscissa[i]), w.push_back(rule.weight[i]);
  }
  int samples() const { return time.nt; }
  double t(int k) const { return time.time_index_value(k); }

  Setting setting;
  Medium medium;
  TimeSamples time;
  NumericalIntegration rule;
  Trace x, w;
};

// Adds what the element computes into one buffer of traces, one to a point.
std::vector<Trace> traces_of(Transducer& element, const std::function<int()>& compute, Scene& s,
                             const std::vector<Point>& points) {
  Trace columns, buffer(points.size() * static_cast<std::size_t>(s.samples()), 0.25);
  for (const auto member : {&Point::x, &Point::y, &Point::z}) {
    for (const Point& p : points) columns.push_back(p.*member);
  }
  const Report report = guarded([&] {
    CoordinateGrid grid;
    grid.CoordinateGridVector(columns.data(), static_cast<int>(points.size()));
    s.rule.gauss_quadrature();
    element.set_medium(&s.medium), element.set_global_coordinate_grid(&grid), element.set_integral_pointer(&s.rule);
    element.set_time_vector(&s.time), element.set_transient_pressure_pointer(buffer.data());
    element.set_time_delay(s.setting.delay);
    element.excitation = s.setting.pulse;
    EXPECT_EQ(compute(), 0);
  });
  EXPECT_TRUE(report.clean()) << report.error;
  std::vector<Trace> traces(points.size());
  for (std::size_t p = 0; p < points.size(); ++p) {
    for (std::size_t k = 0; k < static_cast<std::size_t>(s.samples()); ++k)
      traces[p].push_back(buffer[p + k * points.size()] - 0.25);
  }
  return traces;
}

// The rays of a face, plainly.
struct Rays {
  Trace weight, delay;
  double reference = 0, first = 0, last = 0, focal_depth = 0;
  bool disc = false, skipped = false;
};

Rays rays_of_disc(const Scene& s, double a, const Point& p) {
  Rays rays;
  const double r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
  rays.disc = true, rays.skipped = p.z < 0;
  rays.reference = p.z / speed;
  rays.first = r <= a ? p.z / speed : std::sqrt(p.z * p.z + (r - a) * (r - a)) / speed;
  rays.last = std::sqrt((r + a) * (r + a) + p.z * p.z) / speed;
  for (std::size_t i = 0; i < s.x.size(); ++i) {
    const double c = std::cos(s.x[i] * kesto::pi * 0.5 + kesto::pi * 0.5), d = r2 + a * a - 2 * a * c * r;
    rays.weight.push_back((c * r - a) / d * (s.w[i] * kesto::pi * 0.5 * (rho * speed * a / kesto::pi)));
    rays.delay.push_back(std::sqrt(d + p.z * p.z) / speed);
  }
  return rays;
}

Rays rays_of_cap(const Scene& s, double a, bool behind, const Point& p) {
  Rays rays;
  const double d = roc, h = std::sqrt(d * d - a * a), z = p.z - d, r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
  rays.skipped = !behind && z < -h && r2 + z * z > d * d;
  rays.reference = (d + (std::fabs(z) > 1e-10 ? z / std::fabs(z) : 0) * std::sqrt(r2 + z * z)) / speed;
  if (r < 1e-10 && std::fabs(z) < 1e-10) rays.focal_depth = d - h;
  for (std::size_t i = 0; i < s.x.size(); ++i) {
    const double c = std::cos(kesto::half_pi * s.x[i] + kesto::half_pi);
    const double g = (r * c * h + a * z) / (2 * a * h * z * r * c + r2 * d * d - r2 * a * a * c * c + a * a * z * z);
    rays.weight.push_back(g * (s.w[i] * kesto::half_pi * (d * a / kesto::pi) * rho * speed));
    rays.delay.push_back(std::sqrt(d * d + r2 + z * z - 2 * a * r * c + 2 * z * h) / speed);
  }
  return rays;
}

int index_of(double position, int count) {
  return static_cast<int>(std::min(std::max(position, 0.0), static_cast<double>(count)));
}

// The samples of a pulse that is decomposed.
std::pair<int, int> span_of(const Scene& s, double delay) {
  const double from = (delay + s.setting.delay - s.t(0)) * (1 / s.setting.deltat);
  const double to = (delay + s.setting.delay - s.t(0) + s.setting.pulse->pulse_width) * (1 / s.setting.deltat);
  return {index_of(std::ceil(from), s.samples()), index_of(std::floor(to) + 1, s.samples())};
}

Trace focal_trace(const Scene& s, const Rays& rays, std::pair<int, int> span, double amplitude) {
  Trace trace(static_cast<std::size_t>(s.samples()));
  for (int k = span.first; k < span.second; ++k) {
    trace[static_cast<std::size_t>(k)] =
        s.setting.pulse->derivative(s.t(k) - s.setting.delay - roc / speed) * rho * rays.focal_depth * amplitude;
  }
  return trace;
}

Trace direct(const Scene& s, const Rays& rays, double amplitude) {
  Trace trace(static_cast<std::size_t>(s.samples()));
  if (rays.skipped) return trace;
  if (rays.focal_depth > 0) return focal_trace(s, rays, {0, s.samples()}, amplitude);
  const double per_sample = 1 / s.setting.deltat, origin = s.t(0) - s.setting.delay;
  int first = 0, last = s.samples();
  if (rays.disc) {
    first = index_of(std::floor((rays.first - origin) * per_sample), s.samples());
    last = index_of(std::ceil((rays.last + s.setting.pulse->pulse_width - origin) * per_sample), s.samples());
  }
  for (int k = first; k < last; ++k) {
    for (std::size_t j = 0; j < rays.weight.size(); ++j) {
      const auto v = [&](double delay) {
        return s.setting.pulse->at(rays.disc ? s.t(k) - delay - s.setting.delay : s.t(k) - s.setting.delay - delay);
      };
      trace[static_cast<std::size_t>(k)] += (v(rays.delay[j]) - v(rays.reference)) * rays.weight[j] * amplitude;
    }
  }
  return trace;
}

Trace decomposed(const Scene& s, const Rays& rays, double amplitude) {
  Trace trace(static_cast<std::size_t>(s.samples()));
  ExcitationFunction& pulse = *s.setting.pulse;
  if (rays.skipped) return trace;
  if (rays.focal_depth > 0) return focal_trace(s, rays, span_of(s, roc / speed), amplitude);
  const std::size_t terms = static_cast<std::size_t>(pulse.number_of_tsd_terms());
  Trace spatial(terms), temporal(terms * trace.size());
  pulse.temporal_tsd(temporal.data(), &s.time, s.samples(), s.setting.delay);
  double sum = 0;
  for (std::size_t j = 0; j < rays.weight.size(); ++j) {
    pulse.spatial_tsd(spatial.data(), rays.delay[j]);
    sum += rays.weight[j];
    const auto [first, last] = span_of(s, rays.delay[j]);
    for (int k = first; k < last; ++k) {
      for (std::size_t m = 0; m < terms; ++m) {
        trace[static_cast<std::size_t>(k)] +=
            spatial[m] * rays.weight[j] * temporal[m * trace.size() + static_cast<std::size_t>(k)] * amplitude;
      }
    }
  }
  const int first = span_of(s, rays.disc ? rays.first : rays.reference).first, last = span_of(s, rays.reference).second;
  for (int k = first; k < last; ++k)
    trace[static_cast<std::size_t>(k)] -= pulse.at(s.t(k) - rays.reference - s.setting.delay) * sum * amplitude;
  return trace;
}

// Over the face, beside it, on its axis and rim, behind, at a shell's centre of curvature and beside it, far; some in
// the order of a grid's line.
std::vector<Point> observation_points() {
  std::vector<Point> points = {{0, 0, 5e-3},      {0, 0, roc},  {outer, 0, 3e-3},    {0, 0, -2e-3},
                               {1e-3, 2e-3, roc}, {0, 0, 0.02}, {9e-3, 1e-3, 0.3e-3}};
  for (int i = 0; i < 20; ++i) points.emplace_back(-9e-3 + 0.9e-3 * i, 0.3e-3, 6e-3);
  for (int i = 0; i < 10; ++i) points.emplace_back(1e-3 * i, -0.2e-3 * i, 30e-3 - 3.5e-3 * i);
  return points;
}

struct TransientCase {
  const char* name;
  Transducer& element;
  std::function<int()> compute;
  std::function<Rays(const Scene&, double radius, const Point&)> rays;
  double hole;  // radius, 0 for none
  bool decomposed;
  double tolerance;  // of the largest sample
};

class Transients : public testing::Test {
 protected:
  ~Transients() override { unsetenv("KESTO_VECTOR_TARGET"); }

  CircularTransducer disc{outer, 1.5, 0.7};
  RingTransducer ring{inner, outer, 1.5, 0.7};
  SphericalTransducer shell{outer, roc, 1.5, 0.7};
  SphericalRingTransducer bowl{inner, outer, roc, 1.5, 0.7};
  ToneBurst tone{1.2, 2e6, 1.7e-6, 0, 1};
  HanningPulse hanning{0.7, 2e6, 1.5e-6, 0, 2};
  TCubedPulse cubed{1e18, 2e6, 2e-6, 1e6, 3}, growing{1e18, 2e6, 2e-6, -3e6, 4};
  HalfSine half_sine;
};

TEST_F(Transients, AgreeWithThePlainSumsAtEveryWidth) {
  const auto flat = [](const Scene& s, double a, const Point& p) { return rays_of_disc(s, a, p); };
  const auto cap = [](const Scene& s, double a, const Point& p) { return rays_of_cap(s, a, false, p); };
  const auto cap_all = [](const Scene& s, double a, const Point& p) { return rays_of_cap(s, a, true, p); };
  const TransientCase cases[] = {
      {"disc fnm_transient", disc, [&] { return disc.fnm_transient(); }, flat, 0, false, 1e-12},
      {"ring fnm_transient", ring, [&] { return ring.fnm_transient(); }, flat, inner, false, 1e-12},
      {"shell fnm_transient", shell, [&] { return shell.fnm_transient(); }, cap, 0, false, 1e-12},
      {"shell fnm_transient_behind_source", shell, [&] { return shell.fnm_transient_behind_source(); }, cap_all, 0,
       false, 1e-12},
      {"bowl fnm_transient", bowl, [&] { return bowl.fnm_transient(); }, cap, inner, false, 1e-12},
      {"disc fnm_tsd", disc, [&] { return disc.fnm_tsd(); }, flat, 0, true, 1e-10},
      {"disc fnm_fdtsd", disc, [&] { return disc.fnm_fdtsd(); }, flat, 0, true, 1e-10},
      {"disc fnm_tsd_low_precision", disc, [&] { return disc.fnm_tsd_low_precision(); }, flat, 0, true, 2e-3},
      {"disc fnm_tsd_sse", disc, [&] { return disc.fnm_tsd_sse(); }, flat, 0, true, 2e-3},
      {"ring fnm_tsd", ring, [&] { return ring.fnm_tsd(); }, flat, inner, true, 1e-10},
      {"shell fnm_tsd", shell, [&] { return shell.fnm_tsd(); }, cap, 0, true, 1e-10},
      {"shell fnm_tsd_behind_source", shell, [&] { return shell.fnm_tsd_behind_source(); }, cap_all, 0, true, 1e-10},
      {"shell fnm_fdtsd", shell, [&] { return shell.fnm_fdtsd(); }, cap, 0, true, 1e-10},
      {"shell fnm_tsd_low_precision", shell, [&] { return shell.fnm_tsd_low_precision(); }, cap, 0, true, 2e-3},
      {"bowl fnm_tsd", bowl, [&] { return bowl.fnm_tsd(); }, cap, inner, true, 1e-10},
      {"bowl fnm_tsd_low_precision", bowl, [&] { return bowl.fnm_tsd_low_precision(); }, cap, 0, true, 2e-3},
  };
  const Setting settings[] = {
      {&tone, 1, 0, 25e-6, 1.0 / 16e6, 0},           {&tone, 1, -1e-6, 8e-6, 1.0 / 37e6, 0.37e-6},
      {&hanning, 0.7, 0, 25e-6, 1.0 / 16e6, 1e-6},   {&hanning, 0.7, 5e-6, 9e-6, 1.0 / 64e6, -0.2e-6},
      {&cubed, 1, 0, 25e-6, 1.0 / 16e6, 0},          {&growing, 1, 0, 10e-6, 1.0 / 16e6, 0},
      {&half_sine, 1, 0, 25e-6, 1.0 / 16e6, 0.1e-6},
  };
  const std::vector<Point> points = observation_points();
  for (const TransientCase& c : cases) {
    for (const Setting& setting : settings) {
      for (const int n : {1, 16, 50}) {
        Scene scene(setting, n);
        std::vector<Trace> expected;
        double largest = 0;
        for (const Point& p : points) {
          const auto trace_of = [&](double a, double amplitude) {
            const Rays rays = c.rays(scene, a, p);
            return c.decomposed ? decomposed(scene, rays, amplitude) : direct(scene, rays, amplitude);
          };
          expected.push_back(trace_of(outer, 1.5));
          if (c.hole > 0) {
            const Trace hole = trace_of(c.hole, -1.5);
            for (std::size_t k = 0; k < hole.size(); ++k) expected.back()[k] += hole[k];
          }
          for (const double v : expected.back()) largest = std::max(largest, std::fabs(v));
        }
        for (const kesto::VectorTarget target : kesto::all_vector_targets) {
          if (!kesto::is_available(target)) continue;
          setenv("KESTO_VECTOR_TARGET", kesto::name_of(target), 1);
          const std::vector<Trace> got = traces_of(c.element, c.compute, scene, points);
          double worst = 0;
          std::size_t at = 0;
          for (std::size_t p = 0; p < points.size(); ++p) {
            for (std::size_t k = 0; k < got[p].size(); ++k) {
              const double difference = std::fabs(got[p][k] - expected[p][k]);
              if (!(difference <= worst)) worst = difference, at = p;
            }
          }
          EXPECT_LE(worst, c.tolerance * largest)
              << c.name << ", pulse of type " << setting.pulse->type << ", n = " << n << ", " << kesto::name_of(target)
              << ", point " << at;
        }
      }
    }
  }
}

// rho times the convolution of the impulse response with the signal's derivative is the pressure: the closed forms and
// the rim integral have nothing in common but the physics. Samples lie between arrivals, where h may jump.
TEST_F(Transients, AreTheConvolutionOfTheImpulseResponse) {
  const double dt = 1.03e-9;
  const Setting fine = {&hanning, 1, 0.11e-9, 14e-6, dt, 0};
  struct {
    Transducer& element;
    std::function<int()> response, field;
  } const cases[] = {
      {disc, [&] { return disc.impulse_response(); }, [&] { return disc.fnm_transient(); }},
      {ring, [&] { return ring.impulse_response(); }, [&] { return ring.fnm_transient(); }},
      {shell, [&] { return shell.impulse_response(); }, [&] { return shell.fnm_transient_behind_source(); }},
      {bowl, [&] { return bowl.impulse_response(); }, [&] { return bowl.fnm_transient(); }},
  };
  const std::vector<Point> points = {{0, 0, 5e-3},  {1e-3, 0.5e-3, 4e-3}, {outer, 0, 3e-3},     {3e-3, 5e-3, 6e-3},
                                     {0, 0, 12e-3}, {0.6e-3, 0, 12e-3},   {0.7e-3, 0.8e-3, roc}};
  for (const auto& c : cases) {
    Scene scene(fine, 200);
    const std::vector<Trace> h = traces_of(c.element, c.response, scene, points);
    const std::vector<Trace> p = traces_of(c.element, c.field, scene, points);
    Trace slope;
    for (double t = 0; t < hanning.pulse_width; t += dt) slope.push_back(hanning.derivative(t));
    for (std::size_t i = 0; i < points.size(); ++i) {
      double worst = 0, largest = 0;
      for (std::size_t k = 0; k < p[i].size(); k += 40) {
        double sum = 0;
        for (std::size_t m = 0; m < slope.size() && m <= k; ++m) sum += slope[m] * h[i][k - m];
        largest = std::max(largest, std::fabs(p[i][k]));
        worst = std::max(worst, std::fabs(rho * dt * sum - p[i][k]));
      }
      EXPECT_LE(worst, 0.015 * largest) << "case " << &c - cases << ", point " << i;
      EXPECT_GT(largest, 1e5);
    }
  }
}

// With no hole an annulus is the full shape to the bit; what is refused ends the call; gates, and what is missing.
TEST_F(Transients, OfAnnuliWithoutAHoleAndRefusals) {
  RingTransducer full_ring(0, outer, 1.5, 0.7);
  SphericalRingTransducer full_bowl(0, outer, roc, 1.5, 0.7);
  Scene scene({&hanning, 1, 0, 20e-6, 1.0 / 32e6, 1e-7}, 16);
  const std::vector<Point> points = observation_points();
  using Member = int (Transducer::*)();
  const Member on_both[] = {&Transducer::impulse_response, &Transducer::fnm_transient, &Transducer::fnm_tsd,
                            &Transducer::fnm_fdtsd, &Transducer::fnm_tsd_low_precision};
  const Member on_discs[] = {&Transducer::fnm_tsd_sse, &Transducer::rayleigh_transient};
  const auto run = [&](Transducer& t, Member member) {
    return traces_of(
        t, [&t, member] { return (t.*member)(); }, scene, points);
  };
  for (const Member member : on_both) {
    EXPECT_EQ(run(disc, member), run(full_ring, member));
    EXPECT_EQ(run(shell, member), run(full_bowl, member));
  }
  for (const Member member : on_discs) EXPECT_EQ(run(disc, member), run(full_ring, member));

  Transducer* const all[] = {&disc, &ring, &shell, &bowl};
  const Member refused[] = {&Transducer::init_fnm_tsd, &Transducer::call_fnm_tsd, &Transducer::free_fnm_tsd};
  const Member answered_1[] = {&Transducer::fnm_transient_behind_source, &Transducer::fnm_tsd_behind_source};
  for (Transducer* const t : all) {
    for (const Member member : refused) {
      EXPECT_EQ(guarded([&] { (t->*member)(); }).error, "Transducer shape not supported for this function\n");
    }
    for (const Member member : answered_1) EXPECT_TRUE(t == &shell || (t->*member)() == 1);
    t->set_transient_pressure_pointer(nullptr);
    t->set_amplitude(1e-11);
    for (const Member member : on_both) {
      const bool gated = t == &shell || t == &bowl || member != on_both[0];
      EXPECT_EQ(gated ? (t->*member)() : 0, 0);
    }
    t->set_amplitude(1);
    t->set_medium(&scene.medium), t->set_global_coordinate_grid(nullptr);
    EXPECT_EQ(guarded([&] { t->fnm_transient(); }).error, "The transducer has no coordinate grid.\n");
  }

  // The sum over cells tends to the rim integral.
  Scene fine({&hanning, 1, 0, 10e-6, 1.0 / 32e6, 0}, 150);
  const std::vector<Point> few = {{1e-3, 1e-3, 6e-3}, {6e-3, 0, 4e-3}};
  disc.set_amplitude(1);
  const std::vector<Trace> cells = traces_of(
      disc, [&] { return disc.rayleigh_transient(); }, fine, few);
  const std::vector<Trace> rim = traces_of(
      disc, [&] { return disc.fnm_transient(); }, fine, few);
  for (std::size_t p = 0; p < few.size(); ++p) {
    for (std::size_t k = 0; k < rim[p].size(); ++k) EXPECT_NEAR(cells[p][k], rim[p][k], 2e3) << k;  // of some 1e6
  }
}

TEST_F(Transients, BeginAndEndWithTheFirstAndLastArrival) {
  RectangularTransducer rectangle(6e-3, 4e-3, 1, 0);
  const auto window = [&](Transducer& t, const std::vector<Point>& points) {
    Scene scene({&hanning, 1, 0, 1e-6, 1e-7, 0.5e-6}, 4);
    traces_of(
        t, [&] { return t.impulse_begin_and_end_times(); }, scene, points);
    return std::pair<double, double>((t.get_impulse_begin_time() - 0.5e-6) * speed,
                                     (t.impulse_end_time - 0.5e-6) * speed);
  };
  const double h = std::sqrt(roc * roc - outer * outer);
  const struct {
    Transducer& element;
    std::vector<Point> points;
    double begin, end;  // as distances
  } cases[] = {
      {disc, {}, -1 * speed - 0.5e-6 * speed, -1 * speed - 0.5e-6 * speed},  // none yet
      {disc, {{3e-3, 0, 4e-3}}, 4e-3, std::hypot(7e-3, 4e-3)},
      {ring, {{0, 7e-3, 4e-3}, {0, 0, -1e-3}}, -1e-3, std::hypot(11e-3, 4e-3)},
      {shell, {{0, 0, 0.02}}, std::hypot(outer, 0.02 - roc + h), 0.02},
      {shell, {{0, 0, 5e-3}}, 5e-3, std::hypot(outer, 5e-3 - roc + h)},
      {bowl, {{6e-3, 0, roc}}, std::hypot(2e-3, h), std::hypot(10e-3, h)},
      {rectangle, {{4e-3, 5e-3, 2e-3}}, std::sqrt(1e-6 + 9e-6 + 4e-6), std::sqrt(49e-6 + 49e-6 + 4e-6)},
      {rectangle, {{3e-3, 0, -1e-3}, {0, 2e-3, 3e-3}}, 1e-3, std::sqrt(41e-6)},
  };
  for (const auto& c : cases) {
    const auto [begin, end] = window(c.element, c.points);
    EXPECT_NEAR(begin, c.begin, 1e-12) << &c - cases;
    EXPECT_NEAR(end, c.end, 1e-12) << &c - cases;
  }
  Scene none({&hanning, 1, 0, 1e-6, 1e-7, 0}, 4);
  traces_of(rectangle, [&] { return rectangle.impulse_begin_and_end_times(); }, none, {});
  EXPECT_EQ(rectangle.impulse_begin_time, std::numeric_limits<double>::max());
  EXPECT_EQ(rectangle.impulse_end_time, 0);
}

}  // namespace
