// Quadrature rules by level, filled as they are asked for; one set serves one call.
#pragma once

#include "core/internal/host.h"

namespace kesto {

// Every number of nodes to 16, then steps of an eighth of the octave: 5 % more nodes than asked for, on average.
constexpr int largest_level = 1024;

// Gauss-Legendre on [-1, 1] and on [0, 1]; midpoints psi of [0, pi] as 1 - cos psi and 1 + cos psi, without weights.
enum class Rule { gauss, gauss_from_foot, midpoint };

template <class Real>
struct RuleView {
  int n;
  const Real *node, *weight;  // of midpoints: 1 - cos psi, 1 + cos psi
};

class Rules {
 public:
  explicit Rules(Rule rule);

  // The smallest level of at least n nodes, 1 <= n <= largest_level.
  static int level_of(int n) {
    if (n <= 16) return n;
    int step = 2;
    while (n > 16 * step) step *= 2;
    return (n + step - 1) / step * step;
  }

  // `level` as level_of gives it. Sixteen numbers may be read from any node on.
  RuleView<double> of(int level, double) {
    const int at = start(level);
    return {level, node_.data() + at, weight_.data() + at};
  }
  RuleView<float> of(int level, float) {
    const int at = start(level);
    return {level, node_single_.data() + at, weight_single_.data() + at};
  }

 private:
  int start(int level) {
    if (start_[level] < 0) fill(level);
    return start_[level];
  }
  void fill(int level);

  Rule rule_;
  int used_ = 0;
  ScratchArray<int> start_;
  ScratchArray<double> node_, weight_;
  ScratchArray<float> node_single_, weight_single_;
};

}  // namespace kesto
