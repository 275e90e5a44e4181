// The foundation of the field core: grids, time samples, quadrature, helpers.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

#include "core/coordinate_grid.h"
#include "core/internal/sampled_range.h"
#include "core/numerical_helpers.h"
#include "core/numerical_integration.h"
#include "core/piston_apodization.h"
#include "core/pressure_field.h"
#include "core/time_samples.h"
#include "host/embedded_host.h"

namespace {

using Complex = std::complex<double>;
using Doubles = std::vector<double>;

constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();

// `said` is what went to the console, then "! " and the error if there was one. Nothing is left alive or freed twice.
void expect_said(const std::string& said, const std::function<void()>& body) {
  const kesto::host::Report report = kesto::host::guarded(body);
  EXPECT_EQ(report.console + (report.failed ? "! " + report.error : ""), said);
  EXPECT_EQ(report.live_blocks + report.bad_frees + report.warnings.size(), 0u) << said;
}

// Reads a structure written as "tmin=0.5 delta=3x1:0.1,0,1 coordinates=9x3f", f for single precision. Arrays need not
// hold what they claim to.
template <class T>
void read(T& object, const std::string& text) {
  const char* names[] = {"coordinates", "xmin",  "xmax",         "ymin", "ymax", "zmin",
                         "zmax",        "delta", "time_samples", "tmin", "tmax", "deltat"};
  const kesto::host::Array structure(mxCreateStructMatrix(1, 1, 12, names));
  std::istringstream words(text);
  for (std::string name, value; std::getline(words, name, '=') && std::getline(words, value, ' ');) {
    mwSize claimed[] = {1, 1};
    char mark = ':';
    if (std::sscanf(value.c_str(), "%zux%zu%c", &claimed[0], &claimed[1], &mark) < 2) claimed[0] = 1;
    std::istringstream list(value.substr(value.find(':') + 1));
    Doubles numbers;
    for (double number; list >> number; list.ignore()) numbers.push_back(number);
    const mwSize held[] = {1, numbers.size()};
    mxArray* const array = mxCreateNumericArray(2, held, mark == 'f' ? mxSINGLE_CLASS : mxDOUBLE_CLASS, mxREAL);
    if (double* const data = mxGetPr(array)) std::copy(numbers.begin(), numbers.end(), data);
    mxSetDimensions(array, claimed, 2);
    mxSetField(structure.get(), 0, name.c_str(), array);
  }
  const mxArray* slot = structure.get();
  object.allocate_memory_and_set_values(&slot);
}

template <class T>
void expect_refused(const std::string& structure, const std::string& said) {
  expect_said(said, [&] { read(*std::make_unique<T>(), structure); });
}

// Structures with ever more of the fields, in the order in which they are asked for; the next one missing, or empty.
template <class T>
void expect_missing_fields_named(const std::vector<std::string>& names, const std::string& instead,
                                 const std::string& help) {
  std::string present;
  for (const std::string& name : names) {
    const std::string missing = name == names[0] ? instead + "' or '" + name + "', but neither of these fields are"
                                                 : name + "', but this field is not";
    expect_refused<T>(present, "Expecting '" + missing + " defined\n! " + help);
    if (name != "delta") expect_refused<T>(present + name + "=0x0", "Expecting '" + missing + " defined\n! " + help);
    present += name + "=1 ";
  }
}

void expect_point(const CartesianCoordinate& p, double x, double y, double z) {
  EXPECT_EQ(Doubles({p.x, p.y, p.z}), Doubles({x, y, z}));
}

const std::string too_many_points = "! A coordinate grid must have fewer than 2^31 points.\n";

TEST(CoordinateGrid, ReadsStructuresAndFindsPointsUpToOnePastTheLast) {
  const std::string box = "xmin=0 xmax=0.3 ymin=1 ymax=1 zmin=-2 zmax=2 ";
  expect_said("", [&] {
    CoordinateGrid grid;
    expect_point(grid.spatial_index_value(0), 0, 0, 0);  // nothing there yet
    read(grid, box + "delta=3x1:0.1,0,1");
    EXPECT_EQ(Doubles({double(grid.nx), double(grid.ny), double(grid.nz)}), Doubles({4, 1, 5}));
    expect_point(grid.spatial_index_value(grid.npoints - 1), 3 * 0.1, 1, 2);
    read(grid, box + "coordinates=2x4:1,2,5,4,-1,6,7,8");  // preferred; the fourth column is ignored
    EXPECT_EQ(Doubles({grid.xmin, grid.xmax, grid.ymin, grid.ymax, grid.zmin, grid.zmax, grid.deltax, grid.deltay,
                       grid.deltaz}),
              Doubles({1, 2, 4, 5, -1, 6, 0, 0, 0}));
    expect_point(grid.spatial_index_value(1), 2, 4, 6);
    for (const int i : {2, 3, INT_MAX}) expect_point(grid.spatial_index_value(i), 0, 0, 0);
    read(grid, "coordinates=0x3");
    expect_point(grid.spatial_index_value(0), 0, 0, 0);
    grid.RegularCoordinateGrid(0, 1, 10, 12, 20, 23, 1, 1, 1);
    for (int i = 0; i < 24; ++i) expect_point(grid.spatial_index_value(i), i % 2, 10 + i / 2 % 3, 20 + i / 6);
    for (const int i : {-1, INT_MIN, 24, 25, INT_MAX}) expect_point(grid.spatial_index_value(i), 0, 0, 0);
    grid.RegularCoordinateGrid(5, 6, 7, 9, 8, 8, 1, 1, 0);
    expect_point(grid.spatial_index_value(6), 5, 7, 8);  // one plane: its first point again
    grid.SinglePoint(1, 2, 3);
    EXPECT_EQ(Doubles({double(grid.npoints), grid.xmin, grid.xmax, grid.zmin, grid.zmax}), Doubles({1, 1, 1, 3, 3}));
    grid.CoordinateGridVector(nullptr, -1);
    EXPECT_EQ(grid.npoints, 0);
  });
  EXPECT_EQ(CartesianCoordinate(1, 2, 3).calculate_distance(CartesianCoordinate(3, 8, 6)), 7);
  const std::string help =
      "The required Matlab structure is generated by set_coordinate_grid.m - see the documentation or the online help "
      "for details\n";
  const std::string delta_help =
      "! See the documentation or the online help for set_coordinate_grid.m for examples showing how to correctly "
      "define 'delta'\n";
  const std::string delta_is = "Expecting 'delta' as a vector with 3 entries, but instead, delta is ";
  using Grid = CoordinateGrid;
  expect_missing_fields_named<Grid>({"xmin", "xmax", "ymin", "ymax", "zmin", "zmax", "delta"}, "coordinates", help);
  expect_refused<Grid>(box + "delta=1x4", delta_is + "1 by 4\n" + delta_help);
  expect_refused<Grid>(box + "delta=0x0", delta_is + "0 by 0\n" + delta_help);
  expect_refused<Grid>(box + "delta=1x3f", delta_help);
  expect_refused<Grid>("coordinates=2x2", "! " + help);
  expect_refused<Grid>("coordinates=1x3f", "! " + help);
  expect_refused<Grid>("coordinates=2147483648x3", too_many_points);
}

TEST(CoordinateGrid, ChecksTheRegularBoxAxisByAxisAndKeepsItsPointsWhenItFails) {
  const auto no_count = [](const std::string& c) {
    return "! Computed number of " + c + " coordinate values is less than 1.\n  Check values of " + c + "min, " + c +
           "max, and delta" + c + ".\n";
  };
  const std::pair<Doubles, std::string> cases[] = {
      {{1, 0, 1, 0, 1, 0, -1, -1, -1}, "! deltax must be greater than or equal to 0.\n"},
      {{1, 0, 1, 0, 1, 0, 1, -1, -1}, "! xmax - xmin must be greater than or equal to 0.\n"},
      {{0, nan, 1, 0, 1, 0, 1, -1, -1}, no_count("x")},
      {{0, 1, 1, 0, 1, 0, 1, -1, -1}, "! deltay must be greater than or equal to 0.\n"},
      {{0, 1, 1, 0, 1, 0, 1, 1, -1}, "! ymax - ymin must be greater than or equal to 0.\n"},
      {{0, 1, -inf, 0, 1, 0, 1, 1, -1}, no_count("y")},
      {{0, 1, 0, 1, 1, 0, 1, 1, -1}, "! deltaz must be greater than or equal to 0.\n"},
      {{0, 1, 0, 1, 1, 0, 1, 1, 1}, "! zmax - zmin must be greater than or equal to 0.\n"},
      {{0, 1, 0, 1, 0, 1, 1, 1, 1e-300}, no_count("z")},
      {{0, 65535, 0, 65535, 0, 0, 1, 1, 1}, too_many_points},
      {{0, 1023, 0, 1023, 0, 2047, 1, 1, 1}, too_many_points}};
  CoordinateGrid outer;
  outer.SinglePoint(CartesianCoordinate(1, 2, 3));
  for (const auto& c : cases) {
    const Doubles& b = c.first;
    expect_said(c.second, [&] {
      CoordinateGrid local;  // gone before the host takes back the memory of the failed call
      local.SinglePoint(1, 2, 3);
      outer.RegularCoordinateGrid(b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8]);
    });
    expect_point(outer.spatial_index_value(0), 1, 2, 3);
  }
}

