// A spherical cap on the transient road: which points hear its rim, when, and along which rays.
#pragma once

#include <algorithm>
#include <cmath>

#include "core/internal/four_floats.h"
#include "fields/delayed_slope.h"
#include "fields/point_road.h"
#include "fields/rays.h"
#include "transducers/cap/rim.h"

namespace kesto {

enum class BehindCap { skipped, computed };

class CapRays {
 public:
  static constexpr int edges = 1;

  CapRays(const CapTransducer& element, const Cap& cap, double sign, BehindCap behind)
      : cap_(cap),
        tables_(*element.integral, cap_transient_factor(cap, *element.medium, sign)),
        c_(element.medium->_soundspeed),
        seconds_a_metre_(1 / c_),
        rim_(cap_, tables_),
        behind_(behind),
        at_focus_{cap.roc / c_, sign * cap.depth, element.medium->_rho_density},
        fill_(kernel_on<FillRays<CapRim>>(chosen_vector_target())) {}

  int classify(const CartesianCoordinate& p) const {
    if (behind_ == BehindCap::skipped && cap_.is_behind(p)) return no_field;
    return cap_.is_focus(p) ? special_point : 0;
  }
  // Of the rim and of the reference ray.
  Arrivals arrivals(const CartesianCoordinate& p) const {
    const double r = std::sqrt(p.x * p.x + p.y * p.y), z = p.z - cap_.roc, over_rim = z + cap_.h;
    const double near_rim = std::sqrt((cap_.radius - r) * (cap_.radius - r) + over_rim * over_rim);
    const double far_rim = std::sqrt((cap_.radius + r) * (cap_.radius + r) + over_rim * over_rim);
    const double reference = cap_.roc + std::copysign(std::sqrt(r * r + z * z), z);
    return {std::min(near_rim, reference) * seconds_a_metre_, std::max(far_rim, reference) * seconds_a_metre_};
  }
  int rays(int) const { return tables_.n; }
  void fill(int, RayBlock& block) const { fill_(rim_, c_, TravelTime::by_division, block); }

  // The limit of the rim integral at the centre of curvature.
  DelayedSlope at_special_point() const { return at_focus_; }

 protected:
  Cap cap_;
  CapRimTables tables_;
  double c_;  // m/s

 private:
  double seconds_a_metre_;
  CapRim rim_;
  BehindCap behind_;
  DelayedSlope at_focus_;
  void (*fill_)(const CapRim&, double, TravelTime, RayBlock&);
};

// The same rays with every step in single precision.
class CapRaysInFloat : public CapRays {
 public:
  using CapRays::CapRays;

  void fill(int, RayBlock& block) const {
    const float a = static_cast<float>(cap_.radius), d = static_cast<float>(cap_.roc), h = std::sqrt(d * d - a * a);
    const float c = static_cast<float>(c_);
    for (int p = 0; p < RayBlock::capacity; ++p) {
      const float x = static_cast<float>(block.x[p]), y = static_cast<float>(block.y[p]);
      const float z = static_cast<float>(block.z[p] - cap_.roc), r2 = x * x + y * y, r = std::sqrt(r2);
      float sum = 0;
      for (int j = 0; j < tables_.n; ++j) {
        const float cosine = static_cast<float>(tables_.cosine[j]);
        const float sine_squared = static_cast<float>((1 - tables_.cosine[j]) * (1 + tables_.cosine[j]));
        // The denominator as a sum of squares: in floats, the difference that it also is may vanish near the rim.
        const float numerator = r * cosine * h + a * z;
        const float denominator = numerator * numerator + (r * d) * (r * d) * sine_squared;
        const float weight = static_cast<float>(tables_.weight[j]) * (numerator / denominator);
        sum += weight;
        block.weight[RayBlock::capacity * j + p] = static_cast<double>(weight);
        const float squared = above_zero(d * d + r2 + z * z - 2 * a * r * cosine + 2 * z * h);
        block.delay[RayBlock::capacity * j + p] = static_cast<double>(std::sqrt(squared) / c);
      }
      block.weight_sum[p] = static_cast<double>(sum);
      const float side = z > 1e-10f ? 1.0f : z < -1e-10f ? -1.0f : 0.0f;
      block.reference[p] = static_cast<double>((d + side * std::sqrt(r2 + z * z)) / c);
    }
  }
};

}  // namespace kesto
