#include "excitation/tone_burst.h"

#include "core/constants.h"

double ToneBurst::at(double const& t) const { return t > 0 && t < pulse_width ? A0 * std::sin(omega * t) : 0; }

double ToneBurst::derivative(double const& t) const {
  return t >= 0 && t <= pulse_width ? (2 * A0) * kesto::pi * f0 * std::cos(omega * t) : 0;
}

int ToneBurst::number_of_tsd_terms() const { return 2; }

template class kesto::AnalyticPulse<ToneBurst>;
