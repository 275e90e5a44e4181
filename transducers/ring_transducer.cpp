#include "transducers/ring_transducer.h"

#include <iostream>

#include "core/internal/host.h"
#include "transducers/disc/disc.h"

RingTransducer::RingTransducer(double inner, double outer) : inner_radius(inner), outer_radius(outer) {}

RingTransducer::RingTransducer(double inner, double outer, double delay) : RingTransducer(inner, outer) {
  time_delay = delay;
}

RingTransducer::RingTransducer(double inner, double outer, double a, double phi) : RingTransducer(inner, outer) {
  phase = phi;
  Transducer::set_amplitude(a);
}

void RingTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "inner radius: " << inner_radius << '\n' << "outer radius: " << outer_radius << std::endl;
}

void RingTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  kesto::print("inner radius: %f\n", inner_radius);
  kesto::print("outer radius: %f\n", outer_radius);
}

int RingTransducer::fnm_cw() { return kesto::disc_fnm_cw(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_cw_apodized() { return kesto::disc_fnm_cw_apodized(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_cw_sse() { return kesto::disc_fnm_cw_sse(*this, {outer_radius, inner_radius}); }
int RingTransducer::rayleigh_cw() { return kesto::disc_rayleigh_cw(*this, {outer_radius, inner_radius}); }
int RingTransducer::rayleigh_cw_apodized() {
  return kesto::disc_rayleigh_cw_apodized(*this, {outer_radius, inner_radius});
}
int RingTransducer::rayleigh_cw_sse() { return kesto::disc_rayleigh_cw_sse(*this, {outer_radius, inner_radius}); }
int RingTransducer::impulse_begin_and_end_times() {
  return kesto::disc_impulse_begin_and_end_times(*this, {outer_radius, inner_radius});
}
int RingTransducer::impulse_response() { return kesto::disc_impulse_response(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_transient() { return kesto::disc_fnm_transient(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_fdtsd() { return kesto::disc_fnm_fdtsd(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_tsd() { return kesto::disc_fnm_tsd(*this, {outer_radius, inner_radius}); }
int RingTransducer::fnm_tsd_low_precision() {
  return kesto::disc_fnm_tsd_low_precision(*this, {outer_radius, inner_radius});
}
int RingTransducer::fnm_tsd_sse() { return kesto::disc_fnm_tsd_sse(*this, {outer_radius, inner_radius}); }
int RingTransducer::rayleigh_transient() { return kesto::disc_rayleigh_transient(*this, {outer_radius, inner_radius}); }
