#pragma once
// Internal: the 80-bit IEEE extended numbers that AIFF uses for its sample rate, big-endian.

#include <cmath>
#include <cstdint>

namespace Cordel::Audio::detail {

inline double extendedToDouble(unsigned char const* p)
{
    int const exponent = ((p[0] & 0x7F) << 8) | p[1];
    std::uint64_t mantissa = 0;
    for (int i = 2; i < 10; ++i)
        mantissa = (mantissa << 8) | p[i];
    if (exponent == 0 && mantissa == 0)
        return 0.0;
    if (exponent == 0x7FFF)
        return HUGE_VAL;
    double const value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
    return (p[0] & 0x80) ? -value : value;
}

inline void doubleToExtended(double value, unsigned char* p)
{
    for (int i = 0; i < 10; ++i)
        p[i] = 0;
    if (!(value > 0))
        return; // sample rates are positive; anything else is written as zero
    int exponent = 0;
    double const fraction = std::frexp(value, &exponent); // value = fraction * 2^exponent, 0.5 <= fraction < 1
    std::uint64_t const mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 64));
    int const biased = exponent - 1 + 16383;
    p[0] = static_cast<unsigned char>(biased >> 8);
    p[1] = static_cast<unsigned char>(biased);
    for (int i = 0; i < 8; ++i)
        p[2 + i] = static_cast<unsigned char>(mantissa >> (56 - 8 * i));
}

} // namespace Cordel::Audio::detail