TEST(SampleCount, ToleratesRoundingAndRefusesWhatCannotBeCounted) {
  const Doubles cases[] = {
      // min, max, step; count, 0 for none
      {0, 0.3, 0.1, 4}, {0, 0.3, 0, 1},   {2, 2, nan, 1},        {0, 0.999, 1, 1},       {0, 3 - 2e-10, 1, 3},
      {0, 1, inf, 1},   {inf, inf, 1, 1}, {-1e308, 1e308, 1, 0}, {0, 2147483647., 1, 0}, {nan, 1, 1, 0},
      {0, 1, nan, 0},   {0, inf, inf, 0}, {0, 1e18, 1, 0},       {-inf, inf, 0.1, 0},    {0, 2147483646., 1, INT_MAX}};
  for (const Doubles& c : cases) EXPECT_EQ(std::max(0, kesto::sample_count(c[0], c[1], c[2])), c[3]) << c[1] << c[2];
  // A single sample is 0 step + min as any other.
  double one[3];
  kesto::fill_samples(one, 1, 2, inf), kesto::fill_samples(one + 1, 1, -0.0, 1), kesto::fill_samples(one + 2, 1, 3, 0);
  EXPECT_TRUE(std::isnan(one[0]) && one[1] == 0 && !std::signbit(one[1]) && one[2] == 3);
}

