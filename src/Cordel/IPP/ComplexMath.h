#pragma once
// Double-precision complex numbers for filter design: magnitudes, phases, roots and the
// evaluation of a rational function of a complex variable.

#include <Cordel/common/Export.h>

namespace Cordel::Util {

struct Complex {
    double re;
    double im;
};

// √(re² + im²), without intermediate overflow.
CORDEL_API double hypot(Complex const& z);
// The argument atan2(im, re).
CORDEL_API double atan2(Complex const& z);
// (cos θ, sin θ).
CORDEL_API Complex expj(double theta);
// e^z.
CORDEL_API Complex cexp(Complex const& z);
// The principal square root; the imaginary part takes the sign of z.im (−0 for a real z below
// the axis), and a −0 imaginary part counts as on the axis.
CORDEL_API Complex csqrt(Complex const& z);

// num(z) / den(z), polynomials of degree numDegree and denDegree whose coefficient k is that of
// z^k. A negative degree gives the zero polynomial; a zero denominator gives not a number.
CORDEL_API Complex evaluate(Complex const* num, int numDegree, Complex const* den, int denDegree, Complex const& z);

} // namespace Cordel::Util
