#include <Cordel/IPP/Convert.h>

#include "detail/Kernels.h"

#include <cmath>

namespace Cordel::IPP {

namespace {

// 1 << (shift mod 32) as a signed 32-bit value: a shift of 31 wraps to −2^31, which is kept.
int wrappedPowerOfTwo(int shift)
{
    return static_cast<int>(1u << (static_cast<unsigned int>(shift) & 31u));
}

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
    float const factor = 1.0f / static_cast<float>(wrappedPowerOfTwo(scaleFactor));
    detail::kernels().shortToFloat(n, src, dst, factor);
}

void Convert(unsigned int n, short const* src, double* dst, int scaleFactor)
{
    double const factor = 1.0 / static_cast<double>(wrappedPowerOfTwo(scaleFactor));
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<double>(src[i]) * factor;
}

void Convert(unsigned int n, int const* src, float* dst, int) { detail::kernels().intToFloat(n, src, dst); }
void Convert(unsigned int, int const*, double*, int) {}
void Convert(unsigned int, float const*, unsigned char*, int, bool) {}

void Convert(unsigned int n, float const* src, short* dst, int scaleFactor, bool round)
{
    float const multiplier = static_cast<float>(wrappedPowerOfTwo(-scaleFactor));
    detail::kernels().floatToShort(n, src, dst, multiplier, round ? 0.5f : 0.0f);
}

void Convert(unsigned int n, float const* src, int* dst, int scaleFactor, bool round)
{
    // Exactly pow(2, −scaleFactor), without the cost of a general power on short vectors.
    double const multiplier = std::ldexp(1.0, -scaleFactor);
    detail::kernels().floatToInt(n, src, dst, multiplier, round);
}

void Convert(unsigned int, double const*, int*, int, bool) {}

void Convert(unsigned int n, float const* src, double* dst) { plain(n, src, dst); }
void Convert(unsigned int n, double const* src, float* dst) { plain(n, src, dst); }

} // namespace Cordel::IPP
