#include "kesto/engine/engine.h"

#include <algorithm>
#include <cmath>

#include "core/internal/host.h"
#include "kesto/engine/order.h"
#include "kesto/engine/tile_field.h"

namespace kesto {

namespace {

void require(bool condition, const char* text) {
  if (!condition) fail(text);
}

bool positive(double x) { return x > 0 && std::isfinite(x); }

void check(const Face& face, const FieldRequest& request, const FieldPoints& points) {
  const bool rectangle = face.kind == Face::Kind::rectangle;
  require(positive(face.outer) && (rectangle ? positive(face.inner) : face.inner >= 0 && face.inner < face.outer),
          "The face's lengths are not positive and finite, or its hole is no smaller than itself.\n");
  require(face.kind != Face::Kind::bowl || (std::isfinite(face.curvature) && face.curvature >= face.outer),
          "The bowl's radius of curvature is smaller than the radius of its aperture.\n");
  require(positive(request.frequency) && positive(request.medium.sound_speed) && positive(request.medium.density),
          "Frequency, sound speed and density are positive and finite.\n");
  require(request.medium.attenuation >= 0 && std::isfinite(request.medium.attenuation),
          "The attenuation is not negative, and finite.\n");
  require(positive(request.accuracy), "The accuracy is positive and finite.\n");
  require(points.size() < 0xffffffffu, "There are more points than can be counted.\n");
}

// Where a wave falls by more than this along the face, nothing is left of it, and the numbers end.
constexpr double most_nepers = 300;

void place(const FieldElement& element, const Job& job, const FieldMedium& medium, PlacedElement& to) {
  to.centre_sum = 0;
  for (int i = 0; i < 3; ++i) {
    to.centre[i] = element.pose.centre[i];
    to.centre_sum += job.k * std::fabs(to.centre[i]);
    for (int j = 0; j < 3; ++j) to.axes[i][j] = job.k * element.pose.axes[i][j];
  }
  const std::complex<double> weight = medium.density * medium.sound_speed * element.velocity;
  const std::complex<double> scaled = weight / std::complex<double>(1, -job.loss.per_phase);
  to.re = scaled.real(), to.im = scaled.imag(), to.magnitude = std::abs(weight);
  require(std::isfinite(to.magnitude) && std::isfinite(to.centre_sum),
          "An element's velocity or place is not finite.\n");
}

Job job_of(const Face& face, const FieldRequest& request) {
  Job job;
  job.k = 2 * full_pi * request.frequency / request.medium.sound_speed;
  job.loss.per_phase = request.medium.attenuation / job.k;
  job.loss.growth = std::hypot(1.0, job.loss.per_phase);
  job.kind = face.kind;
  job.silent_behind = request.behind == Behind::silent;
  const double outer = job.k * face.outer, inner = job.k * face.inner, d = job.k * face.curvature;
  const auto rim_depth = [&](double a) {  // the difference of lengths as given is exact where it is small
    return face.curvature > a ? job.k * std::sqrt((face.curvature - a) * (face.curvature + a)) : 0;
  };
  job.depth = d;
  job.rim_depth = rim_depth(face.outer);
  require(request.medium.attenuation * (2 * face.curvature + face.outer) < most_nepers,
          "The medium leaves nothing of a wave across the element.\n");
  if (face.kind == Face::Kind::rectangle) {
    job.parts[0] = {{outer, inner, 0}, 1};
    job.part_count = 1;
  } else {
    job.parts[0] = {{outer, d, rim_depth(face.outer)}, 1};
    job.parts[1] = {{inner, d, rim_depth(face.inner)}, -1};
    job.part_count = inner > 0 ? 2 : 1;
  }
  // Coarser than the plane wave itself is not asked for.
  job.accuracy =
      accuracy_of(std::min(request.accuracy, 1.0) / job.part_count, 2 * request.medium.attenuation * face.curvature);
  return job;
}

}  // namespace

FieldCost add_field(const Face& face, const FieldElement* elements, std::size_t element_count,
                    const FieldPoints& points, const FieldRequest& request, const FieldOutput& output) {
  check(face, request, points);
  Job job = job_of(face, request);
  const ScratchArray<PlacedElement> placed(element_count);
  for (std::size_t e = 0; e < element_count; ++e) place(elements[e], job, request.medium, placed[e]);
  job.elements = placed.data();
  job.element_count = element_count;
  const TileField field = tile_field_of(job, chosen_vector_target());
  const TileOrder order(points);
  RuleSet rules;
  FieldCost cost;
  Tile tiles[batch_tiles];
  TileResult results[batch_tiles];
  for (std::size_t first = 0; first < order.size(); first += batch_tiles) {
    const int count = static_cast<int>(std::min<std::size_t>(batch_tiles, order.size() - first));
    for (int t = 0; t < count; ++t) {
      order.fetch(first + static_cast<std::size_t>(t), tiles[t]);
      if (points.is_box) continue;
      for (int i = 0; i < tiles[t].count; ++i) {  // random access, while the batch is computed
        __builtin_prefetch(output.re + tiles[t].index[i], 1);
        __builtin_prefetch(output.im + tiles[t].index[i], 1);
      }
    }
    field(job, rules, tiles, count, results);
    for (int t = 0; t < count; ++t) {
      const Tile& tile = tiles[t];
      const TileResult& result = results[t];
      for (int i = 0; i < tile.count; ++i) {
        output.re[tile.index[i]] += result.re[i];
        output.im[tile.index[i]] += result.im[i];
      }
      if (output.error != nullptr) {
        for (int i = 0; i < tile.count; ++i) output.error[tile.index[i]] += result.error;
      }
      if (!(result.error <= cost.error)) cost.error = result.error;  // a NaN, too
      cost.terms += result.terms;
      cost.terms_in_single_precision += result.terms_in_single_precision;
      cost.points_on_graded_panels += result.graded_points;
    }
  }
  return cost;
}

}  // namespace kesto
