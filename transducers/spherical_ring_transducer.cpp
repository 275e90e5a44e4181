#include "transducers/spherical_ring_transducer.h"

#include <iostream>

#include "core/internal/host.h"

SphericalRingTransducer::SphericalRingTransducer(double inner, double outer, double focus)
    : inner_radius(inner), outer_radius(outer), focal_distance(focus) {}

SphericalRingTransducer::SphericalRingTransducer(double inner, double outer, double focus, double delay)
    : SphericalRingTransducer(inner, outer, focus) {
  time_delay = delay;
}

SphericalRingTransducer::SphericalRingTransducer(double inner, double outer, double focus, double a, double phi)
    : SphericalRingTransducer(inner, outer, focus) {
  phase = phi;
  Transducer::set_amplitude(a);
}

void SphericalRingTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "inner radius: " << inner_radius << "\nouter radius: " << outer_radius
            << "\ngeometric focus: " << focal_distance << '\n';
}

void SphericalRingTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  kesto::print("inner radius: %f\n", inner_radius);
  kesto::print("outer radius: %f\n", outer_radius);
  kesto::print("geometric focus: %f\n\n", focal_distance);
}

int SphericalRingTransducer::fnm_tsd_low_precision() {
  return decompose_in_single_precision({outer_radius, focal_distance});
}
