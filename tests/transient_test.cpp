// Transient fields against plain scalar forms of the direct and the decomposed sum; what a decomposition promises of
// single traces; impulse responses, windows, refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <string>

#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "fields/decomposition.h"
#include "tests/support/plain_transients.h"

namespace {

using kesto::host::guarded;
using namespace scenes;
using plain::Trace;

constexpr double rho = 1000, speed = 1500, outer = 4e-3, roc = 9e-3;

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

ToneBurst tone(1.2, 2e6, 1.7e-6, 0, 1), long_tone(1, 1e6, 150e-6, 0, 1);
HanningPulse hanning(0.7, 2e6, 1.5e-6, 0, 2);
TCubedPulse cubed(1e18, 2e6, 2e-6, 1e6, 3), growing(1e18, 2e6, 2e-6, -3e6, 4), short_cubed(1e18, 2e6, 0.2e-6, 0, 3);
HalfSine half_sine;

Scene scene_of(ExcitationFunction& pulse, double tmin, double tmax, double deltat, double delay = 0, int nodes = 16) {
  Scene s;
  s.pulse = &pulse, s.tmin = tmin, s.tmax = tmax, s.deltat = deltat, s.delay = delay, s.nodes = nodes;
  return s;
}

// Over the face, beside it, on its axis and rim, behind, at a shell's centre of curvature and beside it, far; some in
// the order of a grid's line.
Points observation_points() {
  Points points = {{0, 0, 5e-3},      {0, 0, roc},  {outer, 0, 3e-3},    {0, 0, -2e-3},
                   {1e-3, 2e-3, roc}, {0, 0, 0.02}, {9e-3, 1e-3, 0.3e-3}};
  for (int i = 0; i < 20; ++i) points.emplace_back(-9e-3 + 0.9e-3 * i, 0.3e-3, 6e-3);
  for (int i = 0; i < 10; ++i) points.emplace_back(1e-3 * i, -0.2e-3 * i, 30e-3 - 3.5e-3 * i);
  return points;
}

// On the axis, where the pulse of the reference wave or of the rim of a disc ends with a sample: on which side of it
// rounding decides, and with it the order of every sum.
Points points_at_ends(const Scene& s) {
  Points points;
  for (int i = 0; i < 60; ++i) {
    const double path = speed * (s.tmin + (90 + 3 * i) * s.deltat - s.delay - s.pulse->pulse_width);
    if (path > outer)
      points.emplace_back(0, 0, path), points.emplace_back(0, 0, std::sqrt(path * path - outer * outer));
  }
  return points;
}

double largest_of(const Trace& trace) {
  double largest = 0;
  for (const double v : trace) largest = std::max(largest, std::fabs(v));
  return largest;
}

class Transients : public testing::TestWithParam<MethodOfShape<TransientMethod>> {};

TEST_P(Transients, AreThePlainSumsAtEveryWidth) {
  const TransientMethod& method = *GetParam().method;
  if (method.sums == Sums::in_closed_form) return;  // below
  const Element e = usual_element(GetParam().shape);
  std::vector<Scene> cases = {scene_of(tone, 0, 25e-6, 1.0 / 16e6),
                              scene_of(tone, -1e-6, 8e-6, 1.0 / 37e6, 0.37e-6, 50),
                              scene_of(hanning, 0, 25e-6, 1.0 / 16e6, 1e-6, 1),
                              scene_of(hanning, 5e-6, 9e-6, 1.0 / 64e6, -0.2e-6, 50),
                              scene_of(cubed, 0, 25e-6, 1.0 / 16e6),
                              scene_of(growing, 0, 10e-6, 1.0 / 16e6, 0, 50),
                              scene_of(half_sine, 2e-6, 25e-6, 1.0 / 16e6, 0.1e-6),
                              scene_of(tone, 0, 25e-6, 1.0 / 16e6, 0, 50),
                              scene_of(tone, 0, 25e-6, 1.0 / 16e6),
                              scene_of(hanning, 0, 0, 0)};
  for (int k = 0; k < 300; ++k) {  // 70 samples early from the middle on; and at no step at all
    cases[8].times.push_back((k < 150 ? k : k - 70) / 16e6);
    cases[9].times.push_back(1e-6 + k * k * 0.2e-9);
  }
  const bool in_floats = method.tolerance > 1e-6;
  for (Scene& s : cases) {
    s.points = observation_points();
    if (!in_floats && s.deltat != 0 && s.times.empty()) {
      for (const Point& p : points_at_ends(s)) s.points.push_back(p);
    }
    const plain::Transient sums(s);
    std::vector<Trace> expected;
    double largest = 1e3;  // Pa, of 1e6: in a list without a step a decomposition is what rounding leaves
    for (const Point& p : s.points) {
      expected.push_back(sums.at(e, method, p));
      largest = std::max(largest, largest_of(expected.back()));
    }
    at_every_width([&](kesto::VectorTarget target) {
      const Outcome got = run(s, *e.face, method.compute, 0.25);
      ASSERT_TRUE(got.report.clean() && got.answer == 0) << got.report.error;
      for (std::size_t p = 0; p < expected.size(); ++p) {
        const Trace trace = got.trace(p);
        for (std::size_t k = 0; k < trace.size(); ++k) {
          ASSERT_NEAR(trace[k] - 0.25, expected[p][k], method.tolerance * largest)
              << "case " << &s - cases.data() << ", " << kesto::name_of(target) << ", point " << p << ", sample " << k;
        }
      }
    });
  }
}

INSTANTIATE_TEST_SUITE_P(, Transients, testing::ValuesIn(of_every_shape(transient_methods)), NameOfMethod());

// A trace is exactly silent outside its pulse, and it is the same to the bit in any company and any order.
TEST(Decompositions, AreTheirOwn) {
  CircularTransducer disc(2e-3);
  Scene all = scene_of(short_cubed, 0, 410e-6, 1.0 / 16e6, 0, 24);
  for (int i = 0; i < 70; ++i) all.points.emplace_back(1e-5 * i, 0, i % 2 == 0 ? 1.5e-3 : 600e-3);
  std::mt19937_64 bits(7);
  Scene shuffled = all;
  std::vector<std::size_t> order(all.points.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), bits);
  for (std::size_t i = 0; i < order.size(); ++i) shuffled.points[i] = all.points[order[i]];
  at_every_width([&](kesto::VectorTarget target) {
    const Outcome together = run(all, disc, &Transducer::fnm_tsd), mixed = run(shuffled, disc, &Transducer::fnm_tsd);
    for (std::size_t i = 0; i < order.size(); ++i) {
      EXPECT_EQ(mixed.trace(i), together.trace(order[i])) << kesto::name_of(target);
      if (i > 3) continue;
      Scene alone = all;
      alone.points = {all.points[i]};
      const Trace trace = together.trace(i);
      EXPECT_EQ(trace, run(alone, disc, &Transducer::fnm_tsd).values) << i;
      const double arrival = all.points[i].z / speed, end = std::hypot(2.1e-3, all.points[i].z) / speed + 0.2e-6;
      EXPECT_GT(largest_of(trace), 0);
      for (std::size_t k = 0; k < trace.size(); ++k) {
        const double t = static_cast<double>(k) / 16e6;
        EXPECT_TRUE((t >= arrival && t <= end) || trace[k] == 0) << i << ' ' << t << ' ' << trace[k];
      }
    }
  });
}

