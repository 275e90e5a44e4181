#include "kesto/source.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>

#include "kesto/engine/constants.h"
#include "kesto/internal/checked_source.h"
#include "kesto/internal/checks.h"

namespace kesto {

namespace {

void check_length(Checks& checks, const char* name, double value, const char* shape) {
  if (value > element_length_limits.most) {
    refuse(text_of("%s is %g: a %s of %g m? lengths are in metres", name, value, shape, value));
  }
  checks.within(name, value, element_length_limits);
}

void check_ring(Checks& checks, double inner, double outer, const char* shape) {
  check_length(checks, "outer", outer, shape);
  checks.finite("inner", inner);
  if (inner < 0 || inner >= outer) {
    refuse(text_of("inner is %g: a radius from 0 to less than outer, which is %g, is expected (m)", inner, outer));
  }
}

void check_curvature(Checks& checks, double curvature, double radius) {
  check_length(checks, "curvature", curvature, "sphere's radius");
  if (curvature < radius) {
    refuse(text_of("curvature is %g: no less than the aperture's radius, which is %g, is expected (m)", curvature,
                   radius));
  }
}

void check_count(const char* name, int count) {
  if (count < 1 || count > 1000000) refuse(text_of("%s is %d: from 1 to 1000000 elements are expected", name, count));
}

void check_velocity(double velocity) {
  Checks checks;
  checks.within("velocity", velocity, velocity_limits);
}

void check_pitch(const char* name, double pitch, const char* across_name, double across, int count) {
  Checks checks;
  checks.within(name, pitch, element_length_limits);
  if (count > 1 && pitch < across * (1 - 1e-9)) {
    refuse(text_of("%s is %g: the elements overlap, no less than %s, which is %g, is expected (m)", name, pitch,
                   across_name, across));
  }
}

void check_sound_speed(const Medium& medium) {
  Checks checks;
  check(checks, medium);
}

void check_point(const char* name, const Point& p) {
  static const Limits limits = {-100, 100, -1, 1, "m", "lengths are in metres"};
  Checks checks;
  for (const double v : {p.x, p.y, p.z}) checks.within(name, v, limits);
}

double window_at(Window window, double u) {  // u from -1 to 1
  const double c = std::cos(full_pi * u);
  switch (window) {
    case Window::hann: return 0.5 + 0.5 * c;
    case Window::hamming: return 0.54 + 0.46 * c;
    case Window::blackman: return 0.42 + 0.5 * c + 0.08 * (2 * c * c - 1);
    default: return 1;
  }
}

// Each place from -1 to 1, the outermost half a step inside.
std::vector<double> relative(std::vector<double> places) {
  std::vector<double> sorted = places;
  std::sort(sorted.begin(), sorted.end());
  const double low = sorted.front(), high = sorted.back(), extent = high - low;
  double step = extent;
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    const double gap = sorted[i] - sorted[i - 1];
    if (gap > 1e-6 * extent) step = std::min(step, gap);
  }
  const double half = extent > 0 ? (extent + step) / 2 : 1;
  for (double& p : places) p = (p - (low + high) / 2) / half;
  return places;
}

// Places on [0, 1) that are the same with every standard library.
double uniform(std::mt19937_64& random) { return static_cast<double>(random() >> 11) * 0x1p-53; }

}  // namespace

double Shape::area() const {
  if (kind_ == Kind::rectangle) return outer_ * inner_;
  if (curvature_ == 0) return full_pi * (outer_ - inner_) * (outer_ + inner_);
  const double d = curvature_;
  const auto cap = [&](double a) { return a * a / (d + std::sqrt((d - a) * (d + a))); };
  return 2 * full_pi * d * (cap(outer_) - cap(inner_));
}

Shape disc(double radius) {
  Checks checks;
  check_length(checks, "radius", radius, "disc");
  return {Shape::Kind::disc, radius, 0, 0};
}
Shape annulus(double inner, double outer) {
  Checks checks;
  check_ring(checks, inner, outer, "annulus");
  return {Shape::Kind::annulus, outer, inner, 0};
}
Shape rectangle(double width, double height) {
  Checks checks;
  check_length(checks, "width", width, "rectangle");
  check_length(checks, "height", height, "rectangle");
  return {Shape::Kind::rectangle, width, height, 0};
}
Shape bowl(double radius, double curvature) {
  Checks checks;
  check_length(checks, "radius", radius, "bowl");
  check_curvature(checks, curvature, radius);
  return {Shape::Kind::bowl, radius, 0, curvature};
}
Shape bowl_annulus(double inner, double outer, double curvature) {
  Checks checks;
  check_ring(checks, inner, outer, "bowl_annulus");
  check_curvature(checks, curvature, outer);
  return {Shape::Kind::bowl_annulus, outer, inner, curvature};
}

