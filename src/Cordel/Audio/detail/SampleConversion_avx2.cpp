// The AVX2 build of the 24-bit loops; SampleConversion.cpp calls it when the processor has AVX2.

#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>

namespace Cordel::Audio::detail::avx2 {

void int24ToFloat(std::size_t n, unsigned char const* in, float* out) { kernels::int24ToFloat(n, in, out); }
void floatToInt24(std::size_t n, float const* in, unsigned char* out) { kernels::floatToInt24(n, in, out); }

} // namespace Cordel::Audio::detail::avx2
