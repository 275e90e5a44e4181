// The façade: fields within their bounds of other roads, what wrong calls are told, and the figures of beams.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <thread>

#include "kesto/internal/checked_source.h"
#include "kesto/kesto.h"
#include "validation/arc_integral.h"

using namespace kesto;

namespace {

using Complex = std::complex<double>;
constexpr double full_turn = 6.28318530717958647692;

const Medium lossless = {1500, 1000};
const Medium lossy = {1540, 1060, 0.7, 1.1};

// Element by element, by integrals over arcs.
Complex reference(const Source& source, const Medium& medium, double frequency, const Point& at) {
  const double k = full_turn * frequency / medium.sound_speed;
  Complex sum;
  for (const Element& e : source.elements) {
    const Pose pose = pose_of(e);
    const Point from = at - e.position;
    double local[3];
    for (int i = 0; i < 3; ++i) local[i] = dot({pose.axes[i][0], pose.axes[i][1], pose.axes[i][2]}, from);
    const Complex velocity = e.velocity * std::exp(Complex(0, e.phase - full_turn * frequency * e.delay));
    sum +=
        medium.density * medium.sound_speed * velocity *
        validation::arc_integral(face_of(e.shape), k, medium.nepers_per_metre(frequency), local[0], local[1], local[2]);
  }
  return sum;
}

std::vector<Element> tilted_pair() {
  Element a{bowl_annulus(2e-3, 9e-3, 30e-3), {-12e-3, 1e-3, 0}, {}, 0.5, 0.3};
  Element b{rectangle(4e-3, 7e-3), {10e-3, -2e-3, 1e-3}, {}, -0.8, 0, 0.37e-6};
  return {a.point_at({0, 0, 30e-3}), b.point_at({1e-3, 2e-3, 30e-3})};
}

}  // namespace

TEST(Facade, FieldsLieWithinTheirBounds) {
  const struct {
    const char* name;
    Source source;
    Medium medium;
    double frequency;
  } cases[] = {
      {"disc", Source(disc(7.5e-3), 0.04), lossless, 1e6},
      {"annulus", Source(annulus(3e-3, 8e-3), 1), lossy, 2e6},
      {"rectangle", Source(rectangle(5e-3, 10e-3), 1), lossy, 1e6},
      {"bowl", Source(bowl(15e-3, 40e-3), 1), lossy, 1.5e6},
      {"tilted pair", Source(tilted_pair()), lossy, 1e6},
      {"linear array", focus(linear_array(32, 0.4e-3, 0.3e-3, 6e-3), {3e-3, 0, 25e-3}, lossy), lossy, 3e6},
      {"phased", focus(matrix_array(4, 3, 2e-3, 3e-3, 1.5e-3, 2.5e-3), {1e-3, 0, 25e-3}, lossless, 1e6), lossless, 1e6},
      {"rings", apodise(focus(annular_array({0, 4e-3}, {3e-3, 6e-3}, 30e-3), {0, 0, 25e-3}, lossless), Window::hann),
       lossless, 2e6},
      {"bowl array", bowl_array(24, 2e-3, 20e-3, 40e-3), lossy, 1e6},
      {"steered", apodise(steer(linear_array(16, 1e-3, 0.8e-3, 5e-3), {0.3, 0, 1}, lossless), Window::hamming),
       lossless, 1e6},
  };
  const Grid box = Grid::box({-4.1e-3, 0, 3e-3}, {0, 2e-3}, {20e-3, 25e-3, 33e-3});
  for (const auto& c : cases) {
    std::vector<Complex> expected;
    for (std::size_t i = 0; i < box.size(); ++i) {
      expected.push_back(reference(c.source, c.medium, c.frequency, box.point(i)));
    }
    for (const double accuracy : {1e-2, 1e-4, 1e-9}) {
      const Field field = pressure(c.source, box, c.medium, c.frequency, accuracy);
      EXPECT_LE(field.error(), accuracy * field.scales[0] * 1.01) << c.name;
      for (std::size_t i = 0; i < box.size(); ++i) {
        EXPECT_LE(std::abs(field[i] - expected[i]), field.error() + 1e-13 * field.scales[0]) << c.name << " at " << i;
      }
    }
  }
}

