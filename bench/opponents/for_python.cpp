// The library's side of the comparison: whole calls, objects and rule included, as a user makes them.
#include <exception>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "heat/bioheat_solver.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

int field_of(Transducer&& element, int nodes, const double* x, const double* z, double* re, double* im) {
  CoordinateGrid grid;  // x and z as first, last, step; y = 0
  grid.RegularCoordinateGrid(x[0], x[1], 0, 0, z[0], z[1], x[2], 1, z[2]);
  Medium water;
  water._f0 = 1e6, water._soundspeed = 1500, water._rho_density = 1000;
  NumericalIntegration rule;
  rule.allocate_memory(nodes);
  rule.gauss_quadrature();
  element.set_medium(&water);
  element.set_global_coordinate_grid(&grid);
  element.set_integral_pointer(&rule);
  element.set_complex_pressure_pointers(re, im);
  return element.fnm_cw() == 0 ? grid.npoints : -1;
}

}  // namespace

// Adds the field of a face that moves with 1 m/s, x fastest. Returns the number of points, or -1.
extern "C" __attribute__((visibility("default"))) int kesto_field(const char* face, double size, double other,
                                                                  int nodes, const double* x, const double* z,
                                                                  double* re, double* im) {
  try {
    switch (face[0]) {
      case 'd': return field_of(CircularTransducer(size, 1, 0), nodes, x, z, re, im);
      case 'r': return field_of(RectangularTransducer(size, other, 1, 0), nodes, x, z, re, im);
      case 'b': return field_of(SphericalTransducer(size, other, 1, 0), nodes, x, z, re, im);
      default: return -1;
    }
  } catch (const std::exception&) {
    return -1;
  }
}

// The steady rise on a cube of n points a side, for a source alpha |p|^2 / (rho c) with alpha = rho c = 1.
extern "C" __attribute__((visibility("default"))) int kesto_heat(int n, double step, double perfusion,
                                                                 double blood_heat, double conductivity, int sweeps,
                                                                 const double* pressure, const double* zeros,
                                                                 double* scratch, double* rise) {
  try {
    kesto::solve_steady_bioheat({n, n, n, step, step, step, 1, 1, perfusion, blood_heat, conductivity, sweeps},
                                pressure, zeros, scratch, rise);
    return 0;
  } catch (const std::exception&) {
    return -1;
  }
}

extern "C" __attribute__((visibility("default"))) const char* kesto_vectors() {
  return kesto::name_of(kesto::chosen_vector_target());
}
