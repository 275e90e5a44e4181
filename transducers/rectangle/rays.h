// A rectangle on the transient road: which of its edges' foot points a point sees, when it hears the face, and along
// which rays.
#pragma once

#include <cmath>

#include "fields/delayed_slope.h"
#include "fields/point_road.h"
#include "fields/rays.h"
#include "transducers/rectangle/arrivals.h"
#include "transducers/rectangle/edges.h"
#include "transducers/rectangle/float_edges.h"

namespace kesto {

class RectangleRays {
 public:
  static constexpr int edges = kinds_of_edges;

  // The weights of `nodes` carry the factor of the field.
  RectangleRays(const RectangleNodes& nodes, double soundspeed)
      : nodes_(nodes),
        c_(soundspeed),
        outside_(nodes),
        beside_y_(nodes),
        beside_x_(nodes),
        within_(nodes),
        fill_outside_(kernel_on<FillRays<EdgesOfRectangle<whole>>>(chosen_vector_target())),
        fill_beside_y_(kernel_on<FillRays<EdgesOfRectangle<split_along_x>>>(chosen_vector_target())),
        fill_beside_x_(kernel_on<FillRays<EdgesOfRectangle<split_along_y>>>(chosen_vector_target())),
        fill_within_(kernel_on<FillRays<EdgesOfRectangle<split_along_both>>>(chosen_vector_target())) {}

  int classify(const CartesianCoordinate& p) const { return is_in_front(p) ? kind_of_edges(nodes_, p) : no_field; }
  Arrivals arrivals(const CartesianCoordinate& p) const { return rectangle_arrivals(nodes_.a, nodes_.b, c_, p); }
  int rays(int edge) const {
    return ((edge & split_along_x) != 0 ? 4 : 2) * nodes_.n + ((edge & split_along_y) != 0 ? 4 : 2) * nodes_.n;
  }
  void fill(int edge, RayBlock& block) const {
    switch (edge) {
      case whole: return fill_outside_(outside_, c_, TravelTime::by_division, block);
      case split_along_x: return fill_beside_y_(beside_y_, c_, TravelTime::by_division, block);
      case split_along_y: return fill_beside_x_(beside_x_, c_, TravelTime::by_division, block);
      default: return fill_within_(within_, c_, TravelTime::by_division, block);
    }
  }
  DelayedSlope at_special_point() const { return {}; }  // there is none

 protected:
  RectangleNodes nodes_;
  double c_;  // m/s

 private:
  template <int kind>
  using Fill = void (*)(const EdgesOfRectangle<kind>&, double, TravelTime, RayBlock&);

  EdgesOfRectangle<whole> outside_;
  EdgesOfRectangle<split_along_x> beside_y_;
  EdgesOfRectangle<split_along_y> beside_x_;
  EdgesOfRectangle<split_along_both> within_;
  Fill<whole> fill_outside_;
  Fill<split_along_x> fill_beside_y_;
  Fill<split_along_y> fill_beside_x_;
  Fill<split_along_both> fill_within_;
};

// The same rays in single precision.
class RectangleRaysInFloat : public RectangleRays {
 public:
  using RectangleRays::RectangleRays;

  int classify(const CartesianCoordinate& p) const {
    if (!is_in_front(p)) return no_field;
    const FloatPoint at(p, nodes_);
    return (is_split(at.d3, at.d1) ? split_along_x : whole) + (is_split(at.d2, at.d4) ? split_along_y : whole);
  }

  void fill(int, RayBlock& block) const {
    const float c = static_cast<float>(c_);
    for (int p = 0; p < RayBlock::capacity; ++p) {
      const FloatPoint at({block.x[p], block.y[p], block.z[p]}, nodes_);
      float sum = 0;
      int ray = 0;
      const auto add = [&](double weight, float multiplier, float d, float u2) {
        const float scaled = static_cast<float>(weight) * (multiplier / (d * d + u2));
        sum += scaled;
        block.weight[RayBlock::capacity * ray + p] = static_cast<double>(scaled);
        block.delay[RayBlock::capacity * ray + p] = static_cast<double>(std::sqrt(at.z2 + d * d + u2) / c);
        ++ray;
      };
      for_each_pair(at, nodes_, [&](const FloatEdgePair& pair) {
        for (int i = 0; i < nodes_.n; ++i) {
          if (pair.split()) {
            for (const float end : pair.ends) {
              const float u2 = static_cast<float>(nodes_.t_squared[i]) * (end * end);
              for (const float d : pair.d) add(nodes_.t_weight[i], end * d, d, u2);
            }
          } else {
            const float u = static_cast<float>(pair.whole[i]) + pair.foot;
            for (const float d : pair.d) add(pair.whole_weight[i], d, d, u * u);
          }
        }
      });
      block.weight_sum[p] = static_cast<double>(sum);
      block.reference[p] = static_cast<double>(at.z / c);
    }
  }
};

}  // namespace kesto
