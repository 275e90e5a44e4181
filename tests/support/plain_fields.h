// The field integrals as plain scalar loops over the formulas: the reference of the laned and single-precision forms.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

#include "core/constants.h"
#include "core/coordinate_grid.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/piston_apodization.h"

namespace plain {

using Complex = std::complex<double>;

// Counts are ints throughout.
struct Values {
  std::vector<double> values;
  double operator[](int i) const { return values[static_cast<std::size_t>(i)]; }
  int size() const { return static_cast<int>(values.size()); }
};

struct Sum {
  double k, alpha;         // of the waves E(R)
  double reference_alpha;  // of the reference wave
  double f0, rho, speed;   // Hz, kg/m^3, m/s
  Values x, w;             // the rule on [-1, 1]
  int columns;             // of the inner loop of a double sum; the first so many nodes of a single one
  int n() const { return x.size(); }

  static Complex wave(double k, double alpha, double d) {
    return std::exp(-alpha * d) * Complex(std::cos(k * d), -std::sin(k * d));
  }
  Complex at(double d) const { return wave(k, alpha, d); }
  Complex reference_at(double d) const { return wave(k, reference_alpha, d); }
  double midpoint(int i, double length) const { return (i + 0.5) * length / n(); }

  Complex rim_of_disc(double a, const CartesianCoordinate& p) const {
    const double r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
    Complex sum;
    for (int i = 0; i < columns; ++i) {
      const double c = std::cos(kesto::half_pi * x[i] + kesto::half_pi), d = r2 + a * a - 2 * a * c * r;
      sum += kesto::half_pi * w[i] * (c * r - a) / d * (at(std::sqrt(p.z * p.z + d)) - reference_at(p.z));
    }
    return sum;
  }

  Complex rims_of_rings(double a, int profile, const CartesianCoordinate& p) const {
    Complex sum;
    for (int i = 0; i < n(); ++i) {
      const double node = kesto::half_pi * x[i] + kesto::half_pi, sigma = a * node;
      const double slope = piston_apodization::derivative(profile, sigma, a);
      sum += a * kesto::half_pi * w[i] * kesto::pi * slope * sigma * rim_of_disc(sigma, p);
    }
    return sum;
  }

  Complex cells_of_disc(double a, int profile, const CartesianCoordinate& p) const {
    const double r2 = p.x * p.x + p.y * p.y;
    Complex sum;
    for (int i = 0; i < n(); ++i) {
      const double sigma = midpoint(i, a), area = a / n() * sigma * kesto::pi / n();
      for (int j = 0; j < columns; ++j) {
        const double c = std::cos(midpoint(j, kesto::pi));
        const double d = std::sqrt(sigma * sigma + (p.z * p.z + r2) - 2 * sigma * std::sqrt(r2) * c);
        sum += piston_apodization::evaluate(profile, sigma, a) * area / d * at(d);
      }
    }
    return sum;
  }

  // The pair of edges along one axis: half their length L, where the foot of the perpendicular lies, distances across.
  Complex edge_pair(double half_length, double foot, double across_1, double across_2, double z) const {
    const double ends[] = {half_length + foot, half_length - foot};
    const bool split = ends[0] > 0 && ends[1] > 0;
    Complex sum;
    for (int i = 0; i < n(); ++i) {
      for (int part = 0; part < (split ? 2 : 1); ++part) {
        const double u = split ? (x[i] + 1) / 2 * ends[part] : x[i] * half_length + foot;
        const double du = split ? w[i] / 2 * ends[part] : w[i] * half_length;
        for (const double d : {across_1, across_2}) {
          sum += du * d / (d * d + u * u) * (at(std::sqrt(z * z + d * d + u * u)) - reference_at(z));
        }
      }
    }
    return sum;
  }
  Complex edges_of_rectangle(double a, double b, const CartesianCoordinate& p) const {
    return edge_pair(a, p.x, b + p.y, b - p.y, p.z) + edge_pair(b, p.y, a + p.x, a - p.x, p.z);
  }

