// Tiles: 16 neighbouring points that share a choice of rule.
#pragma once

#include <cstddef>

#include "core/internal/host.h"
#include "kesto/engine/engine.h"

namespace kesto {

constexpr int tile_size = 16;

struct Tile {
  int count = 0;  // further points are copies of the first
  std::size_t index[tile_size];
  alignas(64) double x[tile_size], y[tile_size], z[tile_size];  // m, global
};

// Cuts points into tiles. A box is cut into small boxes, as even in size as its spacing allows; a list is first sorted
// by cells that hold a tile on average.
class TileOrder {
 public:
  explicit TileOrder(const FieldPoints& points);

  std::size_t size() const { return tiles_; }
  void fetch(std::size_t tile, Tile& to) const;

 private:
  void plan_box();
  void sort_list();

  FieldPoints points_;
  std::size_t tiles_ = 0;
  std::size_t side_[3] = {1, 1, 1}, across_[3] = {1, 1, 1};  // of a box: points in a tile, tiles
  ScratchArray<unsigned> sorted_;                            // of a list: indices
};

}  // namespace kesto
