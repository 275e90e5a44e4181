#include "kzk/plane_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace kesto {

PointQueue::PointQueue(const BeamPlan& plan, const BeamPoints& points) {
  entries_.reserve(points.count);
  for (std::size_t i = 0; i < points.count; ++i) {
    const BeamPlace place = place_of(plan.frame, points.r[i], points.z[i]);
    if (place.zeta > 0 && place.xi <= plan.grid.rmax) entries_.push_back({i, place.xi, place.zeta});
  }
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.zeta < b.zeta; });
}

RadialStencil radial_stencil(double xi_in_steps, int nodes) {
  const int i = std::min(static_cast<int>(xi_in_steps), nodes - 3);
  const double t = xi_in_steps - i;
  return {{std::abs(i - 1), i, i + 1, i + 2},
          {-t * (t - 1) * (t - 2) / 6, (t + 1) * (t - 1) * (t - 2) / 2, -(t + 1) * t * (t - 2) / 2,
           (t + 1) * t * (t - 1) / 6}};
}

void lagrange_weights(const double* at, int count, double x, double* weight) {
  for (int i = 0; i < count; ++i) {
    weight[i] = 1;
    for (int k = 0; k < count; ++k) {
      if (k != i) weight[i] *= (x - at[k]) / (at[i] - at[k]);
    }
  }
}

}  // namespace kesto