TEST(TimeSamples, ChecksRangesAndKeepsItsSamplesWhenTheyFail) {
  const std::string step_error = "! deltat must be greater or equal to 0.\n";
  const std::string range_error = "! tmax - tmin must be greater than or equal to 0.\n";
  const std::string count_error =
      "! Computed number of time samples is less than 1.\n  Check values of tmin, tmax, and deltat.\n";
  const std::pair<Doubles, std::string> cases[] = {
      {{-2.9, 1, 0}, "Input value of deltat is -2\n" + step_error},
      {{-1e300, 0, 1}, "Input value of deltat is -2147483648\n" + step_error},
      {{nan, 1.5, 0}, "Input value of tmax - tmin is -1\n" + range_error},
      {{1, inf, 0}, "Input value of tmax - tmin is -2147483648\n" + range_error},
      {{1e-9, 0, 1e9}, "Illegal number of time samples -2147483647\n" + count_error},
      {{1, 0, 2147483647.}, "Illegal number of time samples -2147483648\n" + count_error}};
  TimeSamples t(1, 5, 14);
  t.generatetauvectorfromminmaxdeltatau(1, 7, 8);
  for (const auto& [r, said] : cases) {
    const double step = r[0], min = r[1], max = r[2];
    expect_said(said, [&] { t.generatetimevectorfromminmaxdeltat(step, min, max); });
    expect_said(said, [&] { t.generatetauvectorfromminmaxdeltatau(step, min, max); });
    expect_said(said[1] == 'l' ? "Illegal number of time samples 10\n" + count_error : said,
                [&] { t.updatetimevectorfromminmaxdeltat(step, min, max); });
  }
  expect_said(
      "The generated time vector is too small for an update with the provided tmin, tmax, and deltat values.\n"
      "! Out of bounds error. Either generate a larger time vector, or generate, not update a time vector. \n",
      [&] { t.updatetimevectorfromminmaxdeltat(1, 0, 10); });
  EXPECT_EQ(t.nt_local, 10);
  expect_said("nt: 10\nnt_local: 5\n", [&] { t.updatetimevectorfromminmaxdeltat(2, 0, 8); });
  const double left[] = {0, 2, 4, 6, 8, 10, 11, 12, 13, 14, 0, 0};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(t.time_index_value(i), left[i]);
  for (const int i : {-1, 2, 3, INT_MAX}) EXPECT_EQ(t.tau_index_value(i), 0);
  EXPECT_EQ(t.tau_index_value(0) + t.tau_index_value(1), 7 + 8);
}

