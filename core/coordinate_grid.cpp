#include "core/coordinate_grid.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/internal/host.h"
#include "core/internal/pending_array.h"
#include "core/internal/sampled_range.h"

using kesto::fail;
using kesto::PendingArray;

namespace {

struct AxisErrors {
  const char *negative_spacing, *negative_extent, *no_count;
};
constexpr AxisErrors x_errors = {"deltax must be greater than or equal to 0.\n",
                                 "xmax - xmin must be greater than or equal to 0.\n",
                                 "Computed number of x coordinate values is less than 1.\n"
                                 "  Check values of xmin, xmax, and deltax.\n"};
constexpr AxisErrors y_errors = {"deltay must be greater than or equal to 0.\n",
                                 "ymax - ymin must be greater than or equal to 0.\n",
                                 "Computed number of y coordinate values is less than 1.\n"
                                 "  Check values of ymin, ymax, and deltay.\n"};
constexpr AxisErrors z_errors = {"deltaz must be greater than or equal to 0.\n",
                                 "zmax - zmin must be greater than or equal to 0.\n",
                                 "Computed number of z coordinate values is less than 1.\n"
                                 "  Check values of zmin, zmax, and deltaz.\n"};

int axis_count(double min, double max, double spacing, const AxisErrors& errors) {
  if (spacing < 0) fail(errors.negative_spacing);
  if (max - min < 0) fail(errors.negative_extent);
  const int count = kesto::sample_count(min, max, spacing);
  if (count < 1) fail(errors.no_count);
  return count;
}

int product(int a, int b) {
  const std::int64_t points = std::int64_t{a} * b;
  if (points > INT_MAX) fail(kesto::too_many_points);
  return static_cast<int>(points);
}

void find_bounds(const double* values, int count, double& min, double& max) {
  min = max = values[0];
  for (int i = 1; i < count; ++i) {
    if (values[i] < min) min = values[i];
    if (values[i] > max) max = values[i];
  }
}

}  // namespace

double CartesianCoordinate::calculate_distance(CartesianCoordinate other) const {
  return calculate_distance(other.x, other.y, other.z);
}

double CartesianCoordinate::calculate_distance(double x_other, double y_other, double z_other) const {
  const double dx = x - x_other, dy = y - y_other, dz = z - z_other;
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

CoordinateGrid::~CoordinateGrid() {
  kesto::release(xcoords);
  kesto::release(ycoords);
  kesto::release(zcoords);
}

void CoordinateGrid::RegularCoordinateGrid(double x_from, double x_to, double y_from, double y_to, double z_from,
                                           double z_to, double x_step, double y_step, double z_step) {
  xmin = x_from, xmax = x_to, deltax = x_step;
  ymin = y_from, ymax = y_to, deltay = y_step;
  zmin = z_from, zmax = z_to, deltaz = z_step;
  const int x_count = axis_count(xmin, xmax, deltax, x_errors);
  const int y_count = axis_count(ymin, ymax, deltay, y_errors);
  const int z_count = axis_count(zmin, zmax, deltaz, z_errors);
  const int count = product(product(x_count, y_count), z_count);

  PendingArray x = PendingArray::zeros(x_count), y = PendingArray::zeros(y_count), z = PendingArray::zeros(z_count);
  kesto::fill_samples(x.data(), x_count, xmin, deltax);
  kesto::fill_samples(y.data(), y_count, ymin, deltay);
  kesto::fill_samples(z.data(), z_count, zmin, deltaz);
  x.replace(xcoords), y.replace(ycoords), z.replace(zcoords);
  nx = x_count, ny = y_count, nz = z_count;
  npoints = count;
  regular = true;
}

void CoordinateGrid::CoordinateGridVector(const double* c, int m) {
  const int count = std::max(m, 0);
  PendingArray x = PendingArray::zeros(count), y = PendingArray::zeros(count), z = PendingArray::zeros(count);
  const std::ptrdiff_t column = count;
  std::copy_n(c, count, x.data());
  std::copy_n(c + column, count, y.data());
  std::copy_n(c + 2 * column, count, z.data());
  x.replace(xcoords), y.replace(ycoords), z.replace(zcoords);
  find_bounds(xcoords, count, xmin, xmax);
  find_bounds(ycoords, count, ymin, ymax);
  find_bounds(zcoords, count, zmin, zmax);
  deltax = deltay = deltaz = 0;
  nx = ny = nz = 0;
  npoints = count;
  regular = false;
}

void CoordinateGrid::SinglePoint(CartesianCoordinate p) { SinglePoint(p.x, p.y, p.z); }

void CoordinateGrid::SinglePoint(double x, double y, double z) {
  const double point[] = {x, y, z};
  CoordinateGridVector(point, 1);
}

CartesianCoordinate CoordinateGrid::spatial_index_value(int const& i) const {
  if (i < 0 || i > npoints || xcoords == nullptr) return {};
  if (!regular) return {xcoords[i], ycoords[i], zcoords[i]};
  const int in_plane = i % (nx * ny);
  const int ix = nx == 1 ? 0 : in_plane % nx;
  const int iy = ny == 1 ? 0 : in_plane / nx;
  const int iz = nz == 1 ? 0 : i / (nx * ny);
  if (iz >= nz) return {};  // i = npoints
  return {xcoords[ix], ycoords[iy], zcoords[iz]};
}
