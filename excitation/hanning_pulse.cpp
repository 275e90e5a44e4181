#include "excitation/hanning_pulse.h"

#include "core/constants.h"

double HanningPulse::at(double const& t) const {
  return t > 0 && t < pulse_width ? A0 * (1 - std::cos(kesto::two_pi * t / pulse_width)) * std::sin(omega * t) : 0;
}

double HanningPulse::derivative(double const& t) const {
  if (!(t > 0 && t < pulse_width)) return 0;
  const double angle = kesto::two_pi * t / pulse_width;
  return A0 * ((1 - std::cos(angle)) * omega * std::cos(omega * t) +
               std::sin(omega * t) * std::sin(angle) * (kesto::two_pi / pulse_width));
}

int HanningPulse::number_of_tsd_terms() const { return 6; }

template class kesto::AnalyticPulse<HanningPulse>;
