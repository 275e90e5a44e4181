// The field of many elements of one face at the points of a tile.
#pragma once

#include "core/vector_target.h"
#include "kesto/engine/engine.h"
#include "kesto/engine/tile.h"

namespace kesto {

// An element as a tile needs it.
struct PlacedElement {
  double centre[3];   // m
  double axes[3][3];  // times k
  double re, im;      // rho c velocity jk / (alpha + jk)
  double magnitude;   // rho c |velocity|
  double centre_sum;  // of |k centre|
};

// A face and its elements, in units of 1/k.
struct Job {
  struct Part {
    double size[3];  // disc: a; rectangle: half sides; bowl: a, d, h
    double sign;
  };
  Face::Kind kind;
  Part parts[2];  // the second is the hole of an annulus
  int part_count;
  Loss loss;
  Accuracy accuracy;  // of a part's G
  double depth;       // of a bowl's centre of curvature over the apex; else 0
  double rim_depth;   // of a bowl's rim below its centre of curvature
  bool silent_behind;
  double k;  // rad/m
  const PlacedElement* elements;
  std::size_t element_count;
};

struct TileResult {
  alignas(64) double re[tile_size], im[tile_size];  // Pa
  double error;                                     // Pa
  double terms, terms_in_single_precision, graded_points;
};

// Overwrites the results of `count` tiles, up to batch_tiles.
using TileField = void (*)(const Job& job, RuleSet& rules, const Tile* tiles, int count, TileResult* results);
TileField tile_field_of(const Job& job, VectorTarget target);

}  // namespace kesto