// More samples than a block of time or a stretch of it holds, pulses that last over several, and what that takes.
TEST(Decompositions, OfLongTimeVectorsAreThePlainSums) {
  const TransientMethod* const on_disc = &transient_methods[1];
  const struct {
    const TransientMethod* method;
    Shape shape;
    Scene scene;
  } cases[] = {{on_disc, disc, scene_of(hanning, -1e-6, 30e-3, 25e-9)},                // 1.2e6 samples
               {on_disc, disc, scene_of(half_sine, -1e-6, 30e-3, 25e-9)},              // ray by ray
               {&transient_methods[11], shell, scene_of(half_sine, 0, 30e-3, 25e-9)},  // by complex terms
               {on_disc, ring, scene_of(long_tone, 0, 250e-6, 1.0 / 40e6)}};           // 6,000 samples of pulse
  for (const auto& c : cases) {
    const Element e = usual_element(c.shape);
    Scene s = c.scene;
    // A pulse lies astride every end of a block of samples.
    const int samples = static_cast<int>((s.tmax - s.tmin) / s.deltat);
    const int block = kesto::samples_of_time_block(samples, *s.pulse);
    for (int end = std::min(block, samples / 8); end < samples; end += block) {
      s.points.emplace_back(2e-3, 0, speed * (s.tmin + end * s.deltat - 0.6e-6));
    }
    EXPECT_GT(s.points.size(), s.pulse == &long_tone ? 0u : 3u);
    const Outcome got = run(s, *e.face, c.method->compute);
    ASSERT_TRUE(got.report.clean()) << got.report.error;
    const plain::Transient sums(s);
    for (std::size_t p = 0; p < s.points.size(); ++p) {
      const Trace expected = sums.at(e, *c.method, s.points[p]), trace = got.trace(p);
      double worst = 0;
      for (std::size_t k = 0; k < trace.size(); ++k) worst = std::max(worst, std::fabs(trace[k] - expected[k]));
      EXPECT_LE(worst, 1e-10 * 3e6) << "case " << &c - cases << ", point " << p;
    }
  }
  Scene million = scene_of(cubed, 0, 1e-3, 1e-9);
  million.points = {{0, 0, 0.1}};
  CircularTransducer disc(outer);
  const Outcome got = run(million, disc, &Transducer::fnm_tsd);
  EXPECT_GT(got.values.size(), 1000000u);
  EXPECT_LT(got.report.peak_bytes, 100u << 20);
}

