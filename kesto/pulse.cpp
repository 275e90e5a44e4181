#include "kesto/pulse.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "kesto/engine/constants.h"
#include "kesto/error.h"
#include "kesto/internal/face_response.h"
#include "kesto/internal/source_field.h"

namespace kesto {

namespace {

constexpr double two_full_pi = 2 * full_pi;

Signal checked(std::string name, double length, double frequency, std::function<double(double)> at) {
  Checks checks;
  checks.within("length of the signal", length, {1e-12, 1, 1e-9, 1e-2, "s", "times are in seconds"});
  return {std::move(name), length, frequency, std::move(at)};
}

void check_frequency(double frequency) {
  Checks checks;
  checks.within("frequency", frequency, frequency_limits);
}

// The response of a part of a face at a point, as pieces of even density.
struct Piece {
  double mass, centre, half_width;  // m, s, s
};

class PointPulse {
 public:
  PointPulse(const Source& source, const std::vector<Pose>& poses, double c, const Signal& signal,
             const std::vector<double>& times)
      : source_(source), poses_(poses), c_(c), signal_(signal), times_(times) {}

  // The integral of v' h over all elements, with the response in steps no longer than `step` (s).
  std::vector<double> at(const Point& point, double step) const {
    std::vector<double> sum(times_.size());
    for (std::size_t e = 0; e < poses_.size(); ++e) {
      const Element& element = source_.elements[e];
      if (element.velocity == 0) continue;
      for (int part = 0; part < part_count(element.shape); ++part) {
        const double weight = part == 0 ? element.velocity : -element.velocity;
        for (const Piece& piece : pieces(element, part, poses_[e], point, step)) add(piece, weight, sum);
      }
    }
    return sum;
  }

 private:
  std::vector<Piece> pieces(const Element& e, int part, const Pose& pose, const Point& point, double step) const {
    const Span span = add_response(e, part, pose, point, 0, nullptr);
    if (span.empty()) return {};
    // What falls outside the times asked for is left out.
    const double begin = std::max(span.first, c_ * (times_.front() - e.delay - signal_.length));
    const double end = std::min(span.last, c_ * (times_.back() - e.delay));
    if (!(begin <= end)) return {};
    const double length = std::max(end - begin, 1e-9 * c_ * step);
    const auto count = static_cast<std::size_t>(std::ceil(length / (c_ * step)));
    std::vector<double> mass(count), first(count), second(count);
    // A hair wider, so that rounding leaves nothing outside.
    const double hair = 1e-12 * span.last;
    const Cells cells = {begin - hair, (length + 2 * hair) / static_cast<double>(count),
                         count,        mass.data(),
                         first.data(), second.data()};
    add_response(e, part, pose, point, 1, &cells);
    std::vector<Piece> result;
    const double least = 1e-5 / (two_full_pi * signal_.frequency);
    for (std::size_t i = 0; i < count; ++i) {
      if (!(mass[i] > 0)) continue;
      const double mean = first[i] / mass[i], variance = std::max(second[i] / mass[i] - mean * mean, 0.0);
      const double centre = cells.low + (static_cast<double>(i) + 0.5) * cells.step + mean;
      result.push_back({mass[i], centre / c_ + e.delay, std::max(std::sqrt(3 * variance) / c_, least)});
    }
    return result;
  }

  double value(double t) const { return t > 0 && t < signal_.length ? signal_.at(t) : 0; }

  void add(const Piece& piece, double weight, std::vector<double>& sum) const {
    const double w = piece.half_width;
    const auto from = std::lower_bound(times_.begin(), times_.end(), piece.centre - w);
    const auto until = std::upper_bound(from, times_.end(), piece.centre + w + signal_.length);
    for (auto t = from; t != until; ++t) {
      const double since = *t - piece.centre;
      sum[static_cast<std::size_t>(t - times_.begin())] +=
          weight * piece.mass * (value(since + w) - value(since - w)) / (2 * w);
    }
  }

