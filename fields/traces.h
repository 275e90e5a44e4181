// Traces of a block of points, and their way into the time-major buffer.
#pragma once

#include <algorithm>
#include <cstddef>

#include "fields/point_road.h"
#include "fields/rays.h"
#include "fields/time_axis.h"

namespace kesto {

// One trace to a point, `stride` apart. Only the samples of a window are kept: the rest is 0 and not looked at.
class Traces {
 public:
  explicit Traces(int samples) : stride_(padded(samples)), values_(RayBlock::capacity * stride_) {}

  double* of(int p) const { return &values_[static_cast<std::size_t>(p) * stride_]; }

  // Clears the window's samples in the traces of `count` points, and what vectors may overhang.
  void clear(int count, Span window) const {
    for (int p = 0; p < count; ++p) {
      if (!window.empty()) std::fill(of(p) + window.first, of(p) + window.last + sample_padding, 0.0);
    }
  }

  // Adds `amplitude` times the traces of points index[0], ... to samples `offset` and on: sample by sample, because
  // points that follow each other in the grid do so in the buffer.
  void superpose(Transducer& element, const int* index, int count, Span window, double amplitude,
                 int offset = 0) const {
    const std::ptrdiff_t points = element.global_coordinate_grid->npoints;
    for (int k = window.first; k < window.last; ++k) {
      double* const line = element.transient_pressure + (k + offset) * points;
      for (int p = 0; p < count; ++p) line[index[p]] += of(p)[k] * amplitude;
    }
  }

 private:
  std::size_t stride_;
  ScratchArray<double> values_;
};

// Adds to every point the trace that fill(p, trace) writes, all samples of it; p in local coordinates.
template <class Fill>
void superpose_traces(Transducer& element, int samples, Fill fill) {
  const Traces traces(samples);
  int index[RayBlock::capacity];
  int count = 0;
  const auto flush = [&] {
    traces.superpose(element, index, count, {0, samples}, 1);
    count = 0;
  };
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    fill(p, traces.of(count));
    index[count++] = i;
    if (count == RayBlock::capacity) flush();
  });
  flush();
}

}  // namespace kesto
