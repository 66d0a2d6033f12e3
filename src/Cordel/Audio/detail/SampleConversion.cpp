#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>

#include <cstring>

namespace Cordel::Audio::detail {

namespace {

bool const hasAVX2 = __builtin_cpu_supports("avx2");

} // namespace

void unsigned8ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    hasAVX2 ? avx2::unsigned8ToFloat(n, in, out) : kernels::unsigned8ToFloat(n, in, out);
}

void int16ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    hasAVX2 ? avx2::int16ToFloat(n, in, out) : kernels::int16ToFloat(n, in, out);
}

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    hasAVX2 ? avx2::int24ToFloat(n, in, out) : kernels::int24ToFloat(n, in, out);
}

void int32ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    hasAVX2 ? avx2::int32ToFloat(n, in, out) : kernels::int32ToFloat(n, in, out);
}

void floatToInt16(std::size_t n, float const* in, std::int16_t* out)
{
    hasAVX2 ? avx2::floatToInt16(n, in, out) : kernels::floatToInt16(n, in, out);
}

void floatToInt32(std::size_t n, float const* in, std::int32_t* out)
{
    hasAVX2 ? avx2::floatToInt32(n, in, out) : kernels::floatToInt32(n, in, out);
}

void floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    hasAVX2 ? avx2::floatToInt24(n, in, out) : kernels::floatToInt24(n, in, out);
}

bool encodeFloatSamples(std::size_t samples, unsigned int bytesPerSample, bool isFloat, float const* in, unsigned char* out)
{
    if (isFloat) {
        if (bytesPerSample != 4)
            return false;
        if (samples)
            std::memcpy(out, in, samples * 4);
        return true;
    }
    switch (bytesPerSample) {
    case 2: floatToInt16(samples, in, reinterpret_cast<std::int16_t*>(out)); return true;
    case 3: floatToInt24(samples, in, out); return true;
    case 4: floatToInt32(samples, in, reinterpret_cast<std::int32_t*>(out)); return true;
    default: return false;
    }
}

void swapSampleBytes(std::size_t samples, unsigned int bytesPerSample, unsigned char* data)
{
    for (std::size_t i = 0; i < samples; ++i) {
        unsigned char* p = data + i * bytesPerSample;
        for (unsigned int a = 0, b = bytesPerSample - 1; a < b; ++a, --b) {
            unsigned char const t = p[a];
            p[a] = p[b];
            p[b] = t;
        }
    }
}

} // namespace Cordel::Audio::detail
