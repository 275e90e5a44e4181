// Continuous-wave fields against plain scalar loops at -O2, whole call, timed in turn within one run by the thread's
// own time; and the processor's own bounds.
//
// A term is one wave of an integral at one point: an abscissa of a disc or shell, an abscissa of one edge of the
// rectangle (an edge split at the foot is two), a cell of a Rayleigh sum. Counters: ns/term, plain (the same of the
// plain loops), speedup (plain over this), cycles (per vector and term), terms (a point) and difference, the largest
// from the plain loops over the field's maximum. More than 1e-13 fails the row. Bounds are in cycles per vector.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "bench/plain_fields_o2.h"
#include "bench/timing.h"
#include "core/constants.h"
#include "core/lanes/lanes.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "fields/context.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using kesto::Complex;
using kesto::VectorTarget;

constexpr double disc_radius = 7.5e-3, width = 12e-3, height = 8e-3, shell_radius = 16e-3, roc = 40e-3;  // m

Medium medium_of(bool lossy) {
  Medium medium;
  medium._f0 = 1e6;
  medium._soundspeed = 1500;
  medium._rho_density = 1000;
  medium._dBcmMHz = lossy ? 0.5 : 0;
  return medium;
}

// About the axis; no point lies on it when their number across is even.
void fill_grid(CoordinateGrid& grid, int across, int along, double side, double z_from, double z_to) {
  grid.RegularCoordinateGrid(-side / 2, side / 2, -side / 2, side / 2, z_from, z_to, side / (across - 1),
                             side / (across - 1), (z_to - z_from) / (along - 1));
}

PlainRule rule_of(int n) {
  PlainRule rule = {std::vector<double>(std::size_t(n)), std::vector<double>(std::size_t(n))};
  NumericalIntegration().grule(n, rule.node.data(), rule.weight.data());
  return rule;
}

std::vector<CartesianCoordinate> local_points(Transducer& element, const CoordinateGrid& grid) {
  std::vector<CartesianCoordinate> points;
  element.InitializeRotationMatrix();
  grid.for_each_point([&](int, const CartesianCoordinate& p) { points.push_back(element.rotateTranslate(p)); });
  return points;
}

struct Pressure {
  explicit Pressure(std::size_t points) : re(points), im(points) {}
  std::vector<double> re, im;
};

double largest_difference(const Pressure& ours, const Pressure& plain) {
  double worst = 0, largest = 0;
  for (std::size_t i = 0; i < plain.re.size(); ++i) {
    const double difference = std::hypot(ours.re[i] - plain.re[i], ours.im[i] - plain.im[i]);
    if (!(difference <= worst)) worst = difference;  // a NaN, too
    largest = std::max(largest, std::hypot(plain.re[i], plain.im[i]));
  }
  return worst / largest;
}

// One computation of an element, and the plain loops' own.
struct Computation {
  std::string name;
  Transducer& (*element)();
  int (Transducer::*compute)();
  double z_from, z_to;  // m, of the grid
  std::function<void(const PlainField&)> plain;
  std::function<Complex(const Medium&)> factor;
  double growth;  // of the wave with distance: the sign of the attenuation
  std::function<double(const CartesianCoordinate&, int)> terms;  // at a point
  bool rayleigh;
};

Transducer& disc() {
  static CircularTransducer element(disc_radius, 1, 0);
  return element;
}
Transducer& rectangle() {
  static RectangularTransducer element(width, height, 1, 0);
  return element;
}
Transducer& shell() {
  static SphericalTransducer element(shell_radius, roc, 1, 0);
  return element;
}

double rim_terms(const CartesianCoordinate&, int n) { return n; }
double cells(const CartesianCoordinate&, int n) { return n * n; }
double edge_terms(const CartesianCoordinate& p, int n) {
  const bool split_x = std::fabs(p.x) < width / 2, split_y = std::fabs(p.y) < height / 2;
  return n * ((split_x ? 4 : 2) + (split_y ? 4 : 2));
}

