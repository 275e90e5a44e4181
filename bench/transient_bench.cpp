// The transient fields beside the plain direct form at -O2, timed in turn within one run.
//
// Rows: form / shape / pulse, or the kept bins of a sampled one / abscissas / sampling frequency / layout of the points
// / vector target. Counters: microseconds a point, how many times faster than the plain direct form, and the largest
// difference from it over the field's maximum.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bench/plain_transient_o2.h"
#include "bench/timing.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "excitation/hanning_pulse.h"
#include "excitation/sampled_signal.h"
#include "excitation/tone_burst.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

constexpr double rho = 1000, speed = 1500, radius = 8e-3, roc = 30e-3, width = 14e-3, height = 9e-3;

enum class Form { direct, decomposed };
enum class Shape { disc, shell, rectangle };
enum class Pulse { hanning, tone, sampled };
enum class Layout { grid, rows, columns, list };
constexpr const char* shape_names[] = {"disc", "shell", "rectangle"};
constexpr const char* pulse_names[] = {"hanning", "tone", "sampled"};
constexpr const char* layout_names[] = {"grid", "rows", "columns", "list"};

struct Row {
  Form form;
  Shape shape;
  Pulse pulse;
  int abscissas;
  double sampling;  // Hz
  Layout layout;
  kesto::VectorTarget target;
  int bins = 0;  // of a sampled pulse, all of them kept
};

struct Scene {
  double pulse_width, tmin, tmax;  // s
};

// 24 x 32 points before the face and about the focus; from before the first arrival to after the last. The other
// layouts are 1,500 points of a plane, 60 across from 0 to 12 mm and 25 along from 8 to 60 mm, ordered along x, along z
// or not at all.
Scene fill(CoordinateGrid& grid, Layout layout, double sampling) {
  if (layout == Layout::grid) {
    grid.RegularCoordinateGrid(0, 6.9e-3, 0, 0, 15e-3, 38.25e-3, 0.3e-3, 1e-3, 0.75e-3);
    return {1.5e-6, 7e-6, 35e-6};
  }
  constexpr int across = 60, along = 25, points = across * along;
  std::vector<int> order(points);
  std::iota(order.begin(), order.end(), 0);
  if (layout == Layout::columns) {
    for (int i = 0; i < points; ++i) order[static_cast<std::size_t>(i)] = i / along + i % along * across;
  } else if (layout == Layout::list) {
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
  }
  std::vector<double> columns(3 * points);
  for (std::size_t i = 0; i < points; ++i) {
    columns[i] = order[i] % across * (12e-3 / across);
    columns[i + 2 * points] = 8e-3 + order[i] / across * (52e-3 / along);
  }
  grid.CoordinateGridVector(columns.data(), points);
  return {3e-6, 0, 959 / sampling};
}

// Something of the Hanning pulse and a little of every frequency, in samples enough for the bins.
std::unique_ptr<SampledSignal> sampled_pulse(const Row& row, const HanningPulse& pulse) {
  if (row.pulse != Pulse::sampled) return nullptr;
  const int n = 2 * row.bins - 1;
  std::mt19937 random(5);
  std::vector<double> samples;
  for (int i = 0; i < n; ++i) {
    samples.push_back(pulse.at(pulse.pulse_width * i / (n - 1)) +
                      std::uniform_real_distribution<>(-0.01, 0.01)(random));
  }
  return std::make_unique<SampledSignal>(samples.data(), n, pulse.pulse_width, 0);
}

