// Points, and the grids of observation points at which fields are computed.
#pragma once

#include "core/mx_array.h"

// A point, a centre or three Euler angles.
class CartesianCoordinate {
 public:
  CartesianCoordinate() = default;
  CartesianCoordinate(double x_value, double y_value, double z_value) : x(x_value), y(y_value), z(z_value) {}

  double calculate_distance(CartesianCoordinate other) const;
  double calculate_distance(double x_other, double y_other, double z_other) const;

  double x = 0, y = 0, z = 0;
};

// A regular box, kept as one coordinate list per axis, or a list of points. Filling it anew replaces what it held; a
// failed check leaves the points as they were, with the box that was asked for beside them. Its arrays are the host's,
// so it must not outlive the host's call.
class CoordinateGrid {
 public:
  CoordinateGrid() = default;
  ~CoordinateGrid();
  CoordinateGrid(const CoordinateGrid&) = delete;
  CoordinateGrid& operator=(const CoordinateGrid&) = delete;

  // Reads the first element of the structure in slot *s: "coordinates" (points in rows: x, y, z; further columns are
  // ignored) or else "xmin", "xmax", "ymin", "ymax", "zmin", "zmax" and "delta" (three spacings).
  void allocate_memory_and_set_values(const mxArray** s);

  // Errors: a negative spacing or extent, a number of values that is none, or 2^31 points and more. A spacing of 0 is
  // one value at the lower bound.
  void RegularCoordinateGrid(double xmin, double xmax, double ymin, double ymax, double zmin, double zmax,
                             double deltax, double deltay, double deltaz);

  // m points from three columns of m values: all x, all y, all z. No points when m is not positive.
  void CoordinateGridVector(const double* c, int m);

  void SinglePoint(CartesianCoordinate p);
  void SinglePoint(double x, double y, double z);

  // Point i, x varying fastest, then y, then z; the origin where there is none. KEPT: the bound includes i = npoints,
  // where a point list answers the origin and a regular grid with nz = 1 its first point.
  CartesianCoordinate spatial_index_value(int const& i) const;

  // Calls visit(i, point i) for every i in order, without the divisions that an index costs.
  template <class Visit>
  void for_each_point(Visit visit) const {
    int i = 0;
    if (!regular) {
      for (; i < npoints; ++i) visit(i, CartesianCoordinate(xcoords[i], ycoords[i], zcoords[i]));
      return;
    }
    for (int iz = 0; iz < nz; ++iz) {
      for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) visit(i++, CartesianCoordinate(xcoords[ix], ycoords[iy], zcoords[iz]));
      }
    }
  }

  double xmin = 0, xmax = 0, ymin = 0, ymax = 0, zmin = 0, zmax = 0;  // the bounding box
  double deltax = 0, deltay = 0, deltaz = 0;                          // 0 for a point list
  int npoints = 0;
  int nx = 0, ny = 0, nz = 0;  // of a regular grid; 0 for a point list
  bool regular = false;
  // nx, ny and nz values for a regular grid, else npoints values each; and a 0 behind the last.
  double *xcoords = nullptr, *ycoords = nullptr, *zcoords = nullptr;
};
