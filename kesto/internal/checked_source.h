// Checks of what users fill in themselves, and the engine's form of it.
#pragma once

#include <complex>
#include <vector>

#include "kesto/engine/engine.h"
#include "kesto/internal/checks.h"
#include "kesto/medium.h"
#include "kesto/source.h"

namespace kesto {

extern const Limits velocity_limits;

void check(Checks& checks, const Source& source);
void check(Checks& checks, const Medium& medium);

Face face_of(const Shape& shape);
Pose pose_of(const Element& element);
std::complex<double> phasor_of(const Element& element, double frequency);  // of its velocity

// Elements of one shape, as the engine takes them.
struct ElementGroup {
  Shape shape;
  std::vector<FieldElement> elements;
};
std::vector<ElementGroup> groups_of(const Source& source, double frequency);

}  // namespace kesto
