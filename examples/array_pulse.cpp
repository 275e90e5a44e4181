// A linear array of 64 rectangles fires a pulse that was sampled, delayed for a focus off its axis: pictures of the
// wavefront at three times, and the pressure at the focus beside that of one element.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "examples/options.h"
#include "examples/pictures.h"
#include "excitation/sampled_signal.h"
#include "transducers/rectangular_transducer.h"

namespace kesto::example {
namespace {

constexpr int elements = 64;
constexpr double pitch = 0.3e-3, width = 0.27e-3, height = 8e-3;           // of the elements along x, m
constexpr double focus_x = 8e-3, focus_z = 30e-3;                          // m
constexpr double velocity = 0.04, frequency = 1.25e6, pulse_width = 4e-6;  // of the faces, m/s; Hz; s
constexpr double soundspeed = 1500, density = 1000;                        // water
constexpr double half_extent = 18e-3, depth = 40e-3;                       // of the plane, m
constexpr int abscissas = 16, recorded = 201;
constexpr double clip_threshold = 1e-3, sampling = 20e6;  // 1 / s

double center_of(int element) { return (element - 0.5 * (elements - 1)) * pitch; }
double to_focus(int element) { return std::hypot(focus_x - center_of(element), focus_z); }

// The farthest element fires first, at 0.
double delay_of(int element) {
  return (std::max(to_focus(0), to_focus(elements - 1)) - to_focus(element)) / soundspeed;
}
// When all waves meet at the focus, of the pulse's beginning.
const double meeting = delay_of(0) + to_focus(0) / soundspeed;

std::ofstream text_file(const std::string& path, const char* header) {
  std::ofstream file(path);
  if (!(file << header << '\n')) throw std::runtime_error(path + ": cannot be written");
  file.exceptions(std::ios::failbit | std::ios::badbit);
  return file;
}

void require(bool held, const char* failure) {
  if (!held) throw std::runtime_error(failure);
}

// As from a hydrophone: a rise, a ringing that decays, a drift of phase, and the last digit of the recorder.
void write_waveform(const std::string& path) {
  std::ofstream file = text_file(path, "# t (us), velocity over its largest");
  file.precision(17);
  for (int i = 0; i < recorded; ++i) {
    const double t = pulse_width * i / (recorded - 1), u = t * frequency;
    const double envelope = std::pow(std::sin(3.14159265358979 * i / (recorded - 1)), 2) * std::exp(-0.55 * u);
    const double value = 3.3 * envelope * std::sin(6.28318530717958 * u * (1 + 0.02 * u));
    file << t * 1e6 << ' ' << std::round(value * 2048) / 2048 << '\n';
  }
}

struct Waveform {
  double width = 0;  // s
  std::vector<double> samples;
};

Waveform read_waveform(const std::string& path) {
  std::ifstream file(path);
  Waveform waveform;
  std::string header;
  std::getline(file, header);
  for (double t, value; file >> t >> value;) {
    waveform.samples.push_back(value);
    waveform.width = t * 1e-6;
  }
  if (!file.eof() || waveform.samples.size() < 2) throw std::runtime_error(path + ": not a waveform");
  return waveform;
}

// Of the elements from `first` to before `last` by time-space decomposition; sample k of point i at i + k * points.
std::vector<double> pressure(SampledSignal& signal, CoordinateGrid& grid, TimeSamples& time, int first, int last) {
  Medium medium;
  medium._soundspeed = soundspeed;
  medium._rho_density = density;
  NumericalIntegration rule;
  rule.allocate_memory(abscissas);
  rule.gauss_quadrature();
  std::vector<double> p(static_cast<std::size_t>(grid.npoints) * static_cast<std::size_t>(time.nt));
  for (int n = first; n < last; ++n) {
    RectangularTransducer element(width, height, velocity, 0);
    element.set_center(center_of(n), 0, 0);
    element.set_time_delay(delay_of(n));
    element.set_medium(&medium);
    element.set_global_coordinate_grid(&grid);
    element.set_integral_pointer(&rule);
    element.set_time_vector(&time);
    element.excitation = &signal;
    element.set_transient_pressure_pointer(p.data());
    if (element.fnm_tsd() != 0) throw std::runtime_error("the rectangle has no time-space decomposition");
  }
  return p;
}

double largest(const std::vector<double>& p) {
  double most = 0;
  for (const double value : p) most = std::max(most, std::abs(value));
  return most;
}

void look_at_focus(const std::string& directory, SampledSignal& signal) {
  CoordinateGrid focus;
  focus.SinglePoint(focus_x, 0, focus_z);
  TimeSamples time(5e-9, meeting - 1e-6, meeting + pulse_width + 1.5e-6);
  const std::vector<double> all = pressure(signal, focus, time, 0, elements);
  double sum = 0;
  for (int n = 0; n < elements; ++n) sum += largest(pressure(signal, focus, time, n, n + 1));
  std::ofstream file = text_file(directory + "/array_pulse_focus.dat", "# t (us), p (kPa)");
  double begun = 0;
  for (int k = 0; k < time.nt; ++k) {
    const double t = time.time_index_value(k), p = all[static_cast<std::size_t>(k)];
    if (begun == 0 && std::abs(p) > 1e-3 * largest(all)) begun = t;
    file << t * 1e6 << ' ' << p * 1e-3 << '\n';
  }
  file.close();
  std::printf("  at the focus: largest %.1f kPa, %.1f %% of what the elements have alone, together (bound 95)\n",
              largest(all) * 1e-3, 100 * largest(all) / sum);
  std::printf("  begins at %.3f us; delays and paths meet at %.3f us\n", begun * 1e6, meeting * 1e6);
  require(largest(all) >= 0.95 * sum, "the elements do not meet at the focus");
  require(begun >= meeting - 0.05e-6 && begun <= meeting + 0.3e-6, "the pulse comes at another time");
}

// The first sound of element n is on a circle about it, c (t - delay) in radius; whole samples later is soon enough.
void look_at_plane(const std::string& directory, double spacing, SampledSignal& signal) {
  const double x = spacing * std::floor(half_extent / spacing * (1 + 1e-12));
  const double z = spacing * std::floor(depth / spacing * (1 + 1e-12));
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(-x, x, 0, 0, spacing, z, spacing, 0, spacing);
  TimeSamples time(1 / sampling, 0, meeting + 8e-6);
  const auto start = std::chrono::steady_clock::now();
  const std::vector<double> p = pressure(signal, grid, time, 0, elements);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("  plane y = 0: %d x %d points, %d samples, %d elements: %.2f s, %.3g points and elements a second\n",
              grid.nx, grid.nz, time.nt, elements, seconds, elements * static_cast<double>(grid.npoints) / seconds);

  std::ofstream file = text_file(directory + "/array_pulse_plane.dat", "# z (mm), x (mm), p (kPa); a block a time");
  std::ofstream fronts = text_file(directory + "/array_pulse_front.dat", "# z (mm), x (mm); a block a time");
  int block = 0;
  for (const double t : {meeting - 9e-6, meeting + 1.2e-6, meeting + 6e-6}) {
    const int k = static_cast<int>(t * sampling);
    const double now = time.time_index_value(k);
    const double* const frame = &p[static_cast<std::size_t>(k) * static_cast<std::size_t>(grid.npoints)];
    file << (block > 0 ? "\n\"" : "\"") << now * 1e6 << "\"\n";
    fronts << (block > 0 ? "\n\n" : "");
    ++block;
    double outside = 0, peak = 0;
    grid.for_each_point([&](int i, const CartesianCoordinate& q) {
      file << q.z * 1e3 << ' ' << q.x * 1e3 << ' ' << frame[i] * 1e-3 << ((i + 1) % grid.nx == 0 ? "\n\n" : "\n");
      bool heard = false;
      for (int n = 0; n < elements; ++n) {
        const double beside = std::max(std::abs(q.x - center_of(n)) - width / 2, 0.0);
        heard = heard || std::hypot(beside, q.z) <= soundspeed * (now - delay_of(n) + 1 / sampling);
      }
      peak = std::max(peak, std::abs(frame[i]));
      if (!heard) outside = std::max(outside, std::abs(frame[i]));
    });
    // Perpendicular to the front all rays run to the focus, and past it from there on.
    for (int n = 0; n < elements; ++n) {
      const double gone = soundspeed * (now - delay_of(n)) / to_focus(n);
      fronts << focus_z * gone * 1e3 << ' ' << (center_of(n) + (focus_x - center_of(n)) * gone) * 1e3 << '\n';
    }
    std::printf("  at %.2f us: largest %.1f kPa; before the front %.2g of it (bound 1e-12)\n", now * 1e6, peak * 1e-3,
                outside / peak);
    require(outside <= 1e-12 * peak, "sound runs before its front");
  }
  file.close();
  fronts.close();
}

const char* const option_text =
    "array_pulse: a linear array fires a sampled pulse at a focus off its axis\n"
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
  std::printf("64 rectangles of 0.27 x 8 mm in water fire a sampled pulse of 1.25 MHz at x = 8, z = 30 mm\n");
  const std::string path = options.output + "/array_pulse_waveform.txt";
  write_waveform(path);
  const Waveform waveform = read_waveform(path);
  SampledSignal signal(waveform.samples.data(), static_cast<int>(waveform.samples.size()), waveform.width,
                       clip_threshold);
  std::printf("  %zu samples over %.2f us, %d bins kept, the strongest at %.2f MHz\n", waveform.samples.size(),
              waveform.width * 1e6, signal.kept_bins(), signal.get_f0() * 1e-6);
  look_at_focus(options.output, signal);
  look_at_plane(options.output, options.spacing, signal);
  std::fflush(stdout);
  if (options.pictures) draw_plane(options.output, KESTO_GNUPLOT_SCRIPT);
  std::printf("\nWritten to %s: array_pulse_*.dat, array_pulse_waveform.txt%s\n", options.output.c_str(),
              options.pictures ? ", the picture array_pulse.png" : "");
  return 0;
}

}  // namespace
}  // namespace kesto::example

int main(int argc, char** argv) {
  try {
    return kesto::example::run(argc, argv);
  } catch (const std::exception& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "array_pulse: %s\n", failure.what());
    return dynamic_cast<const kesto::example::BadOption*>(&failure) != nullptr ? 2 : 1;
  }
}
