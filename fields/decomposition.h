// The rays of a point summed by time-space decomposition (Kelly & McGough, IEEE Trans. Ultrason. Ferroelectr. Freq.
// Control 53(9), 2006): the signal along a ray is sum_m spatial_m(delay) temporal_m(t), so that rays are added up as
// factors, term by term, and the samples are visited once.
#pragma once

#include <complex>
#include <cstddef>
#include <optional>

#include "excitation/excitation_function.h"
#include "fields/delayed_slope.h"
#include "fields/direct_transient.h"
#include "fields/rays.h"
#include "fields/time_axis.h"
#include "fields/traces.h"

namespace kesto {

struct DecompositionForm {
  enum class Terms { real, through_complex } terms = Terms::real;
  enum class Samples { as_computed, rounded_to_float } samples = Samples::as_computed;
  ReferenceStart reference = ReferenceStart::own;
};

// Everything that lanes work on, for the functions that carry the target attribute.
struct DecompositionArguments {
  const RayBlock* block;
  const double *times, *temporal;  // temporal: [term][sample of the time block]
  Span time_block;
  int samples;
  double start, per_sample, time_delay, pulse_width, amplitude;
  ReferenceStart reference_start;
  bool rounded_to_float;
  double* differences;  // [sample of a stretch][term][lane], all 0 between calls
  double* buffer;       // of the element
  std::ptrdiff_t points;
};

// Memory of the caller's for the real terms of a whole time axis.
struct DecompositionArrays {
  double* temporal;    // [term][sample]
  double* spatial[4];  // one value to a term each: of four rays at a time
  double* trace;       // one value to a sample
};

// The decomposed form on the transient road, for the samples of one time block. Rays in; out comes, for sample k of a
// point,
//   amplitude [sum over rays whose pulse covers k of weight_j sum_m spatial_m(delay_j) temporal_m(k)
//              - weight_sum v(t_k - reference - time delay) for the samples of the reference ray].
//
// The analytic pulses run in lanes over points, with running sums: a ray's factors are added where its pulse begins and
// taken away where it ends. What rounding leaves of factors that have come and gone stays in a sum until the point's
// own last sample, after which its trace is exactly 0, whatever its neighbours in the lanes do. Where factors last or
// grow with the delay that costs next to nothing: for t-cubed pulses the worst error is that of adding each ray to its
// own samples, within a factor of 3 (single traces: 20). Where they shrink (B < 0) up to seven digits went, so there,
// and for other signals, it is each ray to its own samples.
//
// The terms of a sampled signal are the same series as its value, and hundreds of them cost more than they save: rays
// of its interpolated series are added instead, and its terms are not looked at.
class Decomposition {
 public:
  Decomposition(Transducer& element, const TimeAxis& axis, Span time_block, DecompositionForm form,
                const DecompositionArrays* given = nullptr);

  double pulse_width() const { return signal_.get_pulse_width(); }
  void superpose(const RayBlock& block);
  void superpose(int i, const DelayedSlope& slope);

 private:
  using Laned = void (*)(const ExcitationFunction&, const DecompositionArguments&);

  std::size_t length() const { return static_cast<std::size_t>(time_block_.last - time_block_.first); }
  std::size_t table_size() const { return static_cast<std::size_t>(terms_) * length(); }
  void fill_temporal();
  void superpose_in_lanes(const RayBlock& block);
  void superpose_interpolated(const RayBlock& block);
  void superpose_ray_by_ray(const RayBlock& block);
  void fill_spatial(double delay, double* spatial);
  void add_ray(double weight, double delay, const double* spatial, double* trace) const;
  double weighted(double sample) const;  // by the amplitude, and rounded where the form asks for it
  Span of_reference(const RayBlock& block, int p) const;

  Transducer& element_;
  ExcitationFunction& signal_;
  const TimeAxis& axis_;
  Span time_block_;
  DecompositionForm form_;
  std::optional<DirectSum> interpolated_;  // of a sampled signal
  Laned laned_;                            // null where rays are added one by one
  bool complex_;
  int terms_;                   // real ones: two to a complex one; none that are not looked at
  ScratchArray<double> own_;    // where no arrays are given
  DecompositionArrays arrays_;  // for the samples of the time block
  ScratchArray<double> differences_;
  ScratchArray<std::complex<double>> complex_spatial_;
  Traces traces_;
};

// Samples whose tables and traces fit into 32 MB: longer time vectors are computed block by block. All of them for
// sampled signals, which have no such tables.
int samples_of_time_block(int samples, const ExcitationFunction& signal);

// Calls superpose_faces(decomposition) for every time block of the element's time vector.
template <class SuperposeFaces>
void decompose(Transducer& element, DecompositionForm form, SuperposeFaces superpose_faces) {
  const TimeAxis axis(element);
  const int most = samples_of_time_block(axis.samples, *element.excitation);
  for (int first = 0, last = 0; first < axis.samples; first = last) {
    last = first + std::min(most, axis.samples - first);
    Decomposition decomposition(element, axis, {first, last}, form);
    superpose_faces(decomposition);
  }
}

}  // namespace kesto
