#include "core/pressure_field.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "core/internal/host.h"

PressureField::PressureField(int npoints) : npoints_(std::max(npoints, 0)) {
  const auto count = static_cast<std::size_t>(npoints_);
  values_ = static_cast<std::complex<double>*>(kesto::allocate(count * sizeof(std::complex<double>)));
  if (values_ == nullptr && count != 0) kesto::fail("Out of memory.\n");
  std::uninitialized_fill_n(values_, count, 0.0);
}

PressureField::~PressureField() { kesto::release(values_); }

bool PressureField::setPoint(int index, std::complex<double> value) {
  if (!holds(index)) return false;
  values_[index] = value;
  return true;
}

std::complex<double> PressureField::readPoint(int index) const { return holds(index) ? values_[index] : 0.0; }
