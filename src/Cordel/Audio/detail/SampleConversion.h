#pragma once
// Internal: the sample conversions that only audio files need. The 16- and 32-bit integer rules
// are the vector layer's (IPP::Convert); the 24-bit ones are our own, with an AVX2 and an AVX-512
// build of their hot loops (see SampleKernels.h) reached through the dispatch table.

#include <Cordel/IPP/detail/Dispatch.h>

#include <cstddef>

namespace Cordel::Audio::detail {

// Packed little-endian 24-bit two's complement to x / 2^23.
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
// x * (2^23 - 1) rounded half away from zero, low three bytes little-endian; wraps beyond +-1.
void floatToInt24(std::size_t n, float const* in, unsigned char* out);

// Float samples to the bytes of an integer or float file format, little-endian: 16-bit x * 2^15
// and 32-bit x * 2^31, both truncated and saturated (NaN gives 0), 24-bit as above, float as it
// is. Only for formats that encodesFloat accepts (8-bit and 64-bit files have no float conversion).
void encodeFloatSamples(std::size_t samples, unsigned int bytesPerSample, bool isFloat, float const* in, unsigned char* out);
bool encodesFloat(unsigned int bytesPerSample, bool isFloat);

// Reverses the bytes of each sample in place (big-endian files to little-endian order).
void swapSampleBytes(std::size_t samples, unsigned int bytesPerSample, unsigned char* data);

namespace portable {
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
void floatToInt24(std::size_t n, float const* in, unsigned char* out);
} // namespace portable

namespace avx2 {
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
void floatToInt24(std::size_t n, float const* in, unsigned char* out);
} // namespace avx2

namespace avx512 {
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
void floatToInt24(std::size_t n, float const* in, unsigned char* out);
} // namespace avx512

// The 24-bit loops' entries in the dispatch table.
inline constexpr IPP::detail::Int24Entry int24Portable{portable::int24ToFloat, portable::floatToInt24};
inline constexpr IPP::detail::Int24Entry int24Avx2{avx2::int24ToFloat, avx2::floatToInt24};
inline constexpr IPP::detail::Int24Entry int24Avx512{avx512::int24ToFloat, avx512::floatToInt24};

} // namespace Cordel::Audio::detail
