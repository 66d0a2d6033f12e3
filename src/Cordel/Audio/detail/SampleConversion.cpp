#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/InstructionSet.h>

#include <cstring>

namespace Cordel::Audio::detail {

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    switch (IPP::ActiveInstructionSet()) {
    case IPP::InstructionSet::AVX512: avx512::int24ToFloat(n, in, out); break;
    case IPP::InstructionSet::AVX2: avx2::int24ToFloat(n, in, out); break;
    default: kernels::int24ToFloat(n, in, out); break;
    }
}

void floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    switch (IPP::ActiveInstructionSet()) {
    case IPP::InstructionSet::AVX512: avx512::floatToInt24(n, in, out); break;
    case IPP::InstructionSet::AVX2: avx2::floatToInt24(n, in, out); break;
    default: kernels::floatToInt24(n, in, out); break;
    }
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
