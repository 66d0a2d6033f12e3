#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>
#include <Cordel/IPP/Convert.h>

#include <cstring>

namespace Cordel::Audio::detail {

namespace {

bool const hasAVX2 = __builtin_cpu_supports("avx2");

} // namespace

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    hasAVX2 ? avx2::int24ToFloat(n, in, out) : kernels::int24ToFloat(n, in, out);
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
    case 2: IPP::Convert(unsigned(samples), in, reinterpret_cast<short*>(out), -15, false); return true;
    case 3: floatToInt24(samples, in, out); return true;
    case 4: IPP::Convert(unsigned(samples), in, reinterpret_cast<int*>(out), -31, false); return true;
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
