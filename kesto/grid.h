// Where a field is computed.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <vector>

#include "kesto/point.h"

namespace kesto {

// `count` values from `first` to `last`, evenly.
std::vector<double> range(double first, double last, std::size_t count);

// One coordinate's values; a single number will do.
struct Axis : std::vector<double> {
  Axis(double value) : std::vector<double>(1, value) {}
  Axis(int value) : Axis(static_cast<double>(value)) {}
  Axis(std::vector<double> values) : std::vector<double>(std::move(values)) {}
  Axis(std::initializer_list<double> values) : std::vector<double>(values) {}
};

class Grid {
 public:
  // All (x[i], y[j], z[l]), at i + nx (j + ny l).
  static Grid box(Axis x, Axis y, Axis z);
  static Grid list(const std::vector<Point>& points);
  static Grid list(std::vector<double> x, std::vector<double> y, std::vector<double> z);

  bool is_box() const { return is_box_; }
  std::size_t size() const;
  Point point(std::size_t i) const;
  // Of a box its three vectors, of a list one coordinate of every point.
  const std::vector<double>& x() const { return at_[0]; }
  const std::vector<double>& y() const { return at_[1]; }
  const std::vector<double>& z() const { return at_[2]; }
  const std::vector<double>& axis(int i) const { return at_[i]; }

 private:
  Grid(bool is_box, std::vector<double> x, std::vector<double> y, std::vector<double> z);
  bool is_box_;
  std::vector<double> at_[3];
};

std::ostream& operator<<(std::ostream& out, const Grid& grid);

}  // namespace kesto
