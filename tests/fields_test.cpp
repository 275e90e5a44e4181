// Continuous-wave fields: every computation against the plain form of its formula at every width; single values; gates.
#include <gtest/gtest.h>

#include <cfloat>
#include <limits>
#include <random>
#include <string>

#include "tests/support/methods.h"
#include "transducers/triangle_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;
using namespace scenes;

constexpr double inf = std::numeric_limits<double>::infinity();

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
  while (points.size() < 121) points.emplace_back(uniform(-8e-3, 8e-3), uniform(-8e-3, 8e-3), uniform(-3e-3, 3e-2));
  std::shuffle(points.begin(), points.end(), bits);
  return points;
}

// Not the same along any two axes.
const std::vector<double> box = {-5e-3, 7e-3, -2e-3, 3e-3, 1e-3, 22e-3, 1.9e-3, 2.4e-3, 5e-3};

class Waves : public testing::TestWithParam<MethodOfShape<WaveMethod>> {};

// Four floats are the same at any width.
TEST_P(Waves, AreThePlainSumsAtEveryWidth) {
  const WaveMethod& method = *GetParam().method;
  Element e = usual_element(GetParam().shape);
  e.face->set_piston_apodization_index(2);
  const struct {
    int nodes;
    double f0, attenuation;
    bool posed;
    std::vector<double> box;
  } cases[] = {{1, 1e6, 0, false, {}},      {2, 1e6, 5, true, {}},      {6, 2.3e6, 0.5, true, box},
               {6, 1e6, 5000, false, {}},   {6, 1e6, 0.5, false, box},  {50, 1e6, 0, true, {}},
               {50, 0.7e6, 0.5, false, {}}, {200, 1e6, 0.5, true, box}, {200, 1e6, 0, false, {}}};
  const bool in_floats = method.kind == Kind::floats;
  for (const auto& c : cases) {
    if (c.nodes > method.most_nodes) continue;
    Scene scene;
    scene.medium = water(c.f0, c.attenuation), scene.nodes = c.nodes, scene.points = scattered(), scene.box = c.box;
    e.face->set_center(c.posed ? 1e-3 : 0, 0, c.posed ? -2e-3 : 0);
    e.face->set_euler(c.posed ? 0.4 : 0, c.posed ? -1.1 : 0, c.posed ? 2 : 0);
    if (method.kind == Kind::radiators) {  // nearer points take too many
      e.face->InitializeRotationMatrix();
      const auto near = [&](const Point& p) { return std::fabs(e.face->rotateTranslate(p).z) < 2e-3; };
      scene.points.erase(std::remove_if(scene.points.begin(), scene.points.end(), near), scene.points.end());
      scene.box.clear();
    }
    const Sum sum = plain_sum(scene, method.groups_of);
    std::vector<Complex> expected;
    double largest = 1, tolerance = method.tolerance;
    if (in_floats && e.has_hole()) tolerance *= 2;
    if (c.attenuation > 100) tolerance *= 2000;  // alpha R
    at_every_width([&](kesto::VectorTarget target) {
      if (in_floats && target != kesto::VectorTarget::baseline) return;
      const Outcome got = run(scene, *e.face, method.compute, 1);
      ASSERT_TRUE(got.report.clean() && got.answer == 0) << got.report.error;
      for (const Point& p : got.local) {
        if (expected.size() == got.local.size()) break;
        expected.push_back(method.plain(e, sum, p));
        if (std::isfinite(std::abs(expected.back()))) largest = std::max(largest, std::abs(expected.back()));
      }
      for (std::size_t i = 0; i < expected.size(); ++i) {
        const Point& p = got.local[i];
        if (in_floats && (std::hypot(p.x, p.y, p.z) > 1 || c.attenuation > 100)) continue;  // beyond floats
        const Complex value = Complex(1, 1) + expected[i], here = got.pressure(i);
        const bool both_infinite = !std::isfinite(std::abs(value)) && !std::isfinite(std::abs(here));
        ASSERT_TRUE(both_infinite || std::abs(here - value) <= tolerance * largest)
            << "n = " << c.nodes << ", " << c.attenuation << " dB/(cm MHz), " << kesto::name_of(target) << ", at "
            << p.x << ' ' << p.y << ' ' << p.z << ": " << here << " not " << value << " of " << largest;
      }
    });
  }
}