// Beyond the vector functions: phases of 6e9, and factors e^{B tau} that overflow, which leaves NaN; samples rounded to
// floats where that is promised; a rim in floats.
TEST(Decompositions, BeyondVectorsAndInFloats) {
  const Element e = usual_element(disc);
  for (const auto& [pulse, far] : {std::pair<ExcitationFunction*, double>(&tone, 1e9), {&cubed, 0.9}}) {
    const double arrival = std::hypot(far, far) / speed;
    Scene s = scene_of(*pulse, arrival - 20e-6, arrival + 20e-6, 1e-7);
    s.points = {{far, 0, far}};
    const Trace expected = plain::Transient(s).at(e, transient_methods[1], s.points[0]);
    const Trace got = run(s, *e.face, &Transducer::fnm_tsd).values;
    EXPECT_NE(expected, Trace(expected.size()));
    for (std::size_t k = 0; k < got.size(); ++k) {
      EXPECT_TRUE(std::isnan(expected[k]) ? std::isnan(got[k])
                                          : std::fabs(got[k] - expected[k]) <= 1e-2 * largest_of(expected))
          << "at " << far << " m, sample " << k << ": " << got[k] << " not " << expected[k];
    }
  }

  for (ExcitationFunction* const pulse :
       {static_cast<ExcitationFunction*>(&hanning), static_cast<ExcitationFunction*>(&half_sine)}) {
    Scene rounded = scene_of(*pulse, 0, 12e-6, 1.0 / 16e6);
    rounded.points = observation_points();
    for (const double v : run(rounded, *e.face, &Transducer::fnm_tsd_low_precision).values) {
      ASSERT_EQ(v, static_cast<double>(static_cast<float>(v)));
    }
  }

  CircularTransducer piston(5e-3);
  Scene rim = scene_of(hanning, 0, 12e-6, 1.0 / 32e6, 0, 128);
  rim.points = {{5e-3, 0, 0}, {5e-3, 0, 1e-12}, {3e-3, 4e-3, 1e-6}, {2e-3, 0, 1e-3}};
  const Outcome exact = run(rim, piston, &Transducer::fnm_tsd);
  for (const Computation compute : {&Transducer::fnm_tsd_low_precision, &Transducer::fnm_tsd_sse}) {
    const Outcome in_floats = run(rim, piston, compute);
    for (std::size_t i = 0; i < exact.values.size(); ++i) {
      EXPECT_NEAR(in_floats.values[i], exact.values[i], 2e-3 * 3e6) << "point " << i % 4 << ", sample " << i / 4;
    }
  }
}