double rho_c(const Medium& m) { return m._rho_density * m._soundspeed; }
Complex rayleigh_factor(const Medium& m) { return {0, m._f0 * m._rho_density}; }

std::vector<Computation> computations() {
  const double pi = kesto::pi;
  return {
      {"disc_fnm", disc, &Transducer::fnm_cw, 1e-3, 80e-3, [](const PlainField& f) { plain_disc_fnm(f, disc_radius); },
       [=](const Medium& m) { return Complex(rho_c(m) * disc_radius / pi); }, -1, rim_terms, false},
      {"rectangle_fnm", rectangle, &Transducer::fnm_cw, 1e-3, 80e-3,
       [](const PlainField& f) { plain_rectangle_fnm(f, width, height); },
       [=](const Medium& m) { return Complex(-rho_c(m) / (2 * pi)); }, -1, edge_terms, false},
      {"shell_fnm", shell, &Transducer::fnm_cw, 8e-3, 80e-3,
       [](const PlainField& f) { plain_shell_fnm(f, shell_radius, roc); },
       [=](const Medium& m) { return Complex(rho_c(m) * roc * shell_radius / pi); }, -1, rim_terms, false},
      {"disc_rayleigh", disc, &Transducer::rayleigh_cw, 1e-3, 80e-3,
       [](const PlainField& f) { plain_disc_rayleigh(f, disc_radius); },
       [](const Medium& m) { return 2.0 * rayleigh_factor(m); }, 1, cells, true},
      {"rectangle_rayleigh", rectangle, &Transducer::rayleigh_cw, 1e-3, 80e-3,
       [](const PlainField& f) { plain_rectangle_rayleigh(f, width, height); }, rayleigh_factor, -1, cells, true},
      {"shell_rayleigh", shell, &Transducer::rayleigh_cw, 8e-3, 80e-3,
       [](const PlainField& f) { plain_shell_rayleigh(f, shell_radius, roc); }, rayleigh_factor, -1, cells, true}};
}

void measure(benchmark::State& state, const Computation& computation, bool lossy, int n, int across, int along,
             VectorTarget target) {
  setenv("KESTO_VECTOR_TARGET", kesto::name_of(target), 1);
  Transducer& element = computation.element();
  Medium medium = medium_of(lossy);
  CoordinateGrid grid;
  fill_grid(grid, across, along, 32e-3, computation.z_from, computation.z_to);
  NumericalIntegration rule;
  rule.allocate_memory(n);
  element.set_medium(&medium);
  element.set_global_coordinate_grid(&grid);
  element.set_integral_pointer(&rule);
  const std::vector<CartesianCoordinate> points = local_points(element, grid);
  Pressure ours(points.size()), plain(points.size());
  element.set_complex_pressure_pointers(ours.re.data(), ours.im.data());
  kesto::Wave wave = kesto::wave_or_default(medium);
  wave.attenuation *= -computation.growth;
  const PlainRule plain_rule = rule_of(n);
  const PlainField field = {wave, computation.factor(medium), plain_rule, points, plain.re.data(), plain.im.data()};

  std::vector<double> plain_times, ratios;
  double difference = 0;
  for (auto _ : state) {
    rule.gauss_quadrature();
    element.zerofill_complex_pressure();
    std::fill(plain.re.begin(), plain.re.end(), 0);
    std::fill(plain.im.begin(), plain.im.end(), 0);
    const double plain_time = own_seconds([&] { computation.plain(field); });
    const double time = own_seconds([&] { (element.*computation.compute)(); });
    difference = largest_difference(ours, plain);
    state.SetIterationTime(time);
    plain_times.push_back(plain_time);
    ratios.push_back(plain_time / time);
  }
  if (!(difference <= 1e-13)) state.SkipWithError("differs from the plain loops");
  double terms = 0;
  for (const CartesianCoordinate& p : points) terms += computation.terms(p, n);
  const double plain_time = median(plain_times) / terms, time = plain_time / median(ratios);
  state.counters["ns/term"] = time * 1e9;
  state.counters["plain"] = plain_time * 1e9;
  state.counters["speedup"] = median(ratios);
  state.counters["cycles"] = time * cycles_per_second() * static_cast<double>(target);
  state.counters["terms"] = terms / static_cast<double>(points.size());
  state.counters["difference"] = difference;
}

