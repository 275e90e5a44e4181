// The nonlinear and absorbing step of all harmonics, each node by itself: the lanes are nodes.
//
// A block of nodes is transposed into vectors, one for each part of each harmonic, and stays in the first-level cache
// for the whole step. The step is Runge-Kutta's of third order in the form that only adds to the stages, which damps
// where it errs: energy does not grow. Where a shock would carry a harmonic by more than a small angle, it is divided.
#pragma once

#include "kzk/lanes/transform_lanes.h"

namespace kesto {

// Of the pairs of vectors `distance` apart, exchanges the lanes that differ in that bit.
template <class T, int distance>
KESTO_INLINE void exchange_lanes(Double<T> (&v)[T::width]) {
  for (int start = 0; start < T::width; start += 2 * distance) {
    for (int i = start; i < start + distance; ++i) {
      const Double<T> a = v[i], b = v[i + distance];
      if constexpr (T::width == 2) {
        v[i] = __builtin_shufflevector(a, b, 0, 2), v[i + distance] = __builtin_shufflevector(a, b, 1, 3);
      } else if constexpr (T::width == 4 && distance == 1) {
        v[i] = __builtin_shufflevector(a, b, 0, 4, 2, 6), v[i + distance] = __builtin_shufflevector(a, b, 1, 5, 3, 7);
      } else if constexpr (T::width == 4) {
        v[i] = __builtin_shufflevector(a, b, 0, 1, 4, 5), v[i + distance] = __builtin_shufflevector(a, b, 2, 3, 6, 7);
      } else if constexpr (distance == 1) {
        v[i] = __builtin_shufflevector(a, b, 0, 8, 2, 10, 4, 12, 6, 14);
        v[i + distance] = __builtin_shufflevector(a, b, 1, 9, 3, 11, 5, 13, 7, 15);
      } else if constexpr (distance == 2) {
        v[i] = __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
        v[i + distance] = __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
      } else {
        v[i] = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
        v[i + distance] = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
      }
    }
  }
}

// W vectors of W lanes: lane l of vector v becomes lane v of vector l.
template <class T>
KESTO_INLINE void transpose(Double<T> (&v)[T::width]) {
  exchange_lanes<T, 1>(v);
  if constexpr (T::width > 2) exchange_lanes<T, 2>(v);
  if constexpr (T::width > 4) exchange_lanes<T, 4>(v);
}

// Harmonic n of a block at re[(n - 1) W], im[(n - 1) W].
template <class T>
KESTO_INLINE void read_block(const NonlinearWork& w, const double* field, int node, double* re, double* im) {
  constexpr int W = T::width;
  for (int part = 0; part < 2; ++part) {
    double* const to = part == 0 ? re : im;
    for (int g = 0; g < w.padded; g += W) {
      Double<T> v[W];
      for (int l = 0; l < W; ++l) v[l] = load<W>(field + ((node + l) * 2 + part) * w.padded + g);
      transpose<T>(v);
      for (int n = 0; n < W; ++n) store<W>(to + (g + n) * W, v[n]);
    }
  }
}

template <class T>
KESTO_INLINE void write_block(const NonlinearWork& w, double* field, int node, const double* re, const double* im) {
  constexpr int W = T::width;
  for (int part = 0; part < 2; ++part) {
    const double* const from = part == 0 ? re : im;
    for (int g = 0; g < w.padded; g += W) {
      Double<T> v[W];
      for (int n = 0; n < W; ++n) v[n] = load<W>(from + (g + n) * W);
      transpose<T>(v);
      for (int l = 0; l < W; ++l) store<W>(field + ((node + l) * 2 + part) * w.padded + g, v[l]);
    }
  }
}

// Running sums of products, twice over so that the additions do not wait for each other.
template <class T>
struct ProductSums {
  Double<T> rr[2] = {}, ii[2] = {}, ri[2] = {}, ir[2] = {};

