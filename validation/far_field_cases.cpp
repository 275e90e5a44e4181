// The far field: Fraunhofer patterns, off by what falls with the inverse of the distance.
#include <cmath>

#include "transducers/rectangular_transducer.h"
#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr int nodes = 256;
constexpr double azimuth = 0.6;

Points arc(double distance, const std::vector<double>& angles) {
  Points points;
  for (const double angle : angles) points.push_back({distance * std::sin(angle), 0, distance * std::cos(angle)});
  return turned(points, azimuth);
}

Field fraunhofer(const Geometry& geometry, const Fluid& fluid, double distance, const std::vector<double>& angles) {
  Field field;
  for (const double angle : angles) field.push_back(far_field(geometry, fluid, distance, angle, azimuth));
  return field;
}

void far_field_of(Report& report, Table& table, Table& patterns, const Geometry& geometry) {
  // Nothing is far before the face's square over the wavelength.
  const double unit = geometry.radius * geometry.radius / water.wavelength();
  const std::vector<double> angles = spaced(0, 85 * pi / 180, report.quick ? 18 : 171);
  double previous = 0, previous_farfield = 0;
  for (const double times : {16, 32, 64, 128, 256}) {
    const double distance = times * unit;
    const bool last = times == 256;
    const Field near = library_field(geometry, water, arc(distance, angles), nodes, &Transducer::fnm_cw);
    const Field far = fraunhofer(geometry, water, distance, angles);
    const double error = error_of(near, far);
    table.row("%s,fraunhofer,%g,%.4g", geometry.name.c_str(), times, error);
    if (last) {
      report.add({geometry.name + ", fnm_cw at 256 a^2 / wavelength", error, 0.02});
      report.add({geometry.name + ", order of its error in 1 / distance, less 1",
                  std::abs(std::log2(previous / error) - 1), 0.02});
      const double peak = largest(far);
      for (std::size_t i = 0; i < angles.size(); ++i) {
        patterns.row("%s,%.6g,%.6g,%.6g", geometry.name.c_str(), angles[i] * 180 / pi, std::abs(near[i]) / peak,
                     std::abs(far[i]) / peak);
      }
    }
    previous = error;
    if (geometry.name != "rectangle") continue;
    const Field approximation = library_field(geometry, water, arc(distance, angles), 1, &Transducer::farfield_cw);
    const double error_of_approximation = error_of(near, approximation);
    table.row("%s,farfield_cw,%g,%.4g", geometry.name.c_str(), times, error_of_approximation);
    if (last) {
      report.add({"rectangle, farfield_cw against its formula", error_of(approximation, far),
                  2 * phase_error_of_core * water.k() * distance});
      const Field attenuated = library_field(geometry, lossy, arc(unit, angles), 1, &Transducer::farfield_cw);
      report.add({"rectangle, farfield_cw against its formula, lossy",
                  error_of(attenuated, fraunhofer(geometry, lossy, unit, angles)), 1e-12});
      report.add({"rectangle, order of fnm_cw less farfield_cw in 1 / distance, less 1",
                  std::abs(std::log2(previous_farfield / error_of_approximation) - 1), 0.02});
    }
    previous_farfield = error_of_approximation;
  }
}

}  // namespace

void far_field_cases(Report& report) {
  report.heading("C  the far field against Fraunhofer patterns: error over the largest amplitude at the distance");
  Table table(report.path("far_field.csv"), "geometry,against,distance_over_a2_per_wavelength,error");
  Table patterns(report.path("patterns.csv"), "geometry,angle_degrees,fnm_cw,fraunhofer");
  for (const Geometry& geometry : geometries()) far_field_of(report, table, patterns, geometry);
  table.close();
  patterns.close();
}

}  // namespace kesto::validation
