// The element that every geometry builds on, and the pulses that drive it.
#include "core/transducer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "excitation/lanes/pulse_lanes.h"
#include "host/embedded_host.h"
#include "transducers/circular_transducer.h"
#include "transducers/spherical_transducer.h"

namespace {

using kesto::host::guarded;
using kesto::host::Report;

std::mt19937_64 random_bits(20261121);
double uniform(double low, double high) { return std::uniform_real_distribution<>(low, high)(random_bits); }

// The first angle turns the element's axis about y, the second about x, the third spins it about its own axis.
TEST(Transducer, RotatesAndTranslatesAsThreeSuccessiveTurns) {
  const auto turn = [](double& u, double& v, double angle) {  // of coordinates, from u to v
    const double along_u = u * std::cos(angle) + v * std::sin(angle);
    v = v * std::cos(angle) - u * std::sin(angle), u = along_u;
  };
  for (int trial = 0; trial < 200; ++trial) {
    const double a = uniform(-7, 7), b = uniform(-7, 7), c = uniform(-7, 7);
    kesto::DecliningTransducer t;
    t.set_euler(a, b, c);
    t.set_center(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1));
    t.InitializeRotationMatrix();
    const CartesianCoordinate p(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)), q = t.rotateTranslate(p);
    double d[3] = {p.x - t.center.x, p.y - t.center.y, p.z - t.center.z};
    turn(d[2], d[0], a), turn(d[1], d[2], b), turn(d[0], d[1], c);
    EXPECT_NEAR(std::hypot(q.x - d[0], q.y - d[1], q.z - d[2]), 0, 2e-15);
  }
  kesto::DecliningTransducer t;
  double one_two_three[] = {1, 2, 3};
  const auto expect_123 = [](const CartesianCoordinate& c) { EXPECT_TRUE(c.x == 1 && c.y == 2 && c.z == 3); };
  t.set_center(one_two_three), t.set_euler(one_two_three);
  expect_123(t.get_center()), expect_123(t.euler);
  t.set_center(CartesianCoordinate()), t.set_euler(CartesianCoordinate());
  EXPECT_EQ(std::hypot(t.center.x, t.center.y, t.center.z) + std::hypot(t.euler.x, t.euler.y, t.euler.z), 0);
  t.set_center(CartesianCoordinate(1, 2, 3)), t.set_euler(CartesianCoordinate(1, 2, 3));
  expect_123(t.center), expect_123(t.euler);
  t.set_center(0, 0, 0);
  double quarter[] = {std::acos(0.0), 0, 0};
  t.set_euler(quarter);
  t.InitializeRotationMatrix();
  const CartesianCoordinate ahead = t.rotateTranslate(CartesianCoordinate(1, 0, 0));
  EXPECT_NEAR(ahead.z, 1, 1e-16);
  EXPECT_NEAR(std::hypot(ahead.x, ahead.y), 0, 1e-16);
}

TEST(Transducer, KeepsWeightAmplitudeAndPhase) {
  const double quarter = std::acos(0.0);
  Report report = guarded([&] {
    kesto::DecliningTransducer t;
    EXPECT_EQ(t.complex_weight, std::complex<double>(0, 0));  // silent until told otherwise
    EXPECT_EQ(t.get_amplitude(), 1);
    t.set_phase(0);
    EXPECT_EQ(t.complex_weight, std::complex<double>(1, 0));
    t.set_amplitude(2);
    t.set_phase(quarter);
    EXPECT_EQ(t.complex_weight, std::complex<double>(2 * std::cos(quarter), 2));
    double re = 3, im = 4;
    t.set_complex_weight(&re, &im);
    EXPECT_EQ(t.complex_weight, std::complex<double>(3, 4));
    t.set_complex_weight(&re, nullptr);
    EXPECT_EQ(t.complex_weight, std::complex<double>(3, 0));
    EXPECT_EQ(t.get_amplitude(), 2);
    EXPECT_EQ(t.get_phase(), quarter);
    t.set_time_delay(0.25), t.set_piston_apodization_index(3);
    EXPECT_EQ(t.get_time_delay() + t.get_piston_apodization_index(), 3.25);
    NumericalIntegration rule;
    rule.set_kzk_parameters(1, 2, 3, 4, 5), rule.cw_set_kzk_parameters(6, 7, 8, 9, 10);
    EXPECT_EQ((std::array<float, 5>{rule.kzk_dz, rule.kzk_dr, rule.kzk_rmax, rule.kzk_dtau, rule.kzk_tau_length}),
              (std::array<float, 5>{6, 7, 8, 4, 5}));
    EXPECT_TRUE(rule.kzk_harmonics == 9 && rule.kzk_output_harmonic == 10);
    t.set_integral_pointer(&rule);
    EXPECT_EQ(t.integral, &rule);
    EXPECT_EQ(t.get_impulse_begin_time(), -1);
    EXPECT_EQ(t.get_impulse_end_time(), -1);
    t.impulse_end_time = 1;
    EXPECT_EQ(t.get_impulse_end_time(), 1);
  });
  const std::string moved = "KESTO no longer uses the complex_weight property. Please use phase and amplitude instead.";
  const std::string early = "Impulse end time used before impulse_begin_and_end_times was called.\n";
  EXPECT_EQ(report.warnings, (std::vector<std::string>{moved, moved, early}));
  EXPECT_EQ(report.console, "");
}

