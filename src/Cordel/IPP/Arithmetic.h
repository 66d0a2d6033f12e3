#pragma once
// Element-wise arithmetic on vectors.
//
// Like every member of the vector layer: the count comes first, sources before destinations, the
// _InPlace forms read and write their last array, nothing is checked and nothing is reported; a
// count of 0 does nothing. Members documented as inert keep their interface but return at once
// without touching their arguments.

#include <Cordel/IPP/Complex.h>
#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// x += c.
CORDEL_API void AddConstant_InPlace(unsigned int n, float* x, float c);
CORDEL_API void AddConstant_InPlace(unsigned int n, double* x, double c);
// x += c, wrapping on overflow; the scale factor is ignored.
CORDEL_API void AddConstant_InPlace(unsigned int n, int* x, int c, int scaleFactor);

// dst = src + c.
CORDEL_API void AddConstant(unsigned int n, float const* src, float c, float* dst);
// dst = src + c, wrapping on overflow; the scale factor is ignored.
CORDEL_API void AddConstant(unsigned int n, int const* src, int c, int* dst, int scaleFactor);

// srcDst += src.
CORDEL_API void Add_InPlace(unsigned int n, float const* src, float* srcDst);
CORDEL_API void Add_InPlace(unsigned int n, double const* src, double* srcDst);
// Inert.
CORDEL_API void Add_InPlace(unsigned int n, short const* src, short* srcDst, int scaleFactor);

// dst = a + b.
CORDEL_API void Add(unsigned int n, float const* a, float const* b, float* dst);
CORDEL_API void Add(unsigned int n, double const* a, double const* b, double* dst);

// srcDst += a·b, the product rounded before it is added.
CORDEL_API void AddProduct(unsigned int n, float const* a, float const* b, float* srcDst);

// x -= c.
CORDEL_API void SubConstant_InPlace(unsigned int n, float* x, float c);
CORDEL_API void SubConstant_InPlace(unsigned int n, double* x, double c);

// x = c - x.
CORDEL_API void SubConstantRev_InPlace(unsigned int n, float* x, float c);
CORDEL_API void SubConstantRev_InPlace(unsigned int n, double* x, double c);

// srcDst = srcDst - src.
CORDEL_API void Sub_InPlace(unsigned int n, float const* src, float* srcDst);
CORDEL_API void Sub_InPlace(unsigned int n, double const* src, double* srcDst);

// x *= c.
CORDEL_API void MulConstant_InPlace(unsigned int n, float* x, float c);
CORDEL_API void MulConstant_InPlace(unsigned int n, double* x, double c);
// Inert.
CORDEL_API void MulConstant_InPlace(unsigned int n, short* x, short c, int scaleFactor);

// dst = src·c (the constant comes last here, after the destination).
CORDEL_API void MulConstant(unsigned int n, float const* src, float* dst, float c);
CORDEL_API void MulConstant(unsigned int n, double const* src, double* dst, double c);

// srcDst *= src.
CORDEL_API void Mul_InPlace(unsigned int n, float const* src, float* srcDst);
CORDEL_API void Mul_InPlace(unsigned int n, double const* src, double* srcDst);
// srcDst = src·srcDst, complex.
CORDEL_API void Mul_InPlace(unsigned int n, Complex_Float const* src, Complex_Float* srcDst);
CORDEL_API void Mul_InPlace(unsigned int n, Complex_Double const* src, Complex_Double* srcDst);

// dst = a·b.
CORDEL_API void Mul(unsigned int n, float const* a, float const* b, float* dst);
CORDEL_API void Mul(unsigned int n, double const* a, double const* b, double* dst);
// dst = a·b, complex: (a.re·b.re − a.im·b.im, a.re·b.im + a.im·b.re).
CORDEL_API void Mul(unsigned int n, Complex_Float const* a, Complex_Float const* b, Complex_Float* dst);

// Inert.
CORDEL_API void DivConstant_InPlace(unsigned int n, float* x, float c);
CORDEL_API void DivConstant_InPlace(unsigned int n, double* x, double c);
CORDEL_API void Div_InPlace(unsigned int n, float const* src, float* srcDst);
CORDEL_API void Div_InPlace(unsigned int n, double const* src, double* srcDst);

// dst = a / b, the first source over the second.
CORDEL_API void Div(unsigned int n, float const* a, float const* b, float* dst);

// dst = ln(src).
CORDEL_API void Ln(unsigned int n, double const* src, double* dst);

// dst = e^src in single precision.
CORDEL_API void Exp_Prec11(unsigned int n, float const* src, float* dst);

// dst = (src − sub)·(1/div); the reciprocal is taken once.
CORDEL_API void Normalize(unsigned int n, float const* src, float* dst, float sub, float div);
CORDEL_API void Normalize(unsigned int n, double const* src, double* dst, double sub, double div);

// Inert.
CORDEL_API void Abs(unsigned int n, float const* src, float* dst);
CORDEL_API void Abs(unsigned int n, double const* src, double* dst);
CORDEL_API void Abs_InPlace(unsigned int n, float* x);
CORDEL_API void Abs_InPlace(unsigned int n, double* x);

// dst[n−1−j] = src[j]; the ranges must not overlap.
CORDEL_API void Flip(unsigned int n, float const* src, float* dst);
CORDEL_API void Flip(unsigned int n, double const* src, double* dst);
// Inert.
CORDEL_API void Flip_InPlace(unsigned int n, float* x);
CORDEL_API void Flip_InPlace(unsigned int n, double* x);

// Inert.
CORDEL_API void Convolve(unsigned int n1, float const* a, unsigned int n2, float const* b, float* dst);
CORDEL_API void Convolve(unsigned int n1, double const* a, unsigned int n2, double const* b, double* dst);

} // namespace Cordel::IPP
