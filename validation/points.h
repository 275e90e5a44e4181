// Observation points.
#pragma once

#include <vector>

#include "validation/fluid.h"

namespace kesto::validation {

struct Point {
  double x, y, z;  // m
};
using Points = std::vector<Point>;
using Field = std::vector<Complex>;

// count values from first to last, equally spaced or in equal ratios.
std::vector<double> spaced(double first, double last, int count);
std::vector<double> in_ratio(double first, double last, int count);

Points on_axis(const std::vector<double>& z);

// Turned about the z axis.
Points turned(const Points& points, double angle);

// A stride coprime to the points of a row visits all columns.
Points every(const Points& points, int stride);

double median(std::vector<double> values);

double largest(const Field& field);

// max |field - reference| over max |reference|. NaN where either has one.
double error_of(const Field& field, const Field& reference);

}  // namespace kesto::validation