INSTANTIATE_TEST_SUITE_P(, Waves, testing::ValuesIn(of_every_shape(wave_methods)), NameOfMethod());

// Which computation each geometry offers, of those below, and which of them warn of an unset f0 (w), compute for any
// amplitude (a), or decline (-).
TEST(Fields, KeepGatesWarningsAndOffers) {
  const Computation computations[] = {&Transducer::farfield_cw,          &Transducer::fnm_cw,
                                      &Transducer::fnm_cw_apodized,      &Transducer::fnm_cw_single,
                                      &Transducer::fnm_cw_sse,           &Transducer::fnm_cw_sse2,
                                      &Transducer::radiator_cw,          &Transducer::rayleigh_cw,
                                      &Transducer::rayleigh_cw_apodized, &Transducer::rayleigh_cw_sse};
  const struct {
    Shape shape;
    const char* offers[10];
  } cases[] = {
      {disc, {"-", "w", "", "-", "a", "-", "-", "", "", ""}},
      {ring, {"-", "w", "", "-", "a", "-", "-", "", "", ""}},
      {rectangle, {"w", "w", "-", "w", "wa", "w", "w", "w", "-", "w"}},
      {shell, {"-", "w", "-", "-", "w", "-", "-", "", "-", "w"}},
      {shell_ring, {"-", "w", "-", "-", "-", "-", "-", "", "-", "-"}},
  };
  for (const auto& c : cases) {
    const Element e = usual_element(c.shape);
    for (std::size_t i = 0; i < 10; ++i) {
      SCOPED_TRACE(name_of(c.shape) + std::string(", computation ") + std::to_string(i));
      const std::string offer = c.offers[i];
      const bool declined = offer == "-", warns = offer.find('w') != std::string::npos;
      for (const double amplitude : {1e-11, 1.5}) {
        for (const Points& points : {Points{}, Points{{1e-3, 1e-3, 5e-3}}}) {
          Scene scene;
          scene.medium = water(amplitude > 1 ? 0 : 1e-10, 0.5), scene.points = points;  // unset up to 1e-10
          e.face->set_amplitude(amplitude);
          const Outcome got = run(scene, *e.face, computations[i], 1);
          EXPECT_TRUE(got.report.clean() && got.answer == (declined ? 1 : 0)) << got.report.error;
          EXPECT_EQ(got.report.warnings, std::vector<std::string>(warns ? 1 : 0,
                                                                  "f0 not set; using default of 1 MHz to "
                                                                  "calculate wavelength."));
          // Without f0 the wave is that of 1 MHz where f0 warns, else none; Rayleigh sums have f0 as a factor.
          const bool computes = !declined && (amplitude > 1 || offer.find('a') != std::string::npos);
          const bool has_f0_as_factor = i == 0 || i >= 6, apodized = i == 2 || i == 8;
          const bool has_wave = warns && !has_f0_as_factor && !apodized;
          for (const double v : got.values) EXPECT_TRUE(std::isfinite(v));
          EXPECT_TRUE(points.empty() || (got.pressure(0) != Complex(1, 1)) == (computes && has_wave));
        }
      }
      e.face->set_medium(nullptr);
      const Computation compute = computations[i];
      const Report missing = guarded([&face = *e.face, compute] { EXPECT_EQ((face.*compute)(), 1); });
      EXPECT_EQ(missing.error, declined ? "" : "The transducer has no medium.\n");
      if (declined) continue;
      // An unfilled rule adds 0; the far field needs none, and the radiators choose their own.
      Scene scene;
      scene.points = {{1e-3, 0, 5e-3}}, scene.nodes = 0;
      EXPECT_EQ(run(scene, *e.face, computations[i]).pressure(0) != 0., i == 0 || i == 6);
      // A NaN as f0 is unset to a disc's fnm_cw alone; to the others it is what it is.
      scene.medium._f0 = NAN, scene.nodes = 16;
      const bool unset = i == 1 && c.shape <= ring;
      const Outcome at_nan = i == 6 ? Outcome{} : run(scene, *e.face, computations[i]);
      EXPECT_EQ(at_nan.report.warnings.size(), unset ? 1u : 0u);
      EXPECT_TRUE(i == 6 || std::isnan(at_nan.values[0]));  // with the attenuation at NaN
      scene.medium._soundspeed = 0, scene.medium._f0 = 1e6;
      const bool has_default = i == 7 && c.shape <= ring;
      const Outcome without_speed = i == 6 ? Outcome{} : run(scene, *e.face, computations[i]);
      EXPECT_EQ(without_speed.report.warnings,
                std::vector<std::string>(has_default ? 1 : 0,
                                         "Sound speed not set; using default of 1500 m/s to "
                                         "calculate wavenumber."));
      EXPECT_TRUE(!has_default || std::abs(without_speed.pressure(0)) > 1e5);
    }
  }
  const Element e = usual_element(disc);
  double re = 0;
  Scene scene;
  scene.points = {{0, 0, 1e-2}};
  EXPECT_EQ(
      run(scene, *e.face, [&](Transducer& t) { return t.set_complex_pressure_pointers(&re, nullptr), t.rayleigh_cw(); })
          .report.error,
      "The transducer has no complex pressure to add to.\n");
}

