// A published bowl in water: Aubry et al., J. Acoust. Soc. Am. 152(2), 1003 (2022), free-water benchmark.
#include <cmath>
#include <memory>
#include <utility>

#include "transducers/spherical_transducer.h"
#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr Fluid bowl_water = {500e3, 1500, 1000, 0};
constexpr double aperture_radius = 32e-3, roc = 64e-3, velocity = 0.04;
constexpr int nodes = 200;

struct AxialValues {
  double at_focus, peak;         // Pa
  double peak_z, near_z, far_z;  // m; -6 dB on either side of the peak
};
constexpr AxialValues published = {1077487.63, 1094411.02, 61.9315e-3, 51.763e-3, 78.011e-3};

constexpr double pressure_limit = 1e-4;  // relative
constexpr double place_limit = 0.05;     // mm

Geometry bowl() {
  Geometry g;
  g.name = "bowl";
  g.make = [](double amplitude, double phase) {
    return std::make_unique<SphericalTransducer>(aperture_radius, roc, amplitude, phase);
  };
  g.face = std::make_shared<SphericalZone>(0, aperture_radius, roc);
  g.roc = roc;
  return g;
}

// |p| by the fast nearest method, Pa.
double amplitude(const Point& p) {
  return velocity * std::abs(library_field(bowl(), bowl_water, {p}, nodes, &Transducer::fnm_cw).front());
}
double axial_amplitude(double z) { return amplitude({0, 0, z}); }

// Where f, with one maximum between a and b, has it: golden section.
template <class F>
double place_of_maximum(F f, double a, double b) {
  const double golden = (std::sqrt(5.0) - 1) / 2;
  double left = b - golden * (b - a), right = a + golden * (b - a);
  double at_left = f(left), at_right = f(right);
  while (b - a > 1e-9) {
    if (at_left < at_right) {
      a = left;
      left = std::exchange(right, a + golden * (b - a));
      at_left = std::exchange(at_right, f(right));
    } else {
      b = right;
      right = std::exchange(left, b - golden * (b - a));
      at_right = std::exchange(at_left, f(left));
    }
  }
  return (a + b) / 2;
}

// Where f crosses `level` between `above`, where it is larger, and `below`: bisection.
template <class F>
double place_of_level(F f, double level, double above, double below) {
  while (std::abs(above - below) > 1e-9) {
    const double middle = (above + below) / 2;
    (f(middle) > level ? above : below) = middle;
  }
  return (above + below) / 2;
}

AxialValues axial_values() {
  AxialValues v;
  v.at_focus = axial_amplitude(roc);
  v.peak_z = place_of_maximum(axial_amplitude, 0.85 * roc, 1.05 * roc);
  v.peak = axial_amplitude(v.peak_z);
  v.near_z = place_of_level(axial_amplitude, v.peak / 2, v.peak_z, 0.7 * roc);
  v.far_z = place_of_level(axial_amplitude, v.peak / 2, v.peak_z, 1.5 * roc);
  return v;
}

void compare_with_published(Report& report) {
  const AxialValues v = axial_values();
  Table table(report.path("bowl_values.csv"), "quantity,computed,published");
  const auto pressure = [&](const char* what, double value, double reference) {
    table.row("%s (Pa),%.4f,%.2f", what, value, reference);
    report.add({std::string(what) + ", relative", std::abs(value / reference - 1), pressure_limit});
  };
  const auto place = [&](const char* what, double value, double reference) {
    table.row("%s (mm),%.6f,%.4f", what, value * 1e3, reference * 1e3);
    report.add({std::string(what) + ", mm", std::abs(value - reference) * 1e3, place_limit});
  };
  pressure("|p| at the focus", v.at_focus, published.at_focus);
  pressure("peak |p|", v.peak, published.peak);
  place("z of the peak", v.peak_z, published.peak_z);
  place("z of -6 dB before the peak", v.near_z, published.near_z);
  place("z of -6 dB behind the peak", v.far_z, published.far_z);
  table.close();
}

void write_axis(Report& report) {
  Table table(report.path("bowl_axis.csv"), "z_mm,amplitude_Pa");
  const std::vector<double> z = spaced(0, 0.12, 1201);
  const Field field = library_field(bowl(), bowl_water, on_axis(z), nodes, &Transducer::fnm_cw);
  for (std::size_t i = 0; i < z.size(); ++i) table.row("%.4f,%.4f", z[i] * 1e3, velocity * std::abs(field[i]));
  table.close();
}

// 120 mm by 70 mm every 0.5 mm; a fine Rayleigh sum at points throughout.
void compare_plane(Report& report) {
  Points plane;
  for (const double z : spaced(0, 120e-3, 241)) {
    for (const double x : spaced(-35e-3, 35e-3, 141)) plane.push_back({x, 0, z});
  }
  const Field field = library_field(bowl(), bowl_water, plane, nodes, &Transducer::fnm_cw);
  Table table(report.path("bowl_plane.csv"), "z_mm,x_mm,amplitude_Pa");
  for (std::size_t i = 0; i < plane.size(); ++i) {
    table.row("%.3f,%.3f,%.4f", plane[i].z * 1e3, plane[i].x * 1e3, velocity * std::abs(field[i]));
  }
  table.close();

  Points some;
  Field there;
  const std::size_t stride = report.quick ? 997 : 97;  // coprime to the rows
  for (std::size_t i = 0; i < plane.size(); i += stride) {
    const Point& p = plane[i];
    const bool inside_sphere = std::hypot(p.x, p.z - roc) < roc;
    const bool before_rim = p.z > roc - std::sqrt(roc * roc - aperture_radius * aperture_radius);
    if (!inside_sphere && !before_rim) continue;
    some.push_back(p);
    there.push_back(field[i]);
  }
  const Field reference = rayleigh_sum(*bowl().face, bowl_water, some);
  const std::string name = "plane of 241 x 141 points, at " + std::to_string(some.size()) + " against the fine sum";
  report.add({name, error_of(there, reference), 1e-12});
}

}  // namespace

void bowl_cases(Report& report) {
  report.heading("D  the published bowl, by fnm_cw: 500 kHz, radius of curvature and aperture 64 mm, 0.04 m/s");
  compare_with_published(report);
  compare_plane(report);
  if (!report.quick) write_axis(report);
}

}  // namespace kesto::validation
