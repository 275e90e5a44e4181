#include "excitation/t_cubed_pulse.h"

double TCubedPulse::at(double const& t) const {
  return t > 0 && t < pulse_width ? A0 * std::pow(t, 3) * std::exp(-B * t) * std::sin(omega * t) : 0;
}

double TCubedPulse::derivative(double const& t) const {
  if (!(t > 0 && t < pulse_width)) return 0;
  const double decay = std::exp(-B * t), cubed = std::pow(t, 3);
  return 3 * A0 * t * t * decay * std::sin(omega * t) + omega * cubed * decay * std::cos(omega * t) -
         B * cubed * decay * std::sin(omega * t);
}

int TCubedPulse::number_of_tsd_terms() const { return 8; }

template class kesto::AnalyticPulse<TCubedPulse>;
