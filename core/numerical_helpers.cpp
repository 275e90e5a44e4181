#include "core/numerical_helpers.h"

#include <cmath>

namespace {

template <class T>
void exponential(T x, T y, T& re, T& im) {
  if (y == 0) {
    re = x == 0 ? 1 : std::exp(x);
    im = 0;
    return;
  }
  const T sine = std::sin(y), cosine = std::cos(y);
  const T magnitude = x == 0 ? 1 : std::exp(x);
  re = magnitude * cosine;
  im = magnitude * sine;
}

template <class T>
std::complex<T> exponential(T x, T y) {
  T re, im;
  exponential(x, y, re, im);
  return {re, im};
}

}  // namespace

std::complex<double> smart_exp(double x, double y) { return exponential(x, y); }
std::complex<double> smart_exp(std::complex<double> z) { return exponential(z.real(), z.imag()); }
void smart_exp(double x, double y, double& re, double& im) { exponential(x, y, re, im); }
std::complex<float> smart_exp(float x, float y) { return exponential(x, y); }
std::complex<float> smart_exp(std::complex<float> z) { return exponential(z.real(), z.imag()); }

std::complex<double> fast_sinc(double a, double b) {
  if (a == 0 && b == 0) return 1;
  const double decaying = std::exp(-b), growing = 0.5 * std::exp(b);
  const double re = std::sin(a) * (decaying + growing), im = std::cos(a) * (growing - decaying);
  const double squared = a * a + b * b;
  return {(re * a + im * b) / squared, (im * a - re * b) / squared};
}

std::complex<double> fast_sinc(std::complex<double> z) { return fast_sinc(z.real(), z.imag()); }

double sign(double x) { return std::fabs(x) <= 1e-10 ? 0.0 : x / std::fabs(x); }

bool isPowerOfTwo(int n) { return n > 0 && (n & (n - 1)) == 0; }
