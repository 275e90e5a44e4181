// A linear phased array, steered and focused in attenuating tissue: the fields of its rectangular elements, each by the
// fast nearest method, added up in one pair of buffers.
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/constants.h"
#include "core/coordinate_grid.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "examples/pictures.h"
#include "transducers/rectangular_transducer.h"

namespace kesto::example {

namespace {

using Complex = std::complex<double>;

constexpr double frequency = 1e6, soundspeed = 1540, density = 1060, attenuation = 0.5;  // Hz, m/s, kg/m^3, dB/(cm MHz)
constexpr double wavelength = soundspeed / frequency;
constexpr int element_count = 96;
constexpr double pitch = wavelength / 2, width = 0.9 * pitch, height = 12e-3, velocity = 0.1;  // m and m/s
constexpr double aperture = (element_count - 1) * pitch + width;
constexpr double steering = 20 * pi / 180, focal_length = 70e-3;  // from the array's axis; m, from its middle
constexpr int abscissas = 12;                                     // with 48, every printed digit is the same

constexpr double place_tolerance = 2.5e-3;  // m, of the peak from the focus: attenuation draws it towards the array
constexpr double sum_tolerance = 1e-12;     // of the focal pressure
constexpr double width_tolerance = 0.05;    // relative
constexpr double sinc_width = 1.2067;       // of |sin(pi u) / (pi u)| = 1/2, the focal line of an even aperture

void require(bool held, const std::string& failure) {
  if (!held) throw std::runtime_error(failure);
}

struct Place {
  double x, z;  // m; y = 0
};

// `along` the beam and `across` it, from the focus.
Place beside_focus(double along, double across) {
  const double s = std::sin(steering), c = std::cos(steering);
  return {(focal_length + along) * s + across * c, (focal_length + along) * c - across * s};
}

// lambda F / aperture beyond small angles: aperture / F is the sum of the sines of the angles between the beam and the
// lines from the array's ends to the focus.
double expected_width(Place focus) {
  const auto sine = [&](double end) { return std::sin(std::atan2(focus.x - end, focus.z) - steering); };
  return wavelength / (sine(-aperture / 2) - sine(aperture / 2));
}

class PhasedArray {
 public:
  // Each element leads by the phase of its path to the focus, so that all arrive there together.
  explicit PhasedArray(Place focus) {
    tissue_._f0 = frequency;
    tissue_._soundspeed = soundspeed;
    tissue_._rho_density = density;
    tissue_._dBcmMHz = attenuation;
    rule_.allocate_memory(abscissas), rule_.gauss_quadrature();
    for (int i = 0; i < element_count; ++i) {
      const double x = (i - 0.5 * (element_count - 1)) * pitch, path = std::hypot(focus.x - x, focus.z);
      elements_.emplace_back(width, height, velocity, two_pi * path / wavelength);
      elements_.back().set_center(x, 0, 0);
      elements_.back().set_medium(&tissue_);
      elements_.back().set_integral_pointer(&rule_);
    }
  }

  // Of the elements from `first` to before `end`.
  std::vector<Complex> pressure(CoordinateGrid& points, std::size_t first = 0, std::size_t end = element_count) {
    const auto n = static_cast<std::size_t>(points.npoints);
    std::vector<double> re(n), im(n);
    for (std::size_t i = first; i < end; ++i) {
      elements_[i].set_global_coordinate_grid(&points);
      elements_[i].set_complex_pressure_pointers(re.data(), im.data());
      require(elements_[i].fnm_cw() == 0, "rectangles offer no fnm_cw");
    }
    std::vector<Complex> p(n);
    for (std::size_t i = 0; i < n; ++i) p[i] = {re[i], im[i]};
    return p;
  }

