// The field integrals as plain scalar loops over points in an element's own coordinates, compiled at -O2 whatever the
// rest is compiled with. What the factors and the loops compute is said where the elements declare theirs.
#pragma once

#include <complex>
#include <vector>

#include "core/coordinate_grid.h"
#include "fields/wave_sum.h"

// A Gauss rule on [-1, 1].
struct PlainRule {
  std::vector<double> node, weight;
};

// Each adds factor times its integral at every point.
struct PlainField {
  kesto::Wave wave;
  std::complex<double> factor;
  const PlainRule& rule;
  const std::vector<CartesianCoordinate>& points;
  double *re, *im;
};

void plain_disc_fnm(const PlainField& field, double radius);
void plain_rectangle_fnm(const PlainField& field, double width, double height);
void plain_shell_fnm(const PlainField& field, double radius, double roc);
void plain_disc_rayleigh(const PlainField& field, double radius);
void plain_rectangle_rayleigh(const PlainField& field, double width, double height);
void plain_shell_rayleigh(const PlainField& field, double radius, double roc);
