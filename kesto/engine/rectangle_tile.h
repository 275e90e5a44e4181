// A tile's field of a rectangle of half sides a, b by the four edge integrals
//
//   G = -(1/2pi) sum over edges of int D / (D^2 + u^2) (e^{-(loss + j) delta} - 1) du,
//
// D from the point's projection to the edge's line (negative outside), u along it from the foot of the perpendicular,
// d = z, delta = (D^2 + u^2) / (R + z), by Gauss rules over whole edges or over the two parts that the foot leaves.
#pragma once

#include "kesto/engine/graded.h"
#include "kesto/engine/tile.h"

namespace kesto {

struct RectanglePart {
  double a, b;
};

// Every point on graded panels of its own, where a tile is next to an edge.
void sum_edges_by_points(RectanglePart rectangle, Loss loss, RuleSet& rules, const LocalBatch& local, int first,
                         TileSum& sum);

constexpr int edges = 4, edge_parts = 3 * edges;  // whole ones, then two parts of each

// What is known of the parts of all edges for every point of a tile.
struct PartBoxes {
  alignas(64) float middle_least[16], middle_most[16], half[16], d_least[16], d_most[16];
  float z_least;
};

struct PartChoice {
  alignas(64) float nodes[16], x[16], t[16], size[16], target[16];
};

// Of the truncation error: a quarter for every edge.
alignas(64) constexpr float share_of_part[16] = {0.25f,  0.25f,  0.25f,  0.25f,  0.125f, 0.125f, 0.125f, 0.125f,
                                                 0.125f, 0.125f, 0.125f, 0.125f, 1,      1,      1,      1};

// The bounds of Gauss rules are: nodes for this many times the accuracy keep to it, in a million random cases.
constexpr float gauss_bound_is_loose_by = 16, log_of_looseness = 2.78f;

// For any ellipse about the part that stays clear of u = +-j sigma, sigma = hypot(D, z), the rule of N nodes is off by
// no more than 64/15 h/2pi M e^{Im R} e^{-2Nt} / (1 - e^{-2t}); M bounds |D / (D^2 + u^2)| times 2 or |R - z|. The
// extremes of a tile take the place of a point's values: the ellipse about a part clears less the nearer its middle, D
// and z are.
template <class T>
KESTO_INLINE void choose_for_parts(Loss loss, const PartBoxes& boxes, const Accuracy& accuracy, PartChoice& choice) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float growth = static_cast<float>(loss.growth);
  const float scale = static_cast<float>(64 / 15.0 / (2 * full_pi) / gauss_bound_is_loose_by);
  const float truncation = static_cast<float>(accuracy.truncation);
  constexpr float rough = 2e-3f;  // for the rounding of what follows
  const V z = S::of(boxes.z_least);
  for (int i = 0; i < 16; i += S::width) {
    const V h = S::max(S::load(boxes.half + i), S::of(1e-12f)), c = S::load(boxes.middle_least + i);
    const V c_most = S::load(boxes.middle_most + i), d = S::load(boxes.d_least + i), d_most = S::load(boxes.d_most + i);
    const V target = truncation * S::load(share_of_part + i), tiny = S::of(1e-30f);
    const V um = c_most + h, sigma2 = d * d + z * z, sigma = S::rough_sqrt(sigma2);
    const V u_by_sigma = um * S::reciprocal(S::max(sigma, tiny));
    const V size = d_most * (growth / static_cast<float>(full_pi)) *
                   S::log_at_most(u_by_sigma + S::rough_sqrt(u_by_sigma * u_by_sigma + 1.0f));
    const V inverse_h = S::reciprocal(h), plus = c * inverse_h + 1.0f, minus = c * inverse_h - 1.0f;
    const V plus2 = plus * plus, minus2 = minus * minus;
    const auto ellipse_through = [&](V s2) KESTO_INLINE_LAMBDA {
      const V by_h2 = s2 * (inverse_h * inverse_h);
      return S::max(0.5f * (S::sqrt(plus2 + by_h2) + S::sqrt(minus2 + by_h2)), S::of(1));
    };
    const V at_sigma = ellipse_through(sigma2), at_d = ellipse_through(d * d);
    const V inverse_kappa = S::rough_sqrt(um * um + sigma2) * S::reciprocal(h * um),
            log_share = S::log_at_most(scale * h * S::reciprocal(target));
    const V cube_root = S::rough_cube_root(3.0f * S::max(log_share + 2.0f, S::of(1)) * inverse_kappa);
    const V limit = 0.85f * S::log(at_sigma + S::rough_sqrt(at_sigma * at_sigma - 1.0f));
    const V t =
        S::max(S::min(S::min(cube_root * S::reciprocal(0.085f * cube_root + 1.0f), limit), S::of(10)), S::of(1e-6f));
    const V e = S::exp(t), inverse = S::reciprocal(e), sinh = 0.5f * (e - inverse), cosh = 0.5f * (e + inverse);
    // Im R on the ellipse: three places stand for its largest, to 2 %.
    const V height = h * sinh, semi_axis = h * cosh, place = c_most * S::reciprocal(semi_axis);
    const V cos1 = 0.25f * (S::rough_sqrt(place * place + 8.0f) - place);
    V im = {};
    for (const float part : {1.0f, 0.6f, 0.25f}) {
      const V cos_phi = part * cos1, x = c_most + semi_axis * cos_phi;
      const V y2 = height * height * (1.0f - cos_phi * cos_phi), real = sigma2 + x * x - y2, x2y2 = x * x * y2;
      const V magnitude = real < 0.0f ? -real : real;
      const V big = S::max(0.5f * (S::rough_sqrt(real * real + 4.0f * x2y2) + magnitude), tiny);
      im = S::max(im, real < 0.0f ? big : x2y2 * S::reciprocal(big));  // (|w| - Re w) / 2, w = R^2
    }
    im = S::min(height, 1.021f * S::rough_sqrt(im));
    const V to_sigma = h * (at_sigma - cosh), gap_d = h * (at_d - cosh), to_d = gap_d < 0.0f ? -gap_d : gap_d;
    const V rr = 0.707f * S::rough_sqrt(S::max(to_sigma * S::max(to_sigma, sigma), S::of(0)));
    const V by_pole = 2.0f * d_most * S::reciprocal(S::max(to_d * S::max(to_d, d), tiny));
    const V by_distance = d_most * growth * S::reciprocal(S::max(z + rr, tiny));
    const V m = S::min(by_pole, by_distance);
    const V x = log_share + S::log_at_most(S::max(m, tiny)) + im - S::log_at_least(1.0f - inverse * inverse) + rough;
    const MidpointNeed<S> need = {x, t};
    const V nodes = need.nodes();
    S::store(choice.target + i, target);
    S::store(choice.nodes + i, size <= target * 0.5f ? V{} - 1.0f : nodes);  // the part itself is below its share
    S::store(choice.x + i, x);
    S::store(choice.t + i, t);
    S::store(choice.size + i, size);
  }
}

