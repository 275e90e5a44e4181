// The transient fields of a disc.
#include <algorithm>
#include <cmath>

#include "core/constants.h"
#include "core/numerical_integration.h"
#include "fields/context.h"
#include "fields/decomposition.h"
#include "fields/direct_transient.h"
#include "fields/midpoints.h"
#include "fields/transient_road.h"
#include "transducers/disc/arrivals.h"
#include "transducers/disc/rays.h"

namespace kesto {

namespace {

template <class Rays>
int decompose_disc(DiscTransducer& element, DecompositionForm form, TravelTime rounding) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  form.reference = ReferenceStart::first_arrival;
  decompose(element, form, [&](Decomposition& decomposition) {
    for_each_disc(element.face(), [&](double radius, double sign) {
      superpose_rays(element, Rays(element, radius, sign, rounding), decomposition);
    });
  });
  return 0;
}

}  // namespace

int DiscTransducer::fnm_transient() {
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  const TimeAxis axis(*this);
  DirectForm direct(*this, axis, DelayOrder::travel_time_first, DirectWindow::of_arrivals);
  for_each_disc(face(), [&](double radius, double sign) {
    superpose_rays(*this, DiscRays(*this, radius, sign, TravelTime::by_division), direct);
  });
  return 0;
}

int DiscTransducer::fnm_tsd() { return decompose_disc<DiscRays>(*this, {}, TravelTime::by_reciprocal); }

int DiscTransducer::fnm_fdtsd() {
  return decompose_disc<DiscRays>(*this, {DecompositionForm::Terms::through_complex}, TravelTime::by_reciprocal);
}

int DiscTransducer::fnm_tsd_low_precision() {
  return decompose_disc<DiscRaysInFloat>(
      *this, {DecompositionForm::Terms::real, DecompositionForm::Samples::rounded_to_float}, TravelTime::by_division);
}

int DiscTransducer::rayleigh_transient() {
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  const TimeAxis axis(*this);
  const DirectSum sum(*excitation, SignalForm::derivative, axis, DelayOrder::travel_time_first);
  const double c = medium->_soundspeed, pulse_width = excitation->get_pulse_width();
  const double factor = (medium->_rho_density + medium->_rho_density) / two_pi;
  const int n = integral->get_npoints();
  const std::size_t cells = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const ScratchArray<double> cosine(n), weight(cells), delay(cells);
  const ScratchArray<double> trace(padded(axis.samples));
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_disc(face(), [&](double radius, double sign) {
    for_each_local_point(*this, [&](int i, const CartesianCoordinate& p) {
      if (!is_in_front(p)) return;
      const DiscArrivals arrivals(p, radius, c);
      std::size_t cell = 0;
      for (int ring = 0; ring < n; ++ring) {
        const double sigma = midpoint(ring, n, radius);
        const double s = sigma * sigma + arrivals.r * arrivals.r + p.z * p.z;
        for (int j = 0; j < n; ++j, ++cell) {
          const double distance = std::sqrt(s - 2 * sigma * arrivals.r * cosine[j]);
          weight[cell] = sign * (radius / n * sigma * (pi / n) * factor / distance);
          delay[cell] = distance / c;
        }
      }
      std::fill_n(trace.data(), padded(axis.samples), 0.0);
      const Span window = axis.between(arrivals.first, arrivals.far_rim, pulse_width);
      sum.add(weight.data(), delay.data(), 1, cells, window, trace.data());
      for (int k = 0; k < axis.samples; ++k) trace[k] *= amplitude;
      superpose_transient_pressure(i, trace.data());
    });
  });
  return 0;
}

}  // namespace kesto
