#include "fields/time_axis.h"

#include <limits>

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

}  // namespace kesto