  const Source& source_;
  const std::vector<Pose>& poses_;
  double c_;
  const Signal& signal_;
  const std::vector<double>& times_;
};

// Over the way from every element to every point; fails if the medium would take more than the accuracy.
void check_loss(const Source& source, const Grid& grid, const Medium& medium, double frequency, double accuracy) {
  double farthest = 0;
  for (std::size_t i = 0; i < grid.size(); ++i) {
    farthest = std::max(farthest, length(grid.point(i) - source.elements.front().position));
  }
  const double taken = -std::expm1(-medium.nepers_per_metre(frequency) * farthest);
  if (taken <= accuracy) return;
  refuse(
      text_of("attenuation is %g dB/(cm MHz^y): it takes %.2g of a wave of %g MHz over %g mm, more than the accuracy, "
              "which is %g; pulses are those of lossless media, set it to 0 to have that",
              medium.attenuation, taken, frequency / 1e6, 1e3 * farthest, accuracy));
}

}  // namespace

Signal tone_burst(double frequency, int half_cycles) {
  check_frequency(frequency);
  if (half_cycles < 1) refuse(text_of("half_cycles is %d: at least 1 is expected", half_cycles));
  return checked(text_of("tone burst of %g cycles", half_cycles / 2.0), half_cycles / (2 * frequency), frequency,
                 [=](double t) { return std::sin(two_full_pi * frequency * t); });
}

Signal hanning_burst(double frequency, double length) {
  check_frequency(frequency);
  return checked("Hanning burst", length, frequency, [=](double t) {
    return std::sin(two_full_pi * frequency * t) * (1 - std::cos(two_full_pi * t / length)) / 2;
  });
}

Signal t_cubed(double frequency, double decay) {
  check_frequency(frequency);
  Checks checks;
  checks.within("decay", decay, {1, 1e12, 1e4, 1e10, "1/s", "the envelope is largest at 3 / decay seconds"});
  constexpr double largest = 27 * 0.049787068367863944;  // x^3 e^-x at 3
  return checked("t-cubed pulse", 40 / decay, frequency, [=](double t) {
    const double x = decay * t;
    return x * x * x * std::exp(-x) / largest * std::sin(two_full_pi * frequency * t);
  });
}

Signal samples(const std::vector<double>& values, double sampling_frequency) {
  Checks checks;
  checks.within("sampling_frequency", sampling_frequency, {1e3, 1e12, 1e5, 1e10, "Hz", "1 MHz is 1e6"});
  if (values.size() < 3) refuse(text_of("values has %zu samples: at least 3 are expected", values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) checks.finite(text_of("values[%zu]", i), values[i]);
  for (const std::size_t end : {std::size_t{0}, values.size() - 1}) {
    if (values[end] != 0) refuse(text_of("values[%zu] is %g: 0 is expected at both ends", end, values[end]));
  }
  return checked("samples", static_cast<double>(values.size() - 1) / sampling_frequency, sampling_frequency / 2,
                 [=](double t) {
                   const double at = t * sampling_frequency;
                   const std::size_t i = std::min(static_cast<std::size_t>(at), values.size() - 2);
                   return values[i] + (at - static_cast<double>(i)) * (values[i + 1] - values[i]);
                 });
}

Pulse pulse(const Source& source, const Grid& grid, const Medium& medium, const Signal& signal,
            const std::vector<double>& times, double accuracy, const Options& options) {
  Checks checks;
  check(checks, source);
  check(checks, medium);
  check_accuracy(accuracy);
  checks.within("frequency of the signal", signal.frequency, frequency_limits);
  checks.within("length of the signal", signal.length, {1e-12, 1, 1e-9, 1e-2, "s", "times are in seconds"});
  if (!signal.at) refuse("signal has no function: one of tone_burst, hanning_burst, t_cubed or samples is expected");
  if (times.empty()) refuse("times is empty: at least one is expected (s)");
  for (std::size_t i = 0; i < times.size(); ++i) {
    checks.within(text_of("times[%zu]", i), times[i], time_limits);
    if (i > 0 && times[i] <= times[i - 1]) {
      refuse(text_of("times[%zu] is %g: more than times[%zu], which is %g, is expected", i, times[i], i - 1,
                     times[i - 1]));
    }
  }
  for (const Element& e : source.elements) {
    if (e.phase == 0) continue;
    refuse(text_of("phase is %g: 0 is expected, for pulses have none; delays are what counts", e.phase));
  }
  check_loss(source, grid, medium, signal.frequency, accuracy);
  check_memory(8.0 * static_cast<double>(grid.size()) * static_cast<double>(times.size()),
               text_of("a pulse at %zu points and %zu times", grid.size(), times.size()));
  std::vector<Pose> poses;
  for (const Element& e : source.elements) poses.push_back(pose_of(e));
  Medium still = medium;
  still.attenuation = 0;
  Pulse result{grid, times, std::vector<double>(grid.size() * times.size()), 0, 0};
  result.scale = SourceField(source, still, signal.frequency).scale();
  const PointPulse at_point(source, poses, medium.sound_speed, signal, times);
  for (std::size_t i = 0; i < grid.size(); ++i) {
    double step = 0.05 / signal.frequency, off = INFINITY;
    std::vector<double> coarse = at_point.at(grid.point(i), step), fine;
    constexpr int most_halvings = 8;
    for (int halving = 0; halving < most_halvings && off > accuracy * result.scale; ++halving) {
      step /= 2;
      fine = at_point.at(grid.point(i), step);
      off = 0;
      for (std::size_t k = 0; k < times.size(); ++k) {
        off = std::max(off, medium.density * std::fabs(fine[k] - coarse[k]));
      }
      coarse.swap(fine);
    }
    result.error = std::max(result.error, off);
    for (std::size_t k = 0; k < times.size(); ++k) result.values[times.size() * i + k] = medium.density * coarse[k];
    if (!options.progress) continue;
    if (!options.progress(static_cast<double>(i + 1) / static_cast<double>(grid.size()))) throw Cancelled();
  }
  return result;
}

std::ostream& operator<<(std::ostream& out, const Pulse& pulse) {
  double most = 0;
  std::size_t at = 0;
  for (std::size_t i = 0; i < pulse.values.size(); ++i) {
    if (std::fabs(pulse.values[i]) > most) most = std::fabs(pulse.values[i]), at = i;
  }
  const Point p = pulse.grid.point(at / pulse.times.size());
  return out << "pulse on " << pulse.grid << ", at " << pulse.times.size() << " times\n"
             << text_of(
                    "up to %.5g Pa, at (%g, %g, %g) mm and %.4g us; steps in the response change it by no more than %s "
                    "Pa\n",
                    most, 1e3 * p.x, 1e3 * p.y, 1e3 * p.z, 1e6 * pulse.times[at % pulse.times.size()],
                    one_digit(pulse.error).c_str());
}

}  // namespace kesto
