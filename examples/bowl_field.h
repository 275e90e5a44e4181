// The continuous-wave pressure of a focused bowl in a lossless fluid, by the fast nearest method.
//
// Apex of the bowl at z = 0, its axis along z. Time dependence e^{+jwt}.
#pragma once

#include <complex>
#include <vector>

#include "core/coordinate_grid.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "examples/grid.h"
#include "transducers/spherical_transducer.h"

namespace kesto::example {

struct FocusedBowl {
  double curvature_radius;   // m
  double aperture_diameter;  // m
  double frequency;          // Hz
  double velocity;           // amplitude of the velocity normal to the surface, uniform, m/s
  double soundspeed;         // m/s
  double density;            // kg/m^3
};

class BowlField {
 public:
  // `abscissas`: of the integral along the half rim.
  BowlField(const FocusedBowl& bowl, int abscissas);

  std::complex<double> on_axis(double z);                    // Pa
  std::vector<std::complex<double>> on(const Grid& points);  // Pa

 private:
  std::vector<std::complex<double>> on(CoordinateGrid& points);

  SphericalTransducer shell_;
  Medium fluid_;
  NumericalIntegration rule_;
};

struct AxialProfile {
  double focal_pressure;  // |p| at the centre of curvature, Pa
  double peak_pressure;   // largest |p|, Pa
  double peak_z;          // and its place, m
  double near_z, far_z;   // where |p| is half the peak (-6 dB), on either side of it, m
};
AxialProfile axial_profile(const FocusedBowl& bowl, BowlField& field);

}  // namespace kesto::example
