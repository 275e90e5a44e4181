// What a march of harmonics is made of: the caller's steps, checked, and the choices where they are 0.
#pragma once

#include "kzk/beam.h"
#include "kzk/routines.h"
#include "kzk/scaled_frame.h"

namespace kesto {

// The medium and the source as the equation sees them.
struct BeamWave {
  double frequency = 0, k = 0;      // Hz, rad/m
  double alpha = 0, exponent = 1;   // Np/m at the frequency; y
  double pressure = 0;              // rho c |velocity| (Pa)
  double nonlinearity = 0;          // omega beta / (rho c^3), 1/(Pa m): the shock distance of a plane wave is
                                    // 1 / (nonlinearity pressure)
  double attenuation(int n) const;  // Np/m of harmonic n
};

struct BeamPlan {
  BeamWave wave;
  ScaledFrame frame;
  RadialGrid grid;
  double step = 0;        // in zeta
  double first_step = 0;  // doubled after every stage until it is `step`
  int planes_of_stage = 0;
  double end = 0;  // zeta of the farthest point
  int harmonics = 0;
  std::size_t outside = 0;  // points that lie beyond the domain
};

// A point's place in the beam's coordinates; skipped points have zeta 0.
struct BeamPlace {
  double xi, zeta;
};
BeamPlace place_of(const ScaledFrame& frame, double r, double z);

BeamWave wave_of(const Medium& medium, double velocity);
void check_source(const BeamSource& source);

// How fine a plan is where the caller leaves it open: nodes over the source's radius, planes over z0.
struct BeamResolution {
  double nodes, planes;
};
constexpr BeamResolution harmonic_resolution = {1000, 800}, pulse_resolution = {500, 400};

// Frame, radial grid and axial steps.
BeamPlan plan_beam(const BeamSource& source, const BeamWave& wave, double dz, double dr, double rmax,
                   const BeamPoints& points, BeamResolution resolution);

void warn_of_points_outside(const BeamPlan& plan);

// The harmonics that carry the beam to its farthest point.
int harmonics_for(const BeamSource& source, const BeamWave& wave, double farthest);

}  // namespace kesto
