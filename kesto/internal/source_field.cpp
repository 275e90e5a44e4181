#include "kesto/internal/source_field.h"

#include <algorithm>
#include <cmath>

namespace kesto {

namespace {

// Distances from the face along its axis where its field is large.
std::vector<double> loud_distances(const Shape& s, double wavelength) {
  if (s.curvature() > 0) return {0, s.curvature(), 0.97 * s.curvature(), 0.9 * s.curvature(), 0.75 * s.curvature()};
  const double a = s.kind() == Shape::Kind::rectangle ? std::min(s.outer(), s.inner()) / 2 : s.outer();
  const double last = std::max(a * a / wavelength - wavelength / 4, 0.0);  // the disc's last maximum
  return {0, last, last / 2, 1.4 * last};
}

}  // namespace

FieldPoints points_of(const Grid& grid) {
  const std::vector<double>&x = grid.x(), &y = grid.y(), &z = grid.z();
  return grid.is_box() ? FieldPoints::box(x.size(), x.data(), y.size(), y.data(), z.size(), z.data())
                       : FieldPoints::list(x.size(), x.data(), y.data(), z.data());
}

SourceField::SourceField(const Source& source, const Medium& medium, double frequency)
    : groups_(groups_of(source, frequency)),
      request_{frequency, {medium.sound_speed, medium.density, medium.nepers_per_metre(frequency)}, 1},
      wavelength_(medium.sound_speed / frequency),
      impedance_(medium.sound_speed * medium.density) {
  for (const ElementGroup& group : groups_) {
    element_count_ += group.elements.size();
    for (const FieldElement& e : group.elements) sum_of_velocities_ += std::abs(e.velocity);
    const double across = 2 * group.shape.curvature() + std::max(group.shape.outer(), group.shape.inner());
    if (request_.medium.attenuation * across > 250) {
      refuse(text_of("attenuation is %g: at %g Hz nothing is left of a wave across an element of %g m",
                     medium.attenuation, frequency, across));
    }
  }
  if (sum_of_velocities_ > 0) find_scale(source);
}

FieldCost SourceField::add_each(const FieldPoints& points, double error_of_element, double* re, double* im) const {
  FieldRequest request = request_;
  request.accuracy = std::max(error_of_element, 1e-15);
  FieldCost sum;
  for (const ElementGroup& group : groups_) {
    if (group.elements.empty()) continue;
    const FieldCost cost =
        add_field(face_of(group.shape), group.elements.data(), group.elements.size(), points, request, {re, im});
    sum.error += cost.error;
    sum.terms += cost.terms;
    sum.terms_in_single_precision += cost.terms_in_single_precision;
    sum.points_on_graded_panels += cost.points_on_graded_panels;
  }
  return sum;
}

FieldCost SourceField::add(const FieldPoints& points, double accuracy, double* re, double* im) const {
  if (scale_ == 0) return {};
  return add_each(points, accuracy * scale_ / (impedance_ * sum_of_velocities_), re, im);
}

std::vector<std::complex<double>> SourceField::at(const std::vector<Point>& points, double accuracy) const {
  const Grid grid = Grid::list(points);
  std::vector<double> re(points.size()), im(points.size());
  add(points_of(grid), accuracy, re.data(), im.data());
  std::vector<std::complex<double>> field;
  for (std::size_t i = 0; i < points.size(); ++i) field.emplace_back(re[i], im[i]);
  return field;
}

// Places that lie on the axes of some elements, and where the axes of curved or tilted ones and equal delays meet.
std::vector<Point> SourceField::probes(const Source& source) const {
  constexpr std::size_t most_elements = 16;
  const std::vector<Element>& all = source.elements;
  const std::size_t step = (all.size() + most_elements - 1) / most_elements;
  std::vector<Point> places;
  for (std::size_t i = 0; i < all.size(); i += step) {
    const Pose pose = pose_of(all[i]);
    const Point axis = {pose.axes[2][0], pose.axes[2][1], pose.axes[2][2]};
    for (const double d : loud_distances(all[i].shape, wavelength_)) places.push_back(all[i].position + d * axis);
  }
  if (all.size() == 1) return places;
  // The point of least squares to the axes of the elements: of tilted ones their common focus.
  double m[3][4] = {};
  for (const Element& e : all) {
    const Pose pose = pose_of(e);
    const double* n = pose.axes[2];
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        const double projector = (i == j) - n[i] * n[j];
        m[i][j] += projector;
        m[i][3] += projector * pose.centre[j];
      }
    }
  }
  const auto minor = [&](int a, int b, int c) {
    return m[0][a] * (m[1][b] * m[2][c] - m[1][c] * m[2][b]) - m[0][b] * (m[1][a] * m[2][c] - m[1][c] * m[2][a]) +
           m[0][c] * (m[1][a] * m[2][b] - m[1][b] * m[2][a]);
  };
  const double determinant = minor(0, 1, 2), n = static_cast<double>(all.size());
  if (std::fabs(determinant) > 1e-9 * n * n * n) {
    places.push_back({minor(3, 1, 2) / determinant, minor(0, 3, 2) / determinant, minor(0, 1, 3) / determinant});
  }
  for (const Point& p : source.foci) places.push_back(p);
  return places;
}

void SourceField::find_scale(const Source& source) {
  std::vector<Point> places = probes(source);
  const Grid grid = Grid::list(places);
  double error_of_element = 1e-3;
  for (int attempt = 0; attempt < 3; ++attempt, error_of_element /= 30) {
    std::vector<double> re(places.size()), im(places.size());
    const double off = add_each(points_of(grid), error_of_element, re.data(), im.data()).error;
    double largest = 0;
    for (std::size_t i = 0; i < places.size(); ++i) largest = std::max(largest, std::hypot(re[i], im[i]));
    scale_ = std::max(largest - off, 0.0);
    if (scale_ > 0.9 * largest) break;
  }
}

}  // namespace kesto
