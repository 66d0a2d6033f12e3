#include <Cordel/IPP/Window.h>

#include <cmath>

namespace Cordel::IPP {

namespace {

// 2π and 4π as the single-precision constants the steps are formed with.
constexpr float twoPi = 6.2831855f;
constexpr float fourPi = 12.566371f;

float divisor(unsigned int n) { return static_cast<float>(n - 1); }

// cos(i·step) with i·step formed in the precision of the window, the cosine in double.
float cosine(float step, unsigned int i) { return static_cast<float>(std::cos(static_cast<double>(static_cast<float>(i) * step))); }
double cosine(double step, unsigned int i) { return std::cos(static_cast<double>(i) * step); }

// Applies w(i) for every sample, where T is the precision the window is evaluated in.
template <typename T, typename Weight>
void apply(unsigned int n, T* x, Weight weight)
{
    if (n < 2)
        return;
    for (unsigned int i = 0; i < n; ++i)
        x[i] *= weight(i);
}

template <typename T>
void bartlett(unsigned int n, T* x)
{
    T const step = 2.0f / divisor(n);
    unsigned int const half = (n - 1) / 2;
    apply(n, x, [=](unsigned int i) {
        T const rise = static_cast<T>(i) * step;
        return i <= half ? rise : T(2) - rise;
    });
}

template <typename T>
void hann(unsigned int n, T* x)
{
    T const step = twoPi / divisor(n);
    apply(n, x, [=](unsigned int i) { return T(0.5) - T(0.5) * cosine(step, i); });
}

// 0.54f and 0.46f, the constants the window has always been evaluated with.
template <typename T>
void hamming(unsigned int n, T* x)
{
    T const step = twoPi / divisor(n);
    T const a0 = static_cast<T>(0.5399999991059303);
    T const a1 = static_cast<T>(0.46000000089406967);
    apply(n, x, [=](unsigned int i) { return a0 - a1 * cosine(step, i); });
}

template <typename T>
void blackman(unsigned int n, T* x, float alphaIn)
{
    T const step1 = twoPi / divisor(n);
    T const step2 = fourPi / divisor(n);
    T const alpha = alphaIn;
    T const a0 = (alpha + T(1)) / T(2);
    T const a2 = alpha / T(2);
    apply(n, x, [=](unsigned int i) { return a0 - T(0.5) * cosine(step1, i) - a2 * cosine(step2, i); });
}

// The modified Bessel function of the first kind, order 0, by its power series: the sum of the
// squares of (x/2)^k / k!, stopping once a term adds less than 1e-10 of the sum, or after term 49.
double besselI0(double x)
{
    double const half = x / 2;
    double term = 1;
    double sum = 1;
    for (int k = 1; k <= 49; ++k) {
        term = term * half / k;
        double const square = term * term;
        sum += square;
        if (square < 1e-10 * sum)
            break;
    }
    return sum;
}

template <typename T>
void kaiser(unsigned int n, T* x, float alphaIn)
{
    T const middle = divisor(n) * 0.5f;
    T const alpha = alphaIn;
    double const denominator = besselI0(static_cast<double>(alpha * middle));
    apply(n, x, [=](unsigned int i) {
        T const offset = static_cast<T>(i) - middle;
        T const argument = alpha * std::sqrt(middle * middle - offset * offset);
        return static_cast<T>(besselI0(static_cast<double>(argument)) / denominator);
    });
}

} // namespace

void WindowBartlett(unsigned int n, float* x) { bartlett(n, x); }
void WindowBartlett(unsigned int n, double* x) { bartlett(n, x); }
void WindowHann(unsigned int n, float* x) { hann(n, x); }
void WindowHann(unsigned int n, double* x) { hann(n, x); }
void WindowHamming(unsigned int n, float* x) { hamming(n, x); }
void WindowHamming(unsigned int n, double* x) { hamming(n, x); }
void WindowBlackman(unsigned int n, float* x, float alpha) { blackman(n, x, alpha); }
void WindowBlackman(unsigned int n, double* x, float alpha) { blackman(n, x, alpha); }
void WindowKaiser(unsigned int n, float* x, float alpha) { kaiser(n, x, alpha); }
void WindowKaiser(unsigned int n, double* x, float alpha) { kaiser(n, x, alpha); }

} // namespace Cordel::IPP
