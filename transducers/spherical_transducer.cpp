#include "transducers/spherical_transducer.h"

#include <iostream>

#include "core/internal/host.h"
#include "transducers/cap/cap.h"

SphericalTransducer::SphericalTransducer(double r, double curvature) : radius(r), roc(curvature) {}

SphericalTransducer::SphericalTransducer(double r, double curvature, double delay) : SphericalTransducer(r, curvature) {
  time_delay = delay;
}

SphericalTransducer::SphericalTransducer(double r, double curvature, double a, double phi)
    : SphericalTransducer(r, curvature) {
  phase = phi;
  Transducer::set_amplitude(a);
}

void SphericalTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "radius: " << radius << '\n' << "ROC:" << roc << std::endl;
}

void SphericalTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  kesto::print("radius: %f\n", radius);
}

int SphericalTransducer::fnm_cw() { return kesto::cap_fnm_cw(*this, {radius, roc}); }
int SphericalTransducer::fnm_cw_sse() { return kesto::cap_fnm_cw_sse(*this, {radius, roc}); }
int SphericalTransducer::rayleigh_cw() { return kesto::cap_rayleigh_cw(*this, {radius, roc}); }
int SphericalTransducer::rayleigh_cw_sse() { return kesto::cap_rayleigh_cw_sse(*this, {radius, roc}); }
int SphericalTransducer::impulse_begin_and_end_times() {
  return kesto::cap_impulse_begin_and_end_times(*this, {radius, roc});
}
int SphericalTransducer::impulse_response() { return kesto::cap_impulse_response(*this, {radius, roc}); }
int SphericalTransducer::fnm_transient() { return kesto::cap_fnm_transient(*this, {radius, roc}); }
int SphericalTransducer::fnm_fdtsd() { return kesto::cap_fnm_fdtsd(*this, {radius, roc}); }
int SphericalTransducer::fnm_tsd() { return kesto::cap_fnm_tsd(*this, {radius, roc}); }
int SphericalTransducer::fnm_transient_behind_source() {
  return kesto::cap_fnm_transient(*this, {radius, roc}, kesto::BehindCap::computed);
}
int SphericalTransducer::fnm_tsd_behind_source() {
  return kesto::cap_fnm_tsd(*this, {radius, roc}, kesto::BehindCap::computed);
}
int SphericalTransducer::fnm_tsd_low_precision() { return kesto::cap_fnm_tsd_low_precision(*this, {radius, roc}); }
