// The Gauss-Legendre rule on [-1, 1], nodes ascending.
#pragma once

#include <cstddef>
#include <vector>

namespace kesto {

class GaussRule {
 public:
  explicit GaussRule(int nodes);
  int size() const { return static_cast<int>(node_.size()); }
  double node(int i) const { return node_[static_cast<std::size_t>(i)]; }
  double weight(int i) const { return weight_[static_cast<std::size_t>(i)]; }

 private:
  std::vector<double> node_, weight_;
};

}  // namespace kesto
