#pragma once
// Internal: the sample conversions of the audio readers and writers. Each is the exact rule of
// its format (the results are part of what readers and writers promise), written as plain loops
// the compiler vectorises.

#include <cmath>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::detail {

// 8-bit unsigned: (x - 128) / 128.
inline void unsigned8ToFloat(unsigned int n, unsigned char const* in, float* out)
{
    constexpr float scale = 1.0f / 128.0f;
    for (unsigned int i = 0; i < n; ++i)
        out[i] = (static_cast<float>(in[i]) - 128.0f) * scale;
}

// 16-bit little-endian: x / 32768.
inline void int16ToFloat(unsigned int n, unsigned char const* in, float* out)
{
    constexpr float scale = 1.0f / 32768.0f;
    for (unsigned int i = 0; i < n; ++i) {
        std::int16_t v;
        std::memcpy(&v, in + 2 * i, 2);
        out[i] = static_cast<float>(v) * scale;
    }
}

// 24-bit little-endian two's complement: x * 2^-23, exact in single precision.
inline std::int32_t int24At(unsigned char const* p)
{
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(p[0]) << 8) | (static_cast<std::uint32_t>(p[1]) << 16)
                                     | (static_cast<std::uint32_t>(p[2]) << 24))
        >> 8;
}

inline void int24ToFloat(unsigned int n, unsigned char const* in, float* out)
{
    constexpr float scale = 1.1920928955078125e-07f;
    for (unsigned int i = 0; i < n; ++i)
        out[i] = static_cast<float>(int24At(in + 3 * i)) * scale;
}

// 32-bit little-endian: the integer as a float, then x / 2^31.
inline void int32ToFloat(unsigned int n, unsigned char const* in, float* out)
{
    constexpr float scale = 4.656612873077392578125e-10f;
    for (unsigned int i = 0; i < n; ++i) {
        std::int32_t v;
        std::memcpy(&v, in + 4 * i, 4);
        out[i] = static_cast<float>(v) * scale;
    }
}

// Float to integer: the product truncated toward zero, saturated to the integer's range (NaN gives 0).
template <typename Int>
inline Int truncateSaturated(float v, float lowest, float highest)
{
    if (v >= highest)
        return static_cast<Int>(highest);
    if (v <= lowest)
        return static_cast<Int>(lowest);
    return v == v ? static_cast<Int>(v) : Int(0);
}

// x * 32768, saturated to 16 bits, no rounding.
inline void floatToInt16(unsigned int n, float const* in, std::int16_t* out)
{
    for (unsigned int i = 0; i < n; ++i)
        out[i] = truncateSaturated<std::int16_t>(in[i] * 32768.0f, -32768.0f, 32767.0f);
}

// x * 2^31, saturated to 32 bits, no rounding.
inline void floatToInt32(unsigned int n, float const* in, std::int32_t* out)
{
    for (unsigned int i = 0; i < n; ++i) {
        float const v = in[i] * 2147483648.0f;
        out[i] = v >= 2147483648.0f ? 2147483647 : truncateSaturated<std::int32_t>(v, -2147483648.0f, 2147483520.0f);
    }
}

// x * (2^23 - 1) in double, rounded half away from zero, low three bytes little-endian; values
// beyond +-1 wrap rather than clip.
inline void floatToInt24(unsigned int n, float const* in, unsigned char* out)
{
    for (unsigned int i = 0; i < n; ++i) {
        double const x = in[i];
        double const scaled = x * 8388607.0 + (x < 0 ? -0.5 : 0.5);
        std::int64_t const v = std::isfinite(scaled) && std::fabs(scaled) < 9.2e18 ? static_cast<std::int64_t>(scaled) : 0;
        out[3 * i] = static_cast<unsigned char>(v);
        out[3 * i + 1] = static_cast<unsigned char>(v >> 8);
        out[3 * i + 2] = static_cast<unsigned char>(v >> 16);
    }
}

// Reverses the bytes of each sample in place (big-endian files to little-endian order).
inline void swapSampleBytes(unsigned int samples, unsigned int bytesPerSample, unsigned char* data)
{
    for (unsigned int i = 0; i < samples; ++i) {
        unsigned char* p = data + std::size_t(i) * bytesPerSample;
        for (unsigned int a = 0, b = bytesPerSample - 1; a < b; ++a, --b) {
            unsigned char const t = p[a];
            p[a] = p[b];
            p[b] = t;
        }
    }
}

} // namespace Cordel::Audio::detail

namespace Cordel::Audio::detail {

// Float samples to the bytes of an integer or float file format, little-endian; false when the
// format has no float conversion (8-bit and 64-bit files).
inline bool encodeFloatSamples(unsigned int samples, unsigned int bytesPerSample, bool isFloat, float const* in,
                               unsigned char* out)
{
    if (isFloat) {
        if (bytesPerSample != 4)
            return false;
        std::memcpy(out, in, std::size_t(samples) * 4);
        return true;
    }
    switch (bytesPerSample) {
    case 2: floatToInt16(samples, in, reinterpret_cast<std::int16_t*>(out)); return true;
    case 3: floatToInt24(samples, in, out); return true;
    case 4: floatToInt32(samples, in, reinterpret_cast<std::int32_t*>(out)); return true;
    default: return false;
    }
}

} // namespace Cordel::Audio::detail
