// The fast nearest method on the axis, where closed forms stand.
#include <cmath>
#include <string>

#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr double rounding = 1e-12;
constexpr int nodes = 256;

const char* name_of(const Fluid& fluid) { return fluid.attenuation == 0 ? "lossless" : "lossy"; }

// From the face (z = 0) past the centre of curvature, or thirty wavelengths off.
std::vector<double> heights(const Geometry& geometry, bool quick) {
  std::vector<double> z = spaced(0, geometry.roc > 0 ? 2 * geometry.roc : 30 * water.wavelength(), quick ? 41 : 401);
  if (geometry.roc > 0) z[z.size() / 2] = geometry.roc;
  return z;
}

Field closed_form(const Geometry& geometry, const Fluid& fluid, const std::vector<double>& z) {
  Field field;
  for (const double height : z) {
    // At the centre of curvature itself the library's value has the Rayleigh integral's factor.
    const bool at_focus = geometry.roc > 0 && height == geometry.roc;
    field.push_back(geometry.on_axis(fluid, height) / (at_focus ? fluid.nearest_over_rayleigh() : 1.0));
  }
  return field;
}

void compare_axis(Report& report, Table& table, const Geometry& geometry, const Fluid& fluid) {
  const std::vector<double> z = heights(geometry, report.quick);
  const Field field = library_field(geometry, fluid, on_axis(z), nodes, &Transducer::fnm_cw);
  const Field reference = closed_form(geometry, fluid, z);
  for (std::size_t i = 0; i < z.size(); ++i) {
    table.row("%s,%s,%.9g,%.17g,%.17g,%.17g,%.17g,%.3g", geometry.name.c_str(), name_of(fluid), z[i], field[i].real(),
              field[i].imag(), reference[i].real(), reference[i].imag(), std::abs(field[i] - reference[i]));
  }
  report.add({geometry.name + ", " + name_of(fluid), error_of(field, reference), rounding});
}

// Over points of the face off its centre, where no symmetry helps.
void compare_rectangle_over_face(Report& report, const Geometry& rectangle, const Fluid& fluid) {
  Points points;
  Field reference;
  for (const double z : spaced(0, 30 * fluid.wavelength(), 101)) {
    points.push_back({0.3 * rectangle_width, -0.2 * rectangle_height, z});
    reference.push_back(rectangle_over_face(fluid, rectangle_width, rectangle_height, points.back()));
  }
  const Field field = library_field(rectangle, fluid, points, nodes, &Transducer::fnm_cw);
  report.add({"rectangle off its centre, " + std::string(name_of(fluid)), error_of(field, reference), rounding});
}

// The rim integral beside the centre of curvature is a quotient of two small numbers.
void compare_beside_focus(Report& report, const Geometry& geometry, double offset, double limit) {
  const std::vector<double> z = {geometry.roc - offset, geometry.roc + offset};
  const Field field = library_field(geometry, lossy, on_axis(z), nodes, &Transducer::fnm_cw);
  char name[80];
  std::snprintf(name, sizeof name, "%s, %.0e m before and behind the focus", geometry.name.c_str(), offset);
  report.add({name, error_of(field, {geometry.on_axis(lossy, z[0]), geometry.on_axis(lossy, z[1])}), limit});
}

}  // namespace

void axis_cases(Report& report) {
  report.heading("A  fnm_cw on the axis against closed forms: error over the largest amplitude");
  Table table(report.path("axis.csv"), "geometry,fluid,z,real,imag,closed_real,closed_imag,difference");
  for (const Geometry& geometry : geometries()) {
    for (const Fluid& fluid : {water, lossy}) {
      compare_axis(report, table, geometry, fluid);
      if (geometry.name == "rectangle") compare_rectangle_over_face(report, geometry, fluid);
    }
    if (geometry.roc > 0) {
      compare_beside_focus(report, geometry, 1e-6, 1e-10);
      compare_beside_focus(report, geometry, 1e-9, 1e-6);
    }
  }
  table.close();
}

}  // namespace kesto::validation
