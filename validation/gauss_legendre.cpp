#include "validation/gauss_legendre.h"

#include <cmath>

#include "validation/fluid.h"

namespace kesto::validation {

std::vector<GaussNode> gauss_legendre(int n) {
  std::vector<GaussNode> nodes;
  for (int i = 0; i < n; ++i) {
    double x = std::cos(pi * (i + 0.75) / (n + 0.5)), slope = 0;
    for (double change = 1; std::abs(change) > 1e-15;) {
      double previous = 1, value = x;
      for (int m = 2; m <= n; ++m) {
        const double next = ((2 * m - 1) * x * value - (m - 1) * previous) / m;
        previous = value;
        value = next;
      }
      slope = n * (x * value - previous) / (x * x - 1);
      change = value / slope;
      x -= change;
    }
    nodes.push_back({x, 2 / ((1 - x * x) * slope * slope)});
  }
  return nodes;
}

}  // namespace kesto::validation
