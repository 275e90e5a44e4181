#include "examples/pictures.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace kesto::example {

namespace {

// As one word to the shell, whatever is in it.
std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

}  // namespace

void write_plane(const std::string& directory, const Grid& grid, const std::vector<double>& pressure_amplitude,
                 const std::vector<double>& temperature_rise) {
  const std::string path = directory + "/focused_heating_xz.dat";
  std::FILE* const out = std::fopen(path.c_str(), "w");
  if (out == nullptr) throw std::runtime_error(path + ": cannot be written");
  std::fprintf(out, "# z (mm), x (mm), pressure amplitude (MPa), temperature rise (K); y = 0\n");
  const std::size_t j = grid.points[1] / 2;
  for (std::size_t k = 0; k < grid.points[2]; ++k) {
    for (std::size_t i = 0; i < grid.points[0]; ++i) {
      const std::size_t n = grid.index(i, j, k);
      std::fprintf(out, "%.6g %.6g %.6g %.6g\n", grid.coordinate(2, k) * 1e3, grid.coordinate(0, i) * 1e3,
                   pressure_amplitude[n] * 1e-6, temperature_rise[n]);
    }
    std::fprintf(out, "\n");
  }
  const bool written = std::ferror(out) == 0;
  if (std::fclose(out) != 0 || !written) throw std::runtime_error(path + ": cannot be written");
}

void draw_plane(const std::string& directory, const std::string& script) {
  if (std::system("command -v gnuplot >/dev/null 2>&1") != 0) {
    throw std::runtime_error("gnuplot is not installed: no pictures (--no-pictures leaves them out)");
  }
  std::fflush(stdout);  // what gnuplot says comes after it
  // "--": a directory may start with a hyphen.
  const std::string command = "cd -- " + quoted(directory) + " && gnuplot " + quoted(script);
  if (std::system(command.c_str()) != 0) throw std::runtime_error("gnuplot failed: no pictures");
}

}  // namespace kesto::example
