// The rays of a point summed by time-space decomposition (Kelly & McGough, IEEE Trans. Ultrason. Ferroelectr. Freq.
// Control 53(9), 2006): the signal along a ray is sum_m spatial_m(delay) temporal_m(t), so that rays are added up as
// factors, term by term, and the samples are visited once.
#pragma once

#include <complex>
#include <cstddef>

#include "core/internal/host.h"
#include "excitation/excitation_function.h"
#include "fields/rays.h"
#include "fields/time_axis.h"
#include "fields/traces.h"

namespace kesto {

struct DecompositionForm {
  bool complex_terms = false;  // through the signal's complex factors
  bool float_traces = false;   // each sample rounded to single precision before it is added
};

// Rays in; out comes, for sample k of a point,
//   amplitude [sum over rays whose pulse covers k of weight_j sum_m spatial_m(delay_j) temporal_m(k)
//              - weight_sum v(t_k - reference - time delay) for the samples that `reference_span` names].
//
// The analytic pulses run in lanes over points, with running sums: a ray's factors are added where its pulse begins and
// taken away where it ends. A running sum keeps what rounding left of the factors that have come and gone. Where they
// last or grow with the delay that costs next to nothing: for t-cubed pulses the worst error is that of adding each ray
// to its own samples, within a factor of 3 (single traces: 20). Where they shrink (B < 0) up to seven digits went, so
// there, and for other signals, it is each ray to its own samples.
class Decomposition {
 public:
  Decomposition(Transducer& element, const TimeAxis& axis, DecompositionForm form);

  // `cut_reference`: the reference starts with the rim's first arrival instead of its own.
  void superpose(const RayBlock& block, bool cut_reference);

  // Everything that lanes work on, for the functions that carry the target attribute.
  struct Work {
    const RayBlock* block;
    const double *times, *temporal;
    int samples;
    double start, per_sample, time_delay, pulse_width, amplitude;
    bool cut_reference, float_traces;
    double* differences;  // [sample][term][lane], all 0 between calls
    double* buffer;       // of the element
    std::ptrdiff_t points;
  };

 private:
  std::size_t table_size(int samples) const {
    return static_cast<std::size_t>(terms_) * static_cast<std::size_t>(samples);
  }
  void superpose_ray_by_ray(const RayBlock& block, bool cut_reference);
  void add_ray(double weight, double delay, double* trace);

  Transducer& element_;
  ExcitationFunction& signal_;
  const TimeAxis& axis_;
  DecompositionForm form_;
  void (*laned_)(const ExcitationFunction&, const Work&);  // null where rays are added one by one
  bool complex_;
  int terms_;                      // real ones: two to a complex one
  ScratchArray<double> temporal_;  // [term][sample]
  ScratchArray<double> differences_;
  ScratchArray<double> spatial_;
  ScratchArray<std::complex<double>> complex_spatial_;
  Traces traces_;
};

}  // namespace kesto