TEST(Facade, MeetsClosedFormsAndThePublishedBowl) {
  const Field bowl_field = pressure(Source(bowl(32e-3, 64e-3), 0.04), Grid::box(0, 0, 64e-3), lossless, 500e3);
  EXPECT_NEAR(std::abs(bowl_field[0]), 1077487.63, bowl_field.error() + 0.005);
  const std::vector<double> z = range(0, 0.2, 50), frequencies = {0.3e6, 5e6};
  const Field field = pressure(Source(disc(7.5e-3), 1), Grid::box(0, 0, z), lossless, frequencies, 1e-6);
  for (std::size_t f = 0; f < 2; ++f) {
    for (std::size_t i = 0; i < z.size(); ++i) {
      const double k = full_turn * frequencies[f] / 1500;
      const double expected = 2 * 1.5e6 * std::fabs(std::sin(k / 2 * (std::hypot(z[i], 7.5e-3) - z[i])));
      EXPECT_NEAR(std::abs(field[i + f * z.size()]), expected, field.errors[f] + 1e-6);
    }
  }
}

TEST(Facade, DescribesABeam) {
  const Source source(bowl(32e-3, 64e-3), 0.04);
  const Grid box = Grid::box(range(-20e-3, 20e-3, 41), range(-20e-3, 20e-3, 41), range(40e-3, 90e-3, 26));
  const Beam b = beam(pressure(source, box, lossless, 500e3));
  EXPECT_NEAR(b.peak, 1094411.02, 0.01);  // Aubry et al. 2022, as the extent is
  EXPECT_NEAR(b.place.z, 61.9315e-3, 1e-6);
  EXPECT_NEAR(b.place.x, 0, 1e-6);
  EXPECT_NEAR(b.minus_6_db[2].from, 51.763e-3, 2e-6);
  EXPECT_NEAR(b.minus_6_db[2].to, 78.011e-3, 2e-6);
  EXPECT_NEAR(b.minus_3_db[0].from, -b.minus_3_db[0].to, 1e-7);
  EXPECT_LT(b.minus_3_db[0].length(), b.minus_6_db[0].length());
  EXPECT_NEAR(b.mechanical_index, 1.09441102 / std::sqrt(0.5), 1e-6);
  EXPECT_NEAR(b.intensity, 1094411.02 * 1094411.02 / 3e6, 1);
  EXPECT_LE(b.derated_place.z, 62e-3);
  // What a piston radiates in closed form: 1 - J1(2ka)/ka of the plane wave's power.
  const double ka = full_turn * 1e6 / 1500 * 2e-3, area = full_turn / 2 * 4e-6;
  const Grid wide = Grid::box(range(-30e-3, 30e-3, 121), range(-30e-3, 30e-3, 121), {2e-3, 3e-3});
  const Beam piston = beam(pressure(Source(disc(2e-3), 1), wide, lossless, 1e6));
  const double power = 0.5 * 1.5e6 * area * (1 - std::cyl_bessel_j(1.0, 2 * ka) / ka);
  EXPECT_NEAR(piston.radiated_power, power, 1e-4 * power);
  EXPECT_NEAR(piston.power, power, 0.02 * power);
}

