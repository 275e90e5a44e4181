#include "transducers/circular_transducer.h"

#include <iostream>

#include "core/host_api.h"
#include "transducers/disc.h"

CircularTransducer::CircularTransducer(double r) : radius(r) {}

CircularTransducer::CircularTransducer(double r, double delay) : radius(r) { time_delay = delay; }

CircularTransducer::CircularTransducer(double r, double a, double phi) : radius(r) {
  phase = phi;
  Transducer::set_amplitude(a);
}

void CircularTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "radius: " << radius << std::endl;
}

void CircularTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  mexPrintf("radius: %f\n", radius);
}

int CircularTransducer::fnm_cw() { return kesto::disc_fnm_cw(*this, {radius}); }
int CircularTransducer::fnm_cw_apodized() { return kesto::disc_fnm_cw_apodized(*this, {radius}); }
int CircularTransducer::fnm_cw_sse() { return kesto::disc_fnm_cw_sse(*this, {radius}); }
int CircularTransducer::rayleigh_cw() { return kesto::disc_rayleigh_cw(*this, {radius}); }
int CircularTransducer::rayleigh_cw_apodized() { return kesto::disc_rayleigh_cw_apodized(*this, {radius}); }
int CircularTransducer::rayleigh_cw_sse() { return kesto::disc_rayleigh_cw_sse(*this, {radius}); }