// The loss that a wave carries does not enter the lossless far field; and it prints nothing.
TEST(Fields, OfARectangleInItsSpecialCases) {
  RectangularTransducer r(40e-3, 30e-3, 1, 0);
  Scene lossy, lossless;
  lossless.points = lossy.points = {{0.02, 0, 1e-4}, {-1e-2, 3e-3, 0.1}};
  lossy.medium = water(1e6, 3);
  EXPECT_EQ(run(lossy, r, [&](Transducer&) { return r.farfield_cw_lossless(); }).values,
            run(lossless, r, &Transducer::farfield_cw).values);
  EXPECT_EQ(SphericalTransducer().farfield_cw_lossless() + SphericalRingTransducer().farfield_cw_lossless() +
                r.rayleigh_transient(),
            3);

  // With the rule of a disc's making, on [0, pi]: nodes beyond the edges, out of the range of the vector functions.
  RectangularTransducer narrow(40e-3, 2e-3, 1, 0);
  Scene strong;
  strong.medium = water(1e6, 764), strong.points = lossy.points, strong.nodes = 16;
  Sum sum = plain_sum(strong);
  for (double& x : sum.x.values) x = kesto::half_pi * x + kesto::half_pi;
  for (double& w : sum.w.values) w = kesto::half_pi * w;
  const Complex plain = -1.5e6 / kesto::two_pi * sum.edges_of_rectangle(20e-3, 1e-3, strong.points[0]);
  EXPECT_NEAR(std::abs(plain - Complex(13957, -6214)), 0, 1);
  at_every_width([&](kesto::VectorTarget) {
    const Outcome left =
        run(strong, narrow, [](Transducer& t) { return t.integral->gauss_quadrature(0, kesto::pi), t.fnm_cw(); });
    EXPECT_NEAR(std::abs(left.pressure(0) - plain), 0, 1e-7);
  });

  // The distances at point 0, one from each group of four.
  Scene two;
  two.points = {{0, 0, 1}, {0, 0, 2}}, two.nodes = 4;
  const Outcome printed = run(two, r, &Transducer::rayleigh_cw_sse);
  EXPECT_EQ(printed.report.console, "R i: 1.000232\nR i: 1.000106\nR i: 1.000106\nR i: 1.000232\n");
}

// Where single precision loses the difference of squares, next to a rim or a face.
TEST(Fields, InFloatsKeepTheirDigitsOnRimAndFace) {
  CircularTransducer piston(5e-3, 1, 0);
  Scene scene;
  scene.nodes = 128, scene.points = {{5e-3, 0, 0}, {5e-3, 0, 1e-12}, {3e-3, 4e-3, 0}, {5e-3, 0, 1e-7}};
  const Outcome exact = run(scene, piston, &Transducer::fnm_cw), got = run(scene, piston, &Transducer::fnm_cw_sse);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(std::abs(got.pressure(i) - exact.pressure(i)), 0, 2e-4 * 1.5e6) << i << got.pressure(i);
  }
  const Element e = usual_element(shell);
  Scene on_shell;
  on_shell.nodes = 64;
  for (int i = 0; i < 2000; ++i) {
    const double theta = i * std::asin(4. / 9) / 2000, phi = 0.7 * i;
    on_shell.points.emplace_back(9e-3 * std::sin(theta) * std::cos(phi), 9e-3 * std::sin(theta) * std::sin(phi),
                                 9e-3 * (1 - std::cos(theta)));
  }
  for (const Computation compute : {&Transducer::rayleigh_cw_sse, &Transducer::fnm_cw_sse}) {
    for (const double v : run(on_shell, *e.face, compute).values) ASSERT_TRUE(std::isfinite(v));
  }
}

