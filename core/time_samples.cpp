#include "core/time_samples.h"

#include <algorithm>

#include "core/internal/host.h"
#include "core/internal/pending_array.h"
#include "core/internal/sampled_range.h"

using kesto::fail;
using kesto::PendingArray;

namespace {

// KEPT: the texts speak of t for the tau vector as well.
void require_forward(double step, double min, double max) {
  if (step < 0) {
    kesto::print("Input value of deltat is %d\n", kesto::to_int32(step));
    fail("deltat must be greater or equal to 0.\n");
  }
  if (max - min < 0) {
    kesto::print("Input value of tmax - tmin is %d\n", kesto::to_int32(max - min));
    fail("tmax - tmin must be greater than or equal to 0.\n");
  }
}

void require_count(int count, int shown) {
  if (count >= 1) return;
  kesto::print("Illegal number of time samples %d\n", shown);
  fail("Computed number of time samples is less than 1.\n  Check values of tmin, tmax, and deltat.\n");
}

void generate(double step, double min, double max, double*& values, int& count) {
  require_forward(step, min, max);
  const int new_count = kesto::sample_count(min, max, step);
  require_count(new_count, new_count);
  PendingArray samples = PendingArray::zeros(new_count);
  kesto::fill_samples(samples.data(), new_count, min, step);
  samples.replace(values);
  count = new_count;
}

}  // namespace

TimeSamples::TimeSamples(double deltat, double tmin, double tmax) {
  generatetimevectorfromminmaxdeltat(deltat, tmin, tmax);
}

TimeSamples::~TimeSamples() {
  kesto::release(time_values);
  kesto::release(tau_values);
}

void TimeSamples::generatetimevectorfromminmaxdeltat(double deltat, double tmin, double tmax) {
  deltat_ = deltat, tmin_ = tmin, tmax_ = tmax;
  generate(deltat, tmin, tmax, time_values, nt);
  nt_local = nt;
}

void TimeSamples::generatetauvectorfromminmaxdeltatau(double deltatau, double taumin, double taumax) {
  deltatau_ = deltatau, taumin_ = taumin, taumax_ = taumax;
  generate(deltatau, taumin, taumax, tau_values, ntau);
}

void TimeSamples::updatetimevectorfromminmaxdeltat(double deltat, double tmin, double tmax) {
  deltat_ = deltat, tmin_ = tmin, tmax_ = tmax;
  require_forward(deltat, tmin, tmax);
  const int count = kesto::sample_count(tmin, tmax, deltat);
  require_count(count, nt);  // KEPT: shows the samples there are, not those asked for
  if (nt < count) {
    kesto::print(
        "The generated time vector is too small for an update with the provided tmin, tmax, and deltat values.\n");
    fail("Out of bounds error. Either generate a larger time vector, or generate, not update a time vector. \n");
  }
  nt_local = count;
  kesto::print("nt: %d\n", nt);
  kesto::print("nt_local: %d\n", nt_local);
  kesto::fill_samples(time_values, nt_local, tmin, deltat);
}

void TimeSamples::vectoroftimevalues(const double* t, int n) {
  const int count = std::max(n, 0);
  PendingArray samples = PendingArray::zeros(count);
  double min = count > 0 ? t[0] : 0, max = min;
  for (int i = 0; i < count; ++i) {
    if (t[i] < min) min = t[i];
    if (t[i] > max) max = t[i];
    samples.data()[i] = t[i];
    kesto::print("%i: %e, %e, %e => %e\n", i, min, max, t[i], samples.data()[i]);
  }
  samples.replace(time_values);
  nt = nt_local = count;
  tmin_ = min, tmax_ = max, deltat_ = 0;
}

double TimeSamples::time_index_value(int i) const {
  return i >= 0 && i <= nt && time_values != nullptr ? time_values[i] : 0.0;
}

double TimeSamples::tau_index_value(int i) const {
  return i >= 0 && i <= ntau && tau_values != nullptr ? tau_values[i] : 0.0;
}
