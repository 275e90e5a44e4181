#include "kesto/engine/graded.h"

#include <algorithm>
#include <cmath>

#include "kesto/engine/bowl_tile.h"
#include "kesto/engine/disc_tile.h"
#include "kesto/engine/rectangle_tile.h"

namespace kesto {

namespace {

// A branch point or pole of the integrand, and its conjugate.
struct Singularity {
  double re, im;
};

// The rule's error on a panel is some e^{6 sinh t - 48 t} for t up to acosh 1.6: 1e-19 of the integrand there.
constexpr int panel_nodes = 24, deepest = 70;
constexpr double ellipse = 1.6, longest_phase = 6;

// A panel reaches as far as its ellipse stays clear of the singularity, and over no more than twelve radians.
template <class Integrand>
class Panels {
 public:
  // `rate`: phase by length, at most.
  Panels(const RuleView<double>& rule, Singularity nearest, double rate, const Integrand& integrand)
      : rule_(rule), nearest_(nearest), rate_(rate), integrand_(integrand) {}

  Complex over(double u0, double u1, int depth = 0) {
    const double middle = (u0 + u1) / 2, half = std::fabs(u1 - u0) / 2;
    const double along = (nearest_.re - middle) / half, across = nearest_.im / half;
    const double at = (std::hypot(along + 1, across) + std::hypot(along - 1, across)) / 2;
    const bool too_long = at < ellipse || rate_ * half > longest_phase;  // not if anything is NaN
    if (!too_long || depth >= deepest) {
      Complex sum;
      for (int j = 0; j < rule_.n; ++j) sum += rule_.weight[j] * integrand_(middle + (u1 - u0) / 2 * rule_.node[j]);
      terms_ += rule_.n;
      return sum * ((u1 - u0) / 2);
    }
    return over(u0, middle, depth + 1) + over(middle, u1, depth + 1);
  }
  int terms() const { return terms_; }

 private:
  RuleView<double> rule_;
  Singularity nearest_;
  double rate_;
  const Integrand& integrand_;
  int terms_ = 0;
};

template <class Integrand>
Complex integral(Rules& gauss, Singularity nearest, double rate, double u0, double u1, const Integrand& integrand,
                 TileSum& sum) {
  Panels<Integrand> panels(gauss.of(panel_nodes, double{}), nearest, rate, integrand);
  const Complex total = panels.over(u0, u1);
  sum.graded_terms += panels.terms();
  return total;
}

// e^{-(loss + j) 2x} - 1.
Complex wave_less_1(double loss, double x) {
  const double sine = std::sin(x), cosine = std::cos(x), decay = std::expm1(-2 * loss * x);
  return {decay - 2 * (1 + decay) * sine * sine, -2 * (1 + decay) * sine * cosine};
}

double acosh_1_plus(double y) { return std::log1p(y + std::sqrt(y * (y + 2))); }

// The integral over psi from 0 to pi of integrand(1 - cos psi, 1 + cos psi), by halves: either counts from the end
// where it may be singular, at psi = +-j first and psi = pi +-j second.
template <class Integrand>
Complex over_rim(Rules& gauss, double first, double second, double rate, const Integrand& integrand, TileSum& sum) {
  const auto versine = [](double psi) { return 2 * std::sin(psi / 2) * std::sin(psi / 2); };
  const auto from_0 = [&](double psi) {
    const double v = versine(psi);
    return integrand(v, 2 - v);
  };
  const auto from_pi = [&](double psi) {
    const double v = versine(psi);
    return integrand(2 - v, v);
  };
  return integral(gauss, {0, first}, rate, 0, full_pi / 2, from_0, sum) +
         integral(gauss, {0, second}, rate, 0, full_pi / 2, from_pi, sum);
}

}  // namespace

Complex graded_disc(double a, double r, double beyond_rim, double z, double loss, Rules& gauss, TileSum& sum) {
  const double near2 = beyond_rim * beyond_rim + z * z, ar2 = 2 * a * r, branch = acosh_1_plus(near2 / ar2);
  ++sum.graded_points;
  const auto term = [&](double versine, double) {
    const double s2 = beyond_rim * beyond_rim + ar2 * versine, distances = std::sqrt(z * z + s2) + z;
    return s2 > 0 ? (beyond_rim - r * versine) / s2 * wave_less_1(loss, s2 / distances / 2) : Complex();
  };
  return a / full_pi * over_rim(gauss, branch, full_pi, std::min(a, r), term, sum);
}

Complex graded_bowl(double a, double d, const BowlPoint& p, double loss, Rules& gauss, TileSum& sum) {
  const double branch = acosh_1_plus(p.nearest2 / (2 * p.ar)), pole = acosh_1_plus(p.far0 / p.ar);
  ++sum.graded_points;
  const auto term = [&](double versine, double rest) {
    const double from_near = p.side > 0 ? versine : rest;  // on the rim, from the point of it that is nearest
    const double near = p.near0 + p.ar * versine, far = p.far0 + p.ar * rest;
    const double distances = std::sqrt(p.nearest2 + 2 * p.ar * from_near) + p.distance;
    if (!(near * far > 0)) return Complex(near * far);  // 0, or NaN
    return (p.cross0 + p.hr * versine) / near / far * wave_less_1(loss, p.side * near / distances);
  };
  const double first = p.side > 0 ? branch : full_pi, second = p.side > 0 ? pole : std::fmin(branch, pole);
  return -p.side * d * a / full_pi * over_rim(gauss, first, second, std::min(a, p.r), term, sum);
}

Complex graded_edge(double d, double u0, double u1, double z, double loss, Rules& gauss, TileSum& sum) {
  if (d == 0) return 0;
  const double d2 = d * d;
  const auto term = [&](double u) {
    const double s2 = d2 + u * u;
    return wave_less_1(loss, s2 / (std::sqrt(z * z + s2) + z) / 2) / s2;
  };
  const double branch = std::hypot(d, z);
  const auto over = [&](double from, double to) { return integral(gauss, {0, branch}, 1.0, from, to, term, sum); };
  return d / (2 * full_pi) * (u0 < 0 && u1 > 0 ? over(0, u1) + over(u0, 0) : over(u0, u1));
}

void sum_edges_by_points(RectanglePart rectangle, Loss loss, RuleSet& rules, const LocalBatch& p, int first,
                         TileSum& sum) {
  const double a = rectangle.a, b = rectangle.b;
  for (int i = 0; i < tile_size; ++i) {
    const double x = p.x[first + i], y = p.y[first + i], z = std::fabs(p.z[first + i]);
    const auto edge = [&](double d, double u0, double u1) {
      return graded_edge(d, u0, u1, z, loss.per_phase, rules.gauss, sum);
    };
    const Complex g = -(edge(b - y, -a - x, a - x) + edge(b + y, -a - x, a - x) + edge(a - x, -b - y, b - y) +
                        edge(a + x, -b - y, b - y));
    sum.re[i] = g.real(), sum.im[i] = g.imag(), sum.distance[i] = z;
    ++sum.graded_points;
  }
  sum.error = 0;
  sum.size = 4;
}

}  // namespace kesto
