#pragma once
// Internal: the loops behind SampleConversion.h, each the exact rule of its format (the results
// are part of what readers and writers promise). They are written for the auto-vectoriser and
// compiled twice, for baseline x86-64 and for AVX2; every operation in them is exact or rounds
// once in the same way on both, so both give the same bits.
//
// Internal linkage on purpose: the two compilations must not be merged by the linker.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::detail::kernels {

// 8-bit unsigned: (x - 128) / 128.
static inline void unsigned8ToFloat(std::size_t n, unsigned char const* __restrict in, float* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i)
        out[i] = (static_cast<float>(in[i]) - 128.0f) * (1.0f / 128.0f);
}

// 16-bit little-endian: x / 32768.
static inline void int16ToFloat(std::size_t n, unsigned char const* __restrict in, float* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i) {
        std::int16_t v;
        std::memcpy(&v, in + 2 * i, 2);
        out[i] = static_cast<float>(v) * (1.0f / 32768.0f);
    }
}

// 24-bit little-endian two's complement: x * 2^-23, exact in single precision. The bytes go to
// the top of a 32-bit word and an arithmetic shift brings the sign down.
static inline void int24ToFloat(std::size_t n, unsigned char const* __restrict in, float* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i) {
        std::uint32_t const word = (static_cast<std::uint32_t>(in[3 * i]) << 8) | (static_cast<std::uint32_t>(in[3 * i + 1]) << 16)
            | (static_cast<std::uint32_t>(in[3 * i + 2]) << 24);
        out[i] = static_cast<float>(static_cast<std::int32_t>(word) >> 8) * 1.1920928955078125e-07f;
    }
}

// 32-bit little-endian: the integer as a float, then x / 2^31.
static inline void int32ToFloat(std::size_t n, unsigned char const* __restrict in, float* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i) {
        std::int32_t v;
        std::memcpy(&v, in + 4 * i, 4);
        out[i] = static_cast<float>(v) * 4.656612873077392578125e-10f;
    }
}

// x * 32768 truncated toward zero, saturated to 16 bits; NaN gives 0. The clamp keeps the value
// inside the 32-bit range, where truncation is defined, and the selects vectorise.
static inline void floatToInt16(std::size_t n, float const* __restrict in, std::int16_t* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i) {
        float v = in[i] * 32768.0f;
        v = v == v ? v : 0.0f;
        v = v < 32767.0f ? v : 32767.0f;
        v = v > -32768.0f ? v : -32768.0f;
        out[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(v));
    }
}

// x * 2^31 truncated toward zero, saturated to 32 bits; NaN gives 0. 2147483520 is the largest
// float below 2^31.
static inline void floatToInt32(std::size_t n, float const* __restrict in, std::int32_t* __restrict out)
{
    for (std::size_t i = 0; i < n; ++i) {
        float v = in[i] * 2147483648.0f;
        bool const high = v >= 2147483648.0f;
        v = v == v ? v : 0.0f;
        v = v < 2147483520.0f ? v : 2147483520.0f;
        v = v > -2147483648.0f ? v : -2147483648.0f;
        std::int32_t const t = static_cast<std::int32_t>(v);
        out[i] = high ? 2147483647 : t;
    }
}

// x * (2^23 - 1) in double, rounded half away from zero, low three bytes little-endian; values
// beyond +-1 wrap rather than clip. The product of a float and 2^23 - 1 is exact in double, so a
// fused multiply-add rounds it no differently. Values too large for 32 bits (far beyond +-1) are
// rare: the first loop, which vectorises, leaves them to a second one with 64-bit integers.
static inline void floatToInt24(std::size_t n, float const* __restrict in, unsigned char* __restrict out)
{
    bool wide = false;
    for (std::size_t i = 0; i < n; ++i) {
        double const x = in[i];
        double const scaled = x * 8388607.0 + (x < 0 ? -0.5 : 0.5);
        bool const fits = std::fabs(scaled) < 2147483647.0;
        wide |= !fits;
        std::int32_t const v = static_cast<std::int32_t>(fits ? scaled : 0.0);
        out[3 * i] = static_cast<unsigned char>(v);
        out[3 * i + 1] = static_cast<unsigned char>(v >> 8);
        out[3 * i + 2] = static_cast<unsigned char>(v >> 16);
    }
    for (std::size_t i = 0; wide && i < n; ++i) {
        double const x = in[i];
        double const scaled = x * 8388607.0 + (x < 0 ? -0.5 : 0.5);
        if (std::fabs(scaled) < 2147483647.0)
            continue;
        std::int64_t const v = std::isfinite(scaled) && std::fabs(scaled) < 9.2e18 ? static_cast<std::int64_t>(scaled) : 0;
        out[3 * i] = static_cast<unsigned char>(v);
        out[3 * i + 1] = static_cast<unsigned char>(v >> 8);
        out[3 * i + 2] = static_cast<unsigned char>(v >> 16);
    }
}

} // namespace Cordel::Audio::detail::kernels
