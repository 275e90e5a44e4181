#include "kesto/internal/gauss.h"

#include <algorithm>

#include "core/numerical_integration.h"

namespace kesto {

GaussRule::GaussRule(int nodes) : node_(static_cast<std::size_t>(nodes)), weight_(node_.size()) {
  NumericalIntegration().grule(nodes, node_.data(), weight_.data());
  std::reverse(node_.begin(), node_.end());
  std::reverse(weight_.begin(), weight_.end());
}

}  // namespace kesto
