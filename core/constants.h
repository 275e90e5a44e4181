// The numbers of the field core.
//
// KEPT: pi and its multiples are truncated to the digits written here, and every result of the element classes is one
// of these numbers; neither M_PI nor a longer literal stands in for them.
#pragma once

namespace kesto {

constexpr double pi = 3.14159265358979;
constexpr double two_pi = 6.28318530717958;
constexpr double half_pi = 1.570796326794895;
constexpr float two_pi_single = 6.2831855f;

// 20 / ln(10): alpha in Np/m is the attenuation in dB/m over this.
constexpr double decibels_per_neper = 8.685889638065037;

}  // namespace kesto