struct Extent {
  float least, most;
};
KESTO_INLINE Extent extent_of(const double* values, int size) {
  using T = Baseline;
  Double<T> least = load<2>(values), most = least;
  for (int i = 2; i < size; i += 2) {
    const Double<T> v = load<2>(values + i);
    least = v < least ? v : least;
    most = v > most ? v : most;
  }
  return {static_cast<float>(std::min(least[0], least[1])), static_cast<float>(std::max(most[0], most[1]))};
}

// Of the absolute values.
KESTO_INLINE Extent extent_of_magnitude(Extent e) {
  if (e.least <= 0 && e.most >= 0) return {0, std::max(-e.least, e.most)};
  return e.least > 0 ? e : Extent{-e.most, -e.least};
}

KESTO_INLINE void fill_boxes(RectanglePart rectangle, Extent x, Extent y, Extent z, PartBoxes& boxes) {
  const float a = static_cast<float>(rectangle.a), b = static_cast<float>(rectangle.b);
  boxes.z_least = z.least;
  // Edges y = b, y = -b, x = a, x = -a.
  for (int edge = 0; edge < edges; ++edge) {
    const Extent across = edge < 2 ? y : x, along = edge < 2 ? x : y;
    const float to_line = edge < 2 ? b : a, half = edge < 2 ? a : b;
    const Extent d = extent_of_magnitude(edge % 2 == 0 ? Extent{to_line - across.most, to_line - across.least}
                                                       : Extent{to_line + across.least, to_line + across.most});
    const Extent middle = extent_of_magnitude(along);
    const Extent ends[2] = {extent_of_magnitude({half - along.most, half - along.least}),
                            extent_of_magnitude({half + along.least, half + along.most})};
    const auto set = [&](int at, Extent centre, float half_length) {
      boxes.middle_least[at] = centre.least, boxes.middle_most[at] = centre.most, boxes.half[at] = half_length;
      boxes.d_least[at] = d.least, boxes.d_most[at] = d.most;
    };
    set(edge, middle, half);
    for (int side = 0; side < 2; ++side) {
      const float half_length = ends[side].most / 2;
      set(edges + 2 * edge + side, {half_length, half_length}, half_length);
    }
  }
  for (int at = edge_parts; at < 16; ++at) {
    boxes.middle_least[at] = boxes.middle_most[at] = 0;
    boxes.half[at] = boxes.d_least[at] = boxes.d_most[at] = 1;
  }
}

