#include "core/vector_math.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "core/host_api.h"

namespace {

typedef std::int32_t Int4 __attribute__((vector_size(16)));

// As bytes: a copy to a Float4 would inherit its alignment.
void store(Float4* to, Float4 v) { std::memcpy(reinterpret_cast<char*>(to), &v, sizeof v); }

Int4 bits_of(Float4 v) { return reinterpret_cast<Int4>(v); }
Float4 from_bits(Int4 v) { return reinterpret_cast<Float4>(v); }
Int4 truncated(Float4 v) { return __builtin_convertvector(v, Int4); }
Float4 converted(Int4 v) { return __builtin_convertvector(v, Float4); }

template <int n>
Float4 polynomial(Float4 x, const float (&coefficients)[n]) {  // the highest power first
  Float4 sum = Float4{} + coefficients[0];
  for (int i = 1; i < n; ++i) sum = sum * x + coefficients[i];
  return sum;
}

// ln 2 in two parts, the first short enough for its product with an exponent to be exact.
constexpr float ln2_high = 0.693359375f, ln2_low = -2.12194440e-4f;

constexpr float log_coefficients[] = {7.0376836292e-2f,  -1.1514610310e-1f, 1.1676998740e-1f,
                                      -1.2420140846e-1f, 1.4249322787e-1f,  -1.6668057665e-1f,
                                      2.0000714765e-1f,  -2.4999993993e-1f, 3.3333331174e-1f};
constexpr float exp_coefficients[] = {1.9875691500e-4f, 1.3981999507e-3f, 8.3334519073e-3f,
                                      4.1665795894e-2f, 1.6666665459e-1f, 5.0000001201e-1f};
constexpr float sine_coefficients[] = {-1.9515295891e-4f, 8.3321608736e-3f, -1.6666654611e-1f};
constexpr float cosine_coefficients[] = {2.443315711809948e-5f, -1.388731625493765e-3f, 4.166664568298827e-2f};

// pi/4 in three parts, whose products with a small whole number are exact but for the last.
constexpr float quarter_high = 0.78515625f, quarter_middle = 2.4187564849853515625e-4f,
                quarter_low = 3.77489497744594108e-8f;

}  // namespace

Float4 log_ps(Float4 x) {
  const Float4 given = x;
  const Float4 smallest = Float4{} + std::numeric_limits<float>::min();
  x = x < smallest ? smallest : x;
  // x = m 2^e with m from sqrt(1/2) to sqrt(2)
  Int4 exponent = (bits_of(x) >> 23) - 126;
  Float4 m = from_bits((bits_of(x) & 0x007fffff) | bits_of(Float4{} + 0.5f));
  const Int4 low = m < 0.707106781186547524f;
  exponent += low;  // -1 where true
  m = (low ? m + m : m) - 1.0f;
  const Float4 e = converted(exponent), m2 = m * m;
  Float4 y = polynomial(m, log_coefficients) * m * m2;
  y += e * ln2_low;
  y -= 0.5f * m2;
  y = m + y + e * ln2_high;
  const Float4 infinity = Float4{} + std::numeric_limits<float>::infinity();
  y = given == infinity ? infinity : y;
  return given > 0 ? y : Float4{} + std::numeric_limits<float>::quiet_NaN();
}

Float4 exp_ps(Float4 x) {
  const Float4 given = x, limit = Float4{} + 88.3762626647949f;
  x = x < limit ? x : limit;
  x = x > -limit ? x : -limit;
  const Float4 scaled = x * 1.44269504088896341f + 0.5f;
  Int4 n = truncated(scaled);
  n += converted(n) > scaled;  // floor: -1 where truncation went up
  x -= converted(n) * ln2_high;
  x -= converted(n) * ln2_low;
  const Float4 y = polynomial(x, exp_coefficients) * (x * x) + x + 1.0f;
  const Float4 result = y * from_bits((n + 127) << 23);
  return given == given ? result : given;
}

void sincos_ps(Float4 x, Float4* s, Float4* c) {
  const Int4 sign_bit = Int4{} + std::numeric_limits<std::int32_t>::min();
  const Float4 magnitude = from_bits(bits_of(x) & ~sign_bit);
  // The octant, rounded up to an even one.
  const Int4 octant = (truncated(magnitude * 1.27323954473516f) + 1) & ~1;
  const Float4 j = converted(octant);
  Float4 r = magnitude - j * quarter_high;
  r -= j * quarter_middle;
  r -= j * quarter_low;
  const Float4 r2 = r * r;
  const Float4 sine = polynomial(r2, sine_coefficients) * r2 * r + r;
  const Float4 cosine = polynomial(r2, cosine_coefficients) * r2 * r2 - 0.5f * r2 + 1.0f;
  const Int4 swapped = (octant & 2) != 0;
  const Int4 sine_sign = ((octant & 4) << 29) ^ (bits_of(x) & sign_bit);
  const Int4 cosine_sign = ((octant + 2) & 4) << 29;
  const Float4 sines = from_bits(bits_of(swapped ? cosine : sine) ^ sine_sign);
  const Float4 cosines = from_bits(bits_of(swapped ? sine : cosine) ^ cosine_sign);
  store(s, sines);
  store(c, cosines);
}

Float4 sin_ps(Float4 x) {
  Float4 s, c;
  sincos_ps(x, &s, &c);
  return s;
}

Float4 cos_ps(Float4 x) {
  Float4 s, c;
  sincos_ps(x, &s, &c);
  return c;
}

void complex_exp(Float4 a, Float4 b, Float4* re, Float4* im) {
  const Float4 e = exp_ps(a);
  Float4 s, c;
  sincos_ps(b, &s, &c);
  store(re, e * c);
  store(im, e * s);
}

float horizontal_add_ps(Float4 v) { return (v[0] + v[2]) + (v[1] + v[3]); }

void debug_m128(Float4 v) {
  mexPrintf("<%e %e %e %e>\n", static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]),
            static_cast<double>(v[3]));
}

Float4 _mm_set_doubles(double d0, double d1, double d2, double d3) {
  return Float4{static_cast<float>(d0), static_cast<float>(d1), static_cast<float>(d2), static_cast<float>(d3)};
}
