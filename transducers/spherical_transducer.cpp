#include "transducers/spherical_transducer.h"

#include <iostream>

#include "core/internal/host.h"

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
