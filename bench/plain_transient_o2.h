// The transient edge integrals as plain loops, compiled at -O2.
#pragma once

#include <vector>

#include "core/coordinate_grid.h"
#include "excitation/excitation_function.h"

// Rays from a point to the nodes of a rim, or of the four edges of half lengths a and b, and the reference ray.
struct PlainRays {
  std::vector<double> weight, delay;
  double reference;
};

PlainRays plain_disc_rays(double radius, double rho, double c, const std::vector<double>& x,
                          const std::vector<double>& w, const CartesianCoordinate& p);
PlainRays plain_cap_rays(double radius, double roc, double rho, double c, const std::vector<double>& x,
                         const std::vector<double>& w, const CartesianCoordinate& p);
PlainRays plain_rectangle_rays(double a, double b, double rho, double c, const std::vector<double>& x,
                               const std::vector<double>& w, const CartesianCoordinate& p);

// trace[k] = sum over rays of weight [v(t_k - delay) - v(t_k - reference)] for the samples that any of them reaches.
void plain_direct(const PlainRays& rays, const ExcitationFunction& v, double start, double step, int samples,
                  double* trace);
