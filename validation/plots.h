// Pictures of the tables.
#pragma once

#include <string>

namespace kesto::validation {

// Runs the gnuplot script in the directory. Throws std::runtime_error when gnuplot is missing or fails.
void draw_plots(const std::string& directory, const std::string& script);

}  // namespace kesto::validation