TEST(Facade, ImpulseResponsesKeepTheirAreaAndMakeTheField) {
  const std::pair<const char*, Source> cases[] = {
      {"disc", Source(disc(7.5e-3), 1)},
      {"annulus", Source(annulus(3e-3, 8e-3), 2)},
      {"rectangle", Source(rectangle(5e-3, 10e-3), 1)},
      {"bowl", Source(bowl(15e-3, 40e-3), 1)},
      {"bowl annulus", Source(bowl_annulus(4e-3, 15e-3, 20e-3), 1)},
      {"array", focus(linear_array(8, 1e-3, 0.8e-3, 6e-3), {3e-3, 0, 25e-3}, lossless)},
  };
  const std::vector<Point> points = {{0, 0, 40e-3},     {1e-7, 0, 40e-3},     {0, 0, 20e-3},
                                     {7.5e-3, 0, 1e-4}, {2.5e-3, 1e-3, 5e-3}, {12e-3, 7e-3, 15e-3},
                                     {0, 0, 60e-3},     {3e-3, 1e-3, 60e-3},  {2e-3, 5e-3, 30e-3}};
  for (const auto& c : cases) {
    const Grid grid = Grid::list(points);
    const ImpulseResponse coarse = impulse_response(c.second, grid, lossless, 5e6);
    const ImpulseResponse fine = impulse_response(c.second, grid, lossless, 2e9);
    const double f = 0.4e6;
    const Field field = pressure(c.second, grid, lossless, f, 1e-8);
    for (std::size_t i = 0; i < points.size(); ++i) {
      double area = 0, fine_area = 0;
      for (std::size_t k = 0; k < coarse.count(i); ++k) area += coarse.at(i, k) * coarse.step;
      Complex spectrum;
      for (std::size_t k = 0; k < fine.count(i); ++k) {
        const double t = fine.start[i] + static_cast<double>(k) * fine.step;
        fine_area += fine.at(i, k) * fine.step;
        spectrum += fine.at(i, k) * fine.step * std::exp(Complex(0, -full_turn * f * t));
      }
      EXPECT_NEAR(area, fine_area, 2e-7 * std::fabs(fine_area)) << c.first << " at " << i;
      const Complex made = Complex(0, full_turn * f) * 1000.0 * spectrum;
      const bool at_once = fine.count(i) <= 2;  // then its time is known to half a sample
      EXPECT_LE(std::abs(made - field[i]), (at_once ? 1e-3 : 1e-6) * field.scales[0]) << c.first << " at " << i;
    }
  }
}

TEST(Facade, PulsesMeetTheClosedFormAndTheSpectrum) {
  const double f0 = 1e6, c = 1500, a = 7.5e-3, z = 22e-3;
  std::vector<double> saw;
  for (int i = 0; i <= 60; ++i) saw.push_back(i % 60 == 0 ? 0 : std::sin(0.7 * i) * i * (60 - i) / 900.0);
  const Signal signals[] = {tone_burst(f0, 5), hanning_burst(f0, 4e-6), t_cubed(f0, 4e6), samples(saw, 20e6)};
  const std::vector<double> times = range(14e-6, 22e-6, 161);
  for (const Signal& signal : signals) {
    const auto v = [&](double t) { return t > 0 && t < signal.length ? signal.at(t) : 0; };
    const Pulse p = pulse(Source(disc(a), 0.5), Grid::box(0, 0, z), lossless, signal, times, 1e-5);
    EXPECT_LE(p.error, 1e-5 * p.scale) << signal.name;
    for (std::size_t k = 0; k < times.size(); ++k) {
      const double expected = 0.5 * 1.5e6 * (v(times[k] - z / c) - v(times[k] - std::hypot(a, z) / c));
      EXPECT_NEAR(p.at(0, k), expected, 1e-5 * p.scale) << signal.name << " at " << times[k];
    }
  }
  const Source sources[] = {Source(bowl_annulus(4e-3, 15e-3, 30e-3), 1), Source(rectangle(5e-3, 10e-3), 1),
                            focus(linear_array(8, 1e-3, 0.8e-3, 6e-3), {3e-3, 0, 25e-3}, lossless)};
  const Grid grid = Grid::list(std::vector<Point>{{0, 0, 30e-3}, {1e-3, 2e-3, 26e-3}, {6e-3, 1e-3, 9e-3}});
  const std::vector<double> all = range(0, 40e-6, 2001);
  const double step = all[1];
  for (const Source& source : sources) {
    const Pulse p = pulse(source, grid, lossless, signals[1], all, 1e-5);
    for (const double f : {0.7e6, 1.2e6}) {
      const Field field = pressure(source, grid, lossless, f, 1e-7);
      Complex spectrum[3], of_signal;
      for (std::size_t k = 0; k < all.size(); ++k) {
        const Complex wave = step * std::exp(Complex(0, -full_turn * f * all[k]));
        of_signal += wave * (all[k] < signals[1].length ? signals[1].at(all[k]) : 0);
        for (std::size_t i = 0; i < 3; ++i) spectrum[i] += wave * p.at(i, k);
      }
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_LE(std::abs(spectrum[i] - of_signal * field[i]), 2e-5 * std::abs(of_signal) * field.scales[0]) << i;
      }
    }
  }
}