Euler pointing_at(const Point& position, const Point& target) {
  check_point("position", position);
  check_point("target", target);
  const Point way = target - position;
  const double distance = length(way);
  if (distance == 0) refuse("target is the element's own position: another place is expected");
  return {std::atan2(way.x, way.z), -std::asin(std::clamp(way.y / distance, -1.0, 1.0)), 0};
}

Source linear_array(int count, double pitch, double width, double height, double velocity) {
  return matrix_array(count, 1, pitch, height, width, height, velocity);
}

Source matrix_array(int columns, int rows, double pitch_x, double pitch_y, double width, double height,
                    double velocity) {
  check_count(rows == 1 ? "count" : "columns", columns);
  check_count("rows", rows);
  if (static_cast<double>(columns) * rows > 1e6) {
    refuse(text_of("columns x rows is %d x %d: up to 1000000 elements are expected", columns, rows));
  }
  const Shape shape = rectangle(width, height);
  check_pitch(rows == 1 ? "pitch" : "pitch_x", pitch_x, "width", width, columns);
  check_pitch("pitch_y", pitch_y, "height", height, rows);
  check_velocity(velocity);
  Source source;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      const Point position = {(i - (columns - 1) / 2.0) * pitch_x, (j - (rows - 1) / 2.0) * pitch_y, 0};
      source.elements.push_back({shape, position, {}, velocity});
    }
  }
  return source;
}

Source annular_array(const std::vector<double>& inner, const std::vector<double>& outer, double curvature,
                     double velocity) {
  if (inner.empty() || inner.size() != outer.size()) {
    refuse(text_of("inner and outer have %zu and %zu radii: as many of each are expected, one pair a ring",
                   inner.size(), outer.size()));
  }
  check_velocity(velocity);
  Source source;
  for (std::size_t i = 0; i < inner.size(); ++i) {
    if (i > 0 && inner[i] < outer[i - 1] * (1 - 1e-9)) {
      refuse(text_of("inner[%zu] is %g: the rings overlap, no less than outer[%zu], which is %g, is expected (m)", i,
                     inner[i], i - 1, outer[i - 1]));
    }
    const Shape ring = curvature == 0 ? annulus(inner[i], outer[i]) : bowl_annulus(inner[i], outer[i], curvature);
    source.elements.push_back({ring, {}, {}, velocity});
  }
  return source;
}

Source bowl_array(int count, double element_radius, double aperture_radius, double curvature, double velocity,
                  std::uint64_t seed) {
  check_count("count", count);
  const Shape shape = disc(element_radius);
  (void)bowl(aperture_radius, curvature);
  check_velocity(velocity);
  const double own_angle = std::atan(element_radius / curvature);
  const double widest = std::asin(aperture_radius / curvature) - own_angle;  // of a centre, seen from the focus
  if (widest < 0) {
    refuse(text_of("element_radius is %g: it does not fit into the aperture's radius, which is %g", element_radius,
                   aperture_radius));
  }
  std::mt19937_64 random(seed);
  std::vector<Point> ways;  // unit vectors from the centre of the sphere
  const double least_cosine = std::cos(widest), too_near = std::cos(2 * own_angle);
  constexpr int most_throws = 20000;
  for (int thrown = 0; static_cast<int>(ways.size()) < count; ++thrown) {
    if (thrown == most_throws) {
      refuse(text_of("count is %d: no more than %zu discs of radius %g found room in an aperture of radius %g", count,
                     ways.size(), element_radius, aperture_radius));
    }
    const double cosine = 1 - uniform(random) * (1 - least_cosine), angle = 2 * full_pi * uniform(random);
    const double sine = std::sqrt((1 - cosine) * (1 + cosine));
    const Point way = {sine * std::cos(angle), sine * std::sin(angle), -cosine};
    if (std::any_of(ways.begin(), ways.end(), [&](const Point& w) { return dot(w, way) > too_near; })) continue;
    ways.push_back(way);
    thrown = -1;
  }
  Source source;
  const Point centre = {0, 0, curvature};
  for (const Point& way : ways) {
    Element element{shape, centre + curvature * way, {}, velocity};
    source.elements.push_back(element.point_at(centre));
  }
  return source;
}

