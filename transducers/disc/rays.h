// A disc on the transient road: which points hear its rim, when, and along which rays.
#pragma once

#include <cmath>

#include "core/internal/four_floats.h"
#include "fields/delayed_slope.h"
#include "fields/point_road.h"
#include "fields/rays.h"
#include "transducers/disc/arrivals.h"
#include "transducers/disc/rim.h"

namespace kesto {

class DiscRays {
 public:
  static constexpr int edges = 1;

  DiscRays(DiscTransducer& element, double radius, double sign, TravelTime rounding)
      : tables_(*element.integral, radius, disc_transient_factor(*element.medium, radius, sign)),
        rim_(tables_),
        c_(element.medium->_soundspeed),
        rounding_(rounding),
        fill_(kernel_on<FillRays<DiscRim>>(chosen_vector_target())) {}

  int classify(const CartesianCoordinate& p) const { return is_in_front(p) ? 0 : no_field; }
  Arrivals arrivals(const CartesianCoordinate& p) const {
    const DiscArrivals a(p, tables_.radius, c_);
    return {a.first, a.far_rim};
  }
  int rays(int) const { return tables_.n; }
  void fill(int, RayBlock& block) const { fill_(rim_, c_, rounding_, block); }
  DelayedSlope at_special_point() const { return {}; }  // there is none

 protected:
  DiscRimTables tables_;
  DiscRim rim_;
  double c_;  // m/s

 private:
  TravelTime rounding_;
  void (*fill_)(const DiscRim&, double, TravelTime, RayBlock&);
};

// The same rays in single precision.
class DiscRaysInFloat : public DiscRays {
 public:
  DiscRaysInFloat(DiscTransducer& element, double radius, double sign, TravelTime rounding)
      : DiscRays(element, radius, sign, rounding), versine_(tables_.n) {
    fill_versines(versine_, *element.integral);
  }

  void fill(int, RayBlock& block) const {
    const float a = static_cast<float>(tables_.radius), c = static_cast<float>(c_);
    for (int p = 0; p < RayBlock::capacity; ++p) {
      const float x = static_cast<float>(block.x[p]), y = static_cast<float>(block.y[p]);
      const float z = static_cast<float>(block.z[p]), r = std::sqrt(x * x + y * y);
      const float beside = static_cast<float>(std::hypot(block.x[p], block.y[p]) - tables_.radius);
      float sum = 0;
      for (int j = 0; j < tables_.n; ++j) {
        const float versine = static_cast<float>(versine_[j]);
        const float d = above_zero(beside * beside + 2 * a * r * versine);
        const float weight = static_cast<float>(tables_.weight[j]) * ((beside - r * versine) / d);
        sum += weight;
        block.weight[RayBlock::capacity * j + p] = static_cast<double>(weight);
        block.delay[RayBlock::capacity * j + p] = static_cast<double>(std::sqrt(d + z * z) / c);
      }
      block.weight_sum[p] = static_cast<double>(sum);
      block.reference[p] = static_cast<double>(z / c);
    }
  }

 private:
  ScratchArray<double> versine_;
};

}  // namespace kesto
