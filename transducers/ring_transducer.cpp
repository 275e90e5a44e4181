#include "transducers/ring_transducer.h"

#include <iostream>

#include "core/internal/host.h"

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
