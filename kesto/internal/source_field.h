// The field of a source at one frequency, for callers who have checked their arguments.
#pragma once

#include <complex>
#include <vector>

#include "kesto/grid.h"
#include "kesto/internal/checked_source.h"

namespace kesto {

class SourceField {
 public:
  SourceField(const Source& source, const Medium& medium, double frequency);

  // Pa; no larger than the largest amplitude of the field, and near it: what accuracies refer to.
  double scale() const { return scale_; }

  // Adds the field, to `accuracy` of the scale.
  FieldCost add(const FieldPoints& points, double accuracy, double* re, double* im) const;
  std::vector<std::complex<double>> at(const std::vector<Point>& points, double accuracy) const;

  std::size_t element_count() const { return element_count_; }
  double wavelength() const { return wavelength_; }

 private:
  FieldCost add_each(const FieldPoints& points, double error_of_element, double* re, double* im) const;
  std::vector<Point> probes(const Source& source) const;
  void find_scale(const Source& source);

  std::vector<ElementGroup> groups_;
  FieldRequest request_;
  double wavelength_, impedance_;
  double sum_of_velocities_ = 0, scale_ = 0;
  std::size_t element_count_ = 0;
};

// In the engine's form. The grid must live on.
FieldPoints points_of(const Grid& grid);

}  // namespace kesto
