// Transient fields as plain scalar sums over the rays of a face, directly and by decomposition, with the bounds of
// windows and pulses summed in the order that decides where a sample on one of them lies.
#pragma once

#include "excitation/excitation_function.h"
#include "tests/support/methods.h"

namespace plain {

using Trace = std::vector<double>;
using scenes::Element;
using scenes::Point;
using scenes::Scene;
using scenes::Sums;
using scenes::TransientMethod;

struct Span {
  int first, last;
};

// A scene's samples, pulse and rule.
class Transient {
 public:
  explicit Transient(const Scene& scene) : s_(scene), sum_(scenes::plain_sum(scene)) {
    kesto::host::guarded([&] { s_.fill(time_); });
    for (int k = 0; k < time_.nt; ++k) t_.push_back(time_.time_index_value(k));
    per_sample_ = 1 / time_.deltat();
    const auto terms = static_cast<std::size_t>(s_.pulse->number_of_tsd_terms());
    temporal_.resize(terms * t_.size());
    s_.pulse->temporal_tsd(temporal_.data(), &time_, time_.nt, s_.delay);
  }

  Trace at(const Element& e, const TransientMethod& m, const Point& p) const {
    Trace trace(t_.size());
    add(e, m, e.outer, e.face->amplitude, p, trace);
    if (e.has_hole() && !m.whole) add(e, m, e.inner, -e.face->amplitude, p, trace);
    return trace;
  }

 private:
  struct Rays {
    Trace weight, delay;
    double reference = 0, first = 0, last = 0;
  };

  Rays of_disc(double a, bool by_reciprocal, const Point& p) const {
    const double c = sum_.speed, r2 = p.x * p.x + p.y * p.y, r = std::sqrt(r2), reciprocal = 1 / c;
    Rays rays;
    rays.reference = p.z / c;
    rays.first = r <= a ? p.z / c : std::sqrt((r - a) * (r - a) + p.z * p.z) / c;
    rays.last = std::sqrt(p.z * p.z + (r + a) * (r + a)) / c;
    for (int i = 0; i < sum_.n(); ++i) {
      const double cosine = std::cos(kesto::half_pi * sum_.x[i] + kesto::half_pi), d = r2 + a * a - 2 * a * cosine * r;
      rays.weight.push_back((cosine * r - a) / d * (sum_.w[i] * kesto::half_pi * (sum_.rho * c * a / kesto::pi)));
      const double distance = std::sqrt(p.z * p.z + d);
      rays.delay.push_back(by_reciprocal ? distance * reciprocal : distance / c);
    }
    return rays;
  }

  Rays of_cap(double a, double d, const Point& p) const {
    const double c = sum_.speed, h = std::sqrt(d * d - a * a), z = p.z - d, r2 = p.x * p.x + p.y * p.y,
                 r = std::sqrt(r2);
    Rays rays;
    rays.reference = (d + (std::fabs(z) > 1e-10 ? std::copysign(std::sqrt(r2 + z * z), z) : 0)) / c;
    rays.first = rays.reference;
    for (int i = 0; i < sum_.n(); ++i) {
      const double cosine = std::cos(kesto::half_pi * sum_.x[i] + kesto::half_pi);
      const double g = (r * cosine * h + a * z) /
                       (2 * a * h * z * r * cosine + r2 * d * d - r2 * a * a * cosine * cosine + a * a * z * z);
      rays.weight.push_back(g * (sum_.w[i] * kesto::half_pi * (d * a / kesto::pi) * sum_.rho * c));
      rays.delay.push_back(std::sqrt(d * d + r2 + z * z - 2 * a * r * cosine + 2 * z * h) / c);
    }
    return rays;
  }

  int index(double position) const {  // NaN is 0
    return position > 0 ? (position < time_.nt ? static_cast<int>(position) : time_.nt) : 0;
  }
  int from(double travel_time) const { return index(std::ceil((travel_time + s_.delay - t_[0]) * per_sample_)); }
  Span within_pulse(double travel_time) const {
    return {from(travel_time),
            index(std::floor((travel_time + s_.delay - t_[0] + s_.pulse->pulse_width) * per_sample_) + 1)};
  }

  void add(const Element& e, const TransientMethod& m, double a, double amplitude, const Point& p, Trace& trace) const {
    const bool directly = m.sums == Sums::directly, flat = e.is_flat();
    if (flat ? p.z < 0 : !m.behind && scenes::is_behind_cap(a, e.roc, p)) return;
    if (!flat && scenes::is_focus(e.roc, p)) {
      const Span span = directly ? Span{0, time_.nt} : within_pulse(e.roc / sum_.speed);
      const double depth = e.roc - std::sqrt(e.roc * e.roc - a * a);
      for (std::size_t k = static_cast<std::size_t>(span.first); k < static_cast<std::size_t>(span.last); ++k) {
        trace[k] += s_.pulse->derivative(t_[k] - s_.delay - e.roc / sum_.speed) * sum_.rho * depth * amplitude;
      }
      return;
    }
    const Rays rays = flat ? of_disc(a, !directly, p) : of_cap(a, e.roc, p);
    directly ? add_directly(rays, flat, amplitude, trace) : add_decomposed(rays, flat, amplitude, trace);
  }

  void add_directly(const Rays& rays, bool flat, double amplitude, Trace& trace) const {
    Span window = {0, time_.nt};
    if (flat) {
      const double width = s_.pulse->pulse_width;
      window = {index(std::floor((rays.first + s_.delay - t_[0]) * per_sample_)),
                index(std::ceil((rays.last + s_.delay + width - t_[0]) * per_sample_))};
    }
    for (std::size_t k = static_cast<std::size_t>(window.first); k < static_cast<std::size_t>(window.last); ++k) {
      const auto v = [&](double travel_time) {
        return s_.pulse->at(flat ? t_[k] - travel_time - s_.delay : t_[k] - s_.delay - travel_time);
      };
      for (std::size_t j = 0; j < rays.weight.size(); ++j) {
        trace[k] += (v(rays.delay[j]) - v(rays.reference)) * rays.weight[j] * amplitude;
      }
    }
  }

  void add_decomposed(const Rays& rays, bool flat, double amplitude, Trace& trace) const {
    const auto terms = static_cast<std::size_t>(s_.pulse->number_of_tsd_terms());
    Trace spatial(terms);
    double sum = 0;
    for (std::size_t j = 0; j < rays.weight.size(); ++j) {
      s_.pulse->spatial_tsd(spatial.data(), rays.delay[j]);
      sum += rays.weight[j];
      const Span span = within_pulse(rays.delay[j]);
      for (std::size_t k = static_cast<std::size_t>(span.first); k < static_cast<std::size_t>(span.last); ++k) {
        for (std::size_t m = 0; m < terms; ++m) {
          trace[k] += spatial[m] * rays.weight[j] * temporal_[m * trace.size() + k] * amplitude;
        }
      }
    }
    Span span = within_pulse(rays.reference);
    if (flat) {
      span.first = from(rays.first);
      const double end = rays.reference + s_.delay + s_.pulse->pulse_width - t_[0];
      span.last = index(std::floor(end * per_sample_) + 1);
    }
    for (int k = span.first; k < span.last; ++k) {
      const double t = t_[static_cast<std::size_t>(k)] - rays.reference - s_.delay;
      trace[static_cast<std::size_t>(k)] -= s_.pulse->at(t) * sum * amplitude;
    }
  }

  const Scene& s_;
  Sum sum_;
  TimeSamples time_;
  Trace t_, temporal_;
  double per_sample_;
};

}  // namespace plain
