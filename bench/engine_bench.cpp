// Fields to a stated accuracy beside fnm_cw with the smallest number of abscissas that serves the whole grid at the
// same accuracy, timed in turn within one run by the thread's own time.
//
//   engine_bench [planes | array | all]
//
// Accuracies are of the field's peak: rho c v times 2 (disc), 1 (rectangle) or the focal gain (bowl); fnm_cw is allowed
// that part of the peak that it computes. Columns: abscissas of fnm_cw, ns a point of fnm_cw, of the engine on the grid
// and on its points in random order, ratios; terms a point and the part of them in single precision; error found and
// error bound over the error asked for.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/timing.h"
#include "core/constants.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "kesto/engine/engine.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using namespace kesto;
using Complex = std::complex<double>;

constexpr double c = 1500, rho = 1000;

struct Field {
  explicit Field(std::size_t n) : re(n), im(n) {}
  void clear() {
    std::fill(re.begin(), re.end(), 0);
    std::fill(im.begin(), im.end(), 0);
  }
  double largest() const {
    double most = 0;
    for (std::size_t i = 0; i < re.size(); ++i) most = std::max(most, std::hypot(re[i], im[i]));
    return most;
  }
  double difference(const Field& other) const {
    double most = 0;
    for (std::size_t i = 0; i < re.size(); ++i) {
      const double d = std::hypot(re[i] - other.re[i], im[i] - other.im[i]);
      if (!(d <= most)) most = d;
    }
    return most;
  }
  std::vector<double> re, im;
};

std::vector<double> spaced(double from, double to, int n) {
  std::vector<double> v;
  for (int i = 0; i < n; ++i) v.push_back(from + (to - from) * i / std::max(n - 1, 1));
  return v;
}

// The element classes, many elements of one shape.
class Classes {
 public:
  Classes(std::vector<std::unique_ptr<Transducer>> elements, double frequency, CoordinateGrid& grid)
      : elements_(std::move(elements)) {
    medium_._f0 = frequency;
    medium_._soundspeed = c;
    medium_._rho_density = rho;
    for (auto& e : elements_) {
      e->set_medium(&medium_);
      e->set_integral_pointer(&rule_);
      e->set_global_coordinate_grid(&grid);
    }
  }
  void compute(int n, Field& out) {
    if (rule_.get_npoints() != n) rule_.allocate_memory(n);
    out.clear();
    for (auto& e : elements_) {
      rule_.gauss_quadrature();
      e->set_complex_pressure_pointers(out.re.data(), out.im.data());
      e->fnm_cw();
    }
  }
  // The smallest n that keeps every point within `allowed` of the field at n = 512.
  int smallest(double allowed, std::size_t points) {
    Field reference(points), tried(points);
    compute(512, reference);
    int serves = 512, fails = 1;
    while (serves - fails > 1) {
      const int n = (serves + fails) / 2;
      compute(n, tried);
      (tried.difference(reference) <= allowed ? serves : fails) = n;
    }
    return serves;
  }

 private:
  Medium medium_;
  NumericalIntegration rule_;
  std::vector<std::unique_ptr<Transducer>> elements_;
};

struct Plane {
  const char* name;
  Face face;
  double frequency, half_width, z_from, z_to, peak;  // peak over rho c v
};

std::unique_ptr<Transducer> element_of(const Face& f) {
  if (f.kind == Face::Kind::disc) return std::make_unique<CircularTransducer>(f.outer, 1, 0);
  if (f.kind == Face::Kind::rectangle) return std::make_unique<RectangularTransducer>(2 * f.outer, 2 * f.inner, 1, 0);
  return std::make_unique<SphericalTransducer>(f.outer, f.curvature, 1, 0);
}

