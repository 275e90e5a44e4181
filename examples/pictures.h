// The pictures of the x-z plane through the axis.
#pragma once

#include <string>
#include <vector>

#include "examples/grid.h"

namespace kesto::example {

// Writes focused_heating_xz.dat into `directory`: z and x in mm, |p| in MPa, rise in K, for the plane in the middle of
// the second dimension; a blank line after every z. Throws std::runtime_error when it cannot be written.
void write_plane(const std::string& directory, const Grid& grid, const std::vector<double>& pressure_amplitude,
                 const std::vector<double>& temperature_rise);

// Runs gnuplot in `directory`. Throws std::runtime_error when it is missing or fails.
void draw_plane(const std::string& directory, const std::string& script);

}  // namespace kesto::example
