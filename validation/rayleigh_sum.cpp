#include "validation/rayleigh_sum.h"

#include <array>
#include <cmath>
#include <stdexcept>

#include "validation/gauss_legendre.h"

namespace kesto::validation {

namespace {

constexpr int order = 16;

struct Direction {
  double cosine, sine, weight;
};

const std::vector<GaussNode>& rule() {
  static const std::vector<GaussNode> nodes = gauss_legendre(order);
  return nodes;
}

GaussNode mapped(const GaussNode& node, double a, double b) {
  return {(a + b) / 2 + (b - a) / 2 * node.x, (b - a) / 2 * node.weight};
}

std::array<Direction, order> directions(double from, double to) {
  std::array<Direction, order> result;
  for (std::size_t i = 0; i < order; ++i) {
    const GaussNode angle = mapped(rule()[i], from, to);
    result[i] = {std::cos(angle.x), std::sin(angle.x), angle.weight};
  }
  return result;
}

double distance(const Point& a, const Point& b) {
  const double x = a.x - b.x, y = a.y - b.y, z = a.z - b.z;
  return std::sqrt(x * x + y * y + z * z);
}

// Splits panels until each is fine enough for the point, and sums over those.
class Sum {
 public:
  Sum(const Face& face, const Fluid& fluid, const Point& point, double refinement)
      : face_(face), gamma_(fluid.gamma()), point_(point), refinement_(refinement), longest_(2 * fluid.wavelength()) {}

  Complex over(const Panel& p, int depth = 0) {
    if (depth > 60) throw std::domain_error("a point on the face has no Rayleigh sum");
    const double u = face_.length_u(p), v = face_.length_v(p);
    const double gap = distance(face_.middle(p), point_) - std::hypot(u, v) / 2;
    if (std::fmax(u, v) * refinement_ <= std::fmin(longest_, gap)) return product_rule(p);
    if (u > v) {
      const double middle = (p.u0 + p.u1) / 2;
      return over({p.u0, middle, p.v0, p.v1}, depth + 1) + over({middle, p.u1, p.v0, p.v1}, depth + 1);
    }
    const double middle = (p.v0 + p.v1) / 2;
    return over({p.u0, p.u1, p.v0, middle}, depth + 1) + over({p.u0, p.u1, middle, p.v1}, depth + 1);
  }

 private:
  Complex product_rule(const Panel& panel) {
    nodes_.clear();
    face_.fill(panel, nodes_);
    Complex sum;
    for (const SurfaceNode& node : nodes_) {
      const double r = distance(node.at, point_);
      sum += node.area / r * std::polar(std::exp(-gamma_.real() * r), -gamma_.imag() * r);
    }
    return sum;
  }

  const Face& face_;
  Complex gamma_;
  Point point_;
  double refinement_, longest_;
  std::vector<SurfaceNode> nodes_;
};

}  // namespace

void FlatRing::fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const {
  const auto azimuths = directions(panel.v0, panel.v1);
  for (const GaussNode& node : rule()) {
    const GaussNode r = mapped(node, panel.u0, panel.u1);
    for (const Direction& d : azimuths) {
      nodes.push_back({{r.x * d.cosine, r.x * d.sine, 0}, r.x * r.weight * d.weight});
    }
  }
}

Point FlatRing::middle(const Panel& p) const {
  const double r = (p.u0 + p.u1) / 2, phi = (p.v0 + p.v1) / 2;
  return {r * std::cos(phi), r * std::sin(phi), 0};
}

void FlatRectangle::fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const {
  for (const GaussNode& node_x : rule()) {
    const GaussNode x = mapped(node_x, panel.u0, panel.u1);
    for (const GaussNode& node_y : rule()) {
      const GaussNode y = mapped(node_y, panel.v0, panel.v1);
      nodes.push_back({{x.x, y.x, 0}, x.weight * y.weight});
    }
  }
}

Point FlatRectangle::middle(const Panel& p) const { return {(p.u0 + p.u1) / 2, (p.v0 + p.v1) / 2, 0}; }

SphericalZone::SphericalZone(double inner, double outer, double roc)
    : inner_(std::asin(inner / roc)), outer_(std::asin(outer / roc)), roc_(roc) {}

double SphericalZone::length_v(const Panel& p) const { return roc_ * std::sin(p.u1) * (p.v1 - p.v0); }

void SphericalZone::fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const {
  const auto azimuths = directions(panel.v0, panel.v1);
  for (const Direction& polar : directions(panel.u0, panel.u1)) {
    const double r = roc_ * polar.sine, z = roc_ * (1 - polar.cosine);
    for (const Direction& d : azimuths) {
      nodes.push_back({{r * d.cosine, r * d.sine, z}, roc_ * r * polar.weight * d.weight});
    }
  }
}

Point SphericalZone::middle(const Panel& p) const {
  const double theta = (p.u0 + p.u1) / 2, phi = (p.v0 + p.v1) / 2, r = roc_ * std::sin(theta);
  return {r * std::cos(phi), r * std::sin(phi), roc_ * (1 - std::cos(theta))};
}

Field rayleigh_sum(const Face& face, const Fluid& fluid, const Points& points, double refinement) {
  Field field;
  for (const Point& point : points) {
    const Complex integral = Sum(face, fluid, point, refinement).over(face.whole());
    field.push_back(Complex(0, fluid.density * fluid.frequency) * integral);
  }
  return field;
}

}  // namespace kesto::validation
