#include "validation/points.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

namespace kesto::validation {

std::vector<double> spaced(double first, double last, int count) {
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.push_back(first + (last - first) * i / (count - 1));
  return values;
}

std::vector<double> in_ratio(double first, double last, int count) {
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.push_back(first * std::pow(last / first, i / (count - 1.0)));
  return values;
}

Points on_axis(const std::vector<double>& z) {
  Points points;
  for (const double height : z) points.push_back({0, 0, height});
  return points;
}

Points turned(const Points& points, double angle) {
  Points result;
  const double c = std::cos(angle), s = std::sin(angle);
  for (const Point& p : points) result.push_back({c * p.x - s * p.y, s * p.x + c * p.y, p.z});
  return result;
}

Points every(const Points& points, int stride) {
  Points result;
  for (std::size_t i = 0; i < points.size(); i += static_cast<std::size_t>(stride)) result.push_back(points[i]);
  return result;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double largest(const Field& field) {
  double value = 0;
  for (const Complex p : field) {
    if (std::isnan(std::abs(p))) return std::numeric_limits<double>::quiet_NaN();
    value = std::max(value, std::abs(p));
  }
  return value;
}

double error_of(const Field& field, const Field& reference) {
  if (field.size() != reference.size() || field.empty()) throw std::logic_error("fields of different sizes");
  Field difference;
  for (std::size_t i = 0; i < field.size(); ++i) difference.push_back(field[i] - reference[i]);
  return largest(difference) / largest(reference);
}

}  // namespace kesto::validation
