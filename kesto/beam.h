// What a continuous-wave field is described by.
#pragma once

#include <iosfwd>
#include <string>

#include "kesto/pressure.h"

namespace kesto {

// Where the amplitude has fallen to a fraction of the peak, on both sides of it along one axis.
struct Extent {
  double from, to;  // coordinates, m; NaN where the grid ends before
  double length() const { return to - from; }
};

// Places and extents are refined by computing the field anew between the grid's points, within the grid's box, along
// the global axes: z is taken for the direction of the beam.
struct Beam {
  double frequency;  // Hz
  double peak;       // Pa
  Point place;       // m
  // Root of a half and half the peak, through it along x, y, z; NaN along an axis of one value.
  Extent minus_3_db[3], minus_6_db[3];
  double intensity;                               // spatial peak of |p|^2 / (2 rho c), W/m^2
  double mechanical_index;                        // peak in MPa over the root of the frequency in MHz
  double derated_peak, derated_mechanical_index;  // by 0.3 dB/(cm MHz) from z = 0 on; of the grid's points
  Point derated_place;
  // Through the plane z = place.z within the grid's x and y, from pressure and velocity; and what leaves the faces:
  // half the mean of pressure times velocity there. NaN if the grid is no box with three values along x and y.
  double power, radiated_power;  // W
};

// Of a field that `pressure` has computed; `index` is that of the frequency.
Beam beam(const Field& field, std::size_t index = 0);

std::ostream& operator<<(std::ostream& out, const Beam& beam);

}  // namespace kesto