  KESTO_INLINE void add(int slot, const double* ar, const double* ai, const double* br, const double* bi) {
    constexpr int W = T::width;
    const Double<T> a = load<W>(ar), b = load<W>(br), c = load<W>(ai), d = load<W>(bi);
    rr[slot] = multiply_add<T>(a, b, rr[slot]), ii[slot] = multiply_add<T>(c, d, ii[slot]);
    ri[slot] = multiply_add<T>(a, d, ri[slot]), ir[slot] = multiply_add<T>(c, b, ir[slot]);
  }
};

// S_n = sum_{m<n} p_m p_{n-m} + 2 sum_{m>n} p_m p*_{m-n} for harmonic n, of which the first sum is twice its half.
template <class T>
KESTO_INLINE ComplexLanes<T> direct_sum(int harmonics, int n, const double* re, const double* im) {
  constexpr int W = T::width;
  ProductSums<T> sums, differences;
  const int half = (n - 1) / 2;
  int m = 0;  // of harmonic m + 1
  for (; m + 2 <= half; m += 2) {
    for (int slot = 0; slot < 2; ++slot) {
      const int up = (m + slot) * W, down = (n - 2 - m - slot) * W;
      sums.add(slot, re + up, im + up, re + down, im + down);
    }
  }
  if (m < half) sums.add(0, re + m * W, im + m * W, re + (n - 2 - m) * W, im + (n - 2 - m) * W);
  const int last = harmonics - n;
  for (m = 0; m + 2 <= last; m += 2) {
    for (int slot = 0; slot < 2; ++slot) {
      const int low = (m + slot) * W, high = (n + m + slot) * W;
      differences.add(slot, re + high, im + high, re + low, im + low);
    }
  }
  if (m < last) differences.add(0, re + (n + m) * W, im + (n + m) * W, re + m * W, im + m * W);
  ComplexLanes<T> sum = {2.0 * ((sums.rr[0] - sums.ii[0]) + (sums.rr[1] - sums.ii[1]) +
                                (differences.rr[0] + differences.ii[0]) + (differences.rr[1] + differences.ii[1])),
                         2.0 * ((sums.ri[0] + sums.ir[0]) + (sums.ri[1] + sums.ir[1]) +
                                (differences.ir[0] - differences.ri[0]) + (differences.ir[1] - differences.ri[1]))};
  if (n % 2 == 0) {
    const Double<T> ar = load<W>(re + half * W), ai = load<W>(im + half * W);
    sum.re = sum.re + (ar * ar - ai * ai);
    sum.im = sum.im + 2.0 * ar * ai;
  }
  return sum;
}

// Where the parts of a block lie: [harmonics or samples][lanes].
struct BlockArrays {
  double *re, *im;
};

template <class T>
KESTO_INLINE void sum_directly(const NonlinearWork& w, const BlockArrays& of, const BlockArrays& sum) {
  constexpr int W = T::width;
  for (int n = 1; n <= w.harmonics; ++n) {
    const ComplexLanes<T> s = direct_sum<T>(w.harmonics, n, of.re, of.im);
    store<W>(sum.re + (n - 1) * W, s.re);
    store<W>(sum.im + (n - 1) * W, s.im);
  }
}

// The sums of two blocks as the spectra of their squared waveforms, one in the real and one in the imaginary part.
template <class T>
KESTO_INLINE void sum_by_transform(const NonlinearWork& w, const BlockArrays (&of)[2], const BlockArrays (&sum)[2],
                                   const BlockArrays& wave, const BlockArrays& other) {
  constexpr int W = T::width;
  const int length = w.transform;
  const auto at = [](const double* from, int i) KESTO_INLINE_LAMBDA { return load<W>(from + i * W); };
  store<W>(wave.re, Double<T>{});
  store<W>(wave.im, Double<T>{});
  for (int n = 1; n <= length / 2; ++n) {
    Double<T> ar = {}, ai = {}, br = {}, bi = {};
    if (n <= w.harmonics) {
      ar = at(of[0].re, n - 1), ai = at(of[0].im, n - 1), br = at(of[1].re, n - 1), bi = at(of[1].im, n - 1);
    }
    store<W>(wave.re + n * W, ar - bi), store<W>(wave.im + n * W, ai + br);
    store<W>(wave.re + (length - n) * W, ar + bi), store<W>(wave.im + (length - n) * W, br - ai);
  }
  const bool moved = transform_lanes<T>(length, w.roots, wave.im, wave.re, other.im, other.re);
  const BlockArrays time = moved ? other : wave, spare = moved ? wave : other;
  for (int i = 0; i < length; ++i) {
    const Double<T> a = at(time.re, i), b = at(time.im, i);
    store<W>(time.re + i * W, a * a), store<W>(time.im + i * W, b * b);
  }
  const bool again = transform_lanes<T>(length, w.roots, time.re, time.im, spare.re, spare.im);
  const BlockArrays spectrum = again ? spare : time;
  const double half = 0.5 / length;
  for (int n = 1; n <= w.harmonics; ++n) {
    const Double<T> pr = at(spectrum.re, n), pi = at(spectrum.im, n);
    const Double<T> mr = at(spectrum.re, length - n), mi = at(spectrum.im, length - n);
    store<W>(sum[0].re + (n - 1) * W, half * (pr + mr)), store<W>(sum[0].im + (n - 1) * W, half * (pi - mi));
    store<W>(sum[1].re + (n - 1) * W, half * (pi + mi)), store<W>(sum[1].im + (n - 1) * W, half * (mr - pr));
  }
}

// to = old_share u + (1 - old_share) (from + step j n sum)
template <class T>
KESTO_INLINE void mix_stage(int harmonics, double step, double old_share, const BlockArrays& u, const BlockArrays& from,
                            const BlockArrays& sum, const BlockArrays& to) {
  constexpr int W = T::width;
  const auto at = [](const double* a, int i) KESTO_INLINE_LAMBDA { return load<W>(a + i * W); };
  for (int n = 0; n < harmonics; ++n) {
    const Double<T> turn = broadcast<T>(step * (n + 1));
    const Double<T> re = minus_product<T>(turn, at(sum.im, n), at(from.re, n));
    const Double<T> im = multiply_add<T>(turn, at(sum.re, n), at(from.im, n));
    store<W>(to.re + n * W, old_share * at(u.re, n) + (1 - old_share) * re);
    store<W>(to.im + n * W, old_share * at(u.im, n) + (1 - old_share) * im);
  }
}

// Into how many parts a step is divided, so that none turns the last harmonic by more than about half a radian.
template <class T>
KESTO_INLINE int parts_of_step(const NonlinearWork& w, const BlockArrays& u) {
  constexpr int W = T::width;
  constexpr double angle = 0.75;
  Double<T> sum = {};
  for (int n = 0; n < w.harmonics; ++n) {
    const Double<T> re = load<W>(u.re + n * W), im = load<W>(u.im + n * W);
    sum = sum + sqrt<T>(multiply_add<T>(re, re, im * im));
  }
  double largest = 0;
  for (int l = 0; l < W; ++l) largest = sum[l] > largest ? sum[l] : largest;
  const double parts = 4 * w.harmonics * w.strength * largest / angle;
  return parts < 1e6 ? static_cast<int>(parts) + 1 : 1000000;
}

template <class T>
KESTO_INLINE void absorb_block(const NonlinearWork& w, const BlockArrays& u) {
  constexpr int W = T::width;
  for (int n = 0; n < w.harmonics; ++n) {
    store<W>(u.re + n * W, w.factor[n] * load<W>(u.re + n * W));
    store<W>(u.im + n * W, w.factor[n] * load<W>(u.im + n * W));
  }
}

template <class T, int blocks>
KESTO_INLINE void nonlinear_lanes(const NonlinearWork& w, double* field) {
  constexpr int W = T::width;
  const int part = w.padded * W;
  BlockArrays u[blocks], stage[blocks], sum[blocks];
  double* next = w.scratch;
  for (BlockArrays(*const arrays)[blocks] : {&u, &stage, &sum}) {
    for (int b = 0; b < blocks; ++b) {
      (*arrays)[b] = {next, next + part};
      next += 2 * part;
    }
  }
  const int wave_part = w.transform * W;
  const BlockArrays wave = {next, next + wave_part}, other = {next + 2 * wave_part, next + 3 * wave_part};
  const auto sums_of = [&](const BlockArrays(&of)[blocks]) KESTO_INLINE_LAMBDA {
    if constexpr (blocks == 2) {
      sum_by_transform<T>(w, of, sum, wave, other);
    } else {
      sum_directly<T>(w, of[0], sum[0]);
    }
  };
  for (int node = w.first; node < w.last; node += blocks * W) {
    int parts = 0;
    for (int b = 0; b < blocks; ++b) {
      read_block<T>(w, field, node + b * W, u[b].re, u[b].im);
      absorb_block<T>(w, u[b]);
      const int here = w.strength > 0 ? parts_of_step<T>(w, u[b]) : 0;
      parts = here > parts ? here : parts;
    }
    for (int k = 0; k < parts; ++k) {
      const double step = w.strength / parts;
      const auto mix = [&](double share, const BlockArrays(&from)[blocks], const BlockArrays(&to)[blocks])
                           KESTO_INLINE_LAMBDA {
                             for (int b = 0; b < blocks; ++b)
                               mix_stage<T>(w.harmonics, step, share, u[b], from[b], sum[b], to[b]);
                           };
      sums_of(u);
      mix(0, u, stage);
      sums_of(stage);
      mix(0.75, stage, stage);
      sums_of(stage);
      mix(1.0 / 3, stage, u);
    }
    for (int b = 0; b < blocks; ++b) {
      absorb_block<T>(w, u[b]);
      write_block<T>(w, field, node + b * W, u[b].re, u[b].im);
    }
  }
}

}  // namespace kesto
