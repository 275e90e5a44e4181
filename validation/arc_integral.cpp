#include "validation/arc_integral.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "validation/gauss_legendre.h"

namespace kesto::validation {

namespace {

using Real = long double;
using ComplexReal = std::complex<Real>;

constexpr Real turn = 6.283185307179586476925286766559L, half_turn = turn / 2, quarter_turn = turn / 4;

// Lengths in units of 1/k from here on.
struct Decay {
  Real per_phase;
  // e^{-(per_phase + j) R}
  ComplexReal wave(Real distance) const {
    const Real rest = distance - turn * std::nearbyint(distance / turn);
    const double amplitude = std::exp(static_cast<double>(-per_phase * distance)), phase = static_cast<double>(rest);
    return {amplitude * std::cos(phase), -amplitude * std::sin(phase)};
  }
  // int e^{-(per_phase + j) R} dR
  ComplexReal integral(Real from, Real to) const {
    if (!(to > from)) return 0;
    const Real half = (to - from) / 2, middle = (to + from) / 2;
    const ComplexReal gamma(per_phase, 1);
    if (std::abs(gamma * half) < 1e-3L) {
      const ComplexReal x2 = gamma * gamma * half * half;
      return wave(middle) * (2 * half) * (Real(1) + x2 / Real(6) * (Real(1) + x2 / Real(20)));
    }
    return (wave(from) - wave(to)) / gamma;
  }
};

// Panels shrink by four towards either end and are no longer than three radians.
template <class Integrand>
ComplexReal graded(Real from, Real to, Real rate, const Integrand& integrand) {
  static const std::vector<GaussNode> rule = gauss_legendre(20);
  if (!(to > from)) return 0;
  ComplexReal sum;
  const auto panel = [&](Real u0, Real u1) {
    const int parts = 1 + static_cast<int>((u1 - u0) * rate / 3);
    for (int part = 0; part < parts; ++part) {
      const Real half = (u1 - u0) / (2 * parts), middle = u0 + half * static_cast<Real>(2 * part + 1);
      for (const GaussNode& node : rule) sum += half * node.weight * integrand(middle + half * node.x);
    }
  };
  const Real half = (to - from) / 2;
  Real outer = half;
  for (int step = 0; step < 28; ++step) {
    const Real inner = step == 27 ? 0 : outer / 4;
    panel(from + inner, from + outer);
    panel(to - outer, to - inner);
    outer = inner;
  }
  return sum;
}

Real square(Real x) { return x * x; }
Real angle_of(Real numerator, Real denominator) {  // 4 atan of the root of a quotient that is not negative
  return 4 * std::atan2(std::sqrt(static_cast<double>(std::max<Real>(numerator, 0))),
                        std::sqrt(static_cast<double>(std::max<Real>(denominator, 0))));
}

ComplexReal disc(Real a, Decay decay, Real r, Real z) {
  const Real least = std::fabs(r - a), nearest = std::hypot(least, z), farthest = std::hypot(r + a, z);
  const ComplexReal arcs = graded(nearest, farthest, 1, [&](Real distance) {
    const Real s = std::sqrt(std::max<Real>((distance - z) * (distance + z), 0));
    return angle_of((a - s + r) * (a + s - r), (s + r - a) * (s + r + a)) * decay.wave(distance);
  });
  return arcs + (r < a ? turn * decay.integral(z, nearest) : 0);
}

// The corner rectangle of sides A, B whose corner is the point's projection.
ComplexReal corner(Real a, Real b, Decay decay, Real z) {
  if (a > b) std::swap(a, b);
  if (!(a > 0)) return 0;
  const auto part = [&](Real from, Real to, bool past_b) {
    return graded(std::hypot(from, z), std::hypot(to, z), 1, [&](Real distance) {
      const Real s2 = (distance - z) * (distance + z);
      const auto beyond = [&](Real side) {  // acos(side / s)
        return Real(
            std::atan2(std::sqrt(static_cast<double>(std::max<Real>(s2 - side * side, 0))), static_cast<double>(side)));
      };
      return (quarter_turn - beyond(a) - (past_b ? beyond(b) : 0)) * decay.wave(distance);
    });
  };
  return quarter_turn * decay.integral(z, std::hypot(a, z)) + part(a, b, false) + part(b, std::hypot(a, b), true);
}

ComplexReal rectangle(Real a, Real b, Decay decay, Real x, Real y, Real z) {
  ComplexReal sum;
  for (const Real u : {a - x, a + x}) {
    for (const Real v : {b - y, b + y}) {
      const ComplexReal c = corner(std::fabs(u), std::fabs(v), decay, z);
      sum += (u < 0) == (v < 0) ? c : -c;
    }
  }
  return sum;
}

// z counts from the centre of curvature; gamma from the pole of the sphere next to the point.
ComplexReal bowl(Real a, Real d, Decay decay, Real r, Real z) {
  const Real rho = std::hypot(r, z), beta = std::asin(a / d), pole = std::atan2(r, -z);
  const Real first = std::fabs(pole - beta), last = std::min(pole + beta, turn - pole - beta);
  const auto distance_at = [&](Real gamma) {
    return std::sqrt(square(d - rho) + 4 * d * rho * square(std::sin(gamma / 2)));
  };
  const auto arc = [&](Real gamma) {
    return angle_of(std::sin((beta + gamma - pole) / 2) * std::sin((beta - gamma + pole) / 2),
                    std::sin((gamma + pole + beta) / 2) * std::sin((gamma + pole - beta) / 2));
  };
  const bool pole_within = pole<beta, antipole_within = pole + beta> half_turn;
  if (rho < d / 2) {  // by gamma: every R is long
    const auto ring = [&](Real gamma) { return std::sin(gamma) * decay.wave(distance_at(gamma)) / distance_at(gamma); };
    ComplexReal sum = graded(first, last, 2 * rho, [&](Real gamma) { return arc(gamma) * ring(gamma); });
    if (pole_within) sum += turn * graded(0, first, 2 * rho, ring);
    if (antipole_within) sum += turn * graded(last, half_turn, 2 * rho, ring);
    return d * d * sum;
  }
  const Real nearest = distance_at(first), farthest = distance_at(last);
  ComplexReal sum = graded(nearest, farthest, 1, [&](Real distance) {
    const Real s = (distance - (d - rho)) * (distance + (d - rho)) / (4 * d * rho);
    const Real gamma = 2 * std::atan2(std::sqrt(std::max<Real>(s, 0)), std::sqrt(std::max<Real>(1 - s, 0)));
    return arc(gamma) * decay.wave(distance);
  });
  if (pole_within) sum += turn * decay.integral(std::fabs(d - rho), nearest);
  if (antipole_within) sum += turn * decay.integral(farthest, d + rho);
  return d / rho * sum;
}

}  // namespace

std::complex<double> arc_integral(const Face& face, Real k, Real attenuation, Real x, Real y, Real z) {
  const Decay decay = {attenuation / k};
  const Real r = std::hypot(x, y) * k;
  const auto one = [&](double radius) {
    const Real a = k * radius;
    if (face.kind == Face::Kind::disc) return disc(a, decay, r, std::fabs(z) * k);
    return bowl(a, k * face.curvature, decay, r, (z - face.curvature) * k);
  };
  ComplexReal sum;
  if (face.kind == Face::Kind::rectangle) {
    sum = rectangle(k * face.outer, k * face.inner, decay, k * x, k * y, std::fabs(z) * k);
  } else {
    sum = one(face.outer);
    if (face.inner > 0) sum -= one(face.inner);
  }
  const ComplexReal p = ComplexReal(0, 1 / turn) * sum;
  return {static_cast<double>(p.real()), static_cast<double>(p.imag())};
}

}  // namespace kesto::validation
