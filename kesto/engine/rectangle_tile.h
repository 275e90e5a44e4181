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
void sum_edges_by_points(RectanglePart rectangle, Loss loss, RuleSet& rules, const LocalTile& local, TileSum& sum);

constexpr int edges = 4, edge_parts = 3 * edges;  // whole ones, then two parts of each

// One part as the points of a tile see it: u = middle + stretch node on a whole edge, stretch node from its foot.
struct PartPoints {
  alignas(64) double d[tile_size], middle[tile_size], stretch[tile_size], z[tile_size];
};

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

// The bounds of Gauss rules, divided by this, held for a million random cases.
constexpr float gauss_bound_is_loose_by = 8;

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
                   S::log(u_by_sigma + S::rough_sqrt(u_by_sigma * u_by_sigma + 1.0f));
    const V inverse_h = S::reciprocal(h), plus = c * inverse_h + 1.0f, minus = c * inverse_h - 1.0f;
    const V plus2 = plus * plus, minus2 = minus * minus;
    const auto ellipse_through = [&](V s2) KESTO_INLINE_LAMBDA {
      const V by_h2 = s2 * (inverse_h * inverse_h);
      return S::max(0.5f * (S::sqrt(plus2 + by_h2) + S::sqrt(minus2 + by_h2)), S::of(1));
    };
    const V at_sigma = ellipse_through(sigma2), at_d = ellipse_through(d * d);
    const V inverse_kappa = S::rough_sqrt(um * um + sigma2) * S::reciprocal(h * um),
            log_share = S::log(scale * h * S::reciprocal(target));
    const V cube_root = S::exp(S::log(3.0f * S::max(log_share + 2.0f, S::of(1)) * inverse_kappa) * (1.0f / 3));
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
      const V y2 = height * height * (1.0f - cos_phi * cos_phi), real = sigma2 + x * x - y2;
      im = S::max(im, 0.5f * (S::rough_sqrt(real * real + 4.0f * (x * x) * y2) - real));
    }
    im = S::min(height, 1.021f * S::rough_sqrt(im));
    const V to_sigma = h * (at_sigma - cosh), gap_d = h * (at_d - cosh), to_d = gap_d < 0.0f ? -gap_d : gap_d;
    const V rr = 0.707f * S::rough_sqrt(S::max(to_sigma * S::max(to_sigma, sigma), S::of(0)));
    const V by_pole = 2.0f * d_most * S::reciprocal(S::max(to_d * S::max(to_d, d), tiny));
    const V by_distance = d_most * growth * S::reciprocal(S::max(z + rr, tiny));
    const V m = S::min(by_pole, by_distance);
    const V x = log_share + S::log(S::max(m, tiny)) + im - S::log(1.0f - inverse * inverse) + rough;
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
KESTO_INLINE Extent extent_of_tile(const double (&values)[tile_size]) {
  using T = Baseline;
  Double<T> least = load<2>(values), most = least;
  for (int i = 2; i < tile_size; i += 2) {
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

template <class P, bool lossy>
KESTO_INLINE void add_part(Loss loss, RuleView<typename P::Scalar> rule, const PartPoints& p, bool from_foot,
                           TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  TileArray<Scalar> ds, middles, stretches, zs;
  ds.set(p.d), middles.set(p.middle), stretches.set(p.stretch), zs.set(p.z);
  for (int i = 0; i < tile_size; i += P::width) {
    const V across = P::load(ds.at + i), middle = from_foot ? V{} : P::load(middles.at + i);
    const V stretch = P::load(stretches.at + i), zv = P::load(zs.at + i), z2 = zv * zv;
    const V least = P::of(static_cast<Scalar>(1e-20)), d2 = across * across, d2_safe = d2 > least ? d2 : least;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V u = P::multiply_add(stretch, P::of(rule.node[j]), middle), s2 = P::multiply_add(u, u, d2_safe);
      const V distances = P::sqrt(z2 + s2) + zv, inverse = P::reciprocal(s2 * distances);
      terms.add(rule.weight[j] * (distances * inverse), s2 * (s2 * inverse));
    }
    const V scale = across * stretch * static_cast<Scalar>(-0.5 / full_pi);
    double re[P::width], im[P::width];
    P::store_wide(re, terms.re() * scale);
    P::store_wide(im, terms.im() * scale);
    for (int lane = 0; lane < P::width; ++lane) {
      sum.re[i + lane] += re[lane];
      sum.im[i + lane] += im[lane];
    }
  }
}

// The bounds at the levels used.
template <class T>
KESTO_INLINE float truncation_of_parts(const PartChoice& choice, const int* used, const int* levels, int count) {
  using S = InSingle<T>;
  using V = typename S::V;
  alignas(64) float n2[16] = {};
  for (int n = 0; n < count; ++n) n2[used[n]] = static_cast<float>(2 * levels[n]);
  alignas(64) float errors[16];
  for (int i = 0; i < 16; i += S::width) {
    const V exponent = S::load(n2 + i) * S::load(choice.t + i);
    const V error = S::exp(S::min(S::load(choice.x + i) - exponent, S::of(0))) + 1e-7f;
    S::store(errors + i, error * S::load(choice.target + i));
  }
  float total = 0;
  for (int n = 0; n < count; ++n) total += errors[used[n]];
  return total;
}

// Sums the points, whose extents are given. False, and nothing done, where a part asks for too many nodes.
template <class T, bool lossy>
KESTO_INLINE bool sum_box(RectanglePart rectangle, Loss loss, const Accuracy& accuracy, RuleSet& rules,
                          const LocalTile& local, Extent x, Extent y, Extent z, TileSum& sum) {
  PartBoxes boxes;
  fill_boxes(rectangle, x, y, z, boxes);
  PartChoice choice;
  choose_for_parts<T>(loss, boxes, accuracy, choice);
  int used[2 * edges], levels[2 * edges], count = 0;
  float skipped = 0, phase = 0, rounding = 0;
  for (int edge = 0; edge < edges; ++edge) {
    const int split = edges + 2 * edge;
    const auto cost = [&](int part) { return std::max(choice.nodes[part], 0.0f); };
    const bool whole = !(cost(split) + cost(split + 1) < cost(edge));
    for (int part = whole ? edge : split; part <= (whole ? edge : split + 1); ++part) {
      const float nodes = choice.nodes[part];
      if (nodes < 0) {
        skipped += choice.size[part];
        continue;
      }
      if (!(nodes < largest_level - 1)) return false;
      const float size = choice.size[part];
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

  PartPoints p;
  for (int i = 0; i < tile_size; ++i) {
    sum.distance[i] = p.z[i] = __builtin_fabs(local.z[i]);
    sum.re[i] = sum.im[i] = 0;
  }
  for (int n = 0; n < count; ++n) {
    const bool whole = used[n] < edges;
    const int edge = whole ? used[n] : (used[n] - edges) / 2, side = (used[n] - edges) % 2;
    const double half = edge < 2 ? rectangle.a : rectangle.b, to_line = edge < 2 ? rectangle.b : rectangle.a;
    const double(&across)[tile_size] = edge < 2 ? local.y : local.x;
    const double(&along)[tile_size] = edge < 2 ? local.x : local.y;
    const double sign_d = edge % 2 == 0 ? -1 : 1, sign_u = side == 0 ? -1 : 1;
    for (int i = 0; i < tile_size; ++i) {
      p.d[i] = to_line + sign_d * across[i];
      p.middle[i] = along[i];
      p.stretch[i] = whole ? half : half + sign_u * along[i];
    }
    Rules& rule = whole ? rules.gauss : rules.from_foot;
    sum.terms += levels[n];
    if (in_single) {
      sum.terms_in_single_precision += levels[n];
      add_part<InSingle<T>, lossy>(loss, rule.of(levels[n], float{}), p, !whole, sum);
    } else {
      add_part<InDouble<T>, lossy>(loss, rule.of(levels[n], double{}), p, !whole, sum);
    }
  }
  return true;
}

template <class T, bool lossy>
KESTO_INLINE void sum_tile(RectanglePart rectangle, Loss loss, const Accuracy& accuracy, RuleSet& rules,
                           const LocalTile& local, TileSum& sum) {
  const Extent x = extent_of_tile(local.x), y = extent_of_tile(local.y);
  const Extent z = extent_of_magnitude(extent_of_tile(local.z));
  if (!sum_box<T, lossy>(rectangle, loss, accuracy, rules, local, x, y, z, sum)) {
    sum_edges_by_points(rectangle, loss, rules, local, sum);
  }
}

}  // namespace kesto
