// VTK ImageData files (.vti), as ParaView and VTK open them.
#pragma once

#include <string>
#include <vector>

#include "examples/grid.h"

namespace kesto::example {

// Values at the points of a grid.
struct PointArray {
  std::string name;
  const std::vector<double>* values;
};

// XML with the values appended raw as Float32. Throws std::runtime_error when the file cannot be written.
void write_vtk_image(const std::string& path, const Grid& grid, const std::vector<PointArray>& arrays);

}  // namespace kesto::example