TEST(TimeSamples, ReadsStructuresAndNamesWhatIsWrongWithThem) {
  const std::string help =
      "The required Matlab structure is generated by set_time_samples.m - see the documentation or the online help for "
      "details\n";
  expect_missing_fields_named<TimeSamples>({"tmin", "tmax", "deltat"}, "time_samples", help);
  expect_refused<TimeSamples>("time_samples=2x1f", "! " + help);
  expect_refused<TimeSamples>("time_samples=65536x32768", "! A time vector must have fewer than 2^31 samples.\n");
  expect_said(
      "0: 2.000000e+00, 2.000000e+00, 2.000000e+00 => 2.000000e+00\n"
      "1: -1.000000e+00, 2.000000e+00, -1.000000e+00 => -1.000000e+00\n"
      "2: -1.000000e+00, 3.000000e+01, 3.000000e+01 => 3.000000e+01\n"
      "0: -1.000000e+00, -1.000000e+00, -1.000000e+00 => -1.000000e+00\n",
      [] {
        TimeSamples t;
        for (const int i : {-1, 0, 1}) EXPECT_EQ(t.time_index_value(i) + t.tau_index_value(i), 0);
        read(t, "deltat=0.1 tmax=0.5 tmin=0.2");
        EXPECT_EQ(Doubles({t.deltat(), t.tmin(), t.tmax(), double(t.nt_local)}), Doubles({0.1, 0.2, 0.5, 4}));
        read(t, "time_samples=1x3:2,-1,30 tmin=5");
        t.vectoroftimevalues(t.time_values + 1, 1);  // from its own samples
        EXPECT_EQ(Doubles({t.deltat(), t.tmin(), t.tmax(), t.time_index_value(0), t.time_index_value(1)}),
                  Doubles({0, -1, -1, -1, 0}));
        EXPECT_EQ(t.nt + t.nt_local, 2);
        read(t, "time_samples=0x0");
        EXPECT_EQ(t.nt, 0);
      });
}

// The k-th largest root of P_n (k from 0) by Newton's method on long doubles, and its weight.
std::pair<long double, long double> legendre_root(int n, int k) {
  long double t = std::cos(std::acos(-1.0L) * (k + 0.75L) / (n + 0.5L)), slope = 0, shift = 1;
  for (int i = 0; i < 50 && std::fabs(shift) > 1e-19L; ++i) {
    long double before = 1, p = t;
    for (int j = 2; j <= n; ++j) before = std::exchange(p, ((2 * j - 1) * t * p - (j - 1) * before) / j);
    slope = n * (before - t * p) / (1 - t * t);
    t -= shift = p / slope;
  }
  return {t, 2 / ((1 - t * t) * slope * slope)};
}

