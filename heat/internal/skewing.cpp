#include "heat/internal/skewing.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "core/lanes/lanes.h"

namespace kesto {

namespace {

template <int W>
using Vector = typename Lanes<W>::Double;

// Exchanges bit `bit` of a vector's number with that of a lane's number.
template <int bit, int W, int... lane>
KESTO_INLINE void exchange(Vector<W>* v, std::integer_sequence<int, lane...>) {
  for (int r = 0; r < W; ++r) {
    if ((r & bit) != 0) continue;
    const Vector<W> a = v[r], b = v[r + bit];
    v[r] = __builtin_shufflevector(a, b, ((lane & bit) != 0 ? W + lane - bit : lane)...);
    v[r + bit] = __builtin_shufflevector(a, b, ((lane & bit) != 0 ? W + lane : lane + bit)...);
  }
}

// Lane l of vector r <-> lane r of vector l.
template <int W>
KESTO_INLINE void transpose(Vector<W>* v) {
  using All = std::make_integer_sequence<int, W>;
  if constexpr (W > 4) exchange<4, W>(v, All{});
  if constexpr (W > 2) exchange<2, W>(v, All{});
  exchange<1, W>(v, All{});
}

// Calls visit(m) for tiles of W vectors from m on that cover a row. The last overlaps the one before where M is no
// multiple of W; a row of fewer than W vectors has one tile.
template <int W, class Visit>
KESTO_INLINE void for_each_tile(const SkewedLayout& layout, Visit visit) {
  for (int m = 0; m < layout.vectors; m += W) visit(std::max(0, std::min(m, layout.vectors - W)));
}

// A row of the skewed layout is put together from pieces of W rows, too short for the hardware to foresee.
KESTO_INLINE void fetch_row(const double* row, std::ptrdiff_t points) {
  constexpr int cache_line = 64 / sizeof(double);
  for (std::ptrdiff_t i = 0; i < points; i += cache_line) __builtin_prefetch(row + i);
}

template <int W>
KESTO_INLINE void skew(const SkewedLayout& layout, int k, const Pressure& pressure, double absorbed,
                       double inverse_conductivity, double* source) {
  const std::ptrdiff_t n0 = layout.columns + 2, plane = n0 * (layout.lines + 2);
  const std::ptrdiff_t last_load = plane * (layout.planes + 2) - W;
  const int stored = std::min(W, layout.vectors);
  const double *const real = pressure.real, *const imag = pressure.imag;
  for (int y = 1; y <= layout.rows; ++y) {
    const std::ptrdiff_t line = std::min(y, layout.lines) * n0 + k * plane;
    fetch_row(real + line, n0);
    fetch_row(imag + line, n0);
    double* const row = source + k * layout.plane + y * layout.row;
    for_each_tile<W>(layout, [&](int m) KESTO_INLINE_LAMBDA {
      Vector<W> v[W];
      for (int lane = 0; lane < W; ++lane) {
        // A live lane reads on past its last column at most to the next row but one. A dead one is kept inside the
        // array.
        const std::ptrdiff_t j = std::clamp(y - lane, 0, layout.lines), i = 1 + lane * layout.vectors + m;
        const std::ptrdiff_t n = std::min(i + j * n0 + k * plane, last_load);
        const auto re = load<W>(real + n), im = load<W>(imag + n);
        v[lane] = (im * im + re * re) * absorbed * inverse_conductivity;
      }
      transpose<W>(v);
      for (int r = 0; r < stored; ++r) store<W>(row + (m + r) * W, v[r]);
    });
  }
}

template <int W>
KESTO_INLINE void unskew(const SkewedLayout& layout, int k, const double* skewed, double* column_major) {
  const std::ptrdiff_t n0 = layout.columns + 2, plane = n0 * (layout.lines + 2);
  const int loaded = std::min(W, layout.vectors);
  for (int y = 1; y <= layout.rows; ++y) {
    fetch_row(column_major + std::min(y, layout.lines) * n0 + k * plane, n0);
    const double* const row = skewed + k * layout.plane + y * layout.row;
    for_each_tile<W>(layout, [&](int m) KESTO_INLINE_LAMBDA {
      Vector<W> v[W] = {};
      for (int r = 0; r < loaded; ++r) v[r] = load<W>(row + (m + r) * W);
      transpose<W>(v);
      for (int lane = 0; lane < W; ++lane) {
        const std::ptrdiff_t j = y - lane, i = 1 + lane * layout.vectors + m;
        if (j < 1 || j > layout.lines) continue;
        double* const to = column_major + i + j * n0 + k * plane;
        const int live = layout.live_vectors(lane) - m;
        if (live >= W) {
          store<W>(to, v[lane]);
        } else {
          double values[W];
          store<W>(values, v[lane]);
          for (int e = 0; e < live; ++e) to[e] = values[e];
        }
      }
    });
  }
}

struct SkewSourceInLanes {
  using Signature = void(const SkewedLayout& layout, int k, const Pressure& pressure, double absorbed,
                         double inverse_conductivity, double* source);
  template <class Target>
  KESTO_INLINE static void run(const SkewedLayout& layout, int k, const Pressure& pressure, double absorbed,
                               double inverse_conductivity, double* source) {
    skew<Target::width>(layout, k, pressure, absorbed, inverse_conductivity, source);
  }
};

struct UnskewInLanes {
  using Signature = void(const SkewedLayout& layout, int k, const double* skewed, double* column_major);
  template <class Target>
  KESTO_INLINE static void run(const SkewedLayout& layout, int k, const double* skewed, double* column_major) {
    unskew<Target::width>(layout, k, skewed, column_major);
  }
};

}  // namespace

SkewSource skew_source_on(VectorTarget target) { return kernel_on<SkewSourceInLanes>(target); }
Unskew unskew_on(VectorTarget target) { return kernel_on<UnskewInLanes>(target); }

}  // namespace kesto
