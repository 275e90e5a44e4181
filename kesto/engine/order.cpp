#include "kesto/engine/order.h"

#include <algorithm>
#include <cmath>

namespace kesto {

namespace {

struct Range {
  double low, high;
};

// In several chains, which would wait for one another.
Range range_of(const double* values, std::size_t count) {
  constexpr std::size_t chains = 8;
  double low[chains], high[chains];
  for (std::size_t c = 0; c < chains; ++c) low[c] = high[c] = values[0];
  std::size_t i = 0;
  for (; i + chains <= count; i += chains) {
    for (std::size_t c = 0; c < chains; ++c) {
      const double v = values[i + c];
      low[c] = v < low[c] ? v : low[c];
      high[c] = v > high[c] ? v : high[c];
    }
  }
  for (; i < count; ++i) {
    low[0] = std::min(low[0], values[i]);
    high[0] = std::max(high[0], values[i]);
  }
  return {*std::min_element(low, low + chains), *std::max_element(high, high + chains)};
}

}  // namespace

TileOrder::TileOrder(const FieldPoints& points) : points_(points), sorted_(points.is_box ? 0 : points.size()) {
  if (points.size() == 0) return;
  if (points.is_box) {
    plan_box();
  } else {
    tiles_ = (points.size() + tile_size - 1) / tile_size;
    sort_list();
  }
}

void TileOrder::plan_box() {
  double step[3];
  for (int axis = 0; axis < 3; ++axis) {
    const Range range = range_of(points_.at[axis], points_.count[axis]);
    step[axis] = (range.high - range.low) / static_cast<double>(points_.count[axis]);
  }
  for (std::size_t points = 1; points < tile_size; points *= 2) {  // doubles the shortest side that can grow
    int shortest = -1;
    for (int axis = 0; axis < 3; ++axis) {
      if (side_[axis] >= points_.count[axis]) continue;
      const auto length = [&](int a) { return static_cast<double>(side_[a]) * step[a]; };
      if (shortest < 0 || length(axis) < length(shortest)) shortest = axis;
    }
    if (shortest < 0) break;
    side_[shortest] *= 2;
  }
  tiles_ = 1;
  for (int axis = 0; axis < 3; ++axis) {
    across_[axis] = (points_.count[axis] + side_[axis] - 1) / side_[axis];
    tiles_ *= across_[axis];
  }
}

// A counting sort by cells of equal sides, row by row and back, so that neighbours in the order are neighbours.
void TileOrder::sort_list() {
  const std::size_t n = points_.size();
  for (std::size_t i = 0; i < n; ++i) sorted_[i] = static_cast<unsigned>(i);
  if (n <= 2 * tile_size) return;
  double low[3], width[3], volume = 1;
  int dimensions = 0;
  for (int axis = 0; axis < 3; ++axis) {
    const Range range = range_of(points_.at[axis], n);
    low[axis] = range.low;
    width[axis] = range.high - range.low;
  }
  const double widest = std::max({width[0], width[1], width[2]});
  if (!(widest > 0 && widest < 1e100)) return;
  for (const double w : width) {
    if (w > 0.02 * widest) volume *= w, ++dimensions;
  }
  const double cells = static_cast<double>(n) / tile_size, side = std::pow(volume / cells, 1.0 / dimensions);
  std::size_t count[3];
  double scale[3];
  for (int axis = 0; axis < 3; ++axis) {
    const bool divided = width[axis] > 0.02 * widest;
    count[axis] = divided ? static_cast<std::size_t>(std::min(std::ceil(width[axis] / side), 1e4)) : 1;
    scale[axis] = divided ? static_cast<double>(count[axis]) / width[axis] * (1 - 1e-12) : 0;
  }
  const std::size_t all = count[0] * count[1] * count[2];
  const ScratchArray<unsigned> start(all + 1), cell(n);
  for (std::size_t c = 0; c <= all; ++c) start[c] = 0;
  const auto place = [&](int axis, std::size_t i) {
    const double at = (points_.at[axis][i] - low[axis]) * scale[axis];
    return at > 0 ? std::min(static_cast<unsigned>(static_cast<int>(at)), static_cast<unsigned>(count[axis] - 1)) : 0u;
  };
  const unsigned columns = static_cast<unsigned>(count[0]), rows = static_cast<unsigned>(count[1]);
  for (std::size_t i = 0; i < n; ++i) {
    unsigned row = 0, column = columns > 1 ? place(0, i) : 0;
    if (rows > 1) row = place(1, i);
    if (count[2] > 1) {
      const unsigned layer = place(2, i);
      row = layer * rows + (layer % 2 != 0 ? rows - 1 - row : row);
    }
    if (row % 2 != 0) column = columns - 1 - column;
    cell[i] = row * columns + column;
    ++start[cell[i] + 1];
  }
  for (std::size_t c = 0; c < all; ++c) start[c + 1] += start[c];
  for (std::size_t i = 0; i < n; ++i) sorted_[start[cell[i]]++] = static_cast<unsigned>(i);
}

void TileOrder::fetch(std::size_t tile, Tile& to) const {
  to.count = 0;
  const auto push = [&](std::size_t index, double x, double y, double z) {
    to.index[to.count] = index;
    to.x[to.count] = x, to.y[to.count] = y, to.z[to.count] = z;
    ++to.count;
  };
  if (points_.is_box) {
    const std::size_t column = tile % across_[0], row = tile / across_[0] % across_[1],
                      layer = tile / (across_[0] * across_[1]);
    const std::size_t first[3] = {column * side_[0], row * side_[1], layer * side_[2]};
    std::size_t end[3];
    for (int axis = 0; axis < 3; ++axis) end[axis] = std::min(first[axis] + side_[axis], points_.count[axis]);
    for (std::size_t l = first[2]; l < end[2]; ++l) {
      for (std::size_t j = first[1]; j < end[1]; ++j) {
        for (std::size_t i = first[0]; i < end[0]; ++i) {
          push(i + points_.count[0] * (j + points_.count[1] * l), points_.at[0][i], points_.at[1][j], points_.at[2][l]);
        }
      }
    }
  } else {
    const std::size_t end = std::min((tile + 1) * tile_size, points_.size());
    constexpr std::size_t ahead = 3 * tile_size;  // what random access waits for otherwise
    for (std::size_t i = tile * tile_size + ahead; i < std::min(end + ahead, points_.size()); ++i) {
      for (const double* const values : points_.at) __builtin_prefetch(values + sorted_[i]);
    }
    for (std::size_t i = tile * tile_size; i < end; ++i) {
      const std::size_t p = sorted_[i];
      push(p, points_.at[0][p], points_.at[1][p], points_.at[2][p]);
    }
  }
  for (int i = to.count; i < tile_size; ++i) to.x[i] = to.x[0], to.y[i] = to.y[0], to.z[i] = to.z[0];
}

}  // namespace kesto