TEST(NumericalIntegration, GaussRulesAreThoseOfLegendreToRounding) {
  for (int n = 1; n <= 1000; n += n < 70 ? 1 : 30) {
    Doubles x(static_cast<size_t>(n)), w(x);
    NumericalIntegration().modifiedgrule(n, x.data(), w.data());
    double sum = 0;
    for (size_t k = 0; k < x.size(); ++k) {
      const auto [root, weight] = legendre_root(n, static_cast<int>(k));
      sum += w[k];
      EXPECT_LT(std::fabs(x[k] - root), 1e-16L) << n;
      EXPECT_LT(std::fabs(w[k] - weight), 5e-16L) << n;
    }
    EXPECT_NEAR(sum, 2, 1e-13) << n;
    EXPECT_TRUE(n % 2 == 0 || x[x.size() / 2] == 0) << n;
  }
}

TEST(NumericalIntegration, MappedRulesIntegrateWhatTheyAreMadeFor) {
  expect_said("Illegal number of abscissas -3\n! Specified number of abscissas is less than 1.\n", [] {
    NumericalIntegration rule;
    for (int n = 1; n <= 30; ++n) {
      rule.allocate_memory(n);
      rule.gauss_quadrature(-0.5, 1);
      for (int degree = 0; degree < 2 * n; ++degree) {
        double sum = 0;
        for (int k = 0; k < n; ++k) sum += rule.get_weight(k) * std::pow(rule.get_abscissa(k), degree);
        EXPECT_NEAR(sum, (1 - std::pow(-0.5, degree + 1)) / (degree + 1), 1e-14) << n << ' ' << degree;
      }
    }
    rule.gauss_quadrature_cylindrical();
    double sum = 0;
    for (int k = 0; k < 30; ++k) sum += rule.get_weight(k) * std::exp(rule.cos_abscissa[k]);
    EXPECT_NEAR(sum, 3.977463260506422, 3e-14);  // pi I0(1)
    EXPECT_EQ(rule.get_abscissa(30) + rule.get_abscissa(-1), 0);
    rule.allocate_memory(1);
    rule.gauss_quadrature_cylindrical();
    EXPECT_EQ(Doubles({rule.abscissa[0], rule.weight[0]}), Doubles({1.570796326794895, 3.14159265358979}));
    rule.allocate_memory(2);
    rule.midpoint_rule();
    EXPECT_EQ(Doubles({rule.abscissa[0], rule.abscissa[1], rule.weight[1]}), Doubles({-0.5, 0.5, 1}));
    rule.midpoint_rule(0, 1);  // one step too low
    EXPECT_EQ(Doubles({rule.abscissa[0], rule.abscissa[1], rule.weight[1]}), Doubles({-0.25, 0.25, 0.5}));
    rule.allocate_memory(-3);
  });
}

TEST(NumericalIntegration, KeepsItsRuleWhenTheHostRunsOutOfMemory) {
#ifdef KESTO_SANITIZED
  GTEST_SKIP() << "AddressSanitizer ends the process instead";
#endif
  NumericalIntegration rule;
  rule.allocate_memory(2);
  rule.gauss_quadrature();
  const Doubles x(rule.abscissa, rule.abscissa + 2);
  rlimit old;
  getrlimit(RLIMIT_AS, &old);
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlimit room_for_one_array = {pages * rlim_t(sysconf(_SC_PAGESIZE)) + (rlim_t{3} << 29), old.rlim_max};
  setrlimit(RLIMIT_AS, &room_for_one_array);
  expect_said("! Out of memory.", [&] { rule.allocate_memory(1 << 27); });
  setrlimit(RLIMIT_AS, &old);
  EXPECT_EQ(Doubles(rule.abscissa, rule.abscissa + rule.get_npoints()), x);
}

