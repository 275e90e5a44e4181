#include "validation/arrivals.h"

#include <algorithm>
#include <cmath>

namespace kesto::validation {

std::vector<Geometry> bodies_of_revolution() {
  std::vector<Geometry> bodies;
  for (const Geometry& geometry : geometries()) {
    if (geometry.name != "rectangle") bodies.push_back(geometry);
  }
  return bodies;
}

Points points_in_time(const Geometry& geometry) {
  if (geometry.name == "rectangle") {  // on the axis, over the face, an edge and a corner, beside either edge and both
    const double a = rectangle_width / 2, b = rectangle_height / 2;
    return {{0, 0, 5e-3},  {0, 0, 40e-3},      {3e-3, 2e-3, 4e-3},  {a, 1e-3, 6e-3},      {-2e-3, b, 5e-3},
            {a, -b, 4e-3}, {7e-3, 3e-3, 2e-3}, {9e-3, 12e-3, 8e-3}, {1e-3, -11e-3, 3e-3}, {2e-3, -3e-3, 60e-3}};
  }
  if (geometry.roc == 0) {
    return {{0, 0, 5e-3},    {0, 0, 40e-3},      {3e-3, 2e-3, 4e-3}, {7.5e-3, 0, 6e-3},
            {0, 3e-3, 2e-3}, {9e-3, 5e-3, 8e-3}, {12e-3, 0, 2e-3},   {2e-3, -3e-3, 60e-3}};
  }
  // On the normals at the rims, 5 mm before the face.
  const auto above_rim = [&](double radius) -> Point {
    const double s = 5e-3, part = (geometry.roc - s) / geometry.roc;
    return {radius * part, 0, geometry.roc - part * std::sqrt(geometry.roc * geometry.roc - radius * radius)};
  };
  return {{0, 0, 10e-3},        {0, 0, 45e-3},           {5e-3, 3e-3, 8e-3},   above_rim(15e-3),    above_rim(6e-3),
          {18e-3, 4e-3, 12e-3}, {0.7e-3, 0.8e-3, 25e-3}, {0.1e-3, 0, 24.8e-3}, {2e-3, 1e-3, 40e-3}, {12e-3, 0, 35e-3}};
}

double depth_of(const Geometry& geometry, double radius) {
  const double roc = geometry.roc;
  return roc > 0 ? roc - std::sqrt(roc * roc - radius * radius) : 0;
}

double to_rim_from_axis(const Geometry& geometry, double radius, double z) {
  return std::hypot(radius, z - depth_of(geometry, radius));
}

std::vector<double> arrivals(const Geometry& geometry, const Point& p) {
  if (geometry.name == "rectangle") {
    std::vector<double> times = {std::max(p.z, 0.0) / water.soundspeed};
    for (const double dx : {rectangle_width / 2 - p.x, rectangle_width / 2 + p.x}) {
      times.push_back(std::hypot(dx, p.z) / water.soundspeed);
      for (const double dy : {rectangle_height / 2 - p.y, rectangle_height / 2 + p.y}) {
        times.push_back(std::hypot(dy, p.z) / water.soundspeed);
        times.push_back(std::hypot(dx, dy, p.z) / water.soundspeed);
      }
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
  }
  const double r = std::hypot(p.x, p.y), centre = std::hypot(r, p.z - geometry.roc);
  std::vector<double> distances = {p.z};
  if (geometry.roc > 0) distances = {geometry.roc - centre, geometry.roc + centre};
  for (const double radius : {geometry.hole, geometry.radius}) {
    if (radius == 0) continue;
    const double height = p.z - depth_of(geometry, radius);
    distances.push_back(std::hypot(r - radius, height));
    distances.push_back(std::hypot(r + radius, height));
  }
  for (double& d : distances) d = std::max(d, 0.0) / water.soundspeed;
  std::sort(distances.begin(), distances.end());
  return distances;
}

}  // namespace kesto::validation
