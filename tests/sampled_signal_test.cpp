// Sampled signals: the kept series, its fields in every form, and the reader of excitation structures.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/vector_target.h"
#include "excitation/excitation_vector.h"
#include "host/embedded_host.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;
using Doubles = std::vector<double>;

constexpr double width = 2e-6;

Doubles measured(int n) {
  Doubles samples;
  for (int i = 0; i < n; ++i) {
    const double u = (i + 0.0) / (n - 1);
    samples.push_back(0.1 + 0.2 * u + std::exp(-20 * (u - 0.4) * (u - 0.4)) * std::sin(19 * u * u + 3 * u));
  }
  return samples;
}

// The same signal as one of nobody's making, which is evaluated and decomposed term by term.
class Foreign final : public ExcitationFunction {
 public:
  explicit Foreign(SampledSignal& s) : s_(s) { pulse_width = s.pulse_width; }
  using ExcitationFunction::spatial_tsd;
  using ExcitationFunction::temporal_tsd;
  void spatial_tsd(double* out, double const& d) override { s_.spatial_tsd(out, d); }
  void temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift) override {
    s_.temporal_tsd(out, ts, n, shift);
  }
  void spatial_tsd(std::complex<double>* out, double const& d) override { s_.spatial_tsd(out, d); }
  void temporal_tsd(std::complex<double>* out, TimeSamples const* ts, int const& n, double const& shift) override {
    s_.temporal_tsd(out, ts, n, shift);
  }
  double at(double const& t) const override { return s_.at(t); }
  double derivative(double const& t) const override { return s_.derivative(t); }
  int number_of_tsd_terms() const override { return s_.number_of_tsd_terms(); }

 private:
  SampledSignal& s_;
};

TEST(SampledSignal, KeepsTheLargestBinsOfItsSamples) {
  for (const int n : {2, 3, 64, 65}) {
    const Doubles samples = measured(n);
    SampledSignal whole(samples.data(), n, width, 0);
    const double step = width / (n - 1);
    for (int i = 0; i < n; ++i)
      EXPECT_NEAR(whole.at(std::min(i * step, width)), samples[static_cast<std::size_t>(i)], 1e-12);
    EXPECT_EQ(whole.at(-1e-15) + whole.at(width * (1 + 1e-15)) + whole.derivative(-1e-15), 0);
    EXPECT_EQ(whole.kept_bins(), n / 2 + 1);
    EXPECT_EQ(whole.get_nyquist_index(), n % 2 == 0 ? n / 2 : -1);
    double last = 0;
    for (const double threshold : {1e-3, 0.02, 0.3, 1.0}) {
      SampledSignal clipped(samples.data(), n, width, threshold);
      double error = 0;
      for (int i = 0; i < n; ++i) {
        error =
            std::max(error, std::fabs(clipped.at(std::min(i * step, width)) - samples[static_cast<std::size_t>(i)]));
      }
      EXPECT_GE(error, last - 1e-12);
      EXPECT_GE(clipped.kept_bins(), 1);
      last = error;
      const double t = 0.37 * width, h = 1e-5 * width / n, d = 0.9e-6;
      EXPECT_NEAR(clipped.derivative(t), (clipped.at(t + h) - clipped.at(t - h)) / (2 * h), 1e-6 * n / width);
      const int terms = clipped.number_of_tsd_terms();
      TimeSamples time(1, t + d + 1e-6, t + d + 1e-6);
      Doubles spatial(static_cast<std::size_t>(terms)), temporal = spatial;
      std::vector<std::complex<double>> complex_spatial(spatial.size()), complex_temporal(spatial.size());
      std::vector<float> single(spatial.size());
      clipped.spatial_tsd(spatial.data(), d), clipped.temporal_tsd(temporal.data(), &time, 1, 1e-6);
      clipped.spatial_tsd(complex_spatial.data(), d), clipped.temporal_tsd(complex_temporal.data(), &time, 1, 1e-6);
      clipped.spatial_tsd(single.data(), static_cast<float>(d));
      double sum = 0, in_float = 0;
      std::complex<double> complex_sum;
      for (std::size_t m = 0; m < spatial.size(); ++m) {
        sum += spatial[m] * temporal[m], complex_sum += complex_spatial[m] * complex_temporal[m];
        in_float += static_cast<double>(single[m]) * temporal[m];
      }
      EXPECT_NEAR(sum, clipped.at(t), 1e-12);
      EXPECT_LT(std::abs(complex_sum - clipped.at(t)), 1e-12);
      EXPECT_NEAR(in_float, clipped.at(t), 1e-4);
    }
  }
}

