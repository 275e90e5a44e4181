// Gauss-Legendre quadrature of the references, apart from the library's own.
#pragma once

#include <vector>

namespace kesto::validation {

struct GaussNode {
  double x, weight;
};

// On [-1, 1], n >= 2: the roots of P_n by Newton's method.
std::vector<GaussNode> gauss_legendre(int n);

// The integral of f from a to b by `panels` panels of these nodes each.
template <class F>
auto integrate(const std::vector<GaussNode>& nodes, int panels, double a, double b, F f) {
  decltype(f(a)) sum = {};
  const double half = (b - a) / (2 * panels);
  for (int panel = 0; panel < panels; ++panel) {
    const double middle = a + (2 * panel + 1) * half;
    for (const GaussNode& node : nodes) sum += half * node.weight * f(middle + half * node.x);
  }
  return sum;
}

}  // namespace kesto::validation
