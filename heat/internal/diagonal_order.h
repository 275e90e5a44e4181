// The order in which the solver stores a k-plane: diagonal by diagonal (i + j constant), i ascending within each.
//
// In this order the neighbours of a run of points of diagonal d are runs of the diagonals d - 1 and d + 1, and no two
// points of a diagonal are neighbours, so that a whole diagonal can be relaxed in vector lanes while every point still
// sees the values that the plain loop over j and i would show it.
#pragma once

#include <algorithm>
#include <cstddef>

namespace kesto {

class DiagonalOrder {
 public:
  DiagonalOrder(int n0, int n1) : n0_(n0), n1_(n1) {}

  int diagonals() const { return n0_ + n1_ - 1; }
  std::ptrdiff_t points() const { return std::ptrdiff_t{n0_} * n1_; }

  // Point (i, d - i) stands at origin(d) + i.
  std::ptrdiff_t origin(int d) const { return points_before(d) - std::max(0, d - (n1_ - 1)); }

  // The interior points of diagonal d, boundary left out: i from first_interior(d) to last_interior(d).
  int first_interior(int d) const { return std::max(1, d - (n1_ - 2)); }
  int last_interior(int d) const { return std::min(n0_ - 2, d - 1); }

  // Calls visit(position in diagonal order, position in column-major order) for every point of a plane.
  template <class Visit>
  void for_each_point(Visit visit) const {
    for (int d = 0; d < diagonals(); ++d) {
      const std::ptrdiff_t from = origin(d);
      const int last = std::min(d, n0_ - 1);
      for (int i = std::max(0, d - (n1_ - 1)); i <= last; ++i) {
        visit(from + i, i + std::ptrdiff_t{d - i} * n0_);
      }
    }
  }

 private:
  // The diagonals grow to the shorter side, stay, and shrink again.
  std::ptrdiff_t points_before(int d) const {
    const std::ptrdiff_t shorter = std::min(n0_, n1_), longer = std::max(n0_, n1_);
    if (d <= shorter) return std::ptrdiff_t{d} * (d + 1) / 2;
    if (d <= longer) return shorter * (shorter + 1) / 2 + (d - shorter) * shorter;
    const std::ptrdiff_t left = diagonals() - d;
    return points() - left * (left + 1) / 2;
  }

  int n0_, n1_;
};

}  // namespace kesto