TEST(Facade, ThreeThreadsGiveWhatOneGives) {
  const Grid box = Grid::box(range(-10e-3, 10e-3, 60), 0, range(0, 50e-3, 70));
  const auto field = [&](int n) {
    const Source source = n == 0   ? Source(disc(7.5e-3), 1)
                          : n == 1 ? Source(bowl(15e-3, 40e-3), 1)
                                   : focus(linear_array(16, 0.5e-3, 0.4e-3, 6e-3), {0, 0, 20e-3}, lossy);
    return pressure(source, box, lossy, 1e6).values;
  };
  std::vector<std::complex<double>> alone[3], together[3];
  for (int n = 0; n < 3; ++n) alone[n] = field(n);
  std::vector<std::thread> threads;
  for (int n = 0; n < 3; ++n) threads.emplace_back([&, n] { together[n] = field(n); });
  for (std::thread& t : threads) t.join();
  for (int n = 0; n < 3; ++n) EXPECT_EQ(alone[n], together[n]) << n;
}

TEST(Facade, AHookSeesProgressAndMayCancel) {
  const Grid box = Grid::box(range(-10e-3, 10e-3, 400), range(-10e-3, 10e-3, 100), range(1e-3, 50e-3, 96));
  Options options;
  double last = 0;
  options.progress = [&](double done) { return last = done, done < 0.4; };
  EXPECT_THROW(pressure(Source(disc(5e-3)), box, lossless, 1e6, 1e-2, options), Cancelled);
  EXPECT_TRUE(last >= 0.4 && last < 1) << last;
}

