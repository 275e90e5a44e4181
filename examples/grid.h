// A regular grid of points, the first dimension fastest, with one spacing for all three.
#pragma once

#include <array>
#include <cstddef>

namespace kesto::example {

struct Grid {
  std::array<std::size_t, 3> points;
  std::array<double, 3> origin;  // m, of the first point
  double spacing;                // m

  // The points of a lattice through `centre` that are no further from it than `half_extent` along any axis.
  static Grid around(const std::array<double, 3>& centre, const std::array<double, 3>& half_extent, double spacing) {
    Grid grid;
    grid.spacing = spacing;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto half_points = static_cast<std::size_t>(half_extent[axis] / spacing * (1 + 1e-12));
      grid.points[axis] = 2 * half_points + 1;
      grid.origin[axis] = centre[axis] - static_cast<double>(half_points) * spacing;
    }
    return grid;
  }

  std::size_t size() const { return points[0] * points[1] * points[2]; }
  std::size_t index(std::size_t i, std::size_t j, std::size_t k) const { return i + points[0] * (j + points[1] * k); }
  double coordinate(std::size_t axis, std::size_t n) const { return origin[axis] + static_cast<double>(n) * spacing; }

  // Of the n-th point, m.
  std::array<double, 3> position(std::size_t n) const {
    return {coordinate(0, n % points[0]), coordinate(1, n / points[0] % points[1]),
            coordinate(2, n / (points[0] * points[1]))};
  }
};

}  // namespace kesto::example
