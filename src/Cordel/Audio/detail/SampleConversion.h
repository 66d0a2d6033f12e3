#pragma once
// Internal: the sample conversions of the audio readers and writers. The hot ones run an AVX2
// build of the same loops when the processor has it (see SampleKernels.h).

#include <cstddef>
#include <cstdint>

namespace Cordel::Audio::detail {

// To float: 8-bit unsigned (x - 128) / 128; 16-bit x / 2^15; 24-bit x / 2^23; 32-bit x / 2^31.
// Integers are little-endian, packed.
void unsigned8ToFloat(std::size_t n, unsigned char const* in, float* out);
void int16ToFloat(std::size_t n, unsigned char const* in, float* out);
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
void int32ToFloat(std::size_t n, unsigned char const* in, float* out);

// From float: 16-bit x * 2^15 and 32-bit x * 2^31, truncated and saturated (NaN gives 0);
// 24-bit x * (2^23 - 1) rounded half away from zero, wrapping beyond +-1.
void floatToInt16(std::size_t n, float const* in, std::int16_t* out);
void floatToInt32(std::size_t n, float const* in, std::int32_t* out);
void floatToInt24(std::size_t n, float const* in, unsigned char* out);

// Float samples to the bytes of an integer or float file format, little-endian; false when the
// format has no float conversion (8-bit and 64-bit files).
bool encodeFloatSamples(std::size_t samples, unsigned int bytesPerSample, bool isFloat, float const* in, unsigned char* out);

// Reverses the bytes of each sample in place (big-endian files to little-endian order).
void swapSampleBytes(std::size_t samples, unsigned int bytesPerSample, unsigned char* data);

namespace avx2 {
void unsigned8ToFloat(std::size_t n, unsigned char const* in, float* out);
void int16ToFloat(std::size_t n, unsigned char const* in, float* out);
void int24ToFloat(std::size_t n, unsigned char const* in, float* out);
void int32ToFloat(std::size_t n, unsigned char const* in, float* out);
void floatToInt16(std::size_t n, float const* in, std::int16_t* out);
void floatToInt32(std::size_t n, float const* in, std::int32_t* out);
void floatToInt24(std::size_t n, float const* in, unsigned char* out);
} // namespace avx2

} // namespace Cordel::Audio::detail
