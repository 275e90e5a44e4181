// The error of both methods against the number of their nodes, near the face and above the rim included.
#include <cmath>

#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

struct Curve {
  const char* name;
  Method method;
  double terms_per_node;  // at n = 1
  int dimensions;
};

// Last error of the curve.
double write_curve(Table& table, const Geometry& geometry, const Points& points, const Field& reference,
                   const Curve& curve, int largest_n) {
  double error = 0;
  for (double step = 2; step < largest_n * 1.01; step *= std::sqrt(2)) {
    const int n = static_cast<int>(std::lround(step));
    Computation computation(geometry, water, points, n);
    error = error_of(computation.field(curve.method), reference);
    std::vector<double> seconds;
    for (int run = 0; run < 3; ++run) seconds.push_back(computation.seconds(curve.method));
    table.row("%s,%s,%d,%.6g,%.4g,%.4g", geometry.name.c_str(), curve.name, n,
              curve.terms_per_node * std::pow(n, curve.dimensions), error, median(seconds));
  }
  return error;
}

}  // namespace

void convergence_cases(Report& report) {
  report.heading("E  convergence: error of fnm_cw with 512 abscissas, over the largest amplitude");
  Table table(report.path("convergence.csv"), "geometry,method,n,terms,error,seconds");
  for (const Geometry& geometry : geometries()) {
    const Points points = every(geometry.plane, report.quick ? 5 : 1);
    const Field reference = rayleigh_sum(*geometry.face, water, points);
    const Curve nearest = {"fnm_cw", &Transducer::fnm_cw, geometry.rims, 1};
    report.add({geometry.name, write_curve(table, geometry, points, reference, nearest, 512), 1e-12});
    if (report.quick) continue;
    const Curve rayleigh = {"rayleigh_cw", &Transducer::rayleigh_cw, geometry.cells, 2};
    write_curve(table, geometry, points, reference, rayleigh, 512);
  }
  table.close();
}

}  // namespace kesto::validation
