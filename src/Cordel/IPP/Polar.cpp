#include <Cordel/IPP/Polar.h>

#include <cmath>

namespace Cordel::IPP {

namespace {

float magnitude(float re, float im)
{
    float const squares = re * re + im * im;
    return static_cast<float>(std::sqrt(static_cast<double>(squares)));
}

} // namespace

void Magnitude(unsigned int n, double const* re, double const* im, double* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = std::sqrt(re[i] * re[i] + im[i] * im[i]);
}

void Magnitude(unsigned int n, Complex_Float const* src, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = magnitude(src[i].re, src[i].im);
}

void CartToPolar(unsigned int n, float const* src, float* mag, float* phase)
{
    for (unsigned int i = 0; i < n; ++i) {
        float const re = src[2 * i];
        float const im = src[2 * i + 1];
        mag[i] = magnitude(re, im);
        phase[i] = static_cast<float>(std::atan2(static_cast<double>(im), static_cast<double>(re)));
    }
}

void PolarToCart(unsigned int n, float const* mag, float const* phase, float* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        double const m = mag[i];
        double const p = phase[i];
        dst[2 * i] = static_cast<float>(m * std::cos(p));
        dst[2 * i + 1] = static_cast<float>(m * std::sin(p));
    }
}

} // namespace Cordel::IPP
