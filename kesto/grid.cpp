#include "kesto/grid.h"

#include <ostream>
#include <utility>

#include "kesto/internal/checks.h"

namespace kesto {

namespace {

const char* const axis_name[] = {"x", "y", "z"};

void check(Checks& checks, int axis, const std::vector<double>& values, const char* where) {
  static const Limits limits = {-1000, 1000, -5, 5, "m", "coordinates are in metres"};
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] >= limits.usual_least && values[i] <= limits.usual_most) continue;
    checks.within(text_of("%s of the grid's %s at index %zu", axis_name[axis], where, i), values[i], limits);
    break;  // one warning will do
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!(values[i] >= limits.least && values[i] <= limits.most)) {
      checks.within(text_of("%s of the grid's %s at index %zu", axis_name[axis], where, i), values[i], limits);
    }
  }
}

}  // namespace

std::vector<double> range(double first, double last, std::size_t count) {
  Checks checks;
  checks.finite("first of a range", first);
  checks.finite("last of a range", last);
  if (count == 0) refuse("count of a range is 0: at least one value is expected");
  if (count == 1 && first != last) refuse(text_of("count of a range is 1, but it goes from %g to %g", first, last));
  check_memory(8.0 * static_cast<double>(count), text_of("a range of %zu values", count));
  std::vector<double> values(count, first);
  const double n = static_cast<double>(count - 1);
  for (std::size_t i = 1; i < count; ++i) values[i] = first + (last - first) * (static_cast<double>(i) / n);
  return values;
}

Grid::Grid(bool is_box, std::vector<double> x, std::vector<double> y, std::vector<double> z)
    : is_box_(is_box), at_{std::move(x), std::move(y), std::move(z)} {
  Checks checks;
  for (int a = 0; a < 3; ++a) {
    if (at_[a].empty()) refuse(text_of("%s of the grid is empty: at least one value is expected", axis_name[a]));
    check(checks, a, at_[a], is_box ? "vectors" : "points");
  }
}

Grid Grid::box(Axis x, Axis y, Axis z) {
  const double points = static_cast<double>(x.size()) * static_cast<double>(y.size()) * static_cast<double>(z.size());
  check_memory(16 * points, text_of("a field on a grid of %zu x %zu x %zu points", x.size(), y.size(), z.size()));
  return {true, std::move(x), std::move(y), std::move(z)};
}

Grid Grid::list(std::vector<double> x, std::vector<double> y, std::vector<double> z) {
  if (x.size() != y.size() || x.size() != z.size()) {
    refuse(text_of("x, y and z of the grid's points have %zu, %zu and %zu values: as many of each are expected",
                   x.size(), y.size(), z.size()));
  }
  return {false, std::move(x), std::move(y), std::move(z)};
}

Grid Grid::list(const std::vector<Point>& points) {
  std::vector<double> x, y, z;
  for (const Point& p : points) x.push_back(p.x), y.push_back(p.y), z.push_back(p.z);
  return list(std::move(x), std::move(y), std::move(z));
}

std::size_t Grid::size() const { return is_box_ ? at_[0].size() * at_[1].size() * at_[2].size() : at_[0].size(); }

Point Grid::point(std::size_t i) const {
  if (i >= size()) refuse(text_of("index is %zu: the grid has %zu points", i, size()));
  if (!is_box_) return {at_[0][i], at_[1][i], at_[2][i]};
  const std::size_t nx = at_[0].size(), ny = at_[1].size();
  return {at_[0][i % nx], at_[1][i / nx % ny], at_[2][i / nx / ny]};
}

std::ostream& operator<<(std::ostream& out, const Grid& grid) {
  if (!grid.is_box()) return out << text_of("%zu points", grid.size());
  out << text_of("%zu x %zu x %zu points", grid.x().size(), grid.y().size(), grid.z().size());
  for (int a = 0; a < 3; ++a) {
    const std::vector<double>& v = grid.axis(a);
    out << text_of(v.size() == 1 ? ", %s %g" : ", %s %g to %g", axis_name[a], 1e3 * v.front(), 1e3 * v.back());
  }
  return out << " mm";
}

}  // namespace kesto
