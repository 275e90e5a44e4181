// Continuous-wave fields of discs, annuli, rectangles and bowls to a stated accuracy.
//
// The field is the Rayleigh integral, losses included, time dependence e^{+j omega t}:
//
//   p = (j omega rho / 2 pi) v integral over the face of e^{-(alpha + jk) R} / R dS.
//
// It is computed as an integral along the rim or the edges, with the factor jk / (alpha + jk) that this takes in lossy
// media, and with as many abscissas as each point needs.
#pragma once

#include <complex>
#include <cstddef>

namespace kesto {

// A radiating face in its own coordinates, lengths in metres. Flat faces lie in z = 0 about the origin. Bowls have
// their apex at the origin, their centre of curvature at z = curvature and an aperture of the given radius.
struct Face {
  enum class Kind { disc, rectangle, bowl };

  static Face disc(double radius) { return {Kind::disc, radius, 0, 0}; }
  static Face annulus(double inner, double outer) { return {Kind::disc, outer, inner, 0}; }
  static Face rectangle(double width, double height) { return {Kind::rectangle, width / 2, height / 2, 0}; }
  static Face bowl(double radius, double curvature) { return {Kind::bowl, radius, 0, curvature}; }
  static Face bowl_annulus(double inner, double outer, double curvature) {
    return {Kind::bowl, outer, inner, curvature};
  }

  Kind kind;
  double outer;      // of a rectangle: half the width, along x
  double inner;      // of a rectangle: half the height, along y; else 0 where there is no hole
  double curvature;  // of bowls
};

struct FieldMedium {
  double sound_speed;      // m/s
  double density;          // kg/m^3
  double attenuation = 0;  // Np/m at the frequency
};

// From global into an element's coordinates: the rows of `axes` are its unit axes.
struct Pose {
  double centre[3] = {0, 0, 0};
  double axes[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

struct FieldElement {
  Pose pose;
  std::complex<double> velocity = 1;  // m/s, normal, peak
};

// A list of points, or the box of all (x[i], y[j], z[l]) at i + nx (j + ny l).
struct FieldPoints {
  static FieldPoints list(std::size_t count, const double* x, const double* y, const double* z) {
    return {false, {count, count, count}, {x, y, z}};
  }
  static FieldPoints box(std::size_t nx, const double* x, std::size_t ny, const double* y, std::size_t nz,
                         const double* z) {
    return {true, {nx, ny, nz}, {x, y, z}};
  }
  std::size_t size() const { return is_box ? count[0] * count[1] * count[2] : count[0]; }

  bool is_box;
  std::size_t count[3];
  const double* at[3];  // m
};

// What is behind a face: behind the plane of a flat one, and outside the sphere of a bowl on the apex's side of the
// rim. The integral has a value there too, the same as in front for a flat face.
enum class Behind { silent, as_integral };

struct FieldRequest {
  double frequency;  // Hz
  FieldMedium medium;
  double accuracy;  // absolute error of the integral, per element, in units of rho c |v|
  Behind behind = Behind::silent;
};

struct FieldOutput {
  double* re;  // one per point; added to
  double* im;
  double* error = nullptr;  // Pa, one per point; the bounds are added. May be null
};

struct FieldCost {
  double error = 0;  // Pa: no point is farther from the Rayleigh integral. Beyond the accuracy where rounding is
  double terms = 0;  // of all points
  double terms_in_single_precision = 0;
  double points_on_graded_panels = 0;  // next to a rim or an edge
};

// Adds the field of elements of one face. Fails where a number is not finite, or out of its range.
FieldCost add_field(const Face& face, const FieldElement* elements, std::size_t element_count,
                    const FieldPoints& points, const FieldRequest& request, const FieldOutput& output);

}  // namespace kesto
