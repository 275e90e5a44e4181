#include "kesto/pressure.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ostream>

#include "kesto/error.h"
#include "kesto/internal/source_field.h"

namespace kesto {

namespace {

// A stretch of a grid's points that follow one another in the result.
struct Block {
  FieldPoints points;
  std::size_t first;
};

// Large enough that what is done once a call is lost in it; along the slowest axis of a box in whole tiles.
std::vector<Block> blocks_of(const Grid& grid, std::size_t element_count) {
  constexpr std::size_t least_work = std::size_t{1} << 21, row_step = 16;
  const std::size_t wanted = std::max<std::size_t>(least_work / std::max<std::size_t>(element_count, 1), 4096);
  const FieldPoints whole = points_of(grid);
  const int slow = !grid.is_box() ? 0 : grid.z().size() > 1 ? 2 : grid.y().size() > 1 ? 1 : 0;
  const std::size_t rows = whole.count[slow], row = whole.size() / rows;
  std::size_t step = (wanted + row - 1) / row;
  step = (step + row_step - 1) / row_step * row_step;
  std::vector<Block> blocks;
  for (std::size_t at = 0; at < rows; at += step) {
    Block block{whole, at * row};
    const std::size_t count = std::min(step, rows - at);
    for (int a = 0; a < 3; ++a) {
      if (a != slow && grid.is_box()) continue;
      block.points.count[a] = count;
      block.points.at[a] += at;
    }
    blocks.push_back(block);
  }
  return blocks;
}

}  // namespace

Field pressure(const Source& source, const Grid& grid, const Medium& medium, const std::vector<double>& frequencies,
               double accuracy, const Options& options) {
  const auto began = std::chrono::steady_clock::now();
  Checks checks;
  check(checks, source);
  check(checks, medium);
  if (frequencies.empty()) refuse("frequencies is empty: at least one is expected (Hz)");
  for (const double f : frequencies) checks.within("frequency", f, frequency_limits);
  check_accuracy(accuracy);
  const std::size_t points = grid.size();
  check_memory(16.0 * static_cast<double>(points) * static_cast<double>(frequencies.size()),
               text_of("a field at %zu points and %zu frequencies", points, frequencies.size()));
  Field field{grid, source, medium, frequencies, {}, {}, {}, accuracy};
  field.values.resize(points * frequencies.size());
  const std::vector<Block> blocks = blocks_of(grid, source.elements.size());
  std::vector<double> re, im;
  double terms = 0, single = 0, pairs = 0;
  for (std::size_t f = 0; f < frequencies.size(); ++f) {
    const SourceField by_source(source, medium, frequencies[f]);
    double error = 0;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
      const std::size_t n = blocks[b].points.size();
      re.assign(n, 0), im.assign(n, 0);
      const FieldCost cost = by_source.add(blocks[b].points, accuracy, re.data(), im.data());
      std::complex<double>* values = field.values.data() + f * points + blocks[b].first;
      for (std::size_t i = 0; i < n; ++i) values[i] = {re[i], im[i]};
      error = std::max(error, cost.error);
      terms += cost.terms, single += cost.terms_in_single_precision;
      const double done =
          static_cast<double>(f * blocks.size() + b + 1) / static_cast<double>(frequencies.size() * blocks.size());
      if (options.progress && !options.progress(done)) throw Cancelled();
    }
    field.errors.push_back(error);
    field.scales.push_back(by_source.scale());
    pairs += static_cast<double>(points) * static_cast<double>(by_source.element_count());
  }
  if (pairs > 0) field.abscissas_a_point = terms / pairs;
  if (terms > 0) field.in_single_precision = single / terms;
  field.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  return field;
}

Field pressure(const Source& source, const Grid& grid, const Medium& medium, double frequency, double accuracy,
               const Options& options) {
  return pressure(source, grid, medium, std::vector<double>{frequency}, accuracy, options);
}

double Field::error() const { return errors.empty() ? 0 : *std::max_element(errors.begin(), errors.end()); }

std::ostream& operator<<(std::ostream& out, const Field& field) {
  out << "pressure of " << field.source << "\nin " << field.medium << "\non " << field.grid << '\n';
  for (std::size_t f = 0; f < field.frequencies.size(); ++f) {
    std::size_t peak = 0;
    const std::complex<double>* values = field.values.data() + f * field.grid.size();
    for (std::size_t i = 0; i < field.grid.size(); ++i) {
      if (std::abs(values[i]) > std::abs(values[peak])) peak = i;
    }
    const Point p = field.grid.point(peak);
    out << text_of("%g MHz: up to %.5g Pa, at (%g, %g, %g) mm; no value is off by more than %s Pa\n",
                   field.frequencies[f] / 1e6, std::abs(values[peak]), 1e3 * p.x, 1e3 * p.y, 1e3 * p.z,
                   one_digit(field.errors[f]).c_str());
    if (f == 9 && field.frequencies.size() > 10) return out << "...\n";
  }
  return out;
}

}  // namespace kesto