// The terms of all parts of a tile in one row: parts have few nodes each, and a loop of its own for each would wait for
// every part's end.
template <class Real>
struct TermRow {
  static constexpr int capacity = 4 * largest_level;
  int n = 0;
  alignas(64) Real node[capacity], weight[capacity];
  unsigned char part[capacity];

  // False if there is no more room.
  KESTO_INLINE bool append(RuleView<Real> rule, int at) {
    constexpr int step = 16;
    if (n + rule.n + step > capacity) return false;
    for (int j = 0; j < rule.n; j += step) {  // the rules' arrays go on beyond a rule
      __builtin_memcpy(node + n + j, rule.node + j, step * sizeof(Real));
      __builtin_memcpy(weight + n + j, rule.weight + j, step * sizeof(Real));
      __builtin_memset(part + n + j, at, step);
    }
    n += rule.n;
    return true;
  }
};

// Part edge of u = middle + stretch node, as the points of a tile see it: whole edges are middle and half the length,
// parts 0 and the signed length from the foot.
struct UsedPart {
  int edge, side;  // side -1: whole
};

template <class P, bool lossy>
KESTO_INLINE void sum_over_edges(RectanglePart rectangle, Loss loss, const TermRow<typename P::Scalar>& row,
                                 const UsedPart* parts, int count, const LocalBatch& local, int first, TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  for (int i = 0; i < tile_size; i += P::width) {
    struct {
      V middle, stretch, d2, scale;
    } seen[2 * edges];
    const V x = P::load_narrowed(local.x + first + i), y = P::load_narrowed(local.y + first + i);
    V z = P::load_narrowed(local.z + first + i);
    z = z < 0 ? -z : z;
    for (int n = 0; n < count; ++n) {  // the differences in double: they cancel next to an edge
      const bool along_x = parts[n].edge < 2, whole = parts[n].side < 0;
      const double half = along_x ? rectangle.a : rectangle.b, to_line = along_x ? rectangle.b : rectangle.a;
      const double* const across = along_x ? local.y : local.x;
      const double* const along = along_x ? local.x : local.y;
      const double sign_d = parts[n].edge % 2 == 0 ? -1 : 1, sign_u = parts[n].side == 0 ? -1 : 1;
      double d[P::width], stretch[P::width];
      for (int lane = 0; lane < P::width; lane += P::T::width) {
        constexpr int width = P::T::width;
        const int at = first + i + lane;
        store<width>(d + lane, to_line + sign_d * load<width>(across + at));
        store<width>(stretch + lane, whole ? Double<typename P::T>{} + half : half + sign_u * load<width>(along + at));
      }
      const V ds = P::load_narrowed(d), d2 = ds * ds, least = P::of(static_cast<Scalar>(1e-20));
      seen[n].middle = whole ? (along_x ? x : y) : V{};
      seen[n].stretch = P::load_narrowed(stretch);
      seen[n].d2 = d2 > least ? d2 : least;
      seen[n].scale = ds * seen[n].stretch * static_cast<Scalar>(-0.5 / full_pi);
    }
    const V z2 = z * z;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < row.n; ++j) {
      const auto& part = seen[row.part[j]];
      const V u = P::multiply_add(part.stretch, P::of(row.node[j]), part.middle), s2 = P::multiply_add(u, u, part.d2);
      const V distances = P::sqrt(z2 + s2) + z, inverse = P::reciprocal(s2 * distances);
      terms.add(part.scale * row.weight[j] * (distances * inverse), s2 * (s2 * inverse));
    }
    P::store_wide(sum.re + i, terms.re());
    P::store_wide(sum.im + i, terms.im());
  }
}

// The bounds at the levels used: as they stand where that is below the accuracy asked for.
template <class T>
KESTO_INLINE float truncation_of_parts(const PartChoice& choice, const int* used, const int* levels, int count) {
  using S = InSingle<T>;
  using V = typename S::V;
  alignas(64) float n2[16] = {};
  for (int n = 0; n < count; ++n) n2[used[n]] = static_cast<float>(2 * levels[n]);
  alignas(64) float errors[16];
  for (int i = 0; i < 16; i += S::width) {
    const V exponent = S::load(n2 + i) * S::load(choice.t + i);
    const V error = S::exp(S::min(S::load(choice.x + i) - exponent + log_of_looseness, S::of(0))) + 1e-7f;
    S::store(errors + i, error * S::load(choice.target + i));
  }
  float total = 0;
  for (int n = 0; n < count; ++n) total += errors[used[n]];
  return total;
}

