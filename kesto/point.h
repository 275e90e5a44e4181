#pragma once

#include <cmath>

namespace kesto {

// A place or a direction in global coordinates; places in metres.
struct Point {
  double x = 0, y = 0, z = 0;
};

inline Point operator+(const Point& a, const Point& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Point operator*(double s, const Point& a) { return {s * a.x, s * a.y, s * a.z}; }
inline double dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length(const Point& a) { return std::hypot(a.x, a.y, a.z); }

}  // namespace kesto
