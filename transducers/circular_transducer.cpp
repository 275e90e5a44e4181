#include "transducers/circular_transducer.h"

#include <iostream>

#include "core/internal/host.h"
#include "transducers/disc/disc.h"

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
  kesto::print("radius: %f\n", radius);
}

int CircularTransducer::fnm_cw() { return kesto::disc_fnm_cw(*this, {radius}); }
int CircularTransducer::fnm_cw_apodized() { return kesto::disc_fnm_cw_apodized(*this, {radius}); }
int CircularTransducer::fnm_cw_sse() { return kesto::disc_fnm_cw_sse(*this, {radius}); }
int CircularTransducer::rayleigh_cw() { return kesto::disc_rayleigh_cw(*this, {radius}); }
int CircularTransducer::rayleigh_cw_apodized() { return kesto::disc_rayleigh_cw_apodized(*this, {radius}); }
int CircularTransducer::rayleigh_cw_sse() { return kesto::disc_rayleigh_cw_sse(*this, {radius}); }
int CircularTransducer::impulse_begin_and_end_times() {
  return kesto::disc_impulse_begin_and_end_times(*this, {radius});
}
int CircularTransducer::impulse_response() { return kesto::disc_impulse_response(*this, {radius}); }
int CircularTransducer::fnm_transient() { return kesto::disc_fnm_transient(*this, {radius}); }
int CircularTransducer::fnm_fdtsd() { return kesto::disc_fnm_fdtsd(*this, {radius}); }
int CircularTransducer::fnm_tsd() { return kesto::disc_fnm_tsd(*this, {radius}); }
int CircularTransducer::fnm_tsd_low_precision() { return kesto::disc_fnm_tsd_low_precision(*this, {radius}); }
int CircularTransducer::fnm_tsd_sse() { return kesto::disc_fnm_tsd_sse(*this, {radius}); }
int CircularTransducer::rayleigh_transient() { return kesto::disc_rayleigh_transient(*this, {radius}); }
