#include "bench/plain_fields_o2.h"

#include <cmath>
#include <cstddef>

#include "core/constants.h"

using kesto::pi;

namespace {

struct Value {
  double re, im;
};

// sum of coefficient (e^{-(alpha + jk) distance} - reference).
template <bool lossy>
class Sum {
 public:
  explicit Sum(kesto::Wave wave) : wave_(wave) {}

  void subtract_wave_at(double distance) { reference_ = wave_at(distance); }
  void add(double coefficient, double distance) {
    const Value wave = wave_at(distance);
    sum_.re += coefficient * (wave.re - reference_.re);
    sum_.im += coefficient * (wave.im - reference_.im);
  }
  Value total() const { return sum_; }

 private:
  // The phase is computed once, so that the compilers join sine and cosine to libm's sincos.
  Value wave_at(double distance) const {
    const double phase = wave_.wavenumber * distance, cosine = std::cos(phase), sine = std::sin(phase);
    if (!lossy) return {cosine, -sine};
    const double modulus = std::exp(-wave_.attenuation * distance);
    return {modulus * cosine, -modulus * sine};
  }

  kesto::Wave wave_;
  Value reference_ = {0, 0}, sum_ = {0, 0};
};

template <bool lossy, class AddTerms>
void add_field_of(const PlainField& f, const AddTerms& add_terms) {
  for (std::size_t i = 0; i < f.points.size(); ++i) {
    Sum<lossy> sum(f.wave);
    add_terms(sum, f.points[i]);
    const Value total = sum.total();
    f.re[i] += f.factor.real() * total.re - f.factor.imag() * total.im;
    f.im[i] += f.factor.real() * total.im + f.factor.imag() * total.re;
  }
}

// add_terms(sum, point) adds the terms of the integral at one point.
template <class AddTerms>
void add_field(const PlainField& f, const AddTerms& add_terms) {
  if (f.wave.attenuation != 0) {
    add_field_of<true>(f, add_terms);
  } else {
    add_field_of<false>(f, add_terms);
  }
}

double midpoint(std::size_t i, std::size_t n, double length) {
  return (static_cast<double>(i) + 0.5) * (length / static_cast<double>(n));
}

std::vector<double> cosines_of_midpoints(std::size_t n) {
  std::vector<double> cosine(n);
  for (std::size_t i = 0; i < n; ++i) cosine[i] = std::cos(midpoint(i, n, pi));
  return cosine;
}

// The rule mapped to angles from 0 to pi.
struct Angles {
  explicit Angles(const PlainRule& rule) : cosine(rule.node.size()), weight(rule.node.size()) {
    for (std::size_t i = 0; i < cosine.size(); ++i) {
      cosine[i] = std::cos(rule.node[i] * pi * 0.5 + pi * 0.5);
      weight[i] = rule.weight[i] * pi * 0.5;
    }
  }
  std::vector<double> cosine, weight;
};

// The rule mapped to the half-length of an edge and, squared, to [0, 1].
struct Edge {
  Edge(const PlainRule& rule, double half)
      : u(rule.node), weight(rule.weight), t_squared(rule.node), t_weight(rule.weight) {
    for (std::size_t i = 0; i < u.size(); ++i) {
      const double t = (rule.node[i] + 1) * 0.5;
      u[i] *= half;
      weight[i] *= half;
      t_squared[i] = t * t;
      t_weight[i] *= 0.5;
    }
  }
  std::vector<double> u, weight, t_squared, t_weight;
};

// An edge d away from the point's projection, whose foot is `foot` from its middle and `ends` from its ends.
template <class Sum>
void add_edge(Sum& sum, const Edge& edge, double d, double foot, double end, double other_end, double z_squared) {
  const double d_squared = d * d, z_d_squared = z_squared + d_squared;
  const std::size_t n = edge.u.size();
  if (end > 0 && other_end > 0) {
    for (const double length : {end, other_end}) {
      const double area = length * d, length_squared = length * length;
      for (std::size_t i = 0; i < n; ++i) {
        const double u_squared = edge.t_squared[i] * length_squared;
        sum.add(edge.t_weight[i] * area / (d_squared + u_squared), std::sqrt(z_d_squared + u_squared));
      }
    }
  } else {
    for (std::size_t i = 0; i < n; ++i) {
      const double u = edge.u[i] + foot, u_squared = u * u;
      sum.add(edge.weight[i] * d / (d_squared + u_squared), std::sqrt(z_d_squared + u_squared));
    }
  }
}

}  // namespace

void plain_disc_fnm(const PlainField& field, double radius) {
  const Angles angles(field.rule);
  const std::size_t n = angles.cosine.size();
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    if (p.z < 0) return;
    const double r_squared = p.x * p.x + p.y * p.y, r = std::sqrt(r_squared), z_squared = p.z * p.z;
    const double s = r_squared + radius * radius, radius_r_2 = 2 * radius * r;
    sum.subtract_wave_at(p.z);
    for (std::size_t i = 0; i < n; ++i) {
      const double d = s - radius_r_2 * angles.cosine[i];
      sum.add(angles.weight[i] * (angles.cosine[i] * r - radius) / d, std::sqrt(z_squared + d));
    }
  });
}

