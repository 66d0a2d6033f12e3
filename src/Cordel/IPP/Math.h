#pragma once
// Scalar math: thin wrappers over the C library, logarithms guarded against zero, and decibels.

#include <Cordel/common/Export.h>

namespace Cordel::Util {

CORDEL_API double Floor(double x);
CORDEL_API double Ceil(double x);
CORDEL_API double Exp(double x);
CORDEL_API double Pow(double x, double y);
CORDEL_API double Sqrt(double x);
CORDEL_API double Sin(double x);
CORDEL_API double Cos(double x);
CORDEL_API double Tan(double x);
CORDEL_API double ASin(double x);
CORDEL_API double ACos(double x);
CORDEL_API double ATan(double x);
CORDEL_API double ATan2(double y, double x);
CORDEL_API double Sinh(double x);
CORDEL_API double Cosh(double x);
CORDEL_API double Tanh(double x);

// True when x is neither infinite nor not a number.
CORDEL_API bool IsFinite(double x);

// Logarithms that give −1e35 instead of −∞ for zero and for tiny values of either sign
// (−1e-36 < x < 1e-36); negative x otherwise gives not a number.
CORDEL_API double Log(double x);
CORDEL_API double Log10(double x);
CORDEL_API double Log2(double x);

// ln(x + √(x² + 1)).
CORDEL_API double ASinh(double x);

// x − floor(x): Frac(−0.25) is 0.75.
CORDEL_API double Frac(double x);

// The gain factor of a level in decibels.
CORDEL_API float DecibelsToSample(float dB);

// The level of a gain factor in decibels; −400 for anything below 1e-20, negative values included.
CORDEL_API float SampleToDecibels(float sample);

} // namespace Cordel::Util
