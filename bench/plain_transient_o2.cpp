#include "bench/plain_transient_o2.h"

#include <algorithm>
#include <cmath>

#include "core/constants.h"

PlainRays plain_disc_rays(double a, double rho, double c, const std::vector<double>& x, const std::vector<double>& w,
                          const CartesianCoordinate& p) {
  const double r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
  PlainRays rays = {{}, {}, p.z / c};
  for (std::size_t j = 0; j < x.size(); ++j) {
    const double cosine = std::cos(kesto::pi / 2 * (x[j] + 1)), d = r2 + a * a - 2 * a * cosine * r;
    rays.weight.push_back(w[j] * a / 2 * rho * c * (cosine * r - a) / d);
    rays.delay.push_back(std::sqrt(d + p.z * p.z) / c);
  }
  return rays;
}

PlainRays plain_cap_rays(double a, double d, double rho, double c, const std::vector<double>& x,
                         const std::vector<double>& w, const CartesianCoordinate& p) {
  const double h = std::sqrt(d * d - a * a), z = p.z - d, r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2);
  PlainRays rays = {{}, {}, (d + std::copysign(std::sqrt(r2 + z * z), z)) / c};
  for (std::size_t j = 0; j < x.size(); ++j) {
    const double cosine = std::cos(kesto::pi / 2 * (x[j] + 1));
    const double denominator = 2 * a * h * z * r * cosine + r2 * d * d - r2 * a * a * cosine * cosine + a * a * z * z;
    rays.weight.push_back(w[j] * d * a / 2 * rho * c * (r * cosine * h + a * z) / denominator);
    rays.delay.push_back(std::sqrt(d * d + r2 + z * z - 2 * a * r * cosine + 2 * z * h) / c);
  }
  return rays;
}

PlainRays plain_rectangle_rays(double a, double b, double rho, double c, const std::vector<double>& x,
                               const std::vector<double>& w, const CartesianCoordinate& p) {
  PlainRays rays = {{}, {}, p.z / c};
  const auto add = [&](double weight, double d, double u) {
    rays.weight.push_back(-rho * c / kesto::two_pi * weight * d / (d * d + u * u));
    rays.delay.push_back(std::sqrt(p.z * p.z + d * d + u * u) / c);
  };
  const auto add_pair = [&](double half, double along, double near, double far) {
    const double ends[] = {half + along, half - along};
    for (std::size_t j = 0; j < x.size(); ++j) {
      if (ends[0] > 0 && ends[1] > 0) {
        for (const double end : ends) {
          for (const double d : {near, far}) add(w[j] / 2 * end, d, (x[j] + 1) / 2 * end);
        }
      } else {
        for (const double d : {near, far}) add(w[j] * half, d, x[j] * half + along);
      }
    }
  };
  add_pair(a, p.x, b - p.y, b + p.y);
  add_pair(b, p.y, a - p.x, a + p.x);
  return rays;
}

void plain_direct(const PlainRays& rays, const ExcitationFunction& v, double start, double step, int samples,
                  double* trace) {
  const auto [first, last] = std::minmax_element(rays.delay.begin(), rays.delay.end());
  const double from = std::floor((std::min(*first, rays.reference) - start) / step);
  const double to = std::ceil((std::max(*last, rays.reference) + v.get_pulse_width() - start) / step);
  std::fill_n(trace, samples, 0.0);
  for (int k = std::max(0, static_cast<int>(from)); k < std::min(samples, static_cast<int>(to)); ++k) {
    const double t = k * step + start;
    for (std::size_t j = 0; j < rays.weight.size(); ++j) {
      trace[k] += rays.weight[j] * (v.at(t - rays.delay[j]) - v.at(t - rays.reference));
    }
  }
}
