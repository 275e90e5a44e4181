// The geometries in time: where their fields are looked at, and when sound arrives there.
#pragma once

#include <vector>

#include "validation/geometries.h"

namespace kesto::validation {

// Disc, annulus, shell, spherical annulus.
std::vector<Geometry> bodies_of_revolution();

// Over the face, on its axis, above its rims, beside it, at, beside and past the focus or far off; off the plane y = 0
// too. The focus itself is not among them.
Points points_in_time(const Geometry& geometry);

// From the apex to the plane of a rim.
double depth_of(const Geometry& geometry, double radius);

// The distance of the axial point z from a rim; from the face itself for a radius of 0.
double to_rim_from_axis(const Geometry& geometry, double radius, double z);

// When the impulse response may jump or bend, ascending (s): the arrivals along the normals of the face and from the
// nearest and the farthest point of each rim; of a rectangle, from the feet on its edges' lines and from its corners.
std::vector<double> arrivals(const Geometry& geometry, const Point& p);

}  // namespace kesto::validation
