// Implicit diffraction steps of all harmonics at once: the recurrence runs along the radius, the lanes are harmonics.
//
// Row i of harmonic n, divided by g_n = -j half / (2 n k dr^2), has real off-diagonals that are the same for all
// harmonics, so one complex table of pivots M is all that is read besides the field:
//   M_i = 1 / (diagonal_i - lower_i upper_{i-1} M_{i-1})
//   y_i = M_i (q_i / g + lower_i y_{i-1}),   x_i = y_i + M_i upper_i x_{i+1}.
// Crank-Nicolson over a step is backward Euler to its middle, x, followed by 2 x - q: the same table serves both.
// The chain of dependent operations is two multiply-adds a node; vectors of harmonics are taken two at a time.
#pragma once

#include "core/lanes/lanes.h"
#include "kzk/kernels.h"

namespace kesto {

template <class T>
struct ComplexLanes {
  Double<T> re, im;
};

template <class T>
KESTO_INLINE Double<T> minus_product(Double<T> a, Double<T> b, Double<T> c) {  // c - a b
  return multiply_add<T>(-a, b, c);
}

template <class T>
KESTO_INLINE void factorise_lanes(const DiffractionWork& w) {
  const int stride = 2 * w.padded;
  for (int g = 0; g < w.padded; g += T::width) {
    const Double<T> n = load<T::width>(w.number + g), inverse_step = load<T::width>(w.inverse_step + g);
    ComplexLanes<T> pivot = {Double<T>{}, Double<T>{}};
    for (int i = 0; i < w.nodes; ++i) {
      const double link = i == 0 ? 0 : w.lower[i] * w.upper[i - 1];
      const Double<T> re = (w.lower[i] + w.upper[i]) + n * n * w.well[i] - link * pivot.re;
      const Double<T> im = inverse_step - link * pivot.im;
      const Double<T> scale = 1.0 / (re * re + im * im);
      pivot = {re * scale, -im * scale};
      store<T::width>(w.pivots + i * stride + g, pivot.re);
      store<T::width>(w.pivots + i * stride + w.padded + g, pivot.im);
    }
  }
}

template <class T, int groups, bool twice_less_old>
KESTO_INLINE void solve_groups(const DiffractionWork& w, double* field, int g) {
  const int stride = 2 * w.padded, imag = w.padded;
  Double<T> inverse_step[groups];
  ComplexLanes<T> y[groups], x[groups];
  for (int k = 0; k < groups; ++k) {
    inverse_step[k] = load<T::width>(w.inverse_step + g + k * T::width);
    y[k] = x[k] = {Double<T>{}, Double<T>{}};
  }
  for (int i = 0; i < w.nodes; ++i) {
    const Double<T> lower = broadcast<T>(w.lower[i]);
    for (int k = 0; k < groups; ++k) {
      const int at = i * stride + g + k * T::width;
      const Double<T> mr = load<T::width>(w.pivots + at), mi = load<T::width>(w.pivots + at + imag);
      const Double<T> re = -inverse_step[k] * load<T::width>(field + at + imag);  // q / g, 1/g = j inverse_step
      const Double<T> im = inverse_step[k] * load<T::width>(field + at);
      const Double<T> lr = lower * mr, li = lower * mi;
      const Double<T> known_re = minus_product<T>(mi, im, mr * re);
      const Double<T> known_im = multiply_add<T>(mi, re, mr * im);
      const ComplexLanes<T> before = y[k];
      y[k].re = minus_product<T>(li, before.im, multiply_add<T>(lr, before.re, known_re));
      y[k].im = multiply_add<T>(li, before.re, multiply_add<T>(lr, before.im, known_im));
      store<T::width>(w.eliminated + at, y[k].re);
      store<T::width>(w.eliminated + at + imag, y[k].im);
    }
  }
  for (int i = w.nodes - 1; i >= 0; --i) {
    const Double<T> upper = broadcast<T>(w.upper[i]), kept = broadcast<T>(w.kept[i]);
    for (int k = 0; k < groups; ++k) {
      const int at = i * stride + g + k * T::width;
      const Double<T> ur = upper * load<T::width>(w.pivots + at), ui = upper * load<T::width>(w.pivots + at + imag);
      const ComplexLanes<T> above = x[k];
      x[k].re = minus_product<T>(ui, above.im, multiply_add<T>(ur, above.re, load<T::width>(w.eliminated + at)));
      x[k].im = multiply_add<T>(ui, above.re, multiply_add<T>(ur, above.im, load<T::width>(w.eliminated + at + imag)));
      if constexpr (twice_less_old) {
        const Double<T> re = 2.0 * x[k].re - load<T::width>(field + at);
        const Double<T> im = 2.0 * x[k].im - load<T::width>(field + at + imag);
        store<T::width>(field + at, kept * re);
        store<T::width>(field + at + imag, kept * im);
      } else {
        store<T::width>(field + at, kept * x[k].re);
        store<T::width>(field + at + imag, kept * x[k].im);
      }
    }
  }
}

template <class T, bool twice_less_old>
KESTO_INLINE void solve_lanes(const DiffractionWork& w, double* field) {
  int g = 0;
  for (; g + 2 * T::width <= w.padded; g += 2 * T::width) solve_groups<T, 2, twice_less_old>(w, field, g);
  if (g < w.padded) solve_groups<T, 1, twice_less_old>(w, field, g);
}

}  // namespace kesto
