// Discrete Fourier transforms of as many sequences as there are lanes, for lengths 2^a and 3 2^a.
#pragma once

#include <utility>

#include "kzk/lanes/diffraction_lanes.h"

namespace kesto {

// X_k = sum_i x_i e^{-2 pi j i k / length}, or with e^{+...} when the parts are handed over as (im, re); not divided by
// the length. Stockham's self-sorting passes of radix 4, 3 and 2 from one pair of arrays into the other: the result is
// where the returned flag says. Arrays are [length][lanes]. roots: cosines, then sines of 2 pi i / length.
template <class T>
KESTO_INLINE bool transform_lanes(int length, const double* roots, double* re, double* im, double* other_re,
                                  double* other_im) {
  constexpr int W = T::width;
  const auto at = [](const double* from, int i) KESTO_INLINE_LAMBDA { return load<W>(from + i * W); };
  const double* const cosines = roots;
  const double* const sines = roots + length;
  bool in_other = false;
  for (int n = length, stride = 1; n > 1;) {
    const int radix = n % 3 == 0 ? 3 : n % 4 == 0 ? 4 : 2;
    const int m = n / radix;
    for (int p = 0; p < m; ++p) {
      const int turn = p * stride;  // of 2 pi / length
      const auto put = [&](int to, int power, Double<T> r, Double<T> i) KESTO_INLINE_LAMBDA {
        const Double<T> c = broadcast<T>(cosines[power * turn]), s = broadcast<T>(sines[power * turn]);
        store<W>(other_re + to * W, multiply_add<T>(i, s, r * c));
        store<W>(other_im + to * W, minus_product<T>(r, s, i * c));
      };
      for (int q = 0; q < stride; ++q) {
        const int from = q + stride * p, to = q + stride * radix * p;
        const Double<T> ar = at(re, from), ai = at(im, from);
        const Double<T> br = at(re, from + stride * m), bi = at(im, from + stride * m);
        if (radix == 2) {
          store<W>(other_re + to * W, ar + br);
          store<W>(other_im + to * W, ai + bi);
          put(to + stride, 1, ar - br, ai - bi);
          continue;
        }
        const Double<T> cr = at(re, from + 2 * stride * m), ci = at(im, from + 2 * stride * m);
        if (radix == 3) {
          constexpr double sine = 0.86602540378443864676;
          const Double<T> sr = br + cr, si = bi + ci, dr = sine * (br - cr), di = sine * (bi - ci);
          const Double<T> hr = ar - 0.5 * sr, hi = ai - 0.5 * si;
          store<W>(other_re + to * W, ar + sr);
          store<W>(other_im + to * W, ai + si);
          put(to + stride, 1, hr + di, hi - dr);
          put(to + 2 * stride, 2, hr - di, hi + dr);
          continue;
        }
        const Double<T> dr = at(re, from + 3 * stride * m), di = at(im, from + 3 * stride * m);
        const Double<T> er = ar + cr, ei = ai + ci, fr = ar - cr, fi = ai - ci;
        const Double<T> gr = br + dr, gi = bi + di, hr = br - dr, hi = bi - di;
        store<W>(other_re + to * W, er + gr);
        store<W>(other_im + to * W, ei + gi);
        put(to + stride, 1, fr + hi, fi - hr);
        put(to + 2 * stride, 2, er - gr, ei - gi);
        put(to + 3 * stride, 3, fr - hi, fi + hr);
      }
    }
    std::swap(re, other_re);
    std::swap(im, other_im);
    in_other = !in_other;
    n = m;
    stride *= radix;
  }
  return in_other;
}

}  // namespace kesto
