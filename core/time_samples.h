// The time axes of transient computations.
#pragma once

#include "core/mx_array.h"

// The time vector, and the tau vector of time-space decomposition. A failed check leaves the samples as they were, with
// the range that was asked for beside them. The arrays are the host's, so the object must not outlive the host's call.
class TimeSamples {
 public:
  TimeSamples() = default;
  TimeSamples(double deltat, double tmin, double tmax);
  ~TimeSamples();
  TimeSamples(const TimeSamples&) = delete;
  TimeSamples& operator=(const TimeSamples&) = delete;

  // Reads the first element of the structure in slot *s: "time_samples" (a list of times) or else "tmin", "tmax" and
  // "deltat".
  void allocate_memory_and_set_values(const mxArray** s);

  // The step comes first. Errors: a negative step or range, a number of samples that is none. A step of 0 is one
  // sample.
  void generatetimevectorfromminmaxdeltat(double deltat, double tmin, double tmax);
  void generatetauvectorfromminmaxdeltatau(double deltatau, double taumin, double taumax);

  // Refills the first nt_local samples in place and leaves the others; an error when the range needs more than nt.
  // Prints both counts on the host's console.
  void updatetimevectorfromminmaxdeltat(double deltat, double tmin, double tmax);

  // n times in any order; none when n is not positive. Prints every one on the host's console.
  void vectoroftimevalues(const double* t, int n);

  double tmin() const { return tmin_; }
  double tmax() const { return tmax_; }
  double deltat() const { return deltat_; }
  double taumin() const { return taumin_; }
  double taumax() const { return taumax_; }
  double deltatau() const { return deltatau_; }

  // Sample i, 0 where there is none. KEPT: the bounds include the count itself, which answers 0.
  double time_index_value(int i) const;
  double tau_index_value(int i) const;

  int nt = 0;        // samples allocated
  int nt_local = 0;  // samples of the last update, at most nt
  int ntau = 0;
  double* time_values = nullptr;  // nt values, and a 0 behind the last
  double* tau_values = nullptr;   // ntau values, and a 0 behind the last
  double tmin_ = 0, tmax_ = 0, deltat_ = 0;
  double taumin_ = 0, taumax_ = 0, deltatau_ = 0;
};