TEST(SampledSignal, FieldsAreThoseOfTheSeriesAtEveryWidthAndStep) {
#ifdef KESTO_SANITIZED
  GTEST_SKIP() << "takes minutes under the sanitizers";
#endif
  const Doubles samples = measured(81);
  SampledSignal sampled(samples.data(), 81, width, 0.01);
  Foreign foreign(sampled);
  Medium medium;
  medium._soundspeed = 1500, medium._rho_density = 1000;
  NumericalIntegration rule;
  rule.allocate_memory(32);
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(0, 5e-3, 0, 0, 1e-3, 9e-3, 1e-3, 1e-3, 6e-3);
  RectangularTransducer rectangle(6e-3, 4e-3, 1.3, 0);
  CircularTransducer disc(3e-3, 1.3, 0);
  SphericalTransducer shell(3e-3, 8e-3, 1.3, 0);
  for (const kesto::VectorTarget target : kesto::all_vector_targets) {
    if (!kesto::is_available(target)) continue;
    setenv("KESTO_VECTOR_TARGET", kesto::name_of(target), 1);
    for (const double step : {7e-9, 50e-9, 0.3e-6}) {
      for (const bool irregular : {false, true}) {
        TimeSamples time(step, 0, 9e-6);
        if (irregular) {
          for (int k = 0; k < time.nt; ++k) time.time_values[k] += 0.3 * step * std::sin(k);
        }
        Doubles field(static_cast<std::size_t>(grid.npoints * time.nt));
        for (Transducer* const e : std::vector<Transducer*>{&rectangle, &disc, &shell}) {
          e->set_medium(&medium), e->set_global_coordinate_grid(&grid), e->set_integral_pointer(&rule);
          e->set_time_vector(&time), e->set_time_delay(-0.21e-6);
          const auto computed = [&](ExcitationFunction& signal, int (Transducer::*compute)()) {
            std::fill(field.begin(), field.end(), 0.0);
            e->excitation = &signal;
            e->set_transient_pressure_pointer(field.data());
            rule.gauss_quadrature();
            EXPECT_EQ((e->*compute)(), 0);
            return field;
          };
          for (const auto compute : {&Transducer::fnm_transient, &Transducer::fnm_tsd, &Transducer::fnm_fdtsd}) {
            if (irregular && compute != &Transducer::fnm_transient) continue;  // these need a step
            const Doubles expected = computed(foreign, compute), found = computed(sampled, compute);
            double most = 0, worst = 0;
            for (std::size_t i = 0; i < found.size(); ++i) {
              most = std::max(most, std::fabs(expected[i])), worst = std::max(worst, std::fabs(expected[i] - found[i]));
            }
            EXPECT_GT(most, 0);
            EXPECT_LT(worst, 3e-12 * most) << name_of(target) << " step " << step << " irregular " << irregular;
          }
        }
      }
    }
  }
  unsetenv("KESTO_VECTOR_TARGET");
}

TEST(SampledSignal, ReaderTakesEveryTypeAndNamesWhatIsWrong) {
  struct {
    const char* fields;  // in the order signal, type, pulse_width, clip_threshold; s, t, w, c
    Doubles signal;
    std::size_t rows;
    double type, threshold;
    const char* said;  // empty: read
  } const cases[] = {
      {"stwc", {1, 2, 3, 4, 5, 7}, 2, 4, 0, ""},
      {"st", {2, 3, 1e6, 1e6, 2e-6, 3e-6, 0, 5}, 2, 1, 0, ""},
      {"st", {2, 1e6, 2e-6, 0}, 1, 2, 0, ""},
      {"st", {2, 1e6, 2e-6, 7}, 1, 3, 0, ""},
      {"st", {1, 1, 1}, 3, 1, 0, "Excitation function must have either exactly one row or one row per element."},
      {"st",
       {1, 1, 1, 1},
       1,
       5,
       0,
       "Invalid excitation function type. Please see the documentation for set_excitation_function for a list of valid "
       "types.\n"},
      {"st", {1, 1, 1, 1}, 1, 1.5, 0, "Invalid excitation function type."},
      {"t", {}, 1, 1, 0, "Expecting 'signal', but this field is not defined\n"},
      {"s", {1, 1, 1, 1}, 1, 1, 0, "Expecting 'type', but this field is not defined\n"},
      {"stc", {1, 2, 3}, 1, 4, 0, "Expecting 'pulse_width', but this field is not defined\n"},
      {"stw", {1, 2, 3}, 1, 4, 0, "Expecting 'clip_threshold', but this field is not defined\n"},
      {"st", {1, 1, 1}, 1, 3, 0, "but it has 3 columns\n"},
      {"stwc", {1}, 1, 4, 0, "two samples or more"},
      {"stwc", {1, NAN}, 1, 4, 0, "must be finite"},
      {"stwc", {1, 2}, 1, 4, 1.5, "between 0 and 1"},
  };
  for (const auto& c : cases) {
    const char* names[] = {"signal", "type", "pulse_width", "clip_threshold"};
    const kesto::host::Array structure(mxCreateStructMatrix(1, 1, 4, names));
    for (const char* field = c.fields; *field != '\0'; ++field) {
      const std::size_t place = std::string("stwc").find(*field);
      const double scalars[] = {0, c.type, width, c.threshold};
      mxArray* value = mxCreateDoubleScalar(scalars[place]);
      if (place == 0) {
        mxDestroyArray(value);
        const mwSize shape[] = {c.rows, c.signal.size() / c.rows};
        value = mxCreateNumericArray(2, shape, mxDOUBLE_CLASS, mxREAL);
        std::copy(c.signal.begin(), c.signal.end(), mxGetPr(value));
      }
      mxSetField(structure.get(), 0, names[place], value);
    }
    const mxArray* slot = structure.get();
    const Report report = guarded([&] {
      const ExcitationVector signals = ExcitationFunction::excitation_vector(&slot, 2);
      EXPECT_EQ(signals.count(), static_cast<int>(c.rows));
      ExcitationFunction& second = *signals[1];
      EXPECT_EQ(second.get_type(), static_cast<int>(c.type));
      EXPECT_EQ(second.get_pulse_width(), c.rows == 2 && c.type == 1 ? 3e-6 : width);
      if (c.type == 4) {
        EXPECT_NEAR(second.at(width), 7, 1e-12);  // row 2 is 2, 4, 7
      } else {
        EXPECT_EQ(second.get_A0(), c.signal[c.rows - 1]);
        EXPECT_EQ(second.get_B(), c.signal.back());
      }
    });
    EXPECT_EQ(report.failed, *c.said != '\0') << c.said;
    EXPECT_NE((report.console + report.error).find(c.said), std::string::npos) << report.console << report.error;
    EXPECT_EQ(report.live_blocks + report.bad_frees, 0u) << c.said;
  }
}

}  // namespace
