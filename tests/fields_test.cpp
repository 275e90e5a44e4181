// Continuous-wave fields: every computation against the plain form of its formula at every width; closed forms; gates.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/vector_target.h"
#include "host/embedded_host.h"
#include "tests/plain_fields.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_ring_transducer.h"
#include "transducers/spherical_transducer.h"
#include "transducers/triangle_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;
using plain::Complex;
using Points = std::vector<CartesianCoordinate>;
using Compute = std::function<int()>;

constexpr double rho = 1000, speed = 1500, frequency = 1e6;

Medium water(double attenuation, double f0 = frequency) {
  Medium m;
  m._f0 = f0, m._soundspeed = speed, m._rho_density = rho, m._dBcmMHz = attenuation;
  return m;
}

// Elements of every geometry, about 8 mm across.
struct Elements {
  CircularTransducer disc{4e-3, 1.5, 0.7};
  RingTransducer ring{1.5e-3, 4e-3, 1.5, 0.7};
  RectangularTransducer rectangle{6e-3, 5e-3, 1.5, 0.7};
  SphericalTransducer shell{4e-3, 9e-3, 1.5, 0.7};
  SphericalRingTransducer bowl{1.5e-3, 4e-3, 9e-3, 1.5, 0.7};
};

// The buffers start at 1, so that a point left alone shows.
std::vector<Complex> field(Transducer& element, const Compute& compute, const Points& points, int n, Medium medium) {
  std::vector<double> columns;
  for (const auto member : {&CartesianCoordinate::x, &CartesianCoordinate::y, &CartesianCoordinate::z}) {
    for (const CartesianCoordinate& p : points) columns.push_back(p.*member);
  }
  std::vector<double> re(points.size(), 1), im(points.size(), 1);
  const Report report = guarded([&] {
    CoordinateGrid grid;
    grid.CoordinateGridVector(columns.data(), static_cast<int>(points.size()));
    NumericalIntegration rule;
    if (n > 0) rule.allocate_memory(n);
    rule.gauss_quadrature();
    element.set_medium(&medium);
    element.set_global_coordinate_grid(&grid);
    element.set_integral_pointer(&rule);
    element.set_complex_pressure_pointers(re.data(), im.data());
    EXPECT_EQ(compute(), 0);
  });
  EXPECT_TRUE(report.clean()) << report.error;
  std::vector<Complex> sum;
  for (std::size_t i = 0; i < points.size(); ++i) sum.emplace_back(re[i], im[i]);
  return sum;
}

// About the elements in any order: within and beside them, on their axes, edges, rims and faces, at the shells' centre
// of curvature, behind, far, and beyond what the vector functions serve.
Points scattered() {
  Points points = {{0, 0, 0},           {0, 0, 9e-3},         {0, 0, 1e-3},      {0, 0, -1e-3},
                   {3e-3, 1e-3, 2e-3},  {1e-3, 2.5e-3, 2e-3}, {3e-3, 2.5e-3, 0}, {4e-3, 0, 0},
                   {4e-3, 0, 0.937e-3}, {2e-3, 1e-3, 9e-3},   {0, 5e-3, 0},      {1e-3, -1e-3, 0},
                   {3e5, -2e5, 1e6},    {1e3, 1e3, 2e3},      {0, 0, -9e-3},     {-1e-3, 0, 1e-12},
                   {0, 0, 1e9},         {5e-3, 2e-3, -1e-4}};
  std::mt19937_64 bits(7);
  const auto uniform = [&](double low, double high) { return std::uniform_real_distribution<>(low, high)(bits); };
  while (points.size() < 203) points.emplace_back(uniform(-8e-3, 8e-3), uniform(-8e-3, 8e-3), uniform(-3e-3, 3e-2));
  std::shuffle(points.begin(), points.end(), bits);
  return points;
}

using Sum = plain::Sum;
using Point = CartesianCoordinate;

struct FieldCase {
  const char* name;
  Transducer& element;
  Compute compute;
  std::function<Complex(const Sum&, const Point&)> expected;
  double tolerance = 1e-13;  // of the largest value
  int groups_of = 1;         // nodes beyond a multiple of it are left out
  int most_nodes = 200;      // that are affordable
  double nearest = 0;        // height over the face from which on it is, m
};

const Complex w = std::polar(1.5, 0.7), jw = Complex(0, 1) * w;