void transient(benchmark::State& state, Row row) {
  setenv("KESTO_VECTOR_TARGET", kesto::name_of(row.target), 1);
  Medium medium;
  medium._soundspeed = speed, medium._rho_density = rho;
  CoordinateGrid grid;
  const Scene scene = fill(grid, row.layout, row.sampling);
  const std::size_t points = static_cast<std::size_t>(grid.npoints);
  TimeSamples time(1 / row.sampling, scene.tmin, scene.tmax);
  const std::size_t samples = static_cast<std::size_t>(time.nt);
  NumericalIntegration rule;
  rule.allocate_memory(row.abscissas);
  rule.gauss_quadrature();
  const std::vector<double> x(rule.abscissa, rule.abscissa + row.abscissas);
  const std::vector<double> w(rule.weight, rule.weight + row.abscissas);
  HanningPulse hanning(1, 2e6, scene.pulse_width, 0, 2);
  ToneBurst tone(1, 2e6, scene.pulse_width, 0, 1);
  const std::unique_ptr<SampledSignal> sampled = sampled_pulse(row, hanning);
  ExcitationFunction* const pulse = sampled                       ? static_cast<ExcitationFunction*>(sampled.get())
                                    : row.pulse == Pulse::hanning ? static_cast<ExcitationFunction*>(&hanning)
                                                                  : &tone;
  CircularTransducer disc(radius, 1, 0);
  SphericalTransducer shell(radius, roc, 1, 0);
  RectangularTransducer rectangle(width, height, 1, 0);
  Transducer* const elements[] = {&disc, &shell, &rectangle};
  Transducer& element = *elements[static_cast<int>(row.shape)];
  element.excitation = pulse;
  element.set_medium(&medium), element.set_global_coordinate_grid(&grid), element.set_integral_pointer(&rule);
  element.set_time_vector(&time);

  std::vector<double> field(points * samples), trace(samples), times, ratios;
  std::vector<std::vector<double>> plain(points, trace);
  element.set_transient_pressure_pointer(field.data());
  for (auto _ : state) {
    const double plain_time = seconds([&] {
      for (std::size_t i = 0; i < points; ++i) {
        const CartesianCoordinate p = grid.spatial_index_value(static_cast<int>(i));
        const PlainRays rays = row.shape == Shape::disc ? plain_disc_rays(radius, rho, speed, x, w, p)
                               : row.shape == Shape::shell
                                   ? plain_cap_rays(radius, roc, rho, speed, x, w, p)
                                   : plain_rectangle_rays(width / 2, height / 2, rho, speed, x, w, p);
        plain_direct(rays, *pulse, time.time_index_value(0), 1 / row.sampling, time.nt, plain[i].data());
      }
    });
    rule.gauss_quadrature();
    std::fill(field.begin(), field.end(), 0.0);
    const double time_taken = seconds([&] { row.form == Form::direct ? element.fnm_transient() : element.fnm_tsd(); });
    state.SetIterationTime(time_taken);
    times.push_back(time_taken);
    ratios.push_back(plain_time / time_taken);
  }
  double worst = 0, largest = 0;
  for (std::size_t i = 0; i < points; ++i) {
    for (std::size_t k = 0; k < samples; ++k) {
      largest = std::max(largest, std::fabs(plain[i][k]));
      worst = std::max(worst, std::fabs(plain[i][k] - field[i + k * points]));
    }
  }
  if (!(worst <= 1e-11 * largest)) state.SkipWithError("differs from the plain loops");
  state.counters["us_a_point"] = median(times) * 1e6 / static_cast<double>(points);
  state.counters["speedup"] = median(ratios);
  state.counters["difference"] = worst / largest;
  unsetenv("KESTO_VECTOR_TARGET");
}

void add_row(const Row& row) {
  const std::string name = std::string(row.form == Form::direct ? "direct/" : "decomposed/") +
                           shape_names[static_cast<int>(row.shape)] + "/" + pulse_names[static_cast<int>(row.pulse)] +
                           (row.bins > 0 ? std::to_string(row.bins) : "") + "/" + std::to_string(row.abscissas) + "/" +
                           std::to_string(static_cast<int>(row.sampling / 1e6)) + "MHz/" +
                           layout_names[static_cast<int>(row.layout)] + "/" + name_of(row.target);
  benchmark::RegisterBenchmark(name.c_str(), transient, row)
      ->UseManualTime()
      ->Iterations(row.bins > 64  ? 1
                   : row.bins > 0 ? 3
                                  : 5);
}

}  // namespace

int main(int argc, char** argv) {
  for (const kesto::VectorTarget target : kesto::all_vector_targets) {
    if (!kesto::is_available(target)) continue;
    for (const Form form : {Form::direct, Form::decomposed}) {
      for (const Shape shape : {Shape::disc, Shape::shell, Shape::rectangle}) {
        for (const Pulse pulse : {Pulse::hanning, Pulse::tone}) {
          for (const int n : {16, 50}) {
            for (const double sampling : {16e6, 64e6}) add_row({form, shape, pulse, n, sampling, Layout::grid, target});
          }
        }
        for (const Layout layout : {Layout::rows, Layout::columns, Layout::list}) {
          add_row({form, shape, Pulse::hanning, 50, 16e6, layout, target});
        }
        for (const int bins : {8, 64, 512})
          add_row({form, shape, Pulse::sampled, 16, 16e6, Layout::grid, target, bins});
      }
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
