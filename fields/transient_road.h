// The road of a field in time: points are fetched, rotated, classified and gathered into blocks of rays, which a form,
// the direct one or the decomposition, sums and superposes.
//
// A face on this road is a struct with
//
//   static constexpr int edges;                                the kinds of edge that points see
//   int classify(const CartesianCoordinate& p) const;          one of them, special_point or no_field
//   Arrivals arrivals(const CartesianCoordinate& p) const;
//   int rays(int edge) const;
//   void fill(int edge, RayBlock& block) const;
//   DelayedSlope at_special_point() const;
#pragma once

#include <algorithm>
#include <cstddef>

#include "fields/delayed_slope.h"
#include "fields/point_road.h"
#include "fields/rays.h"

namespace kesto {

// Points that are gathered together. They follow each other in the grid, hence in the lines of the output, of which
// these touch eight cache lines each.
constexpr int points_gathered = 64;

struct RayPoint {
  int index;  // in the grid
  CartesianCoordinate at;
  Arrivals arrivals;
};

// Points of a block share a window of samples. In the order of the grid, lines of the output are written whole; by
// their first arrivals, points that lie anywhere get windows that are hardly longer than their own. Takes the better.
class GatheredPoints {
 public:
  void push(const RayPoint& point) { points_[count_++] = point; }
  bool full() const { return count_ == points_gathered; }
  void clear() { count_ = 0; }

  // Calls visit(first, count) with the points of each block, of at most RayBlock::capacity.
  template <class Visit>
  void visit_blocks(double pulse_width, Visit visit) {
    RayPoint sorted[points_gathered];
    std::copy_n(points_, count_, sorted);
    std::stable_sort(sorted, sorted + count_, [](const RayPoint& a, const RayPoint& b) {
      return a.arrivals.first < b.arrivals.first;
    });
    constexpr double worth_sorting = 0.8;  // scattered writes against whole lines
    const bool in_order = !(windows(sorted, pulse_width) < worth_sorting * windows(points_, pulse_width));
    const RayPoint* const from = in_order ? points_ : sorted;
    for (int at = 0; at < count_; at += RayBlock::capacity) {
      visit(from + at, std::min(RayBlock::capacity, count_ - at));
    }
  }

 private:
  // The lengths of all blocks' windows together, s.
  double windows(const RayPoint* points, double pulse_width) const {
    double sum = 0;
    for (int at = 0; at < count_; at += RayBlock::capacity) {
      Arrivals all = points[at].arrivals;
      for (int p = at + 1; p < std::min(at + RayBlock::capacity, count_); ++p) {
        all.first = std::min(all.first, points[p].arrivals.first);
        all.last = std::max(all.last, points[p].arrivals.last);
      }
      sum += all.last - all.first + pulse_width;
    }
    return sum;
  }

  int count_ = 0;
  RayPoint points_[points_gathered];
};

// Hands the rays of all points of the grid to form.superpose(block), and special points to form.superpose(i, slope).
template <class Face, class Form>
void superpose_rays(Transducer& element, const Face& face, Form& form) {
  int most_rays = 0;
  for (int edge = 0; edge < Face::edges; ++edge) most_rays = std::max(most_rays, face.rays(edge));
  RayBlock block(most_rays);
  GatheredPoints gathered[Face::edges];
  const auto flush = [&](int edge) {
    gathered[edge].visit_blocks(form.pulse_width(), [&](const RayPoint* first, int count) {
      block.rays = face.rays(edge);
      block.count = count;
      for (int p = 0; p < count; ++p) {
        const RayPoint& point = first[p];
        block.index[p] = point.index;
        block.x[p] = point.at.x, block.y[p] = point.at.y, block.z[p] = point.at.z;
        block.arrivals[p] = point.arrivals;
      }
      block.pad();
      face.fill(edge, block);
      form.superpose(block);
    });
    gathered[edge].clear();
  };
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    const int edge = face.classify(p);
    if (edge == no_field) return;
    if (edge == special_point) return form.superpose(i, face.at_special_point());
    gathered[edge].push({i, p, face.arrivals(p)});
    if (gathered[edge].full()) flush(edge);
  });
  for (int edge = 0; edge < Face::edges; ++edge) flush(edge);
}

}  // namespace kesto
