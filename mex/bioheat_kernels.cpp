#include "mex/bioheat_kernels.h"

#include "core/kernels/lanes.h"

namespace kesto {

namespace {

// W points from the i-th of the run on. The sums keep the order of the plain loop: the result is promised to the bit.
template <int W>
KESTO_INLINE typename Lanes<W>::Double relaxed(const double* t, const double* source, const DiagonalRun& run,
                                               const RelaxationWeights& w, std::ptrdiff_t i) {
  const auto sx = load<W>(t + run.next + i + 1) + load<W>(t + run.previous + i - 1);
  const auto sy = load<W>(t + run.next + i) + load<W>(t + run.previous + i);
  const auto sz = load<W>(t + run.own + i + run.plane) + load<W>(t + run.own + i - run.plane);
  return load<W>(t + run.own + i) * w.r + w.f * (sz * w.az + (sy * w.ay + (sx * w.ax + load<W>(source + run.own + i))));
}

template <int W>
KESTO_INLINE void relax_run(double* t, const double* source, const DiagonalRun& run, const RelaxationWeights& w) {
  std::ptrdiff_t i = 0;
  for (; i + W <= run.length; i += W) store<W>(t + run.own + i, relaxed<W>(t, source, run, w, i));
  constexpr int tail = W < 4 ? W : 4;
  for (; i < run.length; i += tail) {
    const auto live = Lanes<tail>::index < run.length - i;
    const auto old = load<tail>(t + run.own + i);
    store<tail>(t + run.own + i, live ? relaxed<tail>(t, source, run, w, i) : old);
  }
}

// Out of line, with offsets: inlined into the sweeps the compilers spill the pointers, at a cost of 10 to 20 %.
void relax_baseline(double* t, const double* source, const DiagonalRun& run, const RelaxationWeights& w) {
  relax_run<2>(t, source, run, w);
}
#if KESTO_X86_64
KESTO_TARGET_AVX2 void relax_avx2(double* t, const double* source, const DiagonalRun& run, const RelaxationWeights& w) {
  relax_run<4>(t, source, run, w);
}
KESTO_TARGET_AVX512 void relax_avx512(double* t, const double* source, const DiagonalRun& run,
                                      const RelaxationWeights& w) {
  relax_run<8>(t, source, run, w);
}
#endif

}  // namespace

RelaxDiagonal relax_diagonal(VectorTarget target) {
  switch (target) {
#if KESTO_X86_64
    case VectorTarget::avx2: return relax_avx2;
    case VectorTarget::avx512: return relax_avx512;
#endif
    default: return relax_baseline;
  }
}

}  // namespace kesto