TEST(NumericalHelpers, ExponentialSincSignAndPowers) {
  EXPECT_NEAR(std::abs(Complex(smart_exp(-0.5f, 2.0f)) - std::exp(Complex(-0.5, 2))), 0, 1e-7);
  for (const Complex z : {Complex(0, 0), Complex(-1, 0), Complex(0, 40), Complex(-2, 300), Complex(0.3, -0.7)}) {
    double re = 7, im = 7;
    smart_exp(z.real(), z.imag(), re, im);
    EXPECT_EQ(Complex(re, im), smart_exp(z));
    EXPECT_NEAR(std::abs(smart_exp(z) - std::exp(z)), 0, 3e-16) << z;
    const Complex i(0, 1), sinc = z == 0.0 ? 1 : (std::sin(z) - 0.5 * i * std::exp(i * z)) / z;
    EXPECT_LE(std::abs(fast_sinc(z) - sinc), 1e-15 * std::abs(sinc)) << z;
  }
  EXPECT_EQ(smart_exp(800.0, 0.0), Complex(inf, 0));  // no sine that would make it NaN
  EXPECT_TRUE(std::isnan(smart_exp(nan, 1.0).real()) && std::isnan(smart_exp(Complex(nan, 1)).imag()));
  EXPECT_EQ(Doubles({sign(1e-10), sign(-1e-10), sign(2e-10), sign(-3)}), Doubles({0, 0, 1, -1}));
  for (const int n : {1, 2, 64, 1 << 30}) EXPECT_TRUE(isPowerOfTwo(n)) << n;
  for (const int n : {0, 3, 6, 96, -1, -2, INT_MIN, INT_MAX}) EXPECT_FALSE(isPowerOfTwo(n)) << n;
}

TEST(PistonApodization, FallsToTheRimAndEndsThere) {
  const double a = 3, h = 1e-5, half_way[] = {1, std::sqrt(0.5), 0.5, 0.75, 0.9375};
  EXPECT_GT(piston_apodization::cosine(std::nextafter(a, 0), a), 1e-15);  // by the truncated pi
  EXPECT_EQ(piston_apodization::raisedcosine(0.7, 1), (std::cos(0.7 * 3.14159265358979) + 1) * 0.5);
  EXPECT_EQ(piston_apodization::derivativecosine(0.7, 1), -1.570796326794895 * std::sin(0.7 * 1.570796326794895));
  EXPECT_EQ(piston_apodization::derivativeraisedcosine(0.7, 1), -1.570796326794895 * std::sin(0.7 * 3.14159265358979));
  for (int index = 0; index <= 4; ++index) {
    const auto value = [=](double r) { return piston_apodization::evaluate(index, r, a); };
    const auto slope = [=](double r) { return piston_apodization::derivative(index, r, a); };
    EXPECT_NEAR(value(-a / 2), half_way[index], 1e-14) << index;
    for (const double r : {a, -a, 2 * a, nan}) EXPECT_TRUE(value(r) == (index == 0) && slope(r) == 0) << index << r;
    for (const double r : {-2.9, -1.0, 0.0, 0.4, 2.5}) {
      EXPECT_NEAR(slope(r), (value(r + h) - value(r - h)) / (2 * h), 1e-9) << index << ' ' << r;
    }
  }
}

TEST(PressureField, KeepsPointsAndIgnoresWhatLiesOutside) {
  expect_said("", [] {
    PressureField field(3);
    EXPECT_TRUE(field.setPoint(2, {1, -2}));
    for (const int i : {-1, 3, INT_MAX}) EXPECT_FALSE(field.setPoint(i, 5.0)) << i;
    for (const int i : {-1, 0, 1, 3}) EXPECT_EQ(field.readPoint(i), 0.0) << i;
    EXPECT_EQ(field.readPoint(2), Complex(1, -2));
    EXPECT_FALSE(PressureField(-1).setPoint(0, 1.0));
  });
}

}  // namespace
