// A store of complex pressures.
#pragma once

#include <complex>

// Room for a fixed number of values, all 0 at first. The memory is the host's, so the object must not outlive the
// host's call.
class PressureField {
 public:
  explicit PressureField(int npoints);  // no points when npoints is not positive
  ~PressureField();
  PressureField(const PressureField&) = delete;
  PressureField& operator=(const PressureField&) = delete;

  int get_npoints() const { return npoints_; }

  // False, and nothing is stored, when there is no point `index`.
  bool setPoint(int index, std::complex<double> value);

  // 0 when there is no point `index`.
  std::complex<double> readPoint(int index) const;

 private:
  bool holds(int index) const { return index >= 0 && index < npoints_; }

  int npoints_;
  std::complex<double>* values_;
};