  Complex cells_of_rectangle(double a, double b, const CartesianCoordinate& p) const {
    Complex sum;
    for (int i = 0; i < n(); ++i) {
      for (int j = 0; j < columns; ++j) {
        const double dx = p.x - x[i] * a, dy = p.y - x[j] * b, d = std::sqrt(dy * dy + dx * dx + p.z * p.z);
        sum += w[i] * a * w[j] * b * (d != 0 ? at(d) / d : Complex(1, 1));
      }
    }
    return sum;
  }

  Complex far_field_of_rectangle(double a, double b, const CartesianCoordinate& p) const {
    const double d = std::sqrt(p.z * p.z + p.x * p.x + p.y * p.y), u = k * a * p.x / d, v = k * b * p.y / d;
    return at(d) / d * (u != 0 ? std::sin(u) / u : 1) * (v != 0 ? std::sin(v) / v : 1);
  }

  Complex radiators_of_rectangle(double width, double height, const CartesianCoordinate& p) const {
    const double size = std::sqrt(4 * (kesto::two_pi / k) * p.z / n());
    NumericalIntegration rule;
    rule.allocate_memory((static_cast<int>(width / size) + 1) * (static_cast<int>(height / size) + 1));
    rule.gauss_quadrature();
    const Complex kappa(k, -alpha);
    Complex sum;
    for (int i = 0; i < rule.npoints; ++i) {
      for (int j = 0; j < rule.npoints; ++j) {
        const double xi = rule.abscissa[i] * width / 2, yj = rule.abscissa[j] * height / 2;
        const double dx = rule.weight[i] * width / 2, dy = rule.weight[j] * height / 2;
        const double d = std::sqrt((p.x - xi) * (p.x - xi) + (p.y - yj) * (p.y - yj) + p.z * p.z);
        const Complex u = dx * xi * kappa / d, v = dy * yj * kappa / d;
        sum += dx * dy / d * std::exp(Complex(0, 1) * kappa * d) * (xi != 0 ? std::sin(u) / u : 1) *
               (yj != 0 ? std::sin(v) / v : 1);
      }
    }
    return sum;
  }

  Complex rim_of_cap(double a, double d, const CartesianCoordinate& p) const {
    const double h = std::sqrt(d * d - a * a), z = p.z - d, r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
    const double side = std::fabs(z) > 1e-10 ? z / std::fabs(z) : 0;
    Complex sum;
    for (int i = 0; i < columns; ++i) {
      const double c = std::cos(kesto::half_pi * x[i] + kesto::half_pi);
      const double distance = std::sqrt(d * d + r2 + z * z - 2 * a * r * c + 2 * z * h);
      const double g = (r * c * h + a * z) / (2 * a * h * z * r * c + r2 * d * d - r2 * a * a * c * c + a * a * z * z);
      sum += kesto::half_pi * w[i] * g * (at(distance) - reference_at(d + side * std::sqrt(r2 + z * z)));
    }
    return sum;
  }

  Complex cells_of_cap(double a, double d, const CartesianCoordinate& p) const {
    const double z = p.z - d, r2 = p.x * p.x + p.y * p.y, opening = std::asin(a / d);
    if (r2 == 0 && p.z == 0) return kesto::two_pi * (d - std::sqrt(d * d - a * a));
    Complex sum;
    for (int m = 0; m < n(); ++m) {
      for (int i = 0; i < columns; ++i) {
        const double theta = midpoint(i, opening), c = std::cos(midpoint(m, kesto::pi));
        const double distance =
            std::sqrt(r2 + z * z - 2 * (-d * std::cos(theta) * z + d * c * std::sin(theta) * p.x) + d * d);
        sum += 2 * std::sin(theta) * d * d * (opening / n()) * (kesto::pi / n()) / distance * at(distance);
      }
    }
    return sum;
  }
};

}  // namespace plain