// A shell of the elements' curvature: nothing behind it, its limit at the centre.
Complex shell(double a, const Sum& s, const Point& p, bool rayleigh) {
  const double d = 9e-3, z = p.z - d, h = std::sqrt(d * d - a * a);
  if (z < -h && p.x * p.x + p.y * p.y + z * z > d * d) return 0;
  if (rayleigh) return jw * rho * s.f0 * s.cells_of_cap(a, d, p);
  const bool focus = std::hypot(p.x, p.y) < 1e-10 && std::fabs(z) < 1e-10;
  return focus ? jw * 2. * kesto::pi * rho * s.f0 * (d - h) * s.at(d)
               : rho * speed * d * a / kesto::pi * w * s.rim_of_cap(a, d, p);
}

std::vector<FieldCase> field_cases(Elements& e) {
  const auto disc = [](double a, const Sum& s, const Point& p) {
    return p.z < 0 ? 0 : rho * speed * a / kesto::pi * w * s.rim_of_disc(a, p);
  };
  const auto cells = [](const Sum& s, int profile, const Point& p) {
    return p.z < 0 ? 0 : jw * 2. * rho * s.f0 * s.cells_of_disc(4e-3, profile, p);
  };
  const auto edges = [](const Sum& s, const Point& p) {
    return p.z < 0 ? 0 : -rho * speed / kesto::two_pi * w * s.edges_of_rectangle(3e-3, 2.5e-3, p);
  };
  const auto rectangle = [](const Sum& s, const Point& p) {
    return p.z < 0 ? 0 : jw * rho * s.f0 * s.cells_of_rectangle(3e-3, 2.5e-3, p);
  };
  const auto far = [](const Sum& s, const Point& p) {
    return p.z < 0 || (p.x == 0 && p.y == 0 && p.z == 0)
               ? 0
               : jw * s.f0 * rho * 3e-5 * s.far_field_of_rectangle(3e-3, 2.5e-3, p);
  };
  const auto small_radiators = [](const Sum& s, const Point& p) {
    return p.z > 0 ? jw * s.f0 * rho * s.radiators_of_rectangle(6e-3, 5e-3, p) : 0;
  };
  const auto with_loss = [](const Sum& s, double sign, double of_reference) {
    Sum other = s;
    other.reference_alpha *= of_reference, other.alpha *= sign;
    return other;
  };
  return {
      {"disc fnm_cw", e.disc, [&] { return e.disc.fnm_cw(); }, [=](auto& s, auto& p) { return disc(4e-3, s, p); }},
      {"disc fnm_cw_sse", e.disc, [&] { return e.disc.fnm_cw_sse(); },
       [=](auto& s, auto& p) { return disc(4e-3, s, p); }, 2e-4, 4},
      {"disc fnm_cw_apodized", e.disc, [&] { return e.disc.fnm_cw_apodized(); },
       [=](auto& s, auto& p) { return p.z < 0 ? 0 : rho * speed * 4e-3 / kesto::pi * w * s.rims_of_rings(4e-3, 2, p); },
       1e-13, 1, 50},
      {"disc rayleigh_cw", e.disc, [&] { return e.disc.rayleigh_cw(); },
       [=](auto& s, auto& p) { return cells(with_loss(s, -1, 1), 0, p); }, 1e-13, 1, 50},
      {"disc rayleigh_cw_apodized", e.disc, [&] { return e.disc.rayleigh_cw_apodized(); },
       [=](auto& s, auto& p) { return cells(s, 2, p); }, 1e-13, 1, 50},
      {"disc rayleigh_cw_sse", e.disc, [&] { return e.disc.rayleigh_cw_sse(); },
       [=](auto& s, auto& p) { return cells(s, 0, p); }, 1e-4, 4},
      {"ring fnm_cw", e.ring, [&] { return e.ring.fnm_cw(); },
       [=](auto& s, auto& p) { return disc(4e-3, s, p) - disc(1.5e-3, s, p); }},
      {"rectangle fnm_cw", e.rectangle, [&] { return e.rectangle.fnm_cw(); }, edges},
      {"rectangle fnm_cw_single", e.rectangle, [&] { return e.rectangle.fnm_cw_single(); }, edges, 1e-4},
      {"rectangle fnm_cw_sse", e.rectangle, [&] { return e.rectangle.fnm_cw_sse(); }, edges, 1e-4},
      {"rectangle fnm_cw_sse2", e.rectangle, [&] { return e.rectangle.fnm_cw_sse2(); },
       [=](auto& s, auto& p) { return edges(with_loss(s, 0, 1), p); }, 1e-4},
      {"rectangle rayleigh_cw", e.rectangle, [&] { return e.rectangle.rayleigh_cw(); }, rectangle, 1e-13, 1, 50},
      {"rectangle rayleigh_cw_sse", e.rectangle, [&] { return e.rectangle.rayleigh_cw_sse(); }, rectangle, 1e-4, 4},
      {"rectangle farfield_cw", e.rectangle, [&] { return e.rectangle.farfield_cw(); }, far},
      {"rectangle farfield_cw_lossless", e.rectangle, [&] { return e.rectangle.farfield_cw_lossless(); },
       [=](auto& s, auto& p) { return far(with_loss(s, 0, 1), p); }},
      {"rectangle radiator_cw", e.rectangle, [&] { return e.rectangle.radiator_cw(); }, small_radiators, 1e-13, 1, 6,
       2e-3},
      {"shell fnm_cw", e.shell, [&] { return e.shell.fnm_cw(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, false); }},
      {"shell fnm_cw_sse", e.shell, [&] { return e.shell.fnm_cw_sse(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, false); }, 1e-4, 4},
      {"shell rayleigh_cw", e.shell, [&] { return e.shell.rayleigh_cw(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, true); }, 1e-13, 1, 50},
      {"shell rayleigh_cw_sse", e.shell, [&] { return e.shell.rayleigh_cw_sse(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, true); }, 1e-4, 4},
      {"bowl fnm_cw", e.bowl, [&] { return e.bowl.fnm_cw(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, false) - shell(1.5e-3, s, p, false); }},
      {"bowl rayleigh_cw", e.bowl, [&] { return e.bowl.rayleigh_cw(); },
       [](auto& s, auto& p) { return shell(4e-3, s, p, true) - shell(1.5e-3, s, p, true); }, 1e-13, 1, 50},
  };
}