Source focus(const Source& source, const Point& point, const Medium& medium) {
  check_point("point", point);
  check_sound_speed(medium);
  if (source.elements.empty()) refuse("source has no elements: at least one is expected");
  Source focused = source;
  double farthest = 0;
  for (const Element& e : source.elements) farthest = std::max(farthest, length(point - e.position));
  for (Element& e : focused.elements) {
    e.delay = (farthest - length(point - e.position)) / medium.sound_speed;
    e.phase = 0;
  }
  focused.foci = {point};
  return focused;
}

Source focus(const Source& source, const Point& point, const Medium& medium, double frequency) {
  Checks checks;
  checks.within("frequency", frequency, frequency_limits);
  Source focused = focus(source, point, medium);
  for (Element& e : focused.elements) {
    const double turns = -frequency * e.delay;
    e.phase = 2 * full_pi * (turns - std::floor(turns));
    e.delay = 0;
  }
  return focused;
}

Source steer(const Source& source, const Point& direction, const Medium& medium) {
  check_sound_speed(medium);
  if (source.elements.empty()) refuse("source has no elements: at least one is expected");
  const double size = length(direction);
  if (!(size > 0 && std::isfinite(size))) {
    refuse(text_of("direction is (%g, %g, %g): a vector of finite length is expected", direction.x, direction.y,
                   direction.z));
  }
  Source steered = source;
  steered.foci.clear();
  double least = INFINITY;
  for (const Element& e : source.elements) least = std::min(least, dot(direction, e.position) / size);
  for (Element& e : steered.elements) {
    e.delay = (dot(direction, e.position) / size - least) / medium.sound_speed;
    e.phase = 0;
  }
  return steered;
}

Source apodise(const Source& source, Window window) {
  if (source.elements.empty()) refuse("source has no elements: at least one is expected");
  std::vector<double> x, y, ring;
  for (const Element& e : source.elements) {
    const Shape& s = e.shape;
    x.push_back(e.position.x), y.push_back(e.position.y);
    ring.push_back(s.kind() == Shape::Kind::rectangle ? 0 : (s.inner() + s.outer()) / 2);
  }
  const std::vector<double> along_x = relative(x), along_y = relative(y);
  const auto same = [](const std::vector<double>& v) {
    return *std::min_element(v.begin(), v.end()) == v.front() && *std::max_element(v.begin(), v.end()) == v.front();
  };
  const bool rings = same(x) && same(y) && source.elements.size() > 1;
  double widest = 0;
  for (const Element& e : source.elements) widest = std::max(widest, e.shape.outer());
  std::vector<double> weights;
  for (std::size_t i = 0; i < source.elements.size(); ++i) {
    weights.push_back(rings ? window_at(window, ring[i] / widest)
                            : window_at(window, along_x[i]) * window_at(window, along_y[i]));
  }
  return apodise(source, weights);
}

Source apodise(const Source& source, const std::vector<double>& weights) {
  if (weights.size() != source.elements.size()) {
    refuse(text_of("weights has %zu numbers: one for each of the source's %zu elements is expected", weights.size(),
                   source.elements.size()));
  }
  Checks checks;
  Source weighed = source;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    checks.finite(text_of("weights[%zu]", i), weights[i]);
    weighed.elements[i].velocity *= weights[i];
  }
  return weighed;
}

std::ostream& operator<<(std::ostream& out, const Shape& s) {
  const double o = 1e3 * s.outer(), i = 1e3 * s.inner(), d = 1e3 * s.curvature();
  switch (s.kind()) {
    case Shape::Kind::disc: return out << text_of("disc of radius %g mm", o);
    case Shape::Kind::annulus: return out << text_of("annulus from %g to %g mm", i, o);
    case Shape::Kind::rectangle: return out << text_of("rectangle of %g x %g mm", o, i);
    case Shape::Kind::bowl: return out << text_of("bowl of radius %g mm, curvature %g mm", o, d);
    default: return out << text_of("bowl annulus from %g to %g mm, curvature %g mm", i, o, d);
  }
}

std::ostream& operator<<(std::ostream& out, const Source& source) {
  const std::vector<Element>& elements = source.elements;
  if (elements.empty()) return out << "no elements";
  double largest = 0;
  for (const Element& e : elements) largest = std::max(largest, std::fabs(e.velocity));
  if (elements.size() > 1) out << elements.size() << " elements, the first a ";
  out << elements.front().shape << text_of(elements.size() > 1 ? ", up to %g m/s" : ", %g m/s", largest);
  return out;
}

}  // namespace kesto
