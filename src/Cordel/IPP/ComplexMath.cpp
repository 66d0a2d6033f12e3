#include <Cordel/IPP/ComplexMath.h>

#include <cmath>

namespace Cordel::Util {

namespace {

Complex times(Complex const& a, Complex const& b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }

// Horner's scheme from the highest coefficient down.
Complex polynomial(Complex const* c, int degree, Complex const& z)
{
    if (degree < 0)
        return {0, 0};
    Complex value = times({0, 0}, z);
    value = {value.re + c[degree].re, value.im + c[degree].im};
    for (int k = degree - 1; k >= 0; --k) {
        value = times(value, z);
        value = {value.re + c[k].re, value.im + c[k].im};
    }
    return value;
}

double rootOrZero(double x) { return x < 0 ? 0.0 : std::sqrt(x); }

} // namespace

double hypot(Complex const& z) { return std::hypot(z.re, z.im); }
double atan2(Complex const& z) { return std::atan2(z.im, z.re); }
Complex expj(double theta) { return {std::cos(theta), std::sin(theta)}; }

Complex cexp(Complex const& z)
{
    double const scale = std::exp(z.re);
    return {scale * std::cos(z.im), scale * std::sin(z.im)};
}

Complex csqrt(Complex const& z)
{
    double const r = hypot(z);
    Complex root{rootOrZero((r + z.re) / 2), rootOrZero((r - z.re) / 2)};
    if (z.im < 0)
        root.im = -root.im;
    return root;
}

Complex evaluate(Complex const* num, int numDegree, Complex const* den, int denDegree, Complex const& z)
{
    Complex const q = polynomial(den, denDegree, z);
    Complex const p = polynomial(num, numDegree, z);
    double const norm = q.re * q.re + q.im * q.im;
    return {(p.re * q.re + p.im * q.im) / norm, (p.im * q.re - p.re * q.im) / norm};
}

} // namespace Cordel::Util