plain::Sum plain_sum(int n, int groups_of, double attenuation) {
  NumericalIntegration rule;
  rule.allocate_memory(n);
  rule.gauss_quadrature();
  const double alpha = attenuation * 100 / kesto::decibels_per_neper;
  return {kesto::two_pi / (speed / frequency),
          alpha,
          alpha,
          frequency,
          {{rule.abscissa, rule.abscissa + n}},
          {{rule.weight, rule.weight + n}},
          n / groups_of * groups_of};
}

class Fields : public testing::Test {
 protected:
  ~Fields() override { unsetenv("KESTO_VECTOR_TARGET"); }

  // Compares at the points, given in global coordinates, for every width; four floats are the same at any.
  static void compare(const FieldCase& c, const Points& points, int n, double attenuation) {
    const Sum sum = plain_sum(n, c.groups_of, attenuation);
    std::vector<Complex> expected;
    double largest = 1;
    for (const Point& p : points) {
      expected.push_back(c.expected(sum, c.element.rotateTranslate(p)));
      if (std::isfinite(std::abs(expected.back()))) largest = std::max(largest, std::abs(expected.back()));
    }
    const bool laned = c.tolerance <= 1e-13;
    for (const kesto::VectorTarget target : kesto::all_vector_targets) {
      if (!kesto::is_available(target) || (!laned && target != kesto::VectorTarget::baseline)) continue;
      setenv("KESTO_VECTOR_TARGET", kesto::name_of(target), 1);
      const std::vector<Complex> got = field(c.element, c.compute, points, n, water(attenuation));
      for (std::size_t i = 0; i < points.size(); ++i) {
        const Point p = c.element.rotateTranslate(points[i]);
        if (!laned && std::hypot(p.x, p.y, p.z) > 1) continue;  // phases beyond float
        const Complex value = Complex(1, 1) + expected[i];
        const bool both_infinite = !std::isfinite(std::abs(value)) && !std::isfinite(std::abs(got[i]));
        ASSERT_TRUE(both_infinite || std::abs(got[i] - value) <= c.tolerance * largest)
            << c.name << ", n = " << n << ", " << attenuation << " dB/(cm MHz), " << kesto::name_of(target) << ", at "
            << p.x << ' ' << p.y << ' ' << p.z << ": " << got[i] << " not " << value << " of " << largest;
      }
    }
  }
};

