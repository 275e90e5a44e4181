#include "core/vector_math.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "core/internal/host.h"

namespace {

typedef std::int32_t Int4 __attribute__((vector_size(16)));
typedef std::uint32_t Bits4 __attribute__((vector_size(16)));

// Adding it rounds to an integer and leaves that in the low bits.
constexpr float round_in_place = 0x1.8p23f;

// ln 2 in two parts, of which the first has exact products with exponents.
constexpr float ln2_high = 0.693359375f, ln2_low = -2.12194440e-4f;

Float4 broadcast(float value) { return value - Float4{}; }
Bits4 bits(Float4 v) { return reinterpret_cast<Bits4>(v); }
Float4 floats(Bits4 v) { return reinterpret_cast<Float4>(v); }
Float4 floats(Int4 integers) { return __builtin_convertvector(integers, Float4); }

struct SinCos4 {
  Float4 sin, cos;
};

// Reduces modulo pi/2, whose three parts are short enough for exact products with n, the last excepted.
SinCos4 sincos4(Float4 x) {
  const Float4 rounded = x * 0.636619772f + round_in_place;
  const Float4 n = rounded - round_in_place;
  Float4 r = ((x - n * 1.5703125f) - n * 4.837512969970703125e-4f) - n * 7.54978995489188216e-8f;
  const Float4 most = broadcast(0.8f);  // passed only where rounding x to n has lost all meaning
  r = r > most ? most : r;
  r = r < -most ? -most : r;

  const Float4 r2 = r * r;
  const Float4 sine = ((-1.9515295891e-4f * r2 + 8.3321608736e-3f) * r2 - 1.6666654611e-1f) * r2 * r + r;
  const Float4 cosine =
      ((2.443315711809948e-5f * r2 - 1.388731625493765e-3f) * r2 + 4.166664568298827e-2f) * r2 * r2 - 0.5f * r2 + 1.0f;

  // In quadrants 0 to 3 the sine of x is that of r, its cosine, and their negatives.
  const Bits4 quadrant = bits(rounded);
  const Int4 odd = (quadrant & 1) != 0;
  return {floats(bits(odd ? cosine : sine) ^ ((quadrant & 2) << 30)),
          floats(bits(odd ? sine : cosine) ^ (((quadrant + 1) & 2) << 30))};
}

// As bytes: a copy to a Float4 would inherit its alignment.
void store(Float4* to, Float4 v) { std::memcpy(reinterpret_cast<char*>(to), &v, sizeof v); }

}  // namespace

Float4 log_ps(Float4 x) {
  const Int4 denormal = x < std::numeric_limits<float>::min();
  const Bits4 scaled = bits(denormal ? x * 0x1p23f : x);

  // x = (1 + m) 2^e with sqrt(1/2) <= 1 + m < sqrt(2).
  const Bits4 sqrt_half = Bits4{} + 0x3f3504f3u, offset = scaled - sqrt_half;
  const Float4 e = floats((reinterpret_cast<Int4>(offset) >> 23) - (denormal & 23));
  const Float4 m = floats((offset & 0x7fffffu) + sqrt_half) - 1.0f;

  const Float4 m2 = m * m;
  Float4 p = 7.0376836292e-2f * m - 1.1514610310e-1f;
  p = p * m + 1.1676998740e-1f;
  p = p * m - 1.2420140846e-1f;
  p = p * m + 1.4249322787e-1f;
  p = p * m - 1.6668057665e-1f;
  p = p * m + 2.0000714765e-1f;
  p = p * m - 2.4999993993e-1f;
  p = p * m + 3.3333331174e-1f;
  const Float4 logarithm = (m + ((p * m * m2 + e * ln2_low) - 0.5f * m2)) + e * ln2_high;

  const Float4 infinity = broadcast(std::numeric_limits<float>::infinity());
  return x > 0.0f ? (x < infinity ? logarithm : infinity) : broadcast(std::numeric_limits<float>::quiet_NaN());
}

Float4 exp_ps(Float4 x) {
  const Float4 clamped = x > exp_ps_upper ? broadcast(exp_ps_upper) : x;
  const Float4 rounded = clamped * 1.44269504f + round_in_place;
  const Float4 n = rounded - round_in_place;
  const Float4 r = (clamped - n * ln2_high) - n * ln2_low;

  Float4 p = 1.9875691500e-4f * r + 1.3981999507e-3f;
  p = p * r + 8.3334519073e-3f;
  p = p * r + 4.1665795894e-2f;
  p = p * r + 1.6666665459e-1f;
  p = p * r + 5.0000001201e-1f;
  const Float4 power = (p * (r * r) + r) + 1.0f;
  return x < exp_ps_lower ? Float4{} : floats(bits(power) + (bits(rounded) << 23));
}

Float4 sin_ps(Float4 x) { return sincos4(x).sin; }

Float4 cos_ps(Float4 x) { return sincos4(x).cos; }

void sincos_ps(Float4 x, Float4* sine, Float4* cosine) {
  const SinCos4 both = sincos4(x);
  store(sine, both.sin);
  store(cosine, both.cos);
}

void complex_exp(Float4 a, Float4 b, Float4* re, Float4* im) {
  const Float4 modulus = exp_ps(a);
  const SinCos4 direction = sincos4(b);
  store(re, modulus * direction.cos);
  store(im, modulus * direction.sin);
}

float horizontal_add_ps(Float4 v) { return (v[0] + v[2]) + (v[1] + v[3]); }

void debug_m128(Float4 v) { kesto::print("<%e %e %e %e>\n", double{v[0]}, double{v[1]}, double{v[2]}, double{v[3]}); }

Float4 _mm_set_doubles(double d0, double d1, double d2, double d3) {
  return Float4{static_cast<float>(d0), static_cast<float>(d1), static_cast<float>(d2), static_cast<float>(d3)};
}
