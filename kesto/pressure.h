// Continuous-wave fields to a stated accuracy.
#pragma once

#include <complex>
#include <functional>
#include <iosfwd>
#include <vector>

#include "kesto/grid.h"
#include "kesto/medium.h"
#include "kesto/source.h"

namespace kesto {

struct Options {
  // Called between blocks of points with the fraction done; false ends the computation with Cancelled.
  std::function<bool(double)> progress = {};
};

// The pressure as complex amplitudes, p(t) = Re(value e^{+j omega t}), Pa.
struct Field {
  Grid grid;
  Source source;
  Medium medium;
  std::vector<double> frequencies;           // Hz
  std::vector<std::complex<double>> values;  // of point i at frequency f: values[i + grid.size() f]
  std::vector<double> errors;                // Pa, by frequency: no value is farther off
  std::vector<double> scales;                // Pa, by frequency: the peak that the accuracy refers to
  double accuracy;                           // as it was asked for
  double abscissas_a_point = 0;              // mean over points, elements and frequencies
  double in_single_precision = 0;            // which part of them
  double seconds = 0;

  std::complex<double> operator[](std::size_t i) const { return values[i]; }
  double error() const;  // the largest
};

// The Rayleigh integral of the source, losses included: p = (j omega rho / 2 pi) integral of v e^{-(alpha + jk) R} / R
// over its faces. `accuracy` is the largest error over the field's peak, wherever that is. Behind the plane of a flat
// element and outside the sphere of a bowl there is nothing of it.
Field pressure(const Source& source, const Grid& grid, const Medium& medium, double frequency, double accuracy = 1e-4,
               const Options& options = {});
Field pressure(const Source& source, const Grid& grid, const Medium& medium, const std::vector<double>& frequencies,
               double accuracy = 1e-4, const Options& options = {});

std::ostream& operator<<(std::ostream& out, const Field& field);

}  // namespace kesto