void plain_rectangle_fnm(const PlainField& field, double width, double height) {
  const double a = width / 2, b = height / 2;
  const Edge along_x(field.rule, a), along_y(field.rule, b);
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    if (p.z < 0) return;
    const double left = a + p.x, right = a - p.x, lower = b + p.y, upper = b - p.y, z_squared = p.z * p.z;
    sum.subtract_wave_at(p.z);
    add_edge(sum, along_x, lower, p.x, left, right, z_squared);
    add_edge(sum, along_x, upper, p.x, left, right, z_squared);
    add_edge(sum, along_y, left, p.y, lower, upper, z_squared);
    add_edge(sum, along_y, right, p.y, lower, upper, z_squared);
  });
}

void plain_shell_fnm(const PlainField& field, double radius, double roc) {
  const Angles angles(field.rule);
  const std::size_t n = angles.cosine.size();
  const double h = std::sqrt(roc * roc - radius * radius);
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    const double z = p.z - roc, r_squared = p.x * p.x + p.y * p.y, r = std::sqrt(r_squared), z_squared = z * z;
    const double centre = std::sqrt(r_squared + z_squared);
    if (z < -h && centre > roc) return;
    const double radius_z = radius * z, r_h = r * h, cross = 2 * radius_z * r_h, radius_r_2 = 2 * radius * r;
    const double denominator_0 = r_squared * roc * roc + radius_z * radius_z, r_radius = r * radius;
    const double denominator_2 = r_radius * r_radius, s = roc * roc + r_squared + z_squared + 2 * z * h;
    sum.subtract_wave_at(z > 0 ? roc + centre : roc - centre);
    for (std::size_t i = 0; i < n; ++i) {
      const double c = angles.cosine[i];
      const double denominator = cross * c + denominator_0 - denominator_2 * (c * c);
      sum.add(angles.weight[i] * (r_h * c + radius_z) / denominator, std::sqrt(s - radius_r_2 * c));
    }
  });
}

void plain_disc_rayleigh(const PlainField& field, double radius) {
  const std::size_t n = field.rule.node.size();
  const std::vector<double> cosine = cosines_of_midpoints(n);
  std::vector<double> sigma(n), area(n);
  for (std::size_t i = 0; i < n; ++i) {
    sigma[i] = midpoint(i, n, radius);
    area[i] = sigma[i] * radius * pi / static_cast<double>(n * n);
  }
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    if (p.z < 0) return;
    const double r_squared = p.x * p.x + p.y * p.y, r = std::sqrt(r_squared), distance_squared = p.z * p.z + r_squared;
    for (std::size_t ring = 0; ring < n; ++ring) {
      const double s = distance_squared + sigma[ring] * sigma[ring], sigma_r_2 = 2 * sigma[ring] * r;
      for (std::size_t i = 0; i < n; ++i) {
        const double distance = std::sqrt(s - sigma_r_2 * cosine[i]);
        sum.add(area[ring] / distance, distance);
      }
    }
  });
}

void plain_rectangle_rayleigh(const PlainField& field, double width, double height) {
  const Edge x(field.rule, width / 2), y(field.rule, height / 2);
  const std::size_t n = field.rule.node.size();
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    if (p.z < 0) return;
    for (std::size_t column = 0; column < n; ++column) {
      const double dx = p.x - x.u[column], s = dx * dx + p.z * p.z;
      for (std::size_t i = 0; i < n; ++i) {
        const double dy = p.y - y.u[i], distance = std::sqrt(dy * dy + s);
        sum.add(x.weight[column] * y.weight[i] / distance, distance);
      }
    }
  });
}

void plain_shell_rayleigh(const PlainField& field, double radius, double roc) {
  const std::size_t n = field.rule.node.size();
  const double h = std::sqrt(roc * roc - radius * radius), half_angle = std::asin(radius / roc);
  const std::vector<double> cosine_phi = cosines_of_midpoints(n);
  std::vector<double> sine(n), cosine(n), area(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double theta = midpoint(i, n, half_angle);
    sine[i] = std::sin(theta);
    cosine[i] = std::cos(theta);
    area[i] = 2 * sine[i] * roc * roc * half_angle * pi / static_cast<double>(n * n);
  }
  add_field(field, [&](auto& sum, const CartesianCoordinate& p) {
    const double z = p.z - roc, centre_squared = p.x * p.x + p.y * p.y + z * z;
    if (z < -h && centre_squared > roc * roc) return;
    const double s = centre_squared + roc * roc, z_2 = 2 * roc * z;
    for (std::size_t meridian = 0; meridian < n; ++meridian) {
      const double x_2 = 2 * roc * cosine_phi[meridian] * p.x;
      for (std::size_t i = 0; i < n; ++i) {
        const double distance = std::sqrt(s - x_2 * sine[i] + z_2 * cosine[i]);
        sum.add(area[i] / distance, distance);
      }
    }
  });
}
