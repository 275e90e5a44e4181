// How many abscissas the fast nearest method takes: near the face and finely spaced about the rim, where its integrand
// peaks, and at higher frequencies, where the phase runs faster along the rim.
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
int abscissas_for(const Geometry& geometry, const Fluid& fluid, const Points& points, const Field& reference,
                  double accuracy) {
  const auto reached = [&](int n) {
    return error_of(library_field(geometry, fluid, points, n, &Transducer::fnm_cw), reference) <= accuracy;
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

void near_the_face(Report& report, Table& table, const Geometry& geometry) {
  int at_quarter = 0;
  for (const int part : {4, 16, 64, 256}) {
    const Points points = at_height(geometry, water.wavelength() / part);
    const Field reference = rayleigh_sum(*geometry.face, water, points);
    const auto abscissas = [&](double accuracy) { return abscissas_for(geometry, water, points, reference, accuracy); };
    const int usual = abscissas(1e-3), most = abscissas(1e-10);
    table.row("%s,1/%d,%d,%d,%d", geometry.name.c_str(), part, abscissas(1e-2), usual, most);
    if (part == 4) at_quarter = usual;
    const std::string name = geometry.name + ", at 1/" + std::to_string(part) + " wavelength: ";
    report.add({name + std::to_string(usual) + ", and " + std::to_string(most) + " for 1e-10",
                most > most_abscissas ? NAN : static_cast<double>(usual) / at_quarter, 2.5});
    if (report.quick && part == 16) return;
  }
}

// From one end of the rim to the other the phase runs through 2 k a at most; a Gauss rule takes two radians an
// abscissa, and a few more.
void by_frequency(Report& report, Table& table, const Geometry& geometry) {
  const Points points = every(geometry.plane, report.quick ? 29 : 5);
  for (const double megahertz : {0.25, 0.5, 1.0, 2.0, 4.0}) {
    const Fluid fluid = {megahertz * 1e6, water.soundspeed, water.density, 0};
    const Field reference = rayleigh_sum(*geometry.face, fluid, points);
    const int n = abscissas_for(geometry, fluid, points, reference, 1e-3);
    const double ka = fluid.k() * geometry.radius;
    table.row("%s,%g,%.1f,%d,%d", geometry.name.c_str(), megahertz, ka, n,
              abscissas_for(geometry, fluid, points, reference, 1e-10));
    char name[80];
    std::snprintf(name, sizeof name, "%s, k a = %.0f: %d for 0.1 %%, over k a + 10", geometry.name.c_str(), ka, n);
    report.add({name, n / (ka + 10), 1});
    if (report.quick && megahertz >= 1) return;
  }
}

}  // namespace

void abscissa_cases(Report& report) {
  report.heading("F  near the face and its rim: abscissas for 0.1 %, over what a quarter of a wavelength takes");
  Table heights(report.path("near_face.csv"), "geometry,wavelengths,abscissas_1e-2,abscissas_1e-3,abscissas_1e-10");
  for (const Geometry& geometry : geometries()) near_the_face(report, heights, geometry);
  heights.close();

  report.heading("F  by frequency: abscissas, a the radius of the circle about the face");
  Table frequencies(report.path("frequency.csv"), "geometry,megahertz,ka,abscissas_1e-3,abscissas_1e-10");
  for (const Geometry& geometry : geometries()) by_frequency(report, frequencies, geometry);
  frequencies.close();
}

}  // namespace kesto::validation