// The throughput of operations that do not wait for each other.
constexpr int chains = 12, rounds = 20000;

enum class Operation { multiply_add, square_root, divide, square_root_and_divide };

template <class T, Operation operation>
KESTO_INLINE double operate() {
  constexpr bool has_root = operation == Operation::square_root || operation == Operation::square_root_and_divide;
  constexpr bool has_quotient = operation == Operation::divide || operation == Operation::square_root_and_divide;
  kesto::Double<T> a[chains], b[chains];
  for (int i = 0; i < chains; ++i) a[i] = b[i] = kesto::broadcast<T>(1.5 + i);
  const auto factor = kesto::broadcast<T>(0.999), addend = kesto::broadcast<T>(0.001);
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < chains; ++i) {
      if constexpr (operation == Operation::multiply_add) a[i] = kesto::multiply_add<T>(a[i], factor, addend);
      if constexpr (has_root) a[i] = kesto::sqrt<T>(a[i]);
      if constexpr (has_quotient) b[i] = 1.25 / b[i];
    }
  }
  double sum = 0;
  for (int i = 0; i < chains; ++i) sum += a[i][0] + b[i][1];
  return sum;
}

template <Operation operation>
struct Operate {
  using Signature = void(double& result);
  template <class T>
  KESTO_INLINE static void run(double& result) {
    result = operate<T, operation>();
  }
};

void bound(benchmark::State& state, void (*body)(double&)) {
  std::vector<double> cycles;
  for (auto _ : state) {
    const double time = own_seconds([&] {
      double result = 0;
      body(result);
      benchmark::DoNotOptimize(result);
    });
    state.SetIterationTime(time);
    cycles.push_back(time * cycles_per_second() / rounds / chains);
  }
  state.counters["cycles"] = median(cycles);
}

template <Operation operation>
void register_bound(const std::string& name) {
  for (const VectorTarget target : kesto::all_vector_targets) {
    if (!kesto::is_available(target)) continue;
    benchmark::RegisterBenchmark((name + "/" + kesto::name_of(target)).c_str(), bound,
                                 kesto::kernel_on<Operate<operation>>(target))
        ->UseManualTime()
        ->Iterations(21);
  }
}

void register_bounds() {
  register_bound<Operation::multiply_add>("bound/multiply_add");
  register_bound<Operation::square_root>("bound/square_root");
  register_bound<Operation::divide>("bound/divide");
  register_bound<Operation::square_root_and_divide>("bound/square_root_and_divide");
}

struct Size {
  int n, across, along;
};

void register_fields() {
  static const std::vector<Computation> all = computations();
  for (const Computation& computation : all) {
    const std::vector<Size> sizes = computation.rayleigh ? std::vector<Size>{{16, 16, 12}, {50, 8, 8}}
                                                         : std::vector<Size>{{16, 40, 28}, {50, 28, 20}, {200, 20, 16}};
    for (const bool lossy : {false, true}) {
      for (const Size& size : sizes) {
        for (const VectorTarget target : kesto::all_vector_targets) {
          if (!kesto::is_available(target)) continue;
          const std::string name = computation.name + (lossy ? "/lossy/N:" : "/lossless/N:") + std::to_string(size.n) +
                                   "/" + kesto::name_of(target);
          benchmark::RegisterBenchmark(name.c_str(),
                                       [=, &computation](benchmark::State& state) {
                                         measure(state, computation, lossy, size.n, size.across, size.along, target);
                                       })
              ->Unit(benchmark::kMillisecond)
              ->UseManualTime()
              ->Iterations(9);
        }
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  register_fields();
  register_bounds();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
