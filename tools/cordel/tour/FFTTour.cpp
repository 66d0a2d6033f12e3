// Tour stop: spectra and filters.

#include "Tour.h"

#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/IIR.h>
#include <Cordel/common/String.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

double levelDb(std::vector<double> const& x)
{
    double sum = 0;
    for (double v : x)
        sum += v * v;
    return 10 * std::log10(sum / x.size());
}

void spectrumOfATone()
{
    unsigned int const order = 12, n = 1u << order;
    double const rate = 48000, frequency = 1000;
    std::vector<float> tone(n), spectrum(n + 2);
    for (unsigned int j = 0; j < n; ++j)
        tone[j] = static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * frequency * j / rate));
    IPP::FFTState_Float* fft = nullptr;
    IPP::FFTInit(&fft, order);
    IPP::FFTFwd(tone.data(), spectrum.data(), fft, nullptr);
    IPP::FFTFree(fft);
    unsigned int peak = 0;
    double peakMagnitude = 0;
    for (unsigned int k = 0; k <= n / 2; ++k) {
        double const m = std::hypot(spectrum[2 * k], spectrum[2 * k + 1]);
        if (m > peakMagnitude) {
            peakMagnitude = m;
            peak = k;
        }
    }
    TourSay(String("A %1 Hz tone at %2 Hz, %3-point real FFT: peak in bin %4, that is %5 Hz (bins are %6 Hz wide)")
                .Arg(frequency, 0)
                .Arg(rate, 0)
                .Arg(n)
                .Arg(peak)
                .Arg(peak * rate / n, 1)
                .Arg(rate / n, 2));
}

void lowPassOnNoise()
{
    double const rate = 48000, cutoff = 1000, q = std::numbers::sqrt2 / 2;
    double const w = 2 * std::numbers::pi * cutoff / rate;
    double const alpha = std::sin(w) / (2 * q), c = std::cos(w), a0 = 1 + alpha;
    double const taps[6] = {(1 - c) / 2 / a0, (1 - c) / a0, (1 - c) / 2 / a0, 1, -2 * c / a0, (1 - alpha) / a0};
    std::vector<double> noise(48000), filtered(noise.size());
    std::mt19937 gen(1);
    std::uniform_real_distribution<double> d(-0.5, 0.5);
    for (double& v : noise)
        v = d(gen);
    IPP::IIRState_Double* lowPass = nullptr;
    IPP::IIRInit_BiQuad(&lowPass, taps, 1, nullptr);
    IPP::IIR(static_cast<unsigned int>(noise.size()), noise.data(), filtered.data(), lowPass);
    IPP::IIRFree(lowPass);
    TourSay(String("White noise through a %1 Hz biquad low-pass: %2 dB before, %3 dB after")
                .Arg(cutoff, 0)
                .Arg(levelDb(noise), 1)
                .Arg(levelDb(filtered), 1));
}

void spectrumTour()
{
    spectrumOfATone();
    lowPassOnNoise();
}

} // namespace

CORDEL_TOUR_STOP(70, "Spectra and filters: FFT peak of a tone, a low-pass on noise", spectrumTour);

} // namespace CordelTool
