// Spatial impulse responses.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <vector>

#include "kesto/grid.h"
#include "kesto/medium.h"
#include "kesto/pressure.h"
#include "kesto/source.h"

namespace kesto {

// h(t) = integral of v delta(t - R/c) / (2 pi R) dS, so that the pressure of elements that all move with v(t) times
// their velocity is rho d/dt (v * h). Each value is the mean of h over its sample, from half a step before to half a
// step after its time: a response shorter than a sample keeps its area.
struct ImpulseResponse {
  Grid grid;
  double step;                     // s
  std::vector<double> start;       // of each point: the time of its first value, a multiple of the step, s
  std::vector<std::size_t> first;  // of each point: where its values begin; one more, where the last one's end
  std::vector<double> values;      // m/s times the elements' velocity

  std::size_t count(std::size_t point) const { return first[point + 1] - first[point]; }
  double at(std::size_t point, std::size_t sample) const { return values[first[point] + sample]; }
};

// Of the lossless medium. The elements' delays count; a phase, which is one of continuous waves, is an error.
ImpulseResponse impulse_response(const Source& source, const Grid& grid, const Medium& medium,
                                 double sampling_frequency, const Options& options = {});

std::ostream& operator<<(std::ostream& out, const ImpulseResponse& response);

}  // namespace kesto
