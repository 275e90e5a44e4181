// Reads the values at points off the planes of a march: cubic interpolation along zeta and along xi.
#pragma once

#include <vector>

#include "kzk/harmonic_plan.h"

namespace kesto {

// The points of a march in the order in which its planes reach them.
class PointQueue {
 public:
  PointQueue(const BeamPlan& plan, const BeamPoints& points);

  struct Entry {
    std::size_t point;
    double xi, zeta;
  };
  // The next one not yet taken.
  bool empty() const { return next_ == entries_.size(); }
  const Entry& front() const { return entries_[next_]; }
  void pop() { ++next_; }

 private:
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
};

// The four nodes about a place and their weights. The field is even about the axis: node -i is node i.
struct RadialStencil {
  int node[4];
  double weight[4];
};
RadialStencil radial_stencil(double xi_in_steps, int nodes);

// Lagrange's weights at x of the nodes at[0..count), count <= 4.
void lagrange_weights(const double* at, int count, double x, double* weight);

}  // namespace kesto
