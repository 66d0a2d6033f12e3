// The AVX2 build of the conversion loops; SampleConversion.cpp calls it when the processor has AVX2.

#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>

namespace Cordel::Audio::detail::avx2 {

void unsigned8ToFloat(std::size_t n, unsigned char const* in, float* out) { kernels::unsigned8ToFloat(n, in, out); }
void int16ToFloat(std::size_t n, unsigned char const* in, float* out) { kernels::int16ToFloat(n, in, out); }
void int24ToFloat(std::size_t n, unsigned char const* in, float* out) { kernels::int24ToFloat(n, in, out); }
void int32ToFloat(std::size_t n, unsigned char const* in, float* out) { kernels::int32ToFloat(n, in, out); }
void floatToInt16(std::size_t n, float const* in, std::int16_t* out) { kernels::floatToInt16(n, in, out); }
void floatToInt32(std::size_t n, float const* in, std::int32_t* out) { kernels::floatToInt32(n, in, out); }
void floatToInt24(std::size_t n, float const* in, unsigned char* out) { kernels::floatToInt24(n, in, out); }

} // namespace Cordel::Audio::detail::avx2
