#include "kesto/internal/checked_source.h"

#include <cmath>

#include "kesto/engine/constants.h"

namespace kesto {

const Limits velocity_limits = {-1e3, 1e3,   -20,
                                20,   "m/s", "velocities are normal to the face, 1 MPa in water is 0.67 m/s"};

void check(Checks& checks, const Source& source) {
  static const Limits place = {-100, 100, -1, 1, "m", "lengths are in metres"};
  static const Limits angle = {-400, 400, -6.3, 6.3, "rad", "angles are in radians"};
  if (source.elements.empty()) refuse("source has no elements: at least one is expected");
  bool moves = false;
  for (const Element& e : source.elements) {
    for (const double v : {e.position.x, e.position.y, e.position.z}) checks.within("position", v, place);
    for (const double v : {e.orientation.first, e.orientation.second, e.orientation.third}) {
      checks.within("orientation", v, angle);
    }
    checks.within("velocity", e.velocity, velocity_limits);
    checks.within("phase", e.phase, angle);
    checks.within("delay", e.delay, time_limits);
    moves = moves || e.velocity != 0;
  }
  if (!moves) checks.warn_once("silent", "velocity is 0 for every element: the field is 0");
}

void check(Checks& checks, const Medium& m) {
  static const Limits speed = {50, 20000, 300, 7000, "m/s", "water has about 1500"};
  static const Limits density = {0.5, 30000, 500, 12000, "kg/m^3", "water has about 1000"};
  static const Limits attenuation = {0, 1000, 0, 50, "dB/(cm MHz^y)", "soft tissue has about 0.5"};
  static const Limits exponent = {0, 3, 0, 2, "", "it is 2 in water and 1 to 1.5 in tissue"};
  static const Limits nonlinearity = {0, 100, 0, 20, "", "1 + B/2A is 3.5 in water"};
  static const Limits heat = {0, 1e5, 0, 1e4, "J/(kg K)", "water has about 4200"};
  static const Limits conductivity = {0, 1e4, 0, 500, "W/(m K)", "water has about 0.6"};
  static const Limits perfusion = {0, 1e4, 0, 200, "kg/(m^3 s)", "liver has about 16"};
  checks.within("sound_speed", m.sound_speed, speed);
  checks.within("density", m.density, density);
  checks.within("attenuation", m.attenuation, attenuation);
  checks.within("exponent", m.exponent, exponent);
  checks.within("nonlinearity", m.nonlinearity, nonlinearity);
  checks.within("specific_heat", m.specific_heat, heat);
  checks.within("conductivity", m.conductivity, conductivity);
  checks.within("perfusion", m.perfusion, perfusion);
  checks.within("blood_specific_heat", m.blood_specific_heat, heat);
}

Face face_of(const Shape& s) {
  switch (s.kind()) {
    case Shape::Kind::rectangle: return Face::rectangle(s.outer(), s.inner());
    case Shape::Kind::bowl:
    case Shape::Kind::bowl_annulus: return Face::bowl_annulus(s.inner(), s.outer(), s.curvature());
    default: return Face::annulus(s.inner(), s.outer());
  }
}

Pose pose_of(const Element& e) {
  const double sa = std::sin(e.orientation.first), ca = std::cos(e.orientation.first);
  const double sb = std::sin(e.orientation.second), cb = std::cos(e.orientation.second);
  const double sc = std::sin(e.orientation.third), cc = std::cos(e.orientation.third);
  return {{e.position.x, e.position.y, e.position.z},
          {{sa * sb * sc + ca * cc, cb * sc, ca * sb * sc - sa * cc},
           {sa * sb * cc - ca * sc, cb * cc, sa * sc + ca * cc * sb},
           {sa * cb, -sb, ca * cb}}};
}

std::complex<double> phasor_of(const Element& e, double frequency) {
  const double turns = frequency * e.delay, angle = e.phase - 2 * full_pi * (turns - std::floor(turns));
  return {e.velocity * std::cos(angle), e.velocity * std::sin(angle)};
}

std::vector<ElementGroup> groups_of(const Source& source, double frequency) {
  std::vector<ElementGroup> groups;
  for (const Element& e : source.elements) {
    const auto same = [&](const ElementGroup& g) {
      return g.shape.kind() == e.shape.kind() && g.shape.outer() == e.shape.outer() &&
             g.shape.inner() == e.shape.inner() && g.shape.curvature() == e.shape.curvature();
    };
    std::size_t g = 0;
    while (g < groups.size() && !same(groups[g])) ++g;
    if (g == groups.size()) groups.push_back({e.shape, {}});
    if (e.velocity != 0) groups[g].elements.push_back({pose_of(e), phasor_of(e, frequency)});
  }
  return groups;
}

}  // namespace kesto
