// A short pulse on its way through the focus of a shell: pictures of a plane through the axis, and the pressure at the
// focus beside its closed form.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "examples/options.h"
#include "examples/pictures.h"
#include "excitation/hanning_pulse.h"
#include "transducers/spherical_transducer.h"

namespace kesto::example {
namespace {

constexpr double radius = 15e-3, roc = 50e-3;                     // m
constexpr double velocity = 0.04, frequency = 1e6, width = 3e-6;  // of the face, m/s; Hz; s
constexpr double soundspeed = 1500, density = 1000;               // water
constexpr double half_height = 12e-3, half_length = 20e-3;        // of the plane about the focus, m
constexpr double before_and_after = 12e-6;                        // the pulse's middle passes the focus, s
constexpr int abscissas = 100, samples_a_period = 20;             // and a frame every period

const double depth = roc - std::sqrt(roc * roc - radius * radius), arrival = roc / soundspeed;
HanningPulse pulse(1, frequency, width, 0, 2);  // the element takes the velocity

// Of the shell by time-space decomposition; sample k of point i at i + k * points.
std::vector<double> pressure(CoordinateGrid& grid, TimeSamples& time) {
  SphericalTransducer shell(radius, roc, velocity, 0);
  Medium medium;
  medium._soundspeed = soundspeed;
  medium._rho_density = density;
  NumericalIntegration rule;
  rule.allocate_memory(abscissas);
  rule.gauss_quadrature();
  std::vector<double> p(static_cast<std::size_t>(grid.npoints) * static_cast<std::size_t>(time.nt));
  shell.set_medium(&medium);
  shell.set_global_coordinate_grid(&grid);
  shell.set_integral_pointer(&rule);
  shell.set_time_vector(&time);
  shell.excitation = &pulse;
  shell.set_transient_pressure_pointer(p.data());
  if (shell.fnm_tsd() != 0) throw std::runtime_error("the shell has no time-space decomposition");
  return p;
}

// The whole face at once.
double closed_form_at_focus(double t) { return density * depth * velocity * pulse.derivative(t - arrival); }

// Elsewhere on the axis, of the apex and of the rim.
double closed_form_on_axis(double z, double t) {
  const double rim = std::hypot(radius, z - depth);
  return density * soundspeed * velocity / (1 - z / roc) *
         (pulse.at(t - z / soundspeed) - pulse.at(t - rim / soundspeed));
}

std::ofstream text_file(const std::string& path, const char* header) {
  std::ofstream file(path);
  if (!(file << header << '\n')) throw std::runtime_error(path + ": cannot be written");
  file.exceptions(std::ios::failbit | std::ios::badbit);
  return file;
}

void require(bool held, const char* failure) {
  if (!held) throw std::runtime_error(failure);
}

void look_at_focus(const std::string& directory) {
  CoordinateGrid focus;
  focus.SinglePoint(0, 0, roc);
  TimeSamples time(1e-9, arrival - 1e-6, arrival + width + 1e-6);
  const std::vector<double> p = pressure(focus, time);
  std::ofstream file = text_file(directory + "/focused_pulse_focus.dat", "# t (us), fnm_tsd (kPa), closed form (kPa)");
  double largest = 0, difference = 0, begun = 0;
  for (int k = 0; k < time.nt; ++k) {
    const double t = time.time_index_value(k), found = p[static_cast<std::size_t>(k)], closed = closed_form_at_focus(t);
    if (begun == 0 && found != 0) begun = t;
    largest = std::max(largest, std::abs(closed));
    difference = std::max(difference, std::abs(found - closed));
    file << t * 1e6 << ' ' << found * 1e-3 << ' ' << closed * 1e-3 << '\n';
  }
  file.close();
  const auto [lowest, highest] = std::minmax_element(p.begin(), p.end());
  std::printf("  at the focus: highest %.2f kPa, lowest %.2f kPa; begins at %.3f us, every ns; roc / c = %.4f us\n",
              *highest * 1e-3, *lowest * 1e-3, begun * 1e6, arrival * 1e6);
  std::printf("  off rho depth v'(t - roc / c) by %.2g of the largest at most (bound 1e-9)\n", difference / largest);
  require(difference <= 1e-9 * largest, "the pressure at the focus is off its closed form");
  require(std::abs(begun - arrival) <= 2e-9, "the pulse does not begin at roc / c");
}

// The plane y = 0 is to have its largest pressure where the axis has it.
void look_at_plane(const std::string& directory, double spacing) {
  const auto reach = [&](double extent) { return spacing * std::floor(extent / spacing * (1 + 1e-12)); };
  const double x = reach(half_height), length = reach(half_length), wavelength = soundspeed / frequency;
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(-x, x, 0, 0, roc - length, roc + length, spacing, 0, spacing);
  const double step = 1 / (samples_a_period * frequency), middle = arrival + width / 2;
  TimeSamples time(step, middle - before_and_after, middle + before_and_after);
  const auto start = std::chrono::steady_clock::now();
  const std::vector<double> p = pressure(grid, time);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("  plane y = 0: %d x %d points, %d samples: %.3f s, %.3g points a second, %.3g samples a second\n",
              grid.nx, grid.nz, time.nt, seconds, grid.npoints / seconds, static_cast<double>(p.size()) / seconds);

  double on_axis = 0, place = 0;
  for (double z = roc - half_length; z < roc; z += 0.05e-3) {
    for (double t = z / soundspeed; t < arrival + width; t += 10e-9) {
      const double value = std::abs(closed_form_on_axis(z, t));
      if (value > on_axis) on_axis = value, place = z;
    }
  }
  const auto smaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto peak = std::max_element(p.begin(), p.end(), smaller);
  const CartesianCoordinate at = grid.spatial_index_value(static_cast<int>((peak - p.begin()) % grid.npoints));
  const double off = std::hypot(at.x, at.z - place);
  std::printf("  largest pressure %.2f kPa at x = %.2f, z = %.2f mm; by the axis' closed form %.2f kPa at %.2f mm\n",
              std::abs(*peak) * 1e-3, at.x * 1e3, at.z * 1e3, on_axis * 1e-3, place * 1e3);
  std::printf("  %.2f wavelengths off that place (bound 1), %.2f before the focus\n", off / wavelength,
              (roc - at.z) / wavelength);
  require(off <= wavelength, "the largest pressure is not where the closed form has it");
  require(std::abs(std::abs(*peak) / on_axis - 1) <= 0.03, "the largest pressure is off the closed form");

  std::ofstream file = text_file(directory + "/focused_pulse_plane.dat", "# z (mm), x (mm), p (kPa); a block a frame");
  for (int k = 0; k < time.nt; k += samples_a_period) {
    const double* const frame = &p[static_cast<std::size_t>(k) * static_cast<std::size_t>(grid.npoints)];
    file << (k > 0 ? "\n\"" : "\"") << time.time_index_value(k) * 1e6 << "\"\n";
    grid.for_each_point([&](int i, const CartesianCoordinate& q) {
      file << q.z * 1e3 << ' ' << q.x * 1e3 << ' ' << frame[i] * 1e-3 << ((i + 1) % grid.nx == 0 ? "\n\n" : "\n");
    });
  }
  file.close();
}

const char* const option_text =
    "focused_pulse: a short pulse on its way through the focus of a shell\n"
    "options: --output DIR (out), --spacing MM (0.25; 0.1 to 1.5), --no-pictures, --help";

int run(int argc, char** argv) {
  Options options;
  options.spacing = 0.25e-3;
  for (int n = 1; n < argc; ++n) {
    const std::string option = argv[n], value = n + 1 < argc ? argv[n + 1] : "";
    if (option == "--no-pictures") {
      options.pictures = false;
    } else if (option == "--output" && !value.empty()) {
      options.output = argv[++n];
    } else if (option == "--spacing" && !value.empty()) {
      char* end = nullptr;
      options.spacing = std::strtod(argv[++n], &end) * 1e-3;
      if (*end != '\0' || !(options.spacing >= 0.1e-3 && options.spacing <= 1.5e-3))
        throw BadOption("--spacing: " + value);
    } else if (option == "--help") {
      return std::puts(option_text), 0;
    } else {
      throw BadOption(option_text);
    }
  }
  std::filesystem::create_directories(options.output);
  std::printf("Three cycles of 1 MHz in water from a shell of radius 15 mm, radius of curvature 50 mm, at 0.04 m/s\n");
  look_at_focus(options.output);
  look_at_plane(options.output, options.spacing);
  if (options.pictures) draw_plane(options.output, KESTO_GNUPLOT_SCRIPT);
  std::printf("\nWritten to %s: focused_pulse_*.dat%s\n", options.output.c_str(),
              options.pictures ? ", the pictures focused_pulse*.png and, where gnuplot can, focused_pulse.gif" : "");
  return 0;
}

}  // namespace
}  // namespace kesto::example

int main(int argc, char** argv) {
  try {
    return kesto::example::run(argc, argv);
  } catch (const std::exception& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "focused_pulse: %s\n", failure.what());
    return dynamic_cast<const kesto::example::BadOption*>(&failure) != nullptr ? 2 : 1;
  }
}
