#include "transducers/rectangular_transducer.h"

#include <iostream>

#include "core/internal/host.h"

RectangularTransducer::RectangularTransducer(double w, double h) : width(w), height(h) {}

RectangularTransducer::RectangularTransducer(double w, double h, double delay) : RectangularTransducer(w, h) {
  Transducer::set_time_delay(delay);
}

RectangularTransducer::RectangularTransducer(double w, double h, double a, double phi) : RectangularTransducer(w, h) {
  Transducer::set_amplitude(a);
  Transducer::set_phase(phi);
}

RectangularTransducer::RectangularTransducer(const RectangularTransducer& other)
    : DecliningTransducer(other), width(other.width), height(other.height) {}

RectangularTransducer& RectangularTransducer::operator=(const RectangularTransducer& other) {
  if (this == &other) return *this;
  DecliningTransducer::operator=(other);
  width = other.width, height = other.height;
  return *this;
}

void RectangularTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "Width:" << width << "\nHeight:" << height << std::endl;
}

void RectangularTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  kesto::print("width: %f\n", width);
  kesto::print("height: %f\n\n", height);
}
