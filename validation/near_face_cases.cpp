// How near to the face the fast nearest method stays cheap: the abscissas it takes at ever smaller heights, finely
// spaced about the rim, where its integrand peaks.
#include <cmath>
#include <string>

#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr int most_abscissas = 2048;

// At the height s along the normals, from the axis to beside the rim; above the rim itself at 1.
Points at_height(const Geometry& geometry, double s) {
  Points points;
  const double edge = geometry.name == "rectangle" ? rectangle_width / 2 : geometry.radius;
  for (const double part : {0.0, 0.5, 0.8, 0.9, 0.95, 0.99, 1.0, 1.01, 1.05, 1.1, 1.3}) {
    if (geometry.roc == 0) {
      points.push_back({part * edge, 0, s});
    } else {
      const double theta = part * std::asin(edge / geometry.roc), r = geometry.roc - s;
      points.push_back({r * std::sin(theta), 0, geometry.roc - r * std::cos(theta)});
    }
  }
  return points;
}

// By doubling and halving the interval; most_abscissas + 1 when they do not suffice.
int abscissas_for(const Geometry& geometry, const Points& points, const Field& reference, double accuracy) {
  const auto reached = [&](int n) {
    return error_of(library_field(geometry, water, points, n, &Transducer::fnm_cw), reference) <= accuracy;
  };
  int enough = 2;
  while (!reached(enough)) {
    if (enough == most_abscissas) return most_abscissas + 1;
    enough *= 2;
  }
  for (int too_few = enough / 2; enough - too_few > 1;) {
    const int middle = (enough + too_few) / 2;
    (reached(middle) ? enough : too_few) = middle;
  }
  return enough;
}

}  // namespace

void near_face_cases(Report& report) {
  report.heading("F  near the face and its rim: abscissas for 0.1 %, over what a quarter of a wavelength takes");
  Table table(report.path("near_face.csv"), "geometry,wavelengths,abscissas_1e-2,abscissas_1e-3,abscissas_1e-10");
  for (const Geometry& geometry : geometries()) {
    int at_quarter = 0;
    for (const int part : {4, 16, 64, 256}) {
      const Points points = at_height(geometry, water.wavelength() / part);
      const Field reference = rayleigh_sum(*geometry.face, water, points);
      const auto abscissas = [&](double accuracy) { return abscissas_for(geometry, points, reference, accuracy); };
      const int usual = abscissas(1e-3), most = abscissas(1e-10);
      table.row("%s,1/%d,%d,%d,%d", geometry.name.c_str(), part, abscissas(1e-2), usual, most);
      if (part == 4) at_quarter = usual;
      const std::string name = geometry.name + ", at 1/" + std::to_string(part) + " wavelength: ";
      report.add({name + std::to_string(usual) + ", and " + std::to_string(most) + " for 1e-10",
                  most > most_abscissas ? NAN : static_cast<double>(usual) / at_quarter, 2.5});
      if (report.quick && part == 16) break;
    }
  }
  table.close();
}

}  // namespace kesto::validation