// rho times the convolution of the impulse response with the signal's derivative is the pressure: the closed forms and
// the rim integral have nothing in common but the physics. Samples lie between arrivals, where h may jump.
TEST(ClosedForms, ConvolvedAreTheField) {
  const double dt = 1.03e-9;
  for (const Shape shape : {disc, ring, shell, shell_ring}) {
    const Element e = usual_element(shape);
    Scene s = scene_of(hanning, 0.11e-9, 14e-6, dt, 0, 200);
    s.points = {{0, 0, 5e-3},  {1e-3, 0.5e-3, 4e-3}, {outer, 0, 3e-3},     {3e-3, 5e-3, 6e-3},
                {0, 0, 12e-3}, {0.6e-3, 0, 12e-3},   {0.7e-3, 0.8e-3, roc}};
    const Outcome h = run(s, *e.face, &Transducer::impulse_response);
    const Outcome p =
        run(s, *e.face, shape == shell ? &Transducer::fnm_transient_behind_source : &Transducer::fnm_transient);
    Trace slope;
    for (double t = 0; t < hanning.pulse_width; t += dt) slope.push_back(hanning.derivative(t));
    for (std::size_t i = 0; i < s.points.size(); ++i) {
      const Trace response = h.trace(i), field = p.trace(i);
      double worst = 0;
      for (std::size_t k = 0; k < field.size(); k += 40) {
        double sum = 0;
        for (std::size_t m = 0; m < slope.size() && m <= k; ++m) sum += slope[m] * response[k - m];
        worst = std::max(worst, std::fabs(rho * dt * sum - field[k]));
      }
      EXPECT_LE(worst, 0.015 * largest_of(field)) << name_of(shape) << ", point " << i;
      EXPECT_GT(largest_of(field), 1e5);
    }
  }
  // Over the rim, in the instant in which the sphere touches the face, it is c.
  const Element e = usual_element(disc);
  Scene instant;
  instant.times = {0x1p-19}, instant.points = {{outer, 0, speed * 0x1p-19}};
  EXPECT_EQ(run(instant, *e.face, &Transducer::impulse_response).values, Trace{1.5 * speed});
  // The sum over cells tends to the rim integral.
  Scene fine = scene_of(hanning, 0, 10e-6, 1.0 / 32e6, 0.3e-6, 150);
  fine.points = {{1e-3, 1e-3, 6e-3}, {6e-3, 0, 4e-3}};
  const Outcome cells = run(fine, *e.face, &Transducer::rayleigh_transient),
                rim = run(fine, *e.face, &Transducer::fnm_transient);
  for (std::size_t k = 0; k < rim.values.size(); ++k) EXPECT_NEAR(cells.values[k], rim.values[k], 3e3) << k;  // of 1e6
}

// With no hole an annulus is the full shape to the bit; what is refused ends the call; gates, and what is missing.
TEST(Annuli, WithoutAHoleAndRefusals) {
  const Element elements[] = {usual_element(disc), usual_element(ring), usual_element(shell),
                              usual_element(shell_ring)};
  Scene s = scene_of(hanning, 0, 20e-6, 1.0 / 32e6, 1e-7);
  s.points = observation_points();
  for (const auto& method : of_every_shape(transient_methods)) {
    if (method.shape != ring && method.shape != shell_ring) continue;
    const Element without = make_element(method.shape, outer, 0, roc, 0);
    const Element full = usual_element(method.shape == ring ? disc : shell);
    EXPECT_EQ(run(s, *without.face, method.method->compute).values, run(s, *full.face, method.method->compute).values);
  }
  const Computation refused[] = {&Transducer::init_fnm_tsd, &Transducer::call_fnm_tsd, &Transducer::free_fnm_tsd};
  const Computation declined[] = {&Transducer::fnm_transient_behind_source, &Transducer::fnm_tsd_behind_source};
  for (const Element& e : elements) {
    Transducer* const t = e.face.get();
    for (const Computation compute : refused) {
      EXPECT_EQ(guarded([&] { (t->*compute)(); }).error, "Transducer shape not supported for this function\n");
    }
    for (const Computation compute : declined) EXPECT_TRUE(e.shape == shell || (t->*compute)() == 1);
    t->set_amplitude(1e-11);  // with which nothing is asked for
    t->set_transient_pressure_pointer(nullptr);
    for (const auto& method : of_every_shape(transient_methods)) {
      if (method.shape != e.shape || method.method->compute == &Transducer::impulse_response) continue;
      EXPECT_EQ((t->*method.method->compute)(), 0);
    }
    t->set_amplitude(1);
    Medium medium = water();
    t->set_medium(&medium), t->set_global_coordinate_grid(nullptr);
    EXPECT_EQ(guarded([&] { t->fnm_transient(); }).error, "The transducer has no coordinate grid.\n");
  }
}

