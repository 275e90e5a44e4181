// What radiates: shapes, elements and arrays of them. Lengths in metres.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "kesto/medium.h"
#include "kesto/point.h"

namespace kesto {

class Shape {
 public:
  enum class Kind { disc, annulus, rectangle, bowl, bowl_annulus };

  Kind kind() const { return kind_; }
  double outer() const { return outer_; }          // radius; of a rectangle its width, along x
  double inner() const { return inner_; }          // radius of the hole; of a rectangle its height, along y
  double curvature() const { return curvature_; }  // radius; 0 of flat shapes
  double area() const;

 private:
  friend Shape disc(double), annulus(double, double), rectangle(double, double), bowl(double, double),
      bowl_annulus(double, double, double);
  Shape(Kind kind, double outer, double inner, double curvature)
      : kind_(kind), outer_(outer), inner_(inner), curvature_(curvature) {}
  Kind kind_;
  double outer_, inner_, curvature_;
};

Shape disc(double radius);
Shape annulus(double inner, double outer);
Shape rectangle(double width, double height);
// A spherical shell that focuses: `radius` of its aperture, `curvature` the radius of its sphere.
Shape bowl(double radius, double curvature);
Shape bowl_annulus(double inner, double outer, double curvature);

// Rotations in radians, one after another: from +z towards +x, from +z towards -y, about the element's own axis.
struct Euler {
  double first = 0, second = 0, third = 0;
};
Euler pointing_at(const Point& position, const Point& target);

// Faces +z unless rotated. A bowl's position is that of its apex. It moves with velocity cos(w (t - delay) + phase):
// the delay counts in continuous waves too.
struct Element {
  Shape shape;
  Point position = {};
  Euler orientation = {};
  double velocity = 1;  // m/s, normal to the face, peak
  double phase = 0;     // rad
  double delay = 0;     // s

  Element& point_at(const Point& target) {
    orientation = pointing_at(position, target);
    return *this;
  }
};

struct Source {
  std::vector<Element> elements;
  std::vector<Point> foci = {};  // where the field is expected to be large; `focus` sets it

  Source() = default;
  Source(Element element) : elements{std::move(element)} {}
  Source(std::vector<Element> several) : elements(std::move(several)) {}
  Source(const Shape& shape, double velocity = 1) : elements{Element{shape, {}, {}, velocity}} {}
};

// Rectangles side by side along x, centred on the origin.
Source linear_array(int count, double pitch, double width, double height, double velocity = 1);
// The same along x and y.
Source matrix_array(int columns, int rows, double pitch_x, double pitch_y, double width, double height,
                    double velocity = 1);
// Rings about the z axis, inner[i] to outer[i]; flat if the curvature is 0.
Source annular_array(const std::vector<double>& inner, const std::vector<double>& outer, double curvature = 0,
                     double velocity = 1);
// Discs that touch a sphere of radius `curvature` and point at its centre (0, 0, curvature), thrown at random over an
// aperture. They never overlap; the same seed gives the same places on every machine.
Source bowl_array(int count, double element_radius, double aperture_radius, double curvature, double velocity = 1,
                  std::uint64_t seed = 1);

// The same source with delays (the phases are set to 0) that make its waves arrive together at a point.
Source focus(const Source& source, const Point& point, const Medium& medium);
// At one frequency, by phases from 0 to 2 pi; the delays are set to 0.
Source focus(const Source& source, const Point& point, const Medium& medium, double frequency);
// With delays that send a plane wave in a direction; only the direction of the vector counts.
Source steer(const Source& source, const Point& direction, const Medium& medium);

// Weighs velocities by place in the array: along x times along y, of rings by their mean radius.
enum class Window { uniform, hann, hamming, blackman };
Source apodise(const Source& source, Window window);
Source apodise(const Source& source, const std::vector<double>& weights);

std::ostream& operator<<(std::ostream& out, const Shape& shape);
std::ostream& operator<<(std::ostream& out, const Source& source);

}  // namespace kesto
