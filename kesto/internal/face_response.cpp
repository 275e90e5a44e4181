// The sphere of radius R = ct about a point cuts a face in arcs of angle Omega(R) in all, seen from the foot of the
// perpendicular (Stepanishen 1971; Lockwood & Willette 1973) or, of a bowl, from the line to its centre (Penttinen &
// Luukkala 1976). h dt = Omega dR / 2 pi for flat faces and (d / rho) Omega dR / 2 pi for bowls.
#include "kesto/internal/face_response.h"

#include <algorithm>
#include <vector>

#include "kesto/engine/constants.h"
#include "kesto/internal/gauss.h"

namespace kesto {

namespace {

double square(double x) { return x * x; }

// Adds `scale` times the integral of a density over each cell, in a variable that grows with R. The density has root
// singularities at the ends of the pieces: with x = middle - half cos theta it is smooth in theta.
template <class Density, class ToVariable, class ToDistance>
void add_pieces(const std::vector<double>& ends, const Cells& to, double scale, Density density, ToVariable to_variable,
                ToDistance to_distance, Span span) {
  static const GaussRule rule(10);
  const double begin = std::floor((span.first - to.low) / to.step), stop = std::ceil((span.last - to.low) / to.step);
  const auto from = static_cast<std::size_t>(std::max(begin, 0.0));
  const std::size_t until = std::min(static_cast<std::size_t>(std::max(stop, 0.0)) + 1, to.count);
  for (std::size_t i = from; i < until; ++i) {
    const double low = to_variable(to.low + static_cast<double>(i) * to.step);
    const double high = to_variable(to.low + static_cast<double>(i + 1) * to.step);
    const double centre = to.low + (static_cast<double>(i) + 0.5) * to.step;
    double sum = 0, first = 0, second = 0;
    auto piece = std::upper_bound(ends.begin(), ends.end(), low);
    if (piece == ends.begin()) ++piece;
    for (; piece != ends.end() && *(piece - 1) < high; ++piece) {
      const double a = *(piece - 1), b = *piece, half = (b - a) / 2, middle = (a + b) / 2;
      if (!(half > 0)) continue;
      const auto angle = [&](double x) { return std::acos(std::clamp((middle - x) / half, -1.0, 1.0)); };
      const double t0 = low <= a ? 0 : angle(low), t1 = high >= b ? full_pi : angle(high);
      for (int n = 0; n < rule.size(); ++n) {
        const double t = (t0 + t1) / 2 + rule.node(n) * (t1 - t0) / 2;
        const double x = middle - half * std::cos(t);
        const double share = rule.weight(n) * (t1 - t0) / 2 * half * std::sin(t) * density(x);
        sum += share;
        if (to.first == nullptr) continue;
        const double off = to_distance(x) - centre;
        first += share * off, second += share * off * off;
      }
    }
    to.mass[i] += scale * sum;
    if (to.first != nullptr) to.first[i] += scale * first, to.second[i] += scale * second;
  }
}

// Further ends where a scale `least` is far below the largest: the density changes as fast as the distance to 0.
void grade(std::vector<double>& ends, double least, double most) {
  for (double x = std::max(least, 1e-9 * most); x < most; x *= 4) ends.push_back(x);
}

std::vector<double> within(std::vector<double> ends, double low, double high) {
  ends.push_back(low), ends.push_back(high);
  std::sort(ends.begin(), ends.end());
  ends.erase(std::remove_if(ends.begin(), ends.end(), [&](double x) { return !(x >= low && x <= high); }), ends.end());
  return ends;
}

// A flat face: `angle` of the radius s in its plane, corners in s, the first and last s that meet it.
template <class Angle>
Span add_flat(double z, std::vector<double> corners, double nearest, double farthest, double scale, const Cells* to,
              Angle angle) {
  const Span span = {std::hypot(z, nearest), std::hypot(z, farthest)};
  if (to == nullptr) return span;
  double least = farthest;
  for (const double s : corners) least = s > 0 ? std::min(least, s) : least;
  grade(corners, z > 0 ? std::min(least, z) : least, farthest);
  for (double& s : corners) s = std::hypot(z, s);
  add_pieces(
      within(corners, span.first, span.last), *to, scale / (2 * full_pi),
      [&](double distance) { return angle(std::sqrt(std::max((distance - z) * (distance + z), 0.0))); },
      [](double distance) { return distance; }, [](double distance) { return distance; }, span);
  return span;
}

Span add_disc(double a, double r, double z, double scale, const Cells* to) {
  return add_flat(z, {std::fabs(a - r), a + r}, std::max(r - a, 0.0), a + r, scale, to, [=](double s) {
    if (s <= a - r) return 2 * full_pi;
    return 2 * std::acos(std::clamp((s * s + (r - a) * (r + a)) / (2 * s * r), -1.0, 1.0));
  });
}

Span add_rectangle(double a, double b, double x, double y, double z, double scale, const Cells* to) {
  // As four rectangles that have a corner at the foot of the perpendicular, with signs.
  const double sides[2][2] = {{a - x, a + x}, {b - y, b + y}};
  std::vector<double> corners;
  for (const double u : sides[0]) {
    corners.push_back(std::fabs(u));
    for (const double v : sides[1]) corners.push_back(std::fabs(v)), corners.push_back(std::hypot(u, v));
  }
  const double nearest = std::hypot(std::max(x - a, 0.0), std::max(y - b, 0.0)), farthest = std::hypot(x + a, y + b);
  return add_flat(z, corners, nearest, farthest, scale, to, [=](double s) {
    double sum = 0;
    for (const double u : sides[0]) {
      for (const double v : sides[1]) {
        const double p = std::fabs(u), q = std::fabs(v);
        if (p == 0 || q == 0 || s * s >= p * p + q * q) continue;
        const double angle = full_pi / 2 - (s > p ? std::acos(p / s) : 0) - (s > q ? std::acos(q / s) : 0);
        sum += std::copysign(1.0, u) * std::copysign(1.0, v) * angle;
      }
    }
    return sum;
  });
}

// By gamma, the angle at the centre of the sphere between the point and a place on the face: the variable is
// u = 1 - cos gamma, R^2 = (d - rho)^2 + 2 d rho u. z from the centre.
Span add_cap(double a, double d, double r, double z, double scale, const Cells* to) {
  const double rho = std::max(std::hypot(r, z), 1e-30 * d), eta = std::atan2(r, -z), cap = std::asin(a / d);
  const double rim_near = std::fabs(eta - cap), rim_far = std::min(eta + cap, 2 * full_pi - eta - cap);
  const auto height = [](double angle) { return 2 * square(std::sin(angle / 2)); };
  const double low = eta < cap ? 0 : height(rim_near), high = eta + cap > full_pi ? 2 : height(rim_far);
  const auto distance = [&](double u) { return std::sqrt(square(d - rho) + 2 * d * rho * u); };
  const Span span = {distance(low), distance(high)};
  if (to == nullptr) return span;
  std::vector<double> ends = {height(rim_near), height(rim_far)}, from_far_pole;
  const double pole = square(d - rho) / (2 * d * rho);
  const double least = ends[0] > 0 ? ends[0] : 2;
  grade(ends, pole > 0 ? std::min(least, pole) : least, 2);
  grade(from_far_pole, 2 - ends[1] > 0 ? 2 - ends[1] : 2, 2);
  for (const double v : from_far_pole) ends.push_back(2 - v);
  const double cos_eta = std::cos(eta), sin_eta = std::sin(eta), above = std::cos(cap) - cos_eta;
  add_pieces(
      within(ends, low, high), *to, scale * d * d / (2 * full_pi),
      [&](double u) {
        const double cosine = (above + u * cos_eta) / (std::sqrt(u * (2 - u)) * sin_eta);
        return 2 * std::acos(std::clamp(cosine, -1.0, 1.0)) / distance(u);
      },
      [&](double at) {
        const double u = (at - std::fabs(d - rho)) * (at + std::fabs(d - rho)) / (2 * d * rho);
        return at <= 0 ? -1.0 : u;
      },
      distance, span);
  return span;
}

}  // namespace

Span add_response(const Element& e, int part, const Pose& pose, const Point& at, double scale, const Cells* to) {
  const Point from = at - e.position;
  const auto along = [&](int i) { return dot({pose.axes[i][0], pose.axes[i][1], pose.axes[i][2]}, from); };
  const double x = along(0), y = along(1), z = along(2), r = std::hypot(x, y);
  const Shape& s = e.shape;
  const double radius = part == 0 ? s.outer() : s.inner();
  if (s.curvature() > 0) {
    const double d = s.curvature(), deep = z - d;
    const double rim = std::sqrt((d - s.outer()) * (d + s.outer()));
    if (r * r + deep * deep > d * d && deep < -rim) return {};
    return add_cap(radius, d, r, deep, scale, to);
  }
  if (z < 0) return {};
  if (s.kind() == Shape::Kind::rectangle) {
    return add_rectangle(s.outer() / 2, s.inner() / 2, std::fabs(x), std::fabs(y), z, scale, to);
  }
  return add_disc(radius, r, z, scale, to);
}

}  // namespace kesto
