#include "core/numerical_integration.h"

#include <cmath>
#include <cstddef>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/internal/pending_array.h"

using kesto::PendingArray;

namespace {

struct Node {
  double x, weight;
};

// The guess for the k-th largest root of the Legendre polynomial P_n, k from 1.
double guessed_root(double n, double k) {
  return (1 + (1 - 1 / n) / (-8 * n * n)) * std::cos((4 * k - 1) * kesto::pi / (4 * n + 2));
}

// One correction of the root guess t of P_n. The derivatives of P_n follow from its differential equation, so that P_n
// and P_n' can be expanded to fourth order about t: a step of Newton's method and its next terms, then a second step
// on the expansion. The weight comes from the same expansion.
Node corrected(int n, double t) {
  double previous = 1, p = t;  // P_(j-1), P_j
  for (int j = 2; j <= n; ++j) {
    const double s = t * p, d = s - previous;
    previous = p;
    p = d - d / j + s;
  }
  const double e1 = static_cast<double>(n) * (n + 1.0), q = 1 - t * t;
  const double d1 = n * (previous - t * p);
  const double dp = d1 / q;
  const double d2p = (2 * t * dp - e1 * p) / q;
  const double d3p = ((2 - e1) * dp + 4 * t * d2p) / q;
  const double d4p = ((6 - e1) * d2p + 6 * t * d3p) / q;
  const double u = p / dp, v = d2p / dp;
  double h = -u * (1 + (u / 2) * (v + u * (v * v - u * d3p / (3 * dp))));
  const double value = p + h * (dp + (h / 2) * (d2p + (h / 3) * (d3p + (h / 4) * d4p)));
  const double slope = dp + h * (d2p + (h / 2) * (d3p + h * d4p / 3));
  h -= value / slope;
  const double x = t + h;
  const double fx = d1 - h * e1 * (p + (h / 2) * (dp + (h / 3) * (d2p + (h / 4) * (d3p + 0.2 * h * d4p))));
  return {x, 2 * (1 - x * x) / (fx * fx)};
}

}  // namespace

NumericalIntegration::~NumericalIntegration() {
  kesto::release(abscissa);
  kesto::release(weight);
  kesto::release(cos_abscissa);
}

void NumericalIntegration::allocate_memory(int n) {
  if (n < 1) {
    kesto::print("Illegal number of abscissas %d\n", n);
    kesto::fail("Specified number of abscissas is less than 1.\n");
  }
  const auto count = static_cast<std::size_t>(n);
  PendingArray x = PendingArray::uninitialised(count), w = PendingArray::uninitialised(count);
  PendingArray cos_x = PendingArray::uninitialised(count);
  x.replace(abscissa), w.replace(weight), cos_x.replace(cos_abscissa);
  npoints = n;
}

void NumericalIntegration::grule(int n, double* x, double* w) const {
  const int half = n / 2 + n % 2;  // the non-negative nodes; the others mirror them
  for (int k = 1; k <= half; ++k) {
    const Node node = corrected(n, guessed_root(n, k));
    x[k - 1] = node.x;
    x[n - k] = -node.x;
    w[k - 1] = w[n - k] = node.weight;
  }
  if (half > n / 2) x[half - 1] = 0;
}

void NumericalIntegration::modifiedgrule(int n, double* x, double* w) const { grule(n, x, w); }

void NumericalIntegration::gauss_quadrature() { grule(npoints, abscissa, weight); }

void NumericalIntegration::gauss_quadrature(double a, double b) {
  gauss_quadrature();
  for (int i = 0; i < npoints; ++i) {
    abscissa[i] = abscissa[i] * (b - a) * 0.5 + (a + b) * 0.5;
    weight[i] = weight[i] * (b - a) * 0.5;
  }
}

void NumericalIntegration::gauss_quadrature_cylindrical() {
  gauss_quadrature();
  for (int i = 0; i < npoints; ++i) {
    abscissa[i] = abscissa[i] * kesto::pi * 0.5 + kesto::half_pi;
    cos_abscissa[i] = std::cos(abscissa[i]);
    weight[i] = weight[i] * kesto::pi * 0.5;
  }
}

void NumericalIntegration::midpoint_rule() {
  const double h = 2.0 / npoints;
  for (int k = 0; k < npoints; ++k) {
    abscissa[k] = k * h + (0.5 * h - 1);
    weight[k] = h;
  }
}

void NumericalIntegration::midpoint_rule(double a, double b) {
  const double h = (b - a) / npoints;
  for (int k = 0; k < npoints; ++k) {
    abscissa[k] = (k - 1) * h + (0.5 * h + a);
    weight[k] = h;
  }
}

void NumericalIntegration::set_kzk_parameters(float dz, float dr, float rmax, float dtau, float tau_length) {
  kzk_dz = dz, kzk_dr = dr, kzk_rmax = rmax;
  kzk_dtau = dtau, kzk_tau_length = tau_length;
}

void NumericalIntegration::cw_set_kzk_parameters(float dz, float dr, float rmax, int harmonics, int output_harmonic) {
  kzk_dz = dz, kzk_dr = dr, kzk_rmax = rmax;
  kzk_harmonics = harmonics, kzk_output_harmonic = output_harmonic;
}
