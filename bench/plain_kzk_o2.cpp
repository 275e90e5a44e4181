#include "bench/plain_kzk_o2.h"

#include "tests/plain_kzk.h"

struct PlainMarchO2::March : kesto::test::PlainMarch {
  using PlainMarch::PlainMarch;
};

PlainMarchO2::PlainMarchO2(const kesto::BeamPlan& plan, const kesto::BeamSource& source, std::complex<double> pressure)
    : march_(std::make_unique<March>(plan, source, pressure)) {}
PlainMarchO2::~PlainMarchO2() = default;
void PlainMarchO2::step() { march_->step(); }
std::complex<double> PlainMarchO2::value(int node, int harmonic) const {
  return march_->field[static_cast<std::size_t>(harmonic - 1)][static_cast<std::size_t>(node)];
}