TEST_F(Fields, AgreeWithThePlainFormulasAtEveryWidth) {
  Elements e;
  e.disc.set_piston_apodization_index(2);
  for (const FieldCase& c : field_cases(e)) {
    for (const bool posed : {false, true}) {
      c.element.set_center(posed ? 1e-3 : 0, 0, posed ? -2e-3 : 0);
      c.element.set_euler(posed ? 0.4 : 0, posed ? -1.1 : 0, posed ? 2 : 0);
      c.element.InitializeRotationMatrix();
      for (const int n : {1, 2, 6, 50, 200}) {
        if (n > c.most_nodes) continue;
        Points points = scattered();
        if (c.nearest > 0) {
          const auto near = [&](const Point& p) { return std::fabs(c.element.rotateTranslate(p).z) < c.nearest; };
          points.erase(std::remove_if(points.begin(), points.end(), near), points.end());
        }
        for (const double attenuation : {0.0, 0.5, 5.0}) compare(c, points, n, attenuation);
      }
    }
  }
}

// Which computation each geometry offers, of those below, and which of them warn of an unset f0 (w), compute for any
// amplitude (a), or decline (-).
struct OfferCase {
  const char* geometry;
  Transducer& element;
  const char* offers[10];
};

TEST_F(Fields, KeepGatesWarningsAndOffers) {
  const std::function<int(Transducer&)> computations[] = {
      [](auto& t) { return t.farfield_cw(); },          [](auto& t) { return t.fnm_cw(); },
      [](auto& t) { return t.fnm_cw_apodized(); },      [](auto& t) { return t.fnm_cw_single(); },
      [](auto& t) { return t.fnm_cw_sse(); },           [](auto& t) { return t.fnm_cw_sse2(); },
      [](auto& t) { return t.radiator_cw(); },          [](auto& t) { return t.rayleigh_cw(); },
      [](auto& t) { return t.rayleigh_cw_apodized(); }, [](auto& t) { return t.rayleigh_cw_sse(); }};
  Elements e;
  const OfferCase cases[] = {
      {"disc", e.disc, {"-", "w", "", "-", "a", "-", "-", "", "", ""}},
      {"ring", e.ring, {"-", "w", "", "-", "a", "-", "-", "", "", ""}},
      {"rectangle", e.rectangle, {"w", "w", "-", "w", "wa", "w", "w", "w", "-", "w"}},
      {"shell", e.shell, {"-", "w", "-", "-", "w", "-", "-", "", "-", "w"}},
      {"bowl", e.bowl, {"-", "w", "-", "-", "-", "-", "-", "", "-", "-"}},
  };
  const std::string unset_f0 = "f0 not set; using default of 1 MHz to calculate wavelength.";
  for (const OfferCase& c : cases) {
    for (std::size_t i = 0; i < 10; ++i) {
      SCOPED_TRACE(c.geometry + std::string(", computation ") + std::to_string(i));
      const std::string offer = c.offers[i];
      const bool declined = offer == "-", warns = offer.find('w') != std::string::npos;
      const auto& compute = computations[i];
      Medium no_f0 = water(0.5, 0);
      double re = 1, im = 1;
      for (const double amplitude : {1e-11, 1.5}) {
        for (const int points : {0, 1}) {
          re = im = 1;
          c.element.set_amplitude(amplitude);
          const Report report = guarded([&] {
            const double at[] = {1e-3, 1e-3, 5e-3};
            CoordinateGrid grid;
            grid.CoordinateGridVector(at, points);
            NumericalIntegration rule;
            rule.allocate_memory(16);
            rule.gauss_quadrature();
            c.element.set_medium(&no_f0), c.element.set_global_coordinate_grid(&grid),
                c.element.set_integral_pointer(&rule);
            c.element.set_complex_pressure_pointers(&re, &im);
            EXPECT_EQ(compute(c.element), declined ? 1 : 0);
          });
          EXPECT_TRUE(report.clean()) << report.error;
          EXPECT_EQ(report.warnings, std::vector<std::string>(warns ? 1 : 0, unset_f0));
          // Without f0 the wave is that of 1 MHz where f0 warns, else none; Rayleigh sums have f0 as a factor.
          const bool computes = !declined && points == 1 && (amplitude > 1 || offer.find('a') != std::string::npos);
          const bool has_f0_as_factor = i == 0 || i >= 6, apodized = i == 2 || i == 8;
          const bool has_wave = warns && !has_f0_as_factor && !apodized;
          EXPECT_EQ(re != 1 || im != 1, computes && has_wave) << re << ' ' << im;
          EXPECT_TRUE(std::isfinite(re) && std::isfinite(im));
        }
      }
      c.element.set_medium(nullptr);
      const Report missing = guarded([&] { EXPECT_EQ(compute(c.element), 1); });
      EXPECT_EQ(missing.error, declined ? "" : "The transducer has no medium.\n");
      // An unfilled rule adds 0; the far field needs none, and the radiators choose their own.
      if (declined) continue;
      const Complex without_nodes = field(
          c.element, [&] { return compute(c.element); }, {{1e-3, 0, 5e-3}}, 0, water(0.5))[0];
      EXPECT_EQ(without_nodes != Complex(1, 1), i == 0 || i == 6);
    }
  }
  EXPECT_EQ(e.rectangle.rayleigh_transient() + e.shell.farfield_cw_lossless() + e.bowl.farfield_cw_lossless(), 3);

  const Report unset_speed = guarded([&] {
    double re = 0, im = 0, at[] = {0, 0, 5e-3};
    CoordinateGrid grid;
    grid.CoordinateGridVector(at, 1);
    NumericalIntegration rule;
    rule.allocate_memory(16);
    Medium medium = water(0);
    medium._soundspeed = 0;
    e.disc.set_medium(&medium), e.disc.set_global_coordinate_grid(&grid), e.disc.set_integral_pointer(&rule);
    e.disc.set_complex_pressure_pointers(&re, &im);
    e.disc.rayleigh_cw();
    EXPECT_GT(std::hypot(re, im), 1e5);
    e.disc.set_complex_pressure_pointers(&re, nullptr);
    e.disc.rayleigh_cw();
  });
  EXPECT_EQ(unset_speed.warnings,
            std::vector<std::string>(2, "Sound speed not set; using default of 1500 m/s to calculate wavenumber."));
  EXPECT_EQ(unset_speed.error, "The transducer has no complex pressure to add to.\n");
}

