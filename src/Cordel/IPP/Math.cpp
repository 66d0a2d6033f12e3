#include <Cordel/IPP/Math.h>

#include <cmath>

namespace Cordel::Util {

double Floor(double x) { return std::floor(x); }
double Ceil(double x) { return std::ceil(x); }
double Exp(double x) { return std::exp(x); }
double Pow(double x, double y) { return std::pow(x, y); }
double Sqrt(double x) { return std::sqrt(x); }
double Sin(double x) { return std::sin(x); }
double Cos(double x) { return std::cos(x); }
double Tan(double x) { return std::tan(x); }
double ASin(double x) { return std::asin(x); }
double ACos(double x) { return std::acos(x); }
double ATan(double x) { return std::atan(x); }
double ATan2(double y, double x) { return std::atan2(y, x); }
double Sinh(double x) { return std::sinh(x); }
double Cosh(double x) { return std::cosh(x); }
double Tanh(double x) { return std::tanh(x); }

bool IsFinite(double x) { return std::isfinite(x); }

namespace {

// Stands in for the logarithm of zero: far below any real level, yet finite.
constexpr double logOfZero = -1e35;

bool isTiny(double x) { return x > -1e-36 && x < 1e-36; }

} // namespace

double Log(double x) { return isTiny(x) ? logOfZero : std::log(x); }
double Log10(double x) { return isTiny(x) ? logOfZero : std::log10(x); }
double Log2(double x) { return isTiny(x) ? logOfZero : std::log(x) * 1.4426950408889536; }

double ASinh(double x) { return std::log(x + std::sqrt(x * x + 1)); }

double Frac(double x) { return x - std::floor(x); }

// ln 10 / 20 and 20 / ln 10 in single precision.
float DecibelsToSample(float dB) { return static_cast<float>(std::exp(static_cast<double>(0.115129255f * dB))); }

float SampleToDecibels(float sample)
{
    if (sample < 1e-20f)
        return -400.0f;
    return static_cast<float>(std::log(static_cast<double>(sample))) * 8.685889f;
}

} // namespace Cordel::Util