void bench_plane(const Plane& plane) {
  constexpr int nx = 200, nz = 400;
  constexpr std::size_t n = nx * nz;
  const std::vector<double> x = spaced(-plane.half_width, plane.half_width, nx), y = {0},
                            z = spaced(plane.z_from, plane.z_to, nz);
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(x[0], x[nx - 1], 0, 0, z[0], z[nz - 1], x[1] - x[0], 1, z[1] - z[0]);
  std::vector<double> px, py, pz;
  std::vector<CartesianCoordinate> points;
  grid.for_each_point([&](int, const CartesianCoordinate& p) { points.push_back(p); });
  std::vector<std::size_t> order(points.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  for (const std::size_t i : order) px.push_back(points[i].x), py.push_back(points[i].y), pz.push_back(points[i].z);
  if (points.size() != n) std::printf("the class's grid has %zu points\n", points.size());

  std::vector<std::unique_ptr<Transducer>> one;
  one.push_back(element_of(plane.face));
  Classes classes(std::move(one), plane.frequency, grid);
  const FieldElement element;
  for (const double accuracy : {1e-2, 1e-4, 1e-6}) {
    Field reference(n), ours(n), random(n);
    classes.compute(512, reference);
    const int smallest = classes.smallest(accuracy * rho * c * plane.peak, n);
    const FieldRequest request = {plane.frequency, {c, rho, 0}, accuracy * plane.peak};
    const FieldPoints box = FieldPoints::box(nx, x.data(), 1, y.data(), nz, z.data());
    const FieldPoints list = FieldPoints::list(n, px.data(), py.data(), pz.data());
    FieldCost cost;
    std::vector<double> fnm_times, times, random_times;
    for (int trial = 0; trial < 9; ++trial) {
      fnm_times.push_back(own_seconds([&] { classes.compute(smallest, ours); }));
      ours.clear(), random.clear();
      times.push_back(own_seconds([&] {
        cost = add_field(plane.face, &element, 1, box, request, {ours.re.data(), ours.im.data()});
      }));
      random_times.push_back(own_seconds([&] {
        add_field(plane.face, &element, 1, list, request, {random.re.data(), random.im.data()});
      }));
    }
    const double fnm = median(fnm_times) / n * 1e9, grid_time = median(times) / n * 1e9;
    const double random_time = median(random_times) / n * 1e9, allowed = accuracy * rho * c * plane.peak;
    std::printf("%-18s%8.0e%6d%9.1f%9.1f%9.1f%8.2f%8.2f%8.1f%8.2f%10.2g%8.2g%7.0f\n", plane.name, accuracy, smallest,
                fnm, grid_time, random_time, fnm / grid_time, grid_time / random_time, cost.terms / n,
                cost.terms_in_single_precision / cost.terms, ours.difference(reference) / allowed, cost.error / allowed,
                cost.points_on_graded_panels);
    std::fflush(stdout);
  }
}

void bench_planes() {
  const double k = 2 * kesto::pi * 1e6 / c;
  const Plane planes[] = {
      {"disc 1 MHz", Face::disc(7.5e-3), 1e6, 15e-3, 0.4e-3, 80e-3, 2},
      {"rectangle 1 MHz", Face::rectangle(5e-3, 10e-3), 1e6, 15e-3, 0.4e-3, 80e-3, 1},
      {"bowl 1 MHz", Face::bowl(15e-3, 40e-3), 1e6, 15e-3, 0.4e-3, 80e-3, k * (40e-3 - std::sqrt(1600e-6 - 225e-6))},
      {"disc 5 MHz", Face::disc(7.5e-3), 5e6, 15e-3, 0.4e-3, 80e-3, 2},
      {"rectangle 5 MHz", Face::rectangle(5e-3, 10e-3), 5e6, 15e-3, 0.4e-3, 80e-3, 1},
      {"bowl 5 MHz", Face::bowl(15e-3, 40e-3), 5e6, 15e-3, 0.4e-3, 80e-3,
       5 * k * (40e-3 - std::sqrt(1600e-6 - 225e-6))},
  };
  std::printf("%-18s%8s%6s%9s%9s%9s%8s%8s%8s%8s%10s%8s%7s\n", "200 x 400 points", "accuracy", "N", "fnm_cw", "engine",
              "random", "fnm/eng", "eng/rnd", "terms", "single", "err/acc", "bound", "graded");
  for (const Plane& plane : planes) bench_plane(plane);
}

// 256 elements of 0.3 x 12 mm, 5 MHz, focused 40 mm before the middle, on a plane of 1e5 points.
void bench_array() {
  constexpr int count = 256, nx = 250, nz = 400;
  constexpr double pitch = 0.33e-3, frequency = 5e6, accuracy = 1e-3;
  const double k = 2 * kesto::pi * frequency / c;
  const Face face = Face::rectangle(0.3e-3, 12e-3);
  std::vector<FieldElement> elements(count);
  const auto fill = [&](CoordinateGrid& grid) {
    std::vector<std::unique_ptr<Transducer>> classes;
    for (int e = 0; e < count; ++e) {
      const double at = (e - (count - 1) / 2.0) * pitch, phase = k * std::hypot(at, 40e-3);
      elements[std::size_t(e)].pose.centre[0] = at;
      elements[std::size_t(e)].velocity = std::polar(1.0, phase);
      classes.push_back(std::make_unique<RectangularTransducer>(0.3e-3, 12e-3, 1, phase));
      classes.back()->set_center(at, 0, 0);
    }
    return Classes(std::move(classes), frequency, grid);
  };
  const std::vector<double> y = {0};
  const auto run = [&](int across, int along, auto use) {
    const std::vector<double> x = spaced(-40e-3, 40e-3, across), z = spaced(1e-3, 80e-3, along);
    CoordinateGrid grid;
    grid.RegularCoordinateGrid(x[0], x.back(), 0, 0, z[0], z.back(), x[1] - x[0], 1, z[1] - z[0]);
    Classes classes = fill(grid);
    use(classes, FieldPoints::box(x.size(), x.data(), 1, y.data(), z.size(), z.data()));
  };
  int smallest = 0;
  double peak = 0;
  run(50, 41, [&](Classes& classes, const FieldPoints& points) {
    Field reference(points.size());
    classes.compute(256, reference);
    peak = reference.largest();
    smallest = classes.smallest(accuracy * peak, points.size());
  });
  run(nx, nz, [&](Classes& classes, const FieldPoints& points) {
    Field fnm(points.size()), ours(points.size());
    const double fnm_time = own_seconds([&] { classes.compute(smallest, fnm); });
    for (const bool safe : {true, false}) {  // errors that add up, or those of independent elements
      const double share = accuracy * peak / (rho * c) / (safe ? count : std::sqrt(count));
      const FieldRequest request = {frequency, {c, rho, 0}, share};
      FieldCost cost;
      std::vector<double> times;
      for (int trial = 0; trial < 3; ++trial) {
        ours.clear();
        times.push_back(own_seconds([&] {
          cost = add_field(face, elements.data(), elements.size(), points, request, {ours.re.data(), ours.im.data()});
        }));
      }
      const double time = median(times), n = static_cast<double>(points.size()) * count;
      std::printf(
          "256 elements, %s: fnm_cw N %d %.2f s, engine %.3f s (%.2f), %.1f ns and %.1f terms a point and "
          "element (%.2f single), found %.2g of the accuracy, bound %.2g\n",
          safe ? "bound" : "typical", smallest, fnm_time, time, fnm_time / time, time / n * 1e9, cost.terms / n,
          cost.terms_in_single_precision / cost.terms, ours.difference(fnm) / (accuracy * peak),
          cost.error / (accuracy * peak));
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "all";
  std::printf("%s, %.2f GHz\n", name_of(chosen_vector_target()), cycles_per_second() * 1e-9);
  if (what != "array") bench_planes();
  if (what != "planes") bench_array();
  return 0;
}
