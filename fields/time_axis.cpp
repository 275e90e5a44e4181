#include "fields/time_axis.h"

#include <algorithm>
#include <limits>

#include "core/internal/host.h"
#include "fields/continuous_wave.h"

namespace kesto {

TimeAxis::TimeAxis(const Transducer& element)
    : samples(element.time_vector->nt),
      start(element.time_vector->time_index_value(0)),
      per_sample(1 / element.time_vector->deltat()),
      time_delay(element.time_delay),
      times(padded(samples)) {
  for (int k = 0; k < samples; ++k) {
    times[k] = element.time_vector->time_index_value(k);
    regular = regular && std::fabs((times[k] - start) * per_sample - k) < 0.5;
  }
  std::fill_n(&times[samples], sample_padding, -std::numeric_limits<double>::infinity());
}

double TimeAxis::longest() const {
  double largest = 0;
  for (int k = 0; k < samples; ++k) largest = std::max(largest, std::fabs(times[k]));
  return largest;
}

void require_transient_output(const Transducer& element) {
  require_grid_and_medium(element);
  if (element.time_vector == nullptr) fail("The transducer has no time vector.\n");
  if (element.transient_pressure == nullptr && element.global_coordinate_grid->npoints > 0) {
    fail("The transducer has no transient pressure to add to.\n");
  }
}

void require_excited_output(const Transducer& element) {
  require_transient_output(element);
  require_grid_and_rule(element);
  if (element.excitation == nullptr) fail("The transducer has no excitation.\n");
}

}  // namespace kesto
