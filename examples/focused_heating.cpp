// The steady temperature rise that a focused bowl causes in perfused liver: the field of the bowl in water, checked
// against published values; the heat it leaves in the tissue; the bioheat equation solved by the module.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/bowl_field.h"
#include "examples/grid.h"
#include "examples/options.h"
#include "examples/pictures.h"
#include "examples/tissue_heating.h"
#include "examples/vtk_image.h"

namespace kesto::example {

namespace {

// The free-water benchmark of Aubry et al., J. Acoust. Soc. Am. 152(2), 1003 (2022). rho c v is 60 kPa.
constexpr FocusedBowl bowl = {64e-3, 64e-3, 500e3, 0.04, 1500, 1000};
constexpr AxialProfile published = {1077487.63, 1094411.02, 61.9315e-3, 51.763e-3, 78.011e-3};

constexpr double pressure_tolerance = 1e-4;  // relative
constexpr double place_tolerance = 0.05e-3;  // m
constexpr int abscissas = 80;
constexpr double quadrature_tolerance = 1e-9;  // of the peak pressure
constexpr double residual_tolerance = 1e-6;    // of the largest heat source

// About the focus. Blood carries the heat off within sqrt(kappa / (wb cb)), 3 mm in this liver, so that holding the
// rise at zero on the edge is felt near the edge only.
constexpr std::array<double, 3> half_extent = {30e-3, 30e-3, 35e-3};  // m

class Stopwatch {
 public:
  double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void require(bool held, const std::string& failure) {
  if (!held) throw std::runtime_error(failure);
}

void compare_with_published(const AxialProfile& computed) {
  bool held = true;
  const auto compare = [&held](const char* what, double value, double reference, double allowed) {
    const double difference = value - reference;
    std::printf("  %-28s %14.4f %14.4f %+12.5f %%\n", what, value, reference, 100 * difference / reference);
    held = held && std::abs(difference) <= allowed;
  };
  const auto compare_pressure = [&](const char* what, double value, double reference) {
    compare(what, value, reference, pressure_tolerance * reference);
  };
  const auto compare_place = [&](const char* what, double value, double reference) {
    compare(what, value * 1e3, reference * 1e3, place_tolerance * 1e3);
  };
  std::printf("  %-28s %14s %14s %14s\n", "on the axis", "computed", "published", "difference");
  compare_pressure("|p| at z = 64 mm (Pa)", computed.focal_pressure, published.focal_pressure);
  compare_pressure("peak |p| (Pa)", computed.peak_pressure, published.peak_pressure);
  compare_place("z of the peak (mm)", computed.peak_z, published.peak_z);
  compare_place("z of -6 dB, near (mm)", computed.near_z, published.near_z);
  compare_place("z of -6 dB, far (mm)", computed.far_z, published.far_z);
  require(held, "the axial values are off the published ones");
}

// Twice the abscissas change next to nothing, from one corner of the volume to the other.
void check_quadrature(BowlField& field, double peak_pressure) {
  const Grid sparse = Grid::around({0, 0, bowl.curvature_radius}, half_extent, 5e-3);
  const std::vector<std::complex<double>> pressure = field.on(sparse);
  const std::vector<std::complex<double>> reference = BowlField(bowl, 2 * abscissas).on(sparse);
  double error = 0;
  for (std::size_t n = 0; n < pressure.size(); ++n) {
    const double here = std::abs(pressure[n] - reference[n]);
    if (!(here <= error)) error = here;  // a NaN, too
  }
  error /= peak_pressure;
  std::printf("  %d abscissas:               off the field with %d by %.1g of the peak at most\n", abscissas,
              2 * abscissas, error);
  require(error <= quadrature_tolerance, "the rim integral needs more abscissas");
}

void print_tissue() {
  std::printf("\nSteady heating of liver perfused with %.0f mL/(min kg)\n", liver.perfusion);
  std::printf(
      "  attenuation %.2g dB/(cm MHz), all of it taken for absorption; the module's attenuationdBcmMHz is the\n"
      "  absorption coefficient as it stands, hence passed in Np/m at %.0f kHz: %.4f\n",
      liver.attenuation, bowl.frequency * 1e-3, liver.absorption(bowl.frequency));
  std::printf("  the heat source is the field in water, not attenuated on its way: the rise is an upper estimate\n");
}

void print_peak(const Grid& grid, const std::vector<double>& temperature) {
  const auto peak = std::max_element(temperature.begin(), temperature.end());
  const std::array<double, 3> at = grid.position(static_cast<std::size_t>(peak - temperature.begin()));
  std::printf("  peak rise %.4f K at x = %.2f, y = %.2f, z = %.2f mm\n", *peak, at[0] * 1e3, at[1] * 1e3, at[2] * 1e3);
}

std::vector<double> amplitude_of(const std::vector<std::complex<double>>& pressure) {
  std::vector<double> amplitude;
  amplitude.reserve(pressure.size());
  for (const std::complex<double> p : pressure) amplitude.push_back(std::abs(p));
  return amplitude;
}

void run(const Options& options) {
  std::filesystem::create_directories(options.output);
  const Grid grid = Grid::around({0, 0, bowl.curvature_radius}, half_extent, options.spacing);

  std::printf("Focused bowl in water: radius of curvature 64 mm, aperture 64 mm, 500 kHz, 0.04 m/s\n");
  BowlField field(bowl, abscissas);
  const AxialProfile profile = axial_profile(bowl, field);
  compare_with_published(profile);
  check_quadrature(field, profile.peak_pressure);
  const Stopwatch pressure_stage;
  const std::vector<std::complex<double>> pressure = field.on(grid);
  const double seconds = pressure_stage.seconds();
  std::printf("  %zu x %zu x %zu points, every %g mm: %.2f s, %.3g million points per second\n", grid.points[0],
              grid.points[1], grid.points[2], grid.spacing * 1e3, seconds,
              static_cast<double>(grid.size()) * 1e-6 / seconds);

  print_tissue();
  const Heating heating = heat(options.module, grid, pressure, liver, bowl.frequency, options.sweeps);
  print_peak(grid, heating.temperature);
  const double residual = relative_residual(grid, pressure, liver, bowl.frequency, heating.temperature);
  std::printf("  residual of the heat balance %.2g of the largest source (bound %.0g)\n", residual, residual_tolerance);
  if (grid.spacing > 0.25 * bowl.soundspeed / bowl.frequency) {
    std::printf(
        "  this grid is too coarse for the field's wavelength: the balance is met, the peak is overestimated\n");
  }
  std::printf("  %d sweeps: %.2f s, %.3f ns per point and sweep\n", options.sweeps, heating.seconds,
              heating.seconds * 1e9 / (static_cast<double>(grid.size()) * options.sweeps));
  require(residual <= residual_tolerance, "the heat balance is not met: more sweeps are needed");

  const std::vector<double> amplitude = amplitude_of(pressure);
  write_vtk_image(options.output + "/focused_heating.vti", grid,
                  {{"pressure_amplitude", &amplitude}, {"temperature_rise", &heating.temperature}});
  write_plane(options.output, grid, amplitude, heating.temperature);
  std::printf("\nWritten to %s: focused_heating.vti, focused_heating_xz.dat\n", options.output.c_str());
  if (options.pictures) {
    draw_plane(options.output, KESTO_GNUPLOT_SCRIPT);
    std::printf("  and the pictures: focused_heating_pressure.png, focused_heating_temperature.png\n");
  }
}

}  // namespace

}  // namespace kesto::example

int main(int argc, char** argv) {
  using namespace kesto::example;
  try {
    const Options options = parse_options(argc, argv, KESTO_MODULE_FILE);
    if (options.help) {
      std::fputs(help_text, stdout);
    } else {
      run(options);
    }
  } catch (const BadOption& bad) {
    std::fprintf(stderr, "focused_heating: %s (--help lists the options)\n", bad.what());
    return 2;
  } catch (const std::exception& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "focused_heating: %s\n", failure.what());
    return 1;
  }
  return 0;
}