// Rings of no weight are left out but where they carry a NaN; a subclass that places points is asked for each.
TEST(Fields, AskEveryRingAndEveryPointWhereItMatters) {
  struct Mirrored : CircularTransducer {
    using CircularTransducer::CircularTransducer;
    CartesianCoordinate rotateTranslate(const CartesianCoordinate& p) override { return {p.x, p.y, -p.z}; }
  };
  const Element e = usual_element(disc);
  e.face->set_piston_apodization_index(0);  // no slope anywhere
  Scene scene;
  scene.points = {{inf, 0, 1e-2}, {1e-3, 0, 1e-2}};
  const Outcome uniform = run(scene, *e.face, &Transducer::fnm_cw_apodized);
  EXPECT_TRUE(std::isnan(uniform.values[0]) && uniform.pressure(1) == 0.);

  Mirrored mirrored(4e-3, 1.5, 0.7);
  for (int i = 0; i < 20; ++i) scene.points.emplace_back(1e-4 * i, 0, i % 2 == 0 ? -1e-2 : 1e-2);
  scene.points.erase(scene.points.begin());
  Scene turned = scene;
  for (Point& p : turned.points) p.z = -p.z;
  EXPECT_EQ(run(scene, mirrored, &Transducer::fnm_cw).values, run(turned, *e.face, &Transducer::fnm_cw).values);
}

struct Triangle : TriangleTransducer {
  int init_fnm_tsd() override { return 1; }
  int call_fnm_tsd() override { return 1; }
  int free_fnm_tsd() override { return 1; }
  int kzk_transient() override { return 1; }
  int kzk_cw() override { return 1; }
};

TEST(Fields, OfTrianglesAreNothingAndPrintersNameTheGeometry) {
  static_assert(std::is_abstract_v<TriangleTransducer>);
  Triangle triangle;
  testing::internal::CaptureStdout();
  Scene scene;
  scene.points = {{0, 0, 1}};
  EXPECT_EQ(run(scene, triangle, &Transducer::fnm_cw, 1).pressure(0), Complex(1, 1));
  EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("Global information\n", 0), 0u);
  EXPECT_EQ(
      triangle.fnm_cw_cuda(3) + triangle.fnm_transient_cuda(3) + triangle.kzk_nonlinear() + triangle.rayleigh_cw(), 3);

  const struct {
    Shape shape;
    std::string debug, mex_debug;
  } printers[] = {
      {disc, "radius: 0.004\n", "radius: 0.004000\n"},
      {ring, "inner radius: 0.0015\nouter radius: 0.004\n", "inner radius: 0.001500\nouter radius: 0.004000\n"},
      {rectangle, "Width:0.006\nHeight:0.005\n", "width: 0.006000\nheight: 0.005000\n\n"},
      {shell, "radius: 0.004\nROC:0.009\n", "radius: 0.004000\n"},
      {shell_ring, "inner radius: 0.0015\nouter radius: 0.004\ngeometric focus: 0.009\n",
       "inner radius: 0.001500\nouter radius: 0.004000\ngeometric focus: 0.009000\n\n"},
  };
  const auto behind_base = [](const std::string& all, const std::string& last_of_base) {
    const std::size_t at = all.rfind(last_of_base);
    return at == std::string::npos ? "" : all.substr(at + last_of_base.size());
  };
  for (const auto& p : printers) {
    const Element e = usual_element(p.shape);
    testing::internal::CaptureStdout();
    const Report report = guarded([&] { e.face->debug(1), e.face->mex_debug(1); });
    EXPECT_EQ(behind_base(testing::internal::GetCapturedStdout(), "Integral info\n"), p.debug);
    EXPECT_EQ(behind_base(report.console, "Coordinate grid:\n"), p.mex_debug);
  }
}

}  // namespace
