// Tour stop: the vector layer, windows and generators.

#include "Tour.h"

#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Generate.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/Statistics.h>
#include <Cordel/IPP/Window.h>
#include <Cordel/IPP/Math.h>

#include <cmath>
#include <string>

using namespace Cordel;

namespace CordelTool {

namespace {

char const* instructionSetName(IPP::InstructionSet set)
{
    switch (set) {
    case IPP::InstructionSet::AVX512:
        return "AVX-512";
    case IPP::InstructionSet::AVX2:
        return "AVX2";
    case IPP::InstructionSet::Portable:
        break;
    }
    return "portable code";
}

void vectorTour()
{
    TourSay(String("The hot loops run on %1, picked when the library loaded.").Arg(instructionSetName(IPP::ActiveInstructionSet())));

    unsigned int const points = 17;
    aligned_vector<float> window(points);
    IPP::Set(points, window.data(), 1.0f);
    IPP::WindowHann(points, window.data());
    TourSay("A Hann window of 17 points, applied to ones:");
    for (unsigned int i = 0; i < points; ++i) {
        auto const bar = static_cast<int>(std::lround(window[i] * 40));
        TourSay(String("  %1 %2").Arg(window[i], 3, 'f').Arg(String(std::string(bar, '#'))));
    }

    unsigned int const n = 4800;
    aligned_vector<float> tone(n);
    IPP::GenerateTone(n, tone.data(), 0.5f, 48);
    float const peak = IPP::Max(n, tone.data());
    float const rms = IPP::NormL2(n, tone.data()) / std::sqrt(static_cast<float>(n));
    TourSay(String("A tone of amplitude 0.5, 48 samples per cycle (1 kHz at 48 kHz), %1 samples:").Arg(n));
    TourSay(String("  peak %1 = %2 dBFS, RMS %3 = %4 dBFS")
                .Arg(peak, 4, 'f')
                .Arg(Util::SampleToDecibels(peak), 2, 'f')
                .Arg(rms, 4, 'f')
                .Arg(Util::SampleToDecibels(rms), 2, 'f'));
    IPP::MulConstant_InPlace(n, tone.data(), Util::DecibelsToSample(-6.0f));
    TourSay(String("  lowered by 6 dB with MulConstant: peak %1 dBFS").Arg(Util::SampleToDecibels(IPP::Max(n, tone.data())), 2, 'f'));
}

} // namespace

CORDEL_TOUR_STOP(60, "Vectors: windows, a generated tone and its level in decibels", vectorTour);

} // namespace CordelTool
