#include "kesto/engine/rules.h"

#include <cmath>

#include "kesto/engine/constants.h"

namespace kesto {

namespace {

constexpr int nodes_of_all_levels = 13 * largest_level;  // and some: levels of 16 and less are 136

// Node i of n counted from the right end of [-1, 1], by Newton's method on the Legendre polynomial.
void gauss_node(int n, int i, double& x, double& weight) {
  x = std::cos(full_pi * (i + 0.75) / (n + 0.5));
  double slope = 0;
  for (int step = 0; step < 8; ++step) {
    double p = 1, below = 0;
    for (int j = 1; j <= n; ++j) {
      const double above = ((2 * j - 1) * x * p - (j - 1) * below) / j;
      below = p;
      p = above;
    }
    slope = n * (below - x * p) / (1 - x * x);
    const double change = p / slope;
    x -= change;
    if (std::fabs(change) < 1e-15) break;
  }
  weight = 2 / ((1 - x * x) * slope * slope);
}

}  // namespace

Rules::Rules(Rule rule)
    : rule_(rule),
      start_(largest_level + 1),
      node_(nodes_of_all_levels),
      weight_(nodes_of_all_levels),
      node_single_(nodes_of_all_levels),
      weight_single_(nodes_of_all_levels) {
  for (int level = 0; level <= largest_level; ++level) start_[level] = -1;
}

__attribute__((noinline, cold)) void Rules::fill(int level) {
  double* const node = node_.data() + used_;
  double* const weight = weight_.data() + used_;
  if (rule_ == Rule::midpoint) {
    for (int i = 0; i < level; ++i) {
      const double half = full_pi * (i + 0.5) / (2 * level), sine = std::sin(half), cosine = std::cos(half);
      node[i] = 2 * sine * sine;
      weight[i] = 2 * cosine * cosine;
    }
  } else {
    for (int i = 0; i < (level + 1) / 2; ++i) {
      double x, w;
      gauss_node(level, i, x, w);
      if (2 * i + 1 == level) x = 0;
      node[level - 1 - i] = x, weight[level - 1 - i] = w;
      node[i] = -x, weight[i] = w;
    }
    if (rule_ == Rule::gauss_from_foot) {
      for (int i = 0; i < level; ++i) {
        node[i] = (1 + node[i]) / 2;
        weight[i] /= 2;
      }
    }
  }
  for (int i = 0; i < level; ++i) {
    node_single_[used_ + i] = static_cast<float>(node[i]);
    weight_single_[used_ + i] = static_cast<float>(weight[i]);
  }
  start_[level] = used_;
  used_ += level;
}

}  // namespace kesto
