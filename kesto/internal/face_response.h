// When and how strongly a point hears a face that moves for an instant.
#pragma once

#include <cmath>
#include <cstddef>

#include "kesto/engine/engine.h"
#include "kesto/source.h"

namespace kesto {

// Of distances R = ct, m.
struct Span {
  double first = INFINITY, last = -INFINITY;
  void cover(const Span& other) {
    first = other.first < first ? other.first : first;
    last = other.last > last ? other.last : last;
  }
  bool empty() const { return !(first <= last); }
};

// Stretches of distance: cell i covers low + i step to low + (i + 1) step. What is added to: the integral of h dt, m,
// and if not null those of h dt x and h dt x^2, x from the middle of the cell.
struct Cells {
  double low, step;
  std::size_t count;
  double *mass, *first = nullptr, *second = nullptr;
};

// A hole counts as a part of its own, with the sign -1.
inline int part_count(const Shape& shape) {
  return shape.kind() != Shape::Kind::rectangle && shape.inner() > 0 ? 2 : 1;
}

// Adds `scale` times the response of a part; null cells ask only for its span, which is empty behind the face.
Span add_response(const Element& element, int part, const Pose& pose, const Point& at, double scale,
                  const Cells* cells);

}  // namespace kesto
