#include <Cordel/IPP/Convert.h>

#include <Cordel/IPP/detail/Dispatch.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace Cordel::IPP {

namespace {

// 1 << (shift mod 32) as a signed 32-bit value: a shift of 31 wraps to −2^31, which is kept.
int wrappedPowerOfTwo(int shift)
{
    return static_cast<int>(1u << (static_cast<unsigned int>(shift) & 31u));
}

// 2^exponent for exponents within float's normal range, built from its bits: exact, and without
// the latency of a division or a library call in front of a short vector.
constexpr float powerOfTwo(int exponent)
{
    return std::bit_cast<float>(static_cast<std::uint32_t>(exponent + 127) << 23);
}

// 1 / (1 << s) for every shift s: 2^-s, and -2^-31 where the shift by 31 wraps to -2^31.
constexpr auto shortScaleFactors = [] {
    std::array<float, 32> factors{};
    for (int s = 0; s < 31; ++s)
        factors[s] = powerOfTwo(-s);
    factors[31] = -powerOfTwo(-31);
    return factors;
}();

// The float-to-int conversion is defined in double, but within these scale factors float gives the
// same result for every input, so the kernels work at float width:
// - x·m with m = 2^-s is exact in float unless it leaves float's normal range. Above it the result
//   saturates either way (float rounding is monotonic and 2^31 is a float, so the float product is
//   beyond the int range exactly when the exact one is); below 2^-126 it is 0 either way, since
//   |x·m| < 0.5 even with a half added. Subnormal inputs stay below 2^-126·2^64 = 2^-62 after
//   scaling, so whether the processor flushes them to zero makes no difference.
// - Rounding half away from zero, trunc(v ± 0.5) in double, cannot add the half in float (0.49999997
//   plus 0.5 rounds to 1), but has exact float forms: trunc(v) + trunc(2·(v − trunc(v))), whose
//   fraction and its double are exact, or the sum rounded toward zero (see the kernels).
constexpr int floatScaleLimit = 64;

template <typename From, typename To>
void plain(unsigned int n, From const* src, To* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<To>(src[i]);
}

} // namespace

void Convert(unsigned int n, unsigned char const* src, float* dst) { plain(n, src, dst); }

void Convert(unsigned int n, short const* src, float* dst, int scaleFactor)
{
    detail::dispatch().vector.shortToFloat(n, src, dst, shortScaleFactors[static_cast<unsigned int>(scaleFactor) & 31u]);
}

void Convert(unsigned int n, short const* src, double* dst, int scaleFactor)
{
    double const factor = 1.0 / static_cast<double>(wrappedPowerOfTwo(scaleFactor));
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<double>(src[i]) * factor;
}

void Convert(unsigned int n, int const* src, float* dst, int) { detail::dispatch().vector.intToFloat(n, src, dst); }
void Convert(unsigned int, int const*, double*, int) {}
void Convert(unsigned int, float const*, unsigned char*, int, bool) {}

void Convert(unsigned int n, float const* src, short* dst, int scaleFactor, bool round)
{
    float const multiplier = static_cast<float>(wrappedPowerOfTwo(-scaleFactor));
    detail::dispatch().vector.floatToShort(n, src, dst, multiplier, round ? 0.5f : 0.0f);
}

void Convert(unsigned int n, float const* src, int* dst, int scaleFactor, bool round)
{
    if (scaleFactor >= -floatScaleLimit && scaleFactor <= floatScaleLimit) {
        float const multiplier = powerOfTwo(-scaleFactor);
        if (round)
            detail::dispatch().vector.floatToIntRounded(n, src, dst, multiplier);
        else
            detail::dispatch().vector.floatToInt(n, src, dst, multiplier);
        return;
    }
    // Exactly what pow(2, −scaleFactor) gives, 0 or infinity at the far ends included.
    double const multiplier = std::ldexp(1.0, -scaleFactor);
    for (unsigned int i = 0; i < n; ++i) {
        double v = static_cast<double>(src[i]) * multiplier;
        if (round)
            v = v + (v >= 0.0 ? 0.5 : -0.5);
        v = v > 2147483647.0 ? 2147483647.0 : v;
        v = v < -2147483648.0 ? -2147483648.0 : v;
        dst[i] = v == v ? static_cast<int>(v) : 0;
    }
}

void Convert(unsigned int, double const*, int*, int, bool) {}

void Convert(unsigned int n, float const* src, double* dst) { plain(n, src, dst); }
void Convert(unsigned int n, double const* src, float* dst) { plain(n, src, dst); }

} // namespace Cordel::IPP