// The tables of a rectangle's decomposition: once and again, released once and again.
TEST(Rectangles, MakeAndFreeTheirTables) {
  RectangularTransducer r(6e-3, 4e-3);
  const auto tables = [&] {
    return std::vector<double*>{r.tsd_t_squared, r.tsd_t_weight,  r.tsd_x,         r.tsd_x_weight,
                                r.tsd_y,         r.tsd_y_weight,  r.tsd_trace,     r.tsd_spatial_1,
                                r.tsd_spatial_2, r.tsd_spatial_3, r.tsd_spatial_4, r.tsd_temporal};
  };
  EXPECT_EQ(tables(), std::vector<double*>(12, nullptr));
  Scene s = scene_of(hanning, 0, 20e-6, 1.0 / 32e6);
  for (const auto& [make, all_there] :
       {std::pair(&Transducer::init_fnm_tsd, true), {&Transducer::free_fnm_tsd, false}}) {
    const Outcome out = run(s, r, [&, of = make](Transducer& t) {
      for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(t.init_fnm_tsd() + (t.*of)(), 0);
        std::vector<double*> now = tables();
        std::sort(now.begin(), now.end());
        EXPECT_EQ(std::unique(now.begin(), now.end()) - now.begin(), of == &Transducer::init_fnm_tsd ? 12 : 1);
        EXPECT_EQ(now.front() != nullptr, of == &Transducer::init_fnm_tsd);
        if (now.front() != nullptr) {  // as long as they are said to be: the sanitizers see
          for (double* const of_nodes : {r.tsd_t_squared, r.tsd_y_weight}) std::fill_n(of_nodes, s.nodes, 1.0);
          for (double* const of_terms : {r.tsd_spatial_1, r.tsd_spatial_4}) std::fill_n(of_terms, 6, 1.0);
          std::fill_n(r.tsd_trace, t.time_vector->nt, 1.0), std::fill_n(r.tsd_temporal, 6 * t.time_vector->nt, 1.0);
        }
      }
      EXPECT_EQ(t.free_fnm_tsd() + t.free_fnm_tsd(), 0);
      return 0;
    });
    EXPECT_TRUE(out.report.clean()) << out.report.live_blocks << all_there;
  }
}

TEST(Windows, BeginAndEndWithTheFirstAndLastArrival) {
  const double h = std::sqrt(roc * roc - outer * outer);
  const Element e[] = {usual_element(disc), usual_element(ring), usual_element(shell), usual_element(shell_ring)};
  RectangularTransducer rectangle(6e-3, 4e-3, 1, 0);
  const struct {
    Transducer& element;
    Points points;
    double begin, end;  // as distances
  } cases[] = {
      {*e[0].face, {}, -1 * speed - 0.5e-6 * speed, -1 * speed - 0.5e-6 * speed},  // none yet
      {*e[0].face, {{3e-3, 0, 4e-3}}, 4e-3, std::hypot(7e-3, 4e-3)},
      {*e[1].face, {{0, 7e-3, 4e-3}, {0, 0, -1e-3}}, -1e-3, std::hypot(11e-3, 4e-3)},
      {*e[2].face, {{0, 0, 0.02}}, std::hypot(outer, 0.02 - roc + h), 0.02},
      {*e[2].face, {{0, 0, 5e-3}}, 5e-3, std::hypot(outer, 5e-3 - roc + h)},
      {*e[3].face, {{6e-3, 0, roc}}, std::hypot(2e-3, h), std::hypot(10e-3, h)},
      {rectangle, {{4e-3, 5e-3, 2e-3}}, std::sqrt(1e-6 + 9e-6 + 4e-6), std::sqrt(49e-6 + 49e-6 + 4e-6)},
      {rectangle, {{3e-3, 0, -1e-3}, {0, 2e-3, 3e-3}}, 1e-3, std::sqrt(41e-6)},
  };
  Scene s = scene_of(hanning, 0, 1e-6, 1e-7, 0.5e-6);
  for (const auto& c : cases) {
    s.points = c.points;
    run(s, c.element, &Transducer::impulse_begin_and_end_times);
    EXPECT_NEAR((c.element.impulse_begin_time - 0.5e-6) * speed, c.begin, 1e-12) << &c - cases;
    EXPECT_NEAR((c.element.impulse_end_time - 0.5e-6) * speed, c.end, 1e-12) << &c - cases;
  }
  s.points = {};
  run(s, rectangle, &Transducer::impulse_begin_and_end_times);
  EXPECT_EQ(rectangle.impulse_begin_time, std::numeric_limits<double>::max());
  EXPECT_EQ(rectangle.impulse_end_time, 0);
}

}  // namespace
