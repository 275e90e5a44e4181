#include "transducers/spherical_transducer.h"

#include <iostream>

#include "core/host_api.h"
#include "transducers/spherical_cap.h"

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
  mexPrintf("radius: %f\n", radius);
}

int SphericalTransducer::fnm_cw() { return kesto::cap_fnm_cw(*this, {radius, roc}); }
int SphericalTransducer::fnm_cw_sse() { return kesto::cap_fnm_cw_sse(*this, {radius, roc}); }
int SphericalTransducer::rayleigh_cw() { return kesto::cap_rayleigh_cw(*this, {radius, roc}); }
int SphericalTransducer::rayleigh_cw_sse() { return kesto::cap_rayleigh_cw_sse(*this, {radius, roc}); }
