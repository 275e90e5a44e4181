#include "kesto/impulse_response.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "kesto/error.h"
#include "kesto/internal/checked_source.h"
#include "kesto/internal/face_response.h"

namespace kesto {

ImpulseResponse impulse_response(const Source& source, const Grid& grid, const Medium& medium,
                                 double sampling_frequency, const Options& options) {
  Checks checks;
  check(checks, source);
  check(checks, medium);
  checks.within("sampling_frequency", sampling_frequency, {1e3, 1e12, 1e5, 1e10, "Hz", "1 MHz is 1e6"});
  for (const Element& e : source.elements) {
    if (e.phase == 0) continue;
    refuse(text_of("phase is %g: 0 is expected, for an impulse has none; delays are what counts", e.phase));
  }
  if (medium.attenuation > 0.01) {
    checks.warn_once("loss",
                     text_of("attenuation is %g dB/(cm MHz^y): an impulse response leaves it out", medium.attenuation));
  }
  const std::size_t n = grid.size();
  const double c = medium.sound_speed, step = 1 / sampling_frequency;
  std::vector<Pose> poses;
  for (const Element& e : source.elements) poses.push_back(pose_of(e));
  ImpulseResponse response{grid, step, std::vector<double>(n), {0}, {}};
  std::vector<double> first_sample(n);
  double total = 0;
  for (std::size_t i = 0; i < n; ++i) {
    Span heard;
    for (std::size_t e = 0; e < poses.size(); ++e) {
      const Span span = add_response(source.elements[e], 0, poses[e], grid.point(i), 0, nullptr);
      if (span.empty()) continue;
      const double delay = c * source.elements[e].delay;
      heard.cover({span.first + delay, span.last + delay});
    }
    double count = 0;
    if (!heard.empty()) {
      first_sample[i] = std::floor(heard.first / (c * step) + 0.5);
      count = std::floor(heard.last / (c * step) + 0.5) - first_sample[i] + 1;
    }
    response.start[i] = first_sample[i] * step;
    total += count;
    check_memory(8 * total, text_of("impulse responses at %zu points", n));
    response.first.push_back(response.first.back() + static_cast<std::size_t>(count));
  }
  response.values.resize(response.first.back());
  constexpr std::size_t block = 256;
  for (std::size_t i = 0; i < n; ++i) {
    double* const values = response.values.data() + response.first[i];
    for (std::size_t e = 0; e < poses.size() && response.count(i) > 0; ++e) {
      const double low = c * ((first_sample[i] - 0.5) * step - source.elements[e].delay);
      const Cells cells = {low, c * step, response.count(i), values};
      for (int part = 0; part < part_count(source.elements[e].shape); ++part) {
        const double velocity = source.elements[e].velocity;
        add_response(source.elements[e], part, poses[e], grid.point(i), part == 0 ? velocity : -velocity, &cells);
      }
    }
    for (std::size_t k = 0; k < response.count(i); ++k) values[k] /= step;
    const bool last = i + 1 == n;
    if (!options.progress || !(last || i % block == block - 1)) continue;
    if (!options.progress(static_cast<double>(i + 1) / static_cast<double>(n))) throw Cancelled();
  }
  return response;
}

std::ostream& operator<<(std::ostream& out, const ImpulseResponse& response) {
  out << "impulse responses on " << response.grid
      << text_of(", a sample every %g ns, %zu in all\n", 1e9 * response.step, response.values.size());
  for (std::size_t i = 0; i < std::min<std::size_t>(response.start.size(), 10); ++i) {
    const Point p = response.grid.point(i);
    double area = 0;
    for (std::size_t k = 0; k < response.count(i); ++k) area += response.at(i, k) * response.step;
    out << text_of("(%g, %g, %g) mm: from %.4g us for %.4g us, area %.6g mm\n", 1e3 * p.x, 1e3 * p.y, 1e3 * p.z,
                   1e6 * response.start[i], 1e6 * response.step * static_cast<double>(response.count(i)), 1e3 * area);
  }
  return out;
}

}  // namespace kesto