 private:
  Medium tissue_;
  NumericalIntegration rule_;
  std::vector<RectangularTransducer> elements_;
};

struct Cut {
  std::vector<double> at;  // m from the focus, along the beam or across it
  std::vector<Complex> pressure;
};

// 2 n + 1 points to `reach` on either side.
Cut cut_through_focus(PhasedArray& array, CoordinateGrid& grid, bool along_beam, double reach, int n) {
  Cut cut;
  std::vector<double> places(3 * (2 * static_cast<std::size_t>(n) + 1));  // all x, all y, all z
  for (int i = -n; i <= n; ++i) {
    const Place place = along_beam ? beside_focus(reach * i / n, 0) : beside_focus(0, reach * i / n);
    places[cut.at.size()] = place.x;
    places[cut.at.size() + 2 * places.size() / 3] = place.z;
    cut.at.push_back(reach * i / n);
  }
  grid.CoordinateGridVector(places.data(), 2 * n + 1);
  cut.pressure = array.pressure(grid);
  return cut;
}

std::size_t place_of_peak(const std::vector<Complex>& p) {
  std::size_t peak = 0;
  for (std::size_t i = 1; i < p.size(); ++i) peak = std::abs(p[i]) > std::abs(p[peak]) ? i : peak;
  return peak;
}

// Between the crossings of half the peak on either side of it, linear between points; NaN without them.
double half_width(const Cut& cut) {
  const std::size_t peak = place_of_peak(cut.pressure);
  double from = std::nan(""), to = std::nan("");
  for (std::size_t i = cut.at.size() - 1; i > 0; --i) {
    const double half = std::abs(cut.pressure[peak]) / 2;
    const double left = std::abs(cut.pressure[i - 1]) - half, right = std::abs(cut.pressure[i]) - half;
    const double crossing = cut.at[i] + (cut.at[i] - cut.at[i - 1]) * right / (left - right);
    if (i > peak && left > 0 && right <= 0) to = crossing;
    if (i <= peak && left <= 0 && right > 0 && std::isnan(from)) from = crossing;
  }
  return to - from;
}

// The elements one by one, added up outside. Returns the mean of their amplitudes at point `focus`.
double check_sum(PhasedArray& array, CoordinateGrid& grid, const Cut& cut, std::size_t focus) {
  std::vector<Complex> sum(cut.at.size());
  double amplitudes = 0, difference = 0;
  for (std::size_t element = 0; element < element_count; ++element) {
    const std::vector<Complex> p = array.pressure(grid, element, element + 1);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += p[i];
    amplitudes += std::abs(p[focus]);
  }
  for (std::size_t i = 0; i < sum.size(); ++i) {
    const double here = std::abs(sum[i] - cut.pressure[i]);
    if (!(here <= difference)) difference = here;  // a NaN, too
  }
  difference /= std::abs(cut.pressure[focus]);
  std::printf("  one buffer for all is off the sum of the elements by %.1g (bound %.0g)\n", difference, sum_tolerance);
  require(difference <= sum_tolerance, "the elements do not add up");
  return amplitudes / element_count;
}

void write_data(const std::string& directory, const CoordinateGrid& grid, const std::vector<Complex>& p,
                const Cut& lateral, const Cut& axial, Place focus) {
  std::ofstream plane(directory + "/phased_array_xz.dat"), cuts(directory + "/phased_array_cuts.dat");
  plane << "# z (mm), x (mm), pressure amplitude (kPa); y = 0\n";
  grid.for_each_point([&](int i, const CartesianCoordinate& at) {
    plane << at.z * 1e3 << ' ' << at.x * 1e3 << ' ' << std::abs(p[static_cast<std::size_t>(i)]) * 1e-3 << '\n'
          << ((i + 1) % grid.nx == 0 ? "\n" : "");
  });
  cuts << "# distance from the focus (mm), pressure amplitude (kPa): across the beam, along it; z and x of the focus\n";
  for (const Cut* cut : {&lateral, &axial}) {
    for (std::size_t i = 0; i < cut->at.size(); ++i) {
      cuts << cut->at[i] * 1e3 << ' ' << std::abs(cut->pressure[i]) * 1e-3 << '\n';
    }
    cuts << "\n\n";
  }
  cuts << focus.z * 1e3 << ' ' << focus.x * 1e3 << '\n';
  require(plane.flush() && cuts.flush(), directory + ": data cannot be written");
}

const char* const option_text =
    "phased_array: a linear array, steered and focused in attenuating tissue\n"
    "options: --output DIR (out), --spacing MM (0.25; 0.1 to 2), --no-pictures, --help";

void run(const std::string& output, bool pictures, double spacing) {
  std::filesystem::create_directories(output);
  const Place focus = beside_focus(0, 0);
  PhasedArray array(focus);
  std::printf(
      "Phased array: %d elements of %.3g mm x %.3g mm, aperture %.1f mm, %.3g MHz, %.2g dB/(cm MHz)\n"
      "  focus at x = %.2f, z = %.2f mm: %.0f degrees, %.0f mm\n",
      element_count, width * 1e3, height * 1e3, aperture * 1e3, frequency * 1e-6, attenuation, focus.x * 1e3,
      focus.z * 1e3, steering * 180 / pi, focal_length * 1e3);
  CoordinateGrid plane, across, along;
  plane.RegularCoordinateGrid(-40e-3, 60e-3, 0, 0, 5e-3, 120e-3, spacing, 0, spacing);
  const auto start = std::chrono::steady_clock::now();
  const std::vector<Complex> p = array.pressure(plane);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const std::size_t peak = place_of_peak(p);
  const CartesianCoordinate at = plane.spatial_index_value(static_cast<int>(peak));
  const double off = std::hypot(at.x - focus.x, at.z - focus.z);
  std::printf("  peak %.1f kPa at x = %.2f, z = %.2f mm, %.2f mm from the focus (bound %.2f mm)\n",
              std::abs(p[peak]) * 1e-3, at.x * 1e3, at.z * 1e3, off * 1e3, (place_tolerance + spacing) * 1e3);
  constexpr int points = 400;
  const Cut lateral = cut_through_focus(array, across, false, 10e-3, points);
  const Cut axial = cut_through_focus(array, along, true, 45e-3, points);
  const double expected = expected_width(focus), ratio = half_width(lateral) / expected;
  std::printf(
      "  -6 dB width %.3f mm, %.3f times lambda F / aperture (%.3f mm); a sinc has %.3f\n"
      "  -6 dB length %.2f mm\n",
      half_width(lateral) * 1e3, ratio, expected * 1e3, sinc_width, half_width(axial) * 1e3);
  const double mean = check_sum(array, across, lateral, points);
  std::printf("  %.1f kPa at the focus: gain over one element, the mean of them, %.2f of %d\n",
              std::abs(lateral.pressure[points]) * 1e-3, std::abs(lateral.pressure[points]) / mean, element_count);
  std::printf("  %d x %d points, every %g mm: %.2f s, %.3g points per second, %.3g of one element\n", plane.nx,
              plane.nz, spacing * 1e3, seconds, plane.npoints / seconds, plane.npoints * element_count / seconds);
  require(off <= place_tolerance + spacing, "the peak is off the focus");
  require(std::fabs(ratio / sinc_width - 1) <= width_tolerance, "the width of the focus is off its aperture's");
  write_data(output, plane, p, lateral, axial, focus);
  std::printf("\nWritten to %s: phased_array_xz.dat, phased_array_cuts.dat\n", output.c_str());
  if (!pictures) return;
  draw_plane(output, KESTO_GNUPLOT_SCRIPT);
  std::printf("  and the pictures: phased_array_pressure.png, phased_array_cuts.png\n");
}

}  // namespace

}  // namespace kesto::example

int main(int argc, char** argv) {
  using namespace kesto::example;
  std::string output = "out";
  bool pictures = true;
  double spacing = 0.25;  // mm
  try {
    for (int n = 1; n < argc; ++n) {
      const std::string option = argv[n], value = n + 1 < argc ? argv[n + 1] : "";
      char* end = nullptr;
      const double number = std::strtod(value.c_str(), &end);
      if (option == "--no-pictures") {
        pictures = false;
      } else if (option == "--output" && !value.empty()) {
        output = argv[++n];
      } else if (option == "--spacing" && number >= 0.1 && number <= 2 && *end == '\0') {
        spacing = number, ++n;
      } else if (option == "--help") {
        return std::puts(option_text), 0;
      } else {
        std::fprintf(stderr, "phased_array: %s: no such option, or no value in range\n%s\n", option.c_str(),
                     option_text);
        return 2;
      }
    }
    run(output, pictures, spacing * 1e-3);
  } catch (const std::exception& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "phased_array: %s\n", failure.what());
    return 1;
  }
  return 0;
}
