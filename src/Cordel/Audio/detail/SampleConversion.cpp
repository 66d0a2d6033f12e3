#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>
#include <Cordel/IPP/Convert.h>

#include <cstring>

namespace Cordel::Audio::detail {

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    IPP::detail::dispatch().int24.toFloat(n, in, out);
}

void floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    IPP::detail::dispatch().int24.fromFloat(n, in, out);
}

void portable::int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    kernels::int24ToFloat(n, in, out);
}

void portable::floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    kernels::floatToInt24(n, in, out);
}

bool encodesFloat(unsigned int bytesPerSample, bool isFloat)
{
    return isFloat ? bytesPerSample == 4 : bytesPerSample >= 2 && bytesPerSample <= 4;
}

void encodeFloatSamples(std::size_t samples, unsigned int bytesPerSample, bool isFloat, float const* in, unsigned char* out)
{
    if (isFloat) {
        if (samples)
            std::memcpy(out, in, samples * 4);
        return;
    }
    switch (bytesPerSample) {
    case 2: IPP::Convert(unsigned(samples), in, reinterpret_cast<short*>(out), -15, false); break;
    case 3: floatToInt24(samples, in, out); break;
    default: IPP::Convert(unsigned(samples), in, reinterpret_cast<int*>(out), -31, false); break;
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
