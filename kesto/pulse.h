// Fields over time.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "kesto/pressure.h"

namespace kesto {

// What every element's velocity is multiplied by, over time: continuous, 0 at its ends and outside.
struct Signal {
  std::string name;
  double length;                     // s
  double frequency;                  // Hz, of the carrier; of samples, half their rate
  std::function<double(double)> at;  // asked for times from 0 to `length`; must not throw
};

Signal tone_burst(double frequency, int half_cycles);   // sin(2 pi f t)
Signal hanning_burst(double frequency, double length);  // sin(2 pi f t) (1 - cos(2 pi t / length)) / 2
Signal t_cubed(double frequency, double decay);  // t^3 e^{-decay t} sin(2 pi f t), the envelope at most 1; decay in 1/s
Signal samples(const std::vector<double>& values, double sampling_frequency);  // joined by straight lines

struct Pulse {
  Grid grid;
  std::vector<double> times;   // s
  std::vector<double> values;  // Pa, of point i at time k: values[times.size() i + k]
  double scale;  // Pa: the peak of a continuous wave at the signal's frequency, which the accuracy refers to
  // Pa: how far the values are from those of twice the step in the response, which are several times farther off.
  double error;

  double at(std::size_t point, std::size_t time) const { return values[times.size() * point + time]; }
};

// p = rho d/dt (v * h), the exact convolution with the impulse response cut into short pieces of the same area, centre
// and width. In lossless media: what the medium would take from the wave must be less than the accuracy. The elements'
// delays count; a phase, which is one of continuous waves, is an error.
Pulse pulse(const Source& source, const Grid& grid, const Medium& medium, const Signal& signal,
            const std::vector<double>& times, double accuracy = 1e-4, const Options& options = {});

std::ostream& operator<<(std::ostream& out, const Pulse& pulse);

}  // namespace kesto
