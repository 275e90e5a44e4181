#include "transducers/circular_transducer.h"

#include <iostream>

#include "core/internal/host.h"

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