struct Triangle : TriangleTransducer {
  int init_fnm_tsd() override { return 1; }
  int call_fnm_tsd() override { return 1; }
  int free_fnm_tsd() override { return 1; }
  int kzk_transient() override { return 1; }
  int kzk_cw() override { return 1; }
};

TEST_F(Fields, OfTrianglesAreNothingAndPrintersNameTheGeometry) {
  static_assert(std::is_abstract_v<TriangleTransducer>);
  Triangle triangle;
  Elements e;
  testing::internal::CaptureStdout();
  EXPECT_EQ(field(
                triangle, [&] { return triangle.fnm_cw(); }, {{0, 0, 1}}, 4, water(0))
                .front(),
            Complex(1, 1));
  EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("Global information\n", 0), 0u);
  EXPECT_EQ(
      triangle.fnm_cw_cuda(3) + triangle.fnm_transient_cuda(3) + triangle.kzk_nonlinear() + triangle.rayleigh_cw(), 3);

  const struct {
    Transducer& element;
    std::string debug, mex_debug;
  } printers[] = {
      {e.disc, "radius: 0.004\n", "radius: 0.004000\n"},
      {e.ring, "inner radius: 0.0015\nouter radius: 0.004\n", "inner radius: 0.001500\nouter radius: 0.004000\n"},
      {e.rectangle, "Width:0.006\nHeight:0.005\n", "width: 0.006000\nheight: 0.005000\n\n"},
      {e.shell, "radius: 0.004\nROC:0.009\n", "radius: 0.004000\n"},
      {e.bowl, "inner radius: 0.0015\nouter radius: 0.004\ngeometric focus: 0.009\n",
       "inner radius: 0.001500\nouter radius: 0.004000\ngeometric focus: 0.009000\n\n"},
  };
  const auto behind_base = [](const std::string& all, const std::string& last_of_base) {
    const std::size_t at = all.rfind(last_of_base);
    return at == std::string::npos ? "" : all.substr(at + last_of_base.size());
  };
  for (const auto& p : printers) {
    testing::internal::CaptureStdout();
    const Report report = guarded([&] { p.element.debug(1), p.element.mex_debug(1); });
    EXPECT_EQ(behind_base(testing::internal::GetCapturedStdout(), "Integral info\n"), p.debug);
    EXPECT_EQ(behind_base(report.console, "Coordinate grid:\n"), p.mex_debug);
  }
}

}  // namespace