TEST(Transducer, AddsIntoTheBuffersOfItsKind) {
  const Report report = guarded([] {
    CoordinateGrid grid;
    grid.RegularCoordinateGrid(0, 2, 0, 0, 0, 0, 1, 0, 0);  // three points
    TimeSamples times(1, 0, 3);                             // four samples
    times.updatetimevectorfromminmaxdeltat(1, 0, 1);        // two of them in use
    kesto::DecliningTransducer t;
    t.set_global_coordinate_grid(&grid);
    t.set_time_vector(&times);
    std::vector<double> re(3, 1), im(3, 2), transient(12, 3);
    t.set_complex_pressure_pointers(re.data(), im.data());
    EXPECT_EQ(t.transient_pressure, nullptr);
    t.superpose_complex_pressure(1, {10, 20});
    t.superpose_complex_pressure(1, {10, 20});
    EXPECT_EQ(re, (std::vector<double>{1, 21, 1}));
    EXPECT_EQ(im, (std::vector<double>{2, 42, 2}));
    t.zerofill_complex_pressure();
    EXPECT_EQ(re, std::vector<double>(3, 0));
    EXPECT_EQ(im, std::vector<double>(3, 0));

    t.set_transient_pressure_pointer(transient.data());
    EXPECT_EQ(t.complex_pressure_real, nullptr);
    EXPECT_EQ(t.complex_pressure_imag, nullptr);
    const double s[] = {1, 2, 3, 4};
    const float f[] = {10, 20, 30, 40};
    t.superpose_transient_pressure(0, s);
    t.superpose_transient_pressure(2, f);
    t.call_superpose_transient_pressure(1, s);
    EXPECT_EQ(transient, (std::vector<double>{4, 4, 13, 5, 5, 23, 6, 3, 33, 7, 3, 43}));
    t.zerofill_transient_pressure();
    EXPECT_EQ(transient, std::vector<double>(12, 0));
  });
  EXPECT_TRUE(report.clean()) << report.error;
}