TEST(Facade, WrongCallsAreTold) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  const Source piston(disc(5e-3), 1);
  const Grid axis = Grid::box(0, 0, {10e-3, 20e-3});
  const auto with_element = [&](auto change) {
    Source s = piston;
    change(s.elements[0]);
    return [s, axis] { pressure(s, axis, lossless, 1e6); };
  };
  const auto with_medium = [&](auto change) {
    Medium m = lossy;
    change(m);
    return [=] { pressure(piston, axis, m, 1e6); };
  };
  const struct {
    std::function<void()> call;
    const char* message;
  } cases[] = {
      {[] { disc(32); }, "radius is 32: a disc of 32 m? lengths are in metres"},
      {[] { disc(0); }, "radius is 0: a positive number is expected (m)"},
      {[] { disc(-1e-3); }, "radius is -0.001: a positive number is expected (m)"},
      {[&] { disc(nan); }, "radius is nan: a finite number is expected"},
      {[&] { disc(inf); }, "radius is inf"},
      {[] { annulus(5e-3, 4e-3); }, "inner is 0.005: a radius from 0 to less than outer, which is 0.004"},
      {[] { annulus(-1e-3, 4e-3); }, "inner is -0.001"},
      {[] { rectangle(5e-3, 0); }, "height is 0"},
      {[] { rectangle(12, 5e-3); }, "width is 12: a rectangle of 12 m?"},
      {[] { bowl(32e-3, 31e-3); }, "curvature is 0.031: no less than the aperture's radius, which is 0.032"},
      {[] { bowl_annulus(1e-3, 2e-3, 64); }, "curvature is 64: a sphere's radius of 64 m?"},
      {[] { linear_array(0, 1e-3, 1e-3, 1e-3); }, "count is 0: from 1 to 1000000"},
      {[] { linear_array(8, 0.5e-3, 1e-3, 1e-3); }, "pitch is 0.0005: the elements overlap"},
      {[] { matrix_array(2, 2, 1e-3, 1e-4, 1e-3, 1e-3); }, "pitch_y is 0.0001: the elements overlap"},
      {[] { matrix_array(100000, 100000, 1e-3, 1e-3, 1e-3, 1e-3); }, "columns x rows is 100000 x 100000"},
      {[] {
         annular_array({0, 1e-3}, {2e-3});
       },
       "inner and outer have 2 and 1 radii"},
      {[] {
         annular_array({0, 1e-3}, {2e-3, 3e-3});
       },
       "inner[1] is 0.001: the rings overlap"},
      {[] { bowl_array(500, 3e-3, 20e-3, 40e-3); }, "count is 500: no more than"},
      {[] { bowl_array(5, 30e-3, 20e-3, 40e-3); }, "element_radius is 0.03: it does not fit"},
      {[&] {
         focus(piston, {0, nan, 0}, lossless);
       },
       "point is nan"},
      {[&] {
         focus(piston, {0, 0, 1}, Medium());
       },
       "sound_speed is 0: a positive number is expected (m/s)"},
      {[&] {
         steer(piston, {0, 0, 0}, lossless);
       },
       "direction is (0, 0, 0)"},
      {[&] {
         apodise(piston, std::vector<double>{1, 2});
       },
       "weights has 2 numbers: one for each of the source's 1"},
      {[] {
         pointing_at({0, 0, 1e-3}, {0, 0, 1e-3});
       },
       "target is the element's own position"},
      {[] { water(120); }, "temperature is 120: liquid water between 0 and 95"},
      {[] { tissue("bone"); }, "name is \"bone\": blood, brain, fat, liver or muscle is expected"},
      {[] { range(0, 1, 0); }, "count of a range is 0"},
      {[] { Grid::box({}, 0, 0); }, "x of the grid is empty"},
      {[&] { Grid::box(0, nan, 0); }, "y of the grid's vectors at index 0 is nan"},
      {[] {
         Grid::box(0, 0, {1e-3, 4000});
       },
       "coordinates are in metres"},
      {[] {
         Grid::list({0, 1}, {0}, {0});
       },
       "x, y and z of the grid's points have 2, 1 and 1 values"},
      {[] { Grid::box(range(0, 1, 100000), range(0, 1, 100000), range(0, 1, 1000)); },
       "would take 160000000000000 bytes"},
      {[&] { pressure(Source(), axis, lossless, 1e6); }, "source has no elements"},
      {[&] { pressure(piston, axis, lossless, 1); }, "frequency is 1: 1 Hz? frequencies are in hertz, 1 MHz is 1e6"},
      {[&] { pressure(piston, axis, lossless, std::vector<double>()); }, "frequencies is empty"},
      {[&] { pressure(piston, axis, lossless, 1e6, 0); }, "accuracy is 0"},
      {[&] { pressure(piston, axis, lossless, 1e6, nan); }, "accuracy is nan"},
      {[&] { pulse(piston, axis, lossy, hanning_burst(1e6, 3e-6), {1e-5}); },
       "attenuation is 0.7 dB/(cm MHz^y): it takes"},
      {[&] {
         pulse(piston, axis, lossless, tone_burst(1e6, 3), {2e-6, 1e-6});
       },
       "times[1] is 1e-06: more than times[0]"},
      {[] {
         samples({0, 1, 1}, 1e6);
       },
       "values[2] is 1: 0 is expected at both ends"},
      {with_element([&](Element& e) { e.velocity = inf; }), "velocity is inf"},
      {with_element([](Element& e) { e.delay = 5; }), "delay is 5: 5 s? times are in seconds"},
      {with_element([](Element& e) { e.position.x = 300; }), "position is 300"},
      {with_medium([](Medium& m) { m.density = 0; }), "density is 0"},
      {with_medium([](Medium& m) { m.sound_speed = 1.5; }), "sound_speed is 1.5: 1.5 m/s? water has about 1500"},
      {with_medium([](Medium& m) { m.attenuation = -1; }), "attenuation is -1: it cannot be negative"},
      {with_medium([](Medium& m) { m.exponent = 5; }), "exponent is 5"},
  };
  for (const auto& c : cases) {
    try {
      c.call();
      ADD_FAILURE() << "passed without: " << c.message;
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(c.message), std::string::npos) << error.what() << "\n" << c.message;
    }
  }
  std::vector<std::string> warnings;
  set_warning_hook([&](const std::string& text) { warnings.push_back(text); });
  Source fast = linear_array(8, 1e-3, 1e-3, 1e-3, 1);
  for (Element& e : fast.elements) e.velocity = 30, e.phase = 90;
  pressure(fast, axis, {1e4, 1000}, 1e6);
  set_warning_hook({});
  ASSERT_EQ(warnings.size(), 3u) << "each is said once";
  EXPECT_NE(warnings[1].find("phase is 90: 90 rad? angles are in radians"), std::string::npos) << warnings[1];
}
