#include <Cordel/IPP/Threshold.h>

#include <cmath>

namespace Cordel::IPP {

namespace {

template <typename T>
void thresholdLT(unsigned int n, T* x, T level)
{
    for (unsigned int i = 0; i < n; ++i)
        x[i] = x[i] < level ? level : x[i];
}

template <typename T>
void thresholdGT(unsigned int n, T* x, T level)
{
    for (unsigned int i = 0; i < n; ++i)
        x[i] = x[i] > level ? level : x[i];
}

template <typename T>
void invertThreshold(unsigned int n, T* x, T level)
{
    for (unsigned int i = 0; i < n; ++i) {
        T const v = x[i];
        if (v == 0)
            x[i] = T(1) / level;
        else if (std::fabs(v) < level)
            x[i] = std::fabs(v) / (v * level);
        else
            x[i] = T(1) / v;
    }
}

template <typename C, typename T>
void invertThresholdComplex(unsigned int n, C* x, T level)
{
    if (x == nullptr || level <= 0)
        return;
    T const floor = level * level;
    for (unsigned int i = 0; i < n; ++i) {
        C const z = x[i];
        T const m = z.re * z.re + z.im * z.im;
        x[i] = m < floor ? C{T(1) / level, 0} : C{z.re / m, -z.im / m};
    }
}

} // namespace

void Trim(unsigned int n, float* x, value_range<float> const& range)
{
    float const lo = range.minimum;
    float const hi = range.maximum;
    for (unsigned int i = 0; i < n; ++i) {
        if (x[i] < lo)
            x[i] = lo;
        else if (x[i] > hi)
            x[i] = hi;
    }
}

void Threshold_LT_InPlace(unsigned int n, float* x, float level) { thresholdLT(n, x, level); }
void Threshold_LT_InPlace(unsigned int n, double* x, double level) { thresholdLT(n, x, level); }
void Threshold_GT_InPlace(unsigned int n, float* x, float level) { thresholdGT(n, x, level); }
void Threshold_GT_InPlace(unsigned int n, double* x, double level) { thresholdGT(n, x, level); }
void Invert_Threshold_InPlace(unsigned int n, float* x, float level) { invertThreshold(n, x, level); }
void Invert_Threshold_InPlace(unsigned int n, double* x, double level) { invertThreshold(n, x, level); }
void Invert_Threshold_InPlace(unsigned int n, Complex_Float* x, float level) { invertThresholdComplex(n, x, level); }
void Invert_Threshold_InPlace(unsigned int n, Complex_Double* x, double level) { invertThresholdComplex(n, x, level); }

} // namespace Cordel::IPP
