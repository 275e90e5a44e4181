// A plain Rayleigh sum, far finer than the library's: Gauss-Legendre by panels that shrink towards the point.
#pragma once

#include <vector>

#include "validation/points.h"

namespace kesto::validation {

struct Panel {
  double u0, u1, v0, v1;
};

struct SurfaceNode {
  Point at;
  double area;  // m^2
};

// A radiating surface over a box of two parameters.
class Face {
 public:
  virtual ~Face() = default;
  virtual Panel whole() const = 0;
  // Lengths of the longest lines of constant v and of constant u.
  virtual double length_u(const Panel& panel) const = 0;
  virtual double length_v(const Panel& panel) const = 0;
  // The nodes of the product rule on a panel.
  virtual void fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const = 0;
  virtual Point middle(const Panel& panel) const = 0;
};

class FlatRing : public Face {  // u the radius, v the azimuth
 public:
  FlatRing(double inner, double outer) : inner_(inner), outer_(outer) {}
  Panel whole() const override { return {inner_, outer_, 0, 2 * pi}; }
  double length_u(const Panel& p) const override { return p.u1 - p.u0; }
  double length_v(const Panel& p) const override { return p.u1 * (p.v1 - p.v0); }
  void fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const override;
  Point middle(const Panel& panel) const override;

 private:
  double inner_, outer_;
};

class FlatRectangle : public Face {
 public:
  FlatRectangle(double width, double height) : a_(width / 2), b_(height / 2) {}
  Panel whole() const override { return {-a_, a_, -b_, b_}; }
  double length_u(const Panel& p) const override { return p.u1 - p.u0; }
  double length_v(const Panel& p) const override { return p.v1 - p.v0; }
  void fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const override;
  Point middle(const Panel& panel) const override;

 private:
  double a_, b_;
};

class SphericalZone : public Face {  // u the angle at the centre of curvature, v the azimuth
 public:
  SphericalZone(double inner, double outer, double roc);
  Panel whole() const override { return {inner_, outer_, 0, 2 * pi}; }
  double length_u(const Panel& p) const override { return roc_ * (p.u1 - p.u0); }
  double length_v(const Panel& p) const override;
  void fill(const Panel& panel, std::vector<SurfaceNode>& nodes) const override;
  Point middle(const Panel& panel) const override;

 private:
  double inner_, outer_, roc_;
};

// p = j rho f0 times the integral of e^{-gamma R} / R over the face, for a unit velocity. A panel is no longer than two
// wavelengths and no longer than its distance from the point, over `refinement`; 16 by 16 nodes then leave rounding.
// Points on the face are not served.
Field rayleigh_sum(const Face& face, const Fluid& fluid, const Points& points, double refinement = 1);

}  // namespace kesto::validation