// A virtual function's place in the table, as the C++ ABI of every supported platform but 32-bit ARM encodes it.
template <class Member>
int slot(Member member) {
  std::ptrdiff_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  return static_cast<int>((words[0] & ~std::ptrdiff_t{1}) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

TEST(Transducer, DeclinesEveryComputationAndTouchesNothing) {
  using Computation = int (Transducer::*)();
  // clang-format off
  const Computation all[] = {
      &Transducer::farfield_cw, &Transducer::fnm_cw, &Transducer::fnm_cw_apodized, &Transducer::fnm_cw_single,
      &Transducer::fnm_cw_sse, &Transducer::fnm_cw_sse2, &Transducer::radiator_cw, &Transducer::rayleigh_cw,
      &Transducer::rayleigh_cw_apodized, &Transducer::rayleigh_cw_sse, &Transducer::impulse_begin_and_end_times,
      &Transducer::impulse_response, &Transducer::fnm_transient, &Transducer::fnm_transient_behind_source,
      &Transducer::fnm_fdtsd, &Transducer::fnm_tsd, &Transducer::init_fnm_tsd, &Transducer::call_fnm_tsd,
      &Transducer::free_fnm_tsd, &Transducer::fnm_tsd_behind_source, &Transducer::fnm_tsd_low_precision,
      &Transducer::fnm_tsd_sse, &Transducer::rayleigh_transient, &Transducer::kzk_transient, &Transducer::kzk_cw};
  // clang-format on
  const std::unique_ptr<Transducer> t = std::make_unique<kesto::DecliningTransducer>();  // with every pointer null
  for (size_t k = 0; k < std::size(all); ++k) {
    const Computation computation = all[k];
    EXPECT_EQ((t.get()->*computation)(), 1);
    EXPECT_EQ(slot(all[k]), 24 + static_cast<int>(k));  // callers compiled against the declared order rely on it
  }
  EXPECT_EQ(slot(&Transducer::rotateTranslate), 49);
  using Disc = CircularTransducer;
  using Cap = SphericalTransducer;
  EXPECT_EQ((std::array{slot(&Disc::Tridiag), slot(&Disc::TRIDIA), slot(&Disc::COEFF), slot(&Disc::NONLIN),
                        slot(&Disc::INIT)}),
            (std::array{50, 51, 52, 53, 54}));
  EXPECT_EQ((std::array{slot(&Cap::farfield_cw_lossless), slot(&Cap::Tridiag), slot(&Cap::INIT)}),
            (std::array{50, 51, 55}));
  EXPECT_EQ(slot(&ExcitationFunction::number_of_tsd_terms), 6);
  EXPECT_EQ(slot(&ExcitationFunction::get_frequency_domain_input_signal_imag), 17);
}

TEST(Transducer, PrintsItsParameters) {
  const Report report = guarded([] {
    Medium medium;
    medium._f0 = 1e6, medium._fs = 2e6, medium._soundspeed = 1500, medium._rho_density = 1000, medium._dBcmMHz = 0.5;
    CoordinateGrid grid;
    grid.SinglePoint(1, 2, 3);
    kesto::DecliningTransducer t;
    t.set_center(1, 2, 3);
    t.set_amplitude(2);
    t.set_time_delay(0.5);
    t.set_medium(&medium);
    t.set_global_coordinate_grid(&grid);
    t.mex_debug(0);
    testing::internal::CaptureStdout();
    t.debug(0);
    const std::string printed = testing::internal::GetCapturedStdout();
    for (const char* line :
         {"center.y: 2", "Amplitude: 2", "atten: 0.5", "Number of obs points: 1", "Z-range:3 to 3"}) {
      EXPECT_NE(printed.find(line), std::string::npos) << line;
    }
  });
  EXPECT_EQ(report.console,
            "Element center: (1.000000e+00, 2.000000e+00, 3.000000e+00)\n"
            "Element Euler angles: (0.000000e+00, 0.000000e+00, 0.000000e+00)\nAmplitude: 2.000000e+00\n"
            "Phase: 0.000000e+00\nComplex Weight: 2.000000e+00 + 0.000000e+00 i\nTime Delay: 5.000000e-01\n"
            "Parameters:\nf0: 1000000.000000\nfs: 2000000.000000\nc: 1500.000000\ndensity: 1000.000000\n"
            "attenuation: 0.500000\n\nCoordinate grid:\nx range: 1.000000 to 1.000000\n"
            "y range: 2.000000 to 2.000000\nz range: 3.000000 to 3.000000\n");
}

struct PulseCase {
  const char* name;
  std::function<std::shared_ptr<ExcitationFunction>(double A0)> make;
  int terms;
  bool amplitude_twice;  // in the decomposition
};

constexpr double frequency = 1.1e6, width = 2.7e-6, decay = 1.5e6;

template <class Pulse>
PulseCase pulse_case(const char* name, int terms, bool amplitude_twice) {
  return {name, [](double A0) { return std::make_shared<Pulse>(A0, frequency, width, decay, 7); }, terms,
          amplitude_twice};
}

std::vector<PulseCase> pulses() {
  return {pulse_case<ToneBurst>("tone burst", 2, false), pulse_case<HanningPulse>("Hanning pulse", 6, true),
          pulse_case<TCubedPulse>("t-cubed pulse", 8, false)};
}

TEST(Excitation, DecomposesIntoItsValueInEveryPrecision) {
  const int n = 40;
  const Report report = guarded([&] {
    TimeSamples times(width / 29, -width / 3, 40 * width / 29 - width / 3);
    for (const PulseCase& pulse : pulses()) {
      for (const double A0 : {1.0, 2.5}) {
        const auto v = pulse.make(A0);
        const size_t m = static_cast<size_t>(v->number_of_tsd_terms());
        ASSERT_EQ(v->number_of_tsd_terms(), pulse.terms);
        const double largest = [&] {
          double most = 0;
          for (int k = 0; k <= 1000; ++k) most = std::max(most, std::abs(v->at(k * width / 1000)));
          return most * (pulse.amplitude_twice ? A0 : 1);
        }();
        for (int trial = 0; trial < 20; ++trial) {
          const double d = uniform(0, width), shift = uniform(-width / 5, width / 5);
          std::vector<double> sd(m), td(m * n);
          std::vector<float> sf(m), tf(m * n);
          std::vector<std::complex<double>> sc(m), tc(m * n);
          std::vector<Float4> s4(m);
          v->spatial_tsd(sd.data(), d);
          v->temporal_tsd(td.data(), &times, n, shift);
          v->spatial_tsd(sf.data(), static_cast<float>(d));
          v->temporal_tsd(tf.data(), &times, n, static_cast<float>(shift));
          v->spatial_tsd(sc.data(), d);
          v->temporal_tsd(tc.data(), &times, n, shift);
          const float df = static_cast<float>(d);
          v->spatial_tsd(s4.data(), Float4{0, df, df / 2, df});
          for (size_t k = 0; k < n; ++k) {
            const double t = times.time_index_value(static_cast<int>(k)) - shift - d;
            if (!(t > 0 && t < width)) continue;
            double in_double = 0, in_single = 0, in_four = 0;
            std::complex<double> in_complex = 0;
            for (size_t i = 0; i < m; ++i) {
              in_double += sd[i] * td[i * n + k];
              in_single += static_cast<double>(sf[i] * tf[i * n + k]);
              in_four += static_cast<double>(s4[i][3] * tf[i * n + k]);
              in_complex += sc[i] * tc[i * n + k];
            }
            const double value = v->at(t) * (pulse.amplitude_twice ? A0 : 1);
            ASSERT_NEAR(in_double, value, 2e-13 * largest) << pulse.name << " at " << t;
            ASSERT_NEAR(in_single, value, 4e-5 * largest) << pulse.name << " at " << t;
            ASSERT_NEAR(in_four, value, 4e-5 * largest) << pulse.name << " at " << t;
            ASSERT_EQ(in_complex, std::complex<double>(in_double, 0)) << pulse.name;
          }
        }
      }
    }
  });
  EXPECT_TRUE(report.clean()) << report.error;
}

TEST(Excitation, HasTheDerivativeOfItsValue) {
  const double h = width * 1e-5;
  for (const PulseCase& pulse : pulses()) {
    const auto v = pulse.make(1.0);
    double largest = 0, worst = 0, largest_value = 0, in_lanes = 0, slope_in_lanes = 0;
    for (int k = -5; k <= 105; ++k) {
      const double t = k * width / 100, slope = (v->at(t + h) - v->at(t - h)) / (2 * h);
      largest = std::max(largest, std::abs(slope)), largest_value = std::max(largest_value, std::abs(v->at(t)));
      if (k % 100 != 0) worst = std::max(worst, std::abs(v->derivative(t) - slope));
      kesto::visit_pulse_lanes<int>(*v, [&](const auto& lanes) {
        using B = kesto::Baseline;
        const auto both = kesto::broadcast<B>(t);
        in_lanes = std::max(in_lanes, std::abs(lanes.template at<B>(both)[1] - v->at(t)));
        slope_in_lanes = std::max(slope_in_lanes, std::abs(lanes.template derivative<B>(both)[0] - v->derivative(t)));
        return 0;
      });
    }
    EXPECT_LT(worst, 1e-7 * largest) << pulse.name;
    EXPECT_LT(in_lanes, 1e-15 * largest_value) << pulse.name;
    EXPECT_LT(slope_in_lanes, 1e-15 * largest) << pulse.name;
  }
}

TEST(Excitation, KeepsItsBoundsAndScales) {
  const double inside = width / 3, inf = std::numeric_limits<double>::infinity();
  for (const PulseCase& pulse : pulses()) {
    const auto v = pulse.make(3.0);
    for (const double t : {-inf, -1e-9, 0.0, width, width + 1e-9, inf, std::nan("")}) {
      EXPECT_EQ(v->at(t), 0) << pulse.name << " at " << t;
      const bool tone_edge = pulse.terms == 2 && (t == 0 || t == width);
      EXPECT_EQ(v->derivative(t) != 0, tone_edge) << pulse.name << " at " << t;
    }
    EXPECT_DOUBLE_EQ(v->at(inside), 3 * pulse.make(1.0)->at(inside)) << pulse.name;
    EXPECT_EQ(v->get_A0(), 3);
    EXPECT_EQ(v->get_f0(), frequency);
    EXPECT_EQ(v->get_B(), decay);
    EXPECT_EQ(v->get_pulse_width(), width);
    EXPECT_EQ(v->get_type(), 7);
    EXPECT_EQ(v->omega, 6.28318530717958 * frequency);  // 2 pi cut off
    EXPECT_EQ(v->omega_w, 6.28318530717958 / width);
  }
  EXPECT_EQ(pulses()[0].make(3.0)->derivative(0), 6 * 3.14159265358979 * frequency);
  EXPECT_EQ(HanningPulse(1, 0.25, 4, 0, 2).at(1),
            (1 - std::cos(6.28318530717958 / 4)) * std::sin(6.28318530717958 / 4));
  EXPECT_NEAR(HanningPulse(1.5, 0.5, 1, 0, 2).at(0.5), 3, 1e-14);  // the envelope's top, at the carrier's
  // Only the first term of its derivative carries the amplitude.
  const double with_none = pulses()[2].make(0.0)->derivative(inside);
  EXPECT_NE(with_none, 0);
  EXPECT_NEAR(pulses()[2].make(3.0)->derivative(inside) - with_none,
              9 * inside * inside * std::exp(-decay * inside) * std::sin(6.28318530717958 * frequency * inside),
              1e-12 * std::abs(with_none));
  EXPECT_EQ(ExcitationFunction().number_of_tsd_terms() + ExcitationFunction().at(1), 0);
}

}  // namespace
