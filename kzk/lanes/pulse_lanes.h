// Steps of the waveforms. Diffraction solves a tridiagonal system for each sample, the lanes being runs of nodes;
// distortion takes each node's waveform by itself, the lanes being nodes.
#pragma once

#include "kzk/lanes/transform_lanes.h"

namespace kesto {

// How many vectors of nodes are brought together at once: neighbours in memory, a whole stride apart from sample to
// sample.
constexpr int pulse_vectors = 4;

// dp/dzeta = (c/2) lap int p dtau by Crank-Nicolson, the integral by the trapezoidal rule. With w = (p + p')/2 the mean
// of the old and the new plane and B = 2 sum of w over the earlier samples,
//   (1 - eps lap) u = p + B,  w = u - B,  B' = B + 2 w,  p' = 2 w - p,   eps = c dzeta dtau / 8,
// so that a sample needs no more than its right side. Backward Euler over half the step has the same matrix, p' = w.
//
// Each lane solves its run of nodes as if its neighbours were 0; the first and last values of all runs then tell, by a
// small matrix, the neighbours' true values, of which two known solutions add their part. The recurrences are as long
// as a run.
template <class T, bool twice_less_old>
KESTO_INLINE void pulse_diffraction_lanes(const PulseDiffractionWork& w, double* field) {
  constexpr int W = T::width;
  const auto at = [](const double* from, int j) KESTO_INLINE_LAMBDA { return load<W>(from + j * W); };
  for (int j = 0; j < w.run; ++j) store<W>(w.history + j * W, Double<T>{});
  for (int m = 0; m < w.samples; ++m) {
    double* const p = field + static_cast<std::size_t>(m) * static_cast<std::size_t>(w.run * W);
    Double<T> y = {};
    for (int j = 0; j < w.run; ++j) {
      y = multiply_add<T>(at(w.lower, j), y, at(w.pivots, j) * (at(p, j) + at(w.history, j)));
      store<W>(w.solution + j * W, y);
    }
    Double<T> x = {};
    for (int j = w.run - 1; j >= 0; --j) {
      x = multiply_add<T>(at(w.upper, j), x, at(w.solution, j));
      store<W>(w.solution + j * W, x);
    }
    Double<T> left = {}, right = {};
    for (int lane = 0; lane < W; ++lane) {
      const Double<T> first = broadcast<T>(w.solution[lane]);
      const Double<T> last = broadcast<T>(w.solution[(w.run - 1) * W + lane]);
      const double *of_first = w.ends + lane * 2 * W, *of_last = w.ends + (W + lane) * 2 * W;
      left = multiply_add<T>(load<W>(of_first), first, multiply_add<T>(load<W>(of_last), last, left));
      right = multiply_add<T>(load<W>(of_first + W), first, multiply_add<T>(load<W>(of_last + W), last, right));
    }
    for (int j = 0; j < w.run; ++j) {
      const Double<T> u =
          multiply_add<T>(at(w.left, j), left, multiply_add<T>(at(w.right, j), right, at(w.solution, j)));
      const Double<T> history = at(w.history, j), mean = u - history;
      store<W>(w.history + j * W, u + mean);
      store<W>(p + j * W, at(w.kept, j) * (twice_less_old ? 2.0 * mean - at(p, j) : mean));
    }
  }
}

// a where the sign is negative, else b. Done by bits: nested choices by comparison would be taken apart lane by lane.
template <class T>
KESTO_INLINE Double<T> where_negative(Double<T> sign, Double<T> a, Double<T> b) {
  const Bits<T> mask = reinterpret_cast<Bits<T>>(reinterpret_cast<typename Lanes<T::width>::Int>(sign) >> 63);
  return reinterpret_cast<Double<T>>((bits_of<T>(a) & mask) | (bits_of<T>(b) & ~mask));
}
template <class T>
KESTO_INLINE Double<T> lesser(Double<T> a, Double<T> b) {
  return where_negative<T>(a - b, a, b);
}
template <class T>
KESTO_INLINE Double<T> greater(Double<T> a, Double<T> b) {
  return where_negative<T>(a - b, b, a);
}

// Moves a waveform earlier by a shift of less than one sample: Lagrange's interpolation among six.
template <class T>
KESTO_INLINE void shift_trace(int samples, Double<T> shift, double* trace) {
  constexpr int W = T::width, taps = 6, before = 2;
  Double<T> weight[taps];
  for (int i = 0; i < taps; ++i) {
    weight[i] = broadcast<T>(1.0);
    for (int k = 0; k < taps; ++k) {
      if (k != i) weight[i] = weight[i] * (shift - (k - before)) * (1.0 / (i - k));
    }
  }
  Double<T> window[taps] = {};
  const auto sample = [&](int m) KESTO_INLINE_LAMBDA { return load<W>(trace + (m < samples ? m : samples - 1) * W); };
  for (int k = before; k < taps - 1; ++k) window[k + 1] = sample(k - before);
  for (int m = 0; m < samples; ++m) {
    for (int k = 0; k < taps - 1; ++k) window[k] = window[k + 1];
    window[taps - 1] = sample(m + taps - 1 - before);
    Double<T> sum = weight[0] * window[0];
    for (int k = 1; k < taps; ++k) sum = multiply_add<T>(weight[k], window[k], sum);
    store<W>(trace + m * W, sum);
  }
}

// Moves each part of a waveform earlier by strength p, at most one sample, and resamples it.
//
// trace[m] are means over samples, so that A, their running sum at the samples' edges, is exact. An edge with the
// pressure p moves by d and its A falls by strength p^2 / 2, the area that the waveform's own tilt moves across it: the
// area under the waveform is kept, and with it the place of a shock, wherever it lies within a sample. Between moved
// edges A is the cubic that has p as its slope there, limited where that would overshoot a steep front.
template <class T>
KESTO_INLINE void distort_trace(int samples, double strength, double* trace, double* edge_pressure, double* edge_area) {
  constexpr int W = T::width;
  const auto at = [](const double* from, int i) KESTO_INLINE_LAMBDA { return load<W>(from + i * W); };
  // Edge f lies before sample f and is stored at f + 1; one edge more on either side.
  Double<T> a = {}, b = {}, c = {}, area = {};  // samples f - 2, f - 1, f
  c = at(trace, 0);
  store<W>(edge_pressure, Double<T>{}), store<W>(edge_area, Double<T>{});
  for (int f = 0; f <= samples + 1; ++f) {
    const Double<T> d = f + 1 < samples ? at(trace, f + 1) : c;
    Double<T> p = (7.0 / 12) * (b + c) - (1.0 / 12) * (a + d);
    // Beyond its neighbours only as far as a smooth crest takes it.
    const Double<T> room = 0.5 * lesser<T>(greater<T>(b - a, a - b), greater<T>(d - c, c - d));
    p = lesser<T>(greater<T>(p, lesser<T>(b, c) - room), greater<T>(b, c) + room);
    store<W>(edge_pressure + (f + 1) * W, p), store<W>(edge_area + (f + 1) * W, area);
    area = area + c;
    a = b, b = c, c = d;
  }
  Double<T> before = {};
  for (int f = 0; f <= samples; ++f) {
    // The moved segment in which edge f now lies: the one behind it where the edge moved earlier.
    const Double<T> p_low = at(edge_pressure, f), p_mid = at(edge_pressure, f + 1), p_high = at(edge_pressure, f + 2);
    const Double<T> a_low = at(edge_area, f), a_mid = at(edge_area, f + 1), a_high = at(edge_area, f + 2);
    const Double<T> moved = strength * p_mid;
    Double<T> p0 = where_negative<T>(moved, p_low, p_mid), p1 = where_negative<T>(moved, p_mid, p_high);
    Double<T> area0 = where_negative<T>(moved, a_low, a_mid), area1 = where_negative<T>(moved, a_mid, a_high);
    const Double<T> edge0 = p0, edge1 = p1, whole = area1 - area0;
    // From the segment's first edge, unmoved, to f.
    const Double<T> start = where_negative<T>(moved, broadcast<T>(1.0), broadcast<T>(0.0));
    const Double<T> d0 = strength * p0, d1 = strength * p1;
    area0 = area0 - 0.5 * strength * p0 * p0, area1 = area1 - 0.5 * strength * p1 * p1;
    const Double<T> length = greater<T>(1.0 + d0 - d1, broadcast<T>(1e-9)), one_by_length = 1.0 / length;
    const Double<T> t = greater<T>(lesser<T>((start + d0) * one_by_length, broadcast<T>(1.0)), broadcast<T>(0.0));
    const Double<T> mean = (area1 - area0) * one_by_length, jump = p1 - p0;
    // The parabola with the ends p0 and p1 overshoots where its mean is near one of them; where p rises or falls all
    // the way, the other gives way.
    const Double<T> off = jump * (mean - 0.5 * (p0 + p1)), bound = jump * jump * (1.0 / 6);
    const Double<T> turns = (p0 - mean) * (p1 - mean);
    const Double<T> q0 = where_negative<T>(bound - off, 3.0 * mean - 2.0 * p1, p0);
    const Double<T> q1 = where_negative<T>(bound + off, 3.0 * mean - 2.0 * p0, p1);
    p0 = where_negative<T>(turns, q0, p0), p1 = where_negative<T>(turns, q1, p1);
    const Double<T> rest = 1.0 - t;
    const Double<T> cubic = area0 + length * t * (t * (3.0 - 2.0 * t) * mean + rest * (rest * p0 - t * p1));
    // Where a front folds the segment, no cubic will do: A is the largest that reaches f from either side with the
    // pressures there are, which is the area rule.
    const Double<T> low = lesser<T>(lesser<T>(edge0, edge1), whole), high = greater<T>(greater<T>(edge0, edge1), whole);
    const Double<T> behind = t * length, ahead = length - behind;
    const Double<T> least = greater<T>(area0 + low * behind, area1 - high * ahead);
    const Double<T> most = lesser<T>(area0 + high * behind, area1 - low * ahead);
    const Double<T> now = greater<T>(least, lesser<T>(most, cubic));
    if (f > 0) store<W>(trace + (f - 1) * W, now - before);
    before = now;
  }
}

// Multiplies the spectra of two traces, as real and imaginary part, by factors that are real and even.
template <class T>
KESTO_INLINE void absorb_traces(const PulseDistortionWork& w, double* first, double* second, double* scratch) {
  constexpr int W = T::width;
  const int length = w.transform, part = length * W;
  double *re = scratch, *im = scratch + part, *other_re = scratch + 2 * part, *other_im = scratch + 3 * part;
  for (int m = 0; m < length; ++m) {
    store<W>(re + m * W, m < w.samples ? load<W>(first + m * W) : Double<T>{});
    store<W>(im + m * W, m < w.samples ? load<W>(second + m * W) : Double<T>{});
  }
  if (transform_lanes<T>(length, w.roots, re, im, other_re, other_im)) {
    std::swap(re, other_re), std::swap(im, other_im);
  }
  for (int k = 0; k < length; ++k) {
    const double factor = w.factor[k <= length / 2 ? k : length - k] / length;
    store<W>(re + k * W, factor * load<W>(re + k * W));
    store<W>(im + k * W, factor * load<W>(im + k * W));
  }
  if (transform_lanes<T>(length, w.roots, im, re, other_im, other_re)) {
    std::swap(re, other_re), std::swap(im, other_im);
  }
  for (int m = 0; m < w.samples; ++m) {
    store<W>(first + m * W, load<W>(re + m * W));
    store<W>(second + m * W, load<W>(im + m * W));
  }
}

// Into how many parts of at most one sample; none for next to nothing.
KESTO_INLINE int whole_parts(double samples) {
  if (!(samples > 1e-12)) return 0;
  return samples < 1e6 ? static_cast<int>(samples) + 1 : 1000000;
}

template <class T>
KESTO_INLINE void distort_lanes(const PulseDistortionWork& w, double* field) {
  constexpr int W = T::width;
  double* const traces = w.scratch;
  double* const edge_pressure = traces + pulse_vectors * w.samples * W;
  double* const edge_area = edge_pressure + (w.samples + 3) * W;
  double* const transform_scratch = edge_area + (w.samples + 3) * W;
  for (int j = 0; j < w.run; j += pulse_vectors) {
    const int count = w.run - j < pulse_vectors ? w.run - j : pulse_vectors;
    for (int m = 0; m < w.samples; ++m) {
      const double* const from =
          field + (static_cast<std::size_t>(m) * static_cast<std::size_t>(w.run) + static_cast<std::size_t>(j)) * W;
      for (int v = 0; v < count; ++v) store<W>(traces + (v * w.samples + m) * W, load<W>(from + v * W));
    }
    const auto absorb = [&]() KESTO_INLINE_LAMBDA {
      for (int v = 0; v < count; v += 2) {
        double* const first = traces + v * w.samples * W;
        // An odd one out is its own partner.
        absorb_traces<T>(w, first, v + 1 < count ? first + w.samples * W : first, transform_scratch);
      }
    };
    if (w.transform > 0 && w.absorb_first) absorb();
    for (int v = 0; v < count; ++v) {
      double* const trace = traces + v * w.samples * W;
      const Double<T> shift = load<W>(w.shift + (j + v) * W);
      double farthest = 0;
      for (int l = 0; l < W; ++l) farthest = shift[l] > farthest ? shift[l] : farthest;
      const int shifts = whole_parts(farthest);
      for (int part = 0; part < shifts; ++part) shift_trace<T>(w.samples, shift * (1.0 / shifts), trace);
      if (!(w.strength > 0)) continue;
      Double<T> largest = {};
      for (int m = 0; m < w.samples; ++m) {
        const Double<T> p = load<W>(trace + m * W);
        largest = greater<T>(greater<T>(p, -p), largest);
      }
      double most = 0;
      for (int l = 0; l < W; ++l) most = w.strength * largest[l] > most ? w.strength * largest[l] : most;
      const int parts = whole_parts(1.5 * most);  // edges reach a little beyond the means
      for (int part = 0; part < parts; ++part) {
        distort_trace<T>(w.samples, w.strength / parts, trace, edge_pressure, edge_area);
      }
    }
    if (w.transform > 0 && !w.absorb_first) absorb();
    for (int m = 0; m < w.samples; ++m) {
      double* const to =
          field + (static_cast<std::size_t>(m) * static_cast<std::size_t>(w.run) + static_cast<std::size_t>(j)) * W;
      for (int v = 0; v < count; ++v) store<W>(to + v * W, load<W>(traces + (v * w.samples + m) * W));
    }
  }
}

}  // namespace kesto
