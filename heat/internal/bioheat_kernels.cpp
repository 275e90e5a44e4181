#include "heat/internal/bioheat_kernels.h"

#include "core/lanes/lanes.h"

namespace kesto {

namespace {

// The sums keep the order of the plain loop, plus side first: the result is promised to the bit.
template <class V>
KESTO_INLINE V relaxed(V own, V i_plus, V i_minus, V j_plus, V j_minus, V k_plus, V k_minus, V source,
                       const RelaxationWeights& w) {
  const V sx = i_plus + i_minus, sy = j_plus + j_minus, sz = k_plus + k_minus;
  return own * w.r + w.f * (sz * w.az + (sy * w.ay + (sx * w.ax + source)));
}

template <int W>
KESTO_INLINE void relax_plane(double* t, const double* source, const DiagonalRun& run, const RelaxationWeights& w) {
  double* const own = t + run.own;
  const double* const above = own + run.plane;
  const double* const below = own - run.plane;
  const double* const next = t + run.next;
  const double* const previous = t + run.previous;
  source += run.own;

  std::ptrdiff_t i = 0;
  auto next_here = load<W>(next);
  auto previous_before = load<W>(previous - W);
  for (; i + W <= run.length; i += W) {
    const auto next_after = load<W>(next + i + W);
    const auto previous_here = load<W>(previous + i);
    // In two lanes another load is cheaper than the shuffle and the copy that it needs.
    const auto previous_shifted = W == 2 ? load<W>(previous + i - 1) : from_last<W>(previous_before, previous_here);
    store<W>(own + i, relaxed(load<W>(own + i), from_second<W>(next_here, next_after), previous_shifted, next_here,
                              previous_here, load<W>(above + i), load<W>(below + i), load<W>(source + i), w));
    next_here = next_after;
    previous_before = previous_here;
  }

  constexpr int tail = W < 4 ? W : 4;
  for (; i < run.length; i += tail) {
    const auto old = load<tail>(own + i);
    const auto updated =
        relaxed(old, load<tail>(next + i + 1), load<tail>(previous + i - 1), load<tail>(next + i),
                load<tail>(previous + i), load<tail>(above + i), load<tail>(below + i), load<tail>(source + i), w);
    store<tail>(own + i, Lanes<tail>::index < run.length - i ? updated : old);
  }
}

// By value: for all that the compiler knows, a store through t could change what a reference points to.
template <int W>
KESTO_INLINE void relax(double* t, const double* source, const DiagonalRun run, const RelaxationWeights w) {
  for (int p = 0; p < run.planes; ++p) relax_plane<W>(t - p * run.plane, source - p * run.plane, run, w);
}

// Out of line, with offsets: inlined into the sweeps the compilers spill the pointers, at a cost of 10 to 20 %.
struct RelaxPlanes {
  using Signature = void(double* t, const double* source, const DiagonalRun& run, const RelaxationWeights& w);
  template <class T>
  KESTO_INLINE static void run(double* t, const double* source, const DiagonalRun& diagonal,
                               const RelaxationWeights& w) {
    relax<T::width>(t, source, diagonal, w);
  }
};

}  // namespace

RelaxDiagonals relax_diagonals(VectorTarget target) { return kernel_on<RelaxPlanes>(target); }

}  // namespace kesto