// Sums a tile. False, and nothing done, where a part asks for too many nodes.
template <class T, bool lossy>
KESTO_INLINE bool sum_tile(RectanglePart rectangle, Loss loss, const Accuracy& accuracy, RuleSet& rules,
                           const PartBoxes& boxes, const PartChoice& choice, const LocalBatch& local, int first,
                           TileSum& sum) {
  int used[2 * edges], levels[2 * edges], count = 0;
  float skipped = 0, phase = 0, rounding = 0;
  for (int edge = 0; edge < edges; ++edge) {
    const int split = edges + 2 * edge;
    const auto cost = [&](int part) { return std::max(choice.nodes[part], 0.0f); };
    const bool whole = !(cost(split) + cost(split + 1) < cost(edge));
    for (int part = whole ? edge : split; part <= (whole ? edge : split + 1); ++part) {
      const float nodes = choice.nodes[part], size = choice.size[part];
      if (nodes < 0) {
        skipped += size;
        continue;
      }
      if (!(nodes < largest_level - 1)) return false;
      used[count] = part;
      levels[count++] = Rules::level_of(static_cast<int>(nodes) + 1);
      phase += size;
      rounding += (8 + nodes) * std::min(size, 1.0f);
      if (whole) {  // u, its middle and its stretch round by um, not by u
        const float um = boxes.middle_most[part] + boxes.half[part];
        rounding += um * std::min(2 / std::max(boxes.d_least[part], 1e-20f),
                                  5 * boxes.d_most[part] / std::max(boxes.z_least, 1e-20f));
      }
    }
  }
  rounding += 4 * phase;
  sum.size = std::min(phase + skipped, 4.0f);
  sum.error = skipped + truncation_of_parts<T>(choice, used, levels, count);
  const float single = unit_roundoff_single * rounding;
  const bool in_single = static_cast<double>(single) <= accuracy.whole - accuracy.truncation;
  sum.error += in_single ? single : static_cast<float>(unit_roundoff) * rounding;

  UsedPart parts[2 * edges];
  for (int n = 0; n < count; ++n) {
    const bool whole = used[n] < edges;
    parts[n] = {whole ? used[n] : (used[n] - edges) / 2, whole ? -1 : (used[n] - edges) % 2};
  }
  const auto sum_in = [&](auto precision) KESTO_INLINE_LAMBDA {
    using P = decltype(precision);
    TermRow<typename P::Scalar> row;
    for (int n = 0; n < count; ++n) {
      Rules& rule = parts[n].side < 0 ? rules.gauss : rules.from_foot;
      if (!row.append(rule.of(levels[n], typename P::Scalar{}), n)) return false;
    }
    sum.terms += row.n;
    if (in_single) sum.terms_in_single_precision += row.n;
    sum_over_edges<P, lossy>(rectangle, loss, row, parts, count, local, first, sum);
    return true;
  };
  return in_single ? sum_in(InSingle<T>()) : sum_in(InDouble<T>());
}

template <class T, bool lossy>
KESTO_INLINE void sum_batch(RectanglePart rectangle, Loss loss, const Accuracy& accuracy, RuleSet& rules,
                            const LocalBatch& local, TileSum (&sums)[batch_tiles]) {
  // Two tiles share a choice, which costs as much as fifteen terms of a tile.
  constexpr int pair = 2 * tile_size;
  PartBoxes boxes[batch_tiles / 2];
  PartChoice choices[batch_tiles / 2];
  for (int first = 0; first < local.size; first += pair) {
    const int size = std::min(pair, local.size - first);
    const auto extent = [&](const double* values) KESTO_INLINE_LAMBDA { return extent_of(values + first, size); };
    const Extent x = extent(local.x), y = extent(local.y), z = extent_of_magnitude(extent(local.z));
    fill_boxes(rectangle, x, y, z, boxes[first / pair]);
  }
  for (int first = 0; first < local.size; first += pair) {
    choose_for_parts<T>(loss, boxes[first / pair], accuracy, choices[first / pair]);
  }
  for (int first = 0; first < local.size; first += tile_size) {
    TileSum& sum = sums[first / tile_size];
    const int tile = first / pair;
    for (int i = 0; i < tile_size; ++i) sum.distance[i] = __builtin_fabs(local.z[first + i]);
    if (!sum_tile<T, lossy>(rectangle, loss, accuracy, rules, boxes[tile], choices[tile], local, first, sum)) {
      sum_edges_by_points(rectangle, loss, rules, local, first, sum);
    }
  }
}

}  // namespace kesto
