#pragma once
// Internal: the 24-bit loops behind SampleConversion.h, each the exact rule of its format (the
// results are part of what readers and writers promise). They are compiled once per instruction
// set, as the portable build and for the ends of the wider ones; every operation in them is exact
// or rounds once in the same way on all of them, so all give the same bits.
//
// Internal linkage on purpose: the compilations must not be merged by the linker.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::detail::kernels {

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
