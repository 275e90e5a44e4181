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
#include <numeric>

#include "fields/delayed_slope.h"
#include "fields/point_road.h"
#include "fields/rays.h"

namespace kesto {

// Points on their way into blocks of rays, gathered while they follow each other in the grid, hence in the lines of the
// output, of which these touch eight cache lines each.
//
// The points of a block share a window of samples. In the order of the grid, lines of the output are written whole; by
// their first arrivals, points that lie anywhere get windows that are hardly longer than their own. The better is
// taken.
class GatheredPoints {
 public:
  static constexpr int capacity = 64;

  int count() const { return count_; }
  bool full() const { return count_ == capacity; }
  void clear() { count_ = 0; }

  void push(int index, const CartesianCoordinate& p, Arrivals arrivals) {
    order_[count_] = count_;
    index_[count_] = index;
    at_[count_] = p;
    arrivals_[count_] = arrivals;
    ++count_;
  }

  // To be called once the points are complete.
  void choose_order(double pulse_width) {
    constexpr double worth_sorting = 1.25;  // scattered writes against whole lines
    double own = 0;
    for (int p = 0; p < count_; ++p) own += arrivals_[p].last - arrivals_[p].first + pulse_width;
    const double shared = windows(pulse_width) * RayBlock::capacity;
    if (!(shared > worth_sorting * own)) return;
    std::sort(order_, order_ + count_, [this](int a, int b) {
      const double first = arrivals_[a].first, second = arrivals_[b].first;
      return first < second || (first == second && a < b);
    });
    if (!(shared > worth_sorting * windows(pulse_width) * RayBlock::capacity)) std::iota(order_, order_ + count_, 0);
  }

  // The points from `from` on, as many as fit.
  void fill(RayBlock& block, int from) const {
    block.count = std::min(RayBlock::capacity, count_ - from);
    for (int p = 0; p < block.count; ++p) {
      const int point = order_[from + p];
      block.index[p] = index_[point];
      block.x[p] = at_[point].x, block.y[p] = at_[point].y, block.z[p] = at_[point].z;
      block.arrivals[p] = arrivals_[point];
    }
    block.pad();
  }

 private:
  // The lengths of all blocks' windows together, s.
  double windows(double pulse_width) const {
    double sum = 0;
    for (int from = 0; from < count_; from += RayBlock::capacity) {
      Arrivals all = arrivals_[order_[from]];
      for (int p = from + 1; p < std::min(from + RayBlock::capacity, count_); ++p) {
        all.first = std::min(all.first, arrivals_[order_[p]].first);
        all.last = std::max(all.last, arrivals_[order_[p]].last);
      }
      sum += all.last - all.first + pulse_width;
    }
    return sum;
  }

  int count_ = 0;
  int order_[capacity];
  int index_[capacity];  // in the grid
  CartesianCoordinate at_[capacity];
  Arrivals arrivals_[capacity];
};

// Hands the rays of all points of the grid to form.superpose(block), and special points to form.superpose(i, slope).
template <class Face, class Form>
void superpose_rays(Transducer& element, const Face& face, Form& form) {
  int most_rays = 0;
  for (int edge = 0; edge < Face::edges; ++edge) most_rays = std::max(most_rays, face.rays(edge));
  RayBlock block(most_rays);
  GatheredPoints gathered[Face::edges];
  const auto flush = [&](int edge) {
    GatheredPoints& points = gathered[edge];
    points.choose_order(form.pulse_width());
    block.rays = face.rays(edge);
    for (int from = 0; from < points.count(); from += RayBlock::capacity) {
      points.fill(block, from);
      face.fill(edge, block);
      form.superpose(block);
    }
    points.clear();
  };
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    const int edge = face.classify(p);
    if (edge == no_field) return;
    if (edge == special_point) return form.superpose(i, face.at_special_point());
    gathered[edge].push(i, p, face.arrivals(p));
    if (gathered[edge].full()) flush(edge);
  });
  for (int edge = 0; edge < Face::edges; ++edge) flush(edge);
}

}  // namespace kesto
