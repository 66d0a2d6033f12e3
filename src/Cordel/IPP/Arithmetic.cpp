#include <Cordel/IPP/Arithmetic.h>

#include <Cordel/IPP/detail/Dispatch.h>

#include <cmath>

namespace Cordel::IPP {

namespace {

template <typename T>
void addConstant(unsigned int n, T const* src, T c, T* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = src[i] + c;
}

// Integer sums wrap instead of saturating, so they are formed in unsigned arithmetic.
void addConstantWrapping(unsigned int n, int const* src, int c, int* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<int>(static_cast<unsigned int>(src[i]) + static_cast<unsigned int>(c));
}

template <typename T>
void subConstant(unsigned int n, T* x, T c)
{
    for (unsigned int i = 0; i < n; ++i)
        x[i] = x[i] - c;
}

template <typename T>
void subConstantRev(unsigned int n, T* x, T c)
{
    for (unsigned int i = 0; i < n; ++i)
        x[i] = c - x[i];
}

template <typename T>
void sub(unsigned int n, T const* src, T* srcDst)
{
    for (unsigned int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] - src[i];
}

template <typename T>
void mul(unsigned int n, T const* a, T const* b, T* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = a[i] * b[i];
}

template <typename C>
void mulComplex(unsigned int n, C const* a, C const* b, C* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        C const x = a[i];
        C const y = b[i];
        dst[i] = C{x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
    }
}

template <typename T>
void normalize(unsigned int n, T const* src, T* dst, T subtrahend, T divisor)
{
    T const factor = T(1) / divisor;
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = (src[i] - subtrahend) * factor;
}

template <typename T>
void flip(unsigned int n, T const* src, T* dst)
{
    for (unsigned int j = 0; j < n; ++j)
        dst[n - 1 - j] = src[j];
}

} // namespace

void AddConstant_InPlace(unsigned int n, float* x, float c) { addConstant(n, x, c, x); }
void AddConstant_InPlace(unsigned int n, double* x, double c) { addConstant(n, x, c, x); }
void AddConstant_InPlace(unsigned int n, int* x, int c, int) { addConstantWrapping(n, x, c, x); }
void AddConstant(unsigned int n, float const* src, float c, float* dst) { addConstant(n, src, c, dst); }
void AddConstant(unsigned int n, int const* src, int c, int* dst, int) { addConstantWrapping(n, src, c, dst); }

void Add_InPlace(unsigned int n, float const* src, float* srcDst) { detail::dispatch().vector.addFloat(n, srcDst, src, srcDst); }
void Add_InPlace(unsigned int n, double const* src, double* srcDst) { detail::dispatch().vector.addDouble(n, srcDst, src, srcDst); }
void Add_InPlace(unsigned int, short const*, short*, int) {}
void Add(unsigned int n, float const* a, float const* b, float* dst) { detail::dispatch().vector.addFloat(n, a, b, dst); }
void Add(unsigned int n, double const* a, double const* b, double* dst) { detail::dispatch().vector.addDouble(n, a, b, dst); }
void AddProduct(unsigned int n, float const* a, float const* b, float* srcDst) { detail::dispatch().vector.addProductFloat(n, a, b, srcDst); }

void SubConstant_InPlace(unsigned int n, float* x, float c) { subConstant(n, x, c); }
void SubConstant_InPlace(unsigned int n, double* x, double c) { subConstant(n, x, c); }
void SubConstantRev_InPlace(unsigned int n, float* x, float c) { subConstantRev(n, x, c); }
void SubConstantRev_InPlace(unsigned int n, double* x, double c) { subConstantRev(n, x, c); }
void Sub_InPlace(unsigned int n, float const* src, float* srcDst) { sub(n, src, srcDst); }
void Sub_InPlace(unsigned int n, double const* src, double* srcDst) { sub(n, src, srcDst); }

void MulConstant_InPlace(unsigned int n, float* x, float c) { detail::dispatch().vector.mulConstantFloat(n, x, x, c); }
void MulConstant_InPlace(unsigned int n, double* x, double c) { detail::dispatch().vector.mulConstantDouble(n, x, x, c); }
void MulConstant_InPlace(unsigned int, short*, short, int) {}
void MulConstant(unsigned int n, float const* src, float* dst, float c) { detail::dispatch().vector.mulConstantFloat(n, src, dst, c); }
void MulConstant(unsigned int n, double const* src, double* dst, double c) { detail::dispatch().vector.mulConstantDouble(n, src, dst, c); }

void Mul_InPlace(unsigned int n, float const* src, float* srcDst) { mul(n, src, srcDst, srcDst); }
void Mul_InPlace(unsigned int n, double const* src, double* srcDst) { mul(n, src, srcDst, srcDst); }
void Mul_InPlace(unsigned int n, Complex_Float const* src, Complex_Float* srcDst) { mulComplex(n, src, srcDst, srcDst); }
void Mul_InPlace(unsigned int n, Complex_Double const* src, Complex_Double* srcDst) { mulComplex(n, src, srcDst, srcDst); }
void Mul(unsigned int n, float const* a, float const* b, float* dst) { mul(n, a, b, dst); }
void Mul(unsigned int n, double const* a, double const* b, double* dst) { mul(n, a, b, dst); }
void Mul(unsigned int n, Complex_Float const* a, Complex_Float const* b, Complex_Float* dst) { mulComplex(n, a, b, dst); }

void DivConstant_InPlace(unsigned int, float*, float) {}
void DivConstant_InPlace(unsigned int, double*, double) {}
void Div_InPlace(unsigned int, float const*, float*) {}
void Div_InPlace(unsigned int, double const*, double*) {}

void Div(unsigned int n, float const* a, float const* b, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = a[i] / b[i];
}

void Ln(unsigned int n, double const* src, double* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = std::log(src[i]);
}

void Exp_Prec11(unsigned int n, float const* src, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = std::exp(src[i]);
}

void Normalize(unsigned int n, float const* src, float* dst, float sub, float div) { normalize(n, src, dst, sub, div); }
void Normalize(unsigned int n, double const* src, double* dst, double sub, double div) { normalize(n, src, dst, sub, div); }

void Abs(unsigned int, float const*, float*) {}
void Abs(unsigned int, double const*, double*) {}
void Abs_InPlace(unsigned int, float*) {}
void Abs_InPlace(unsigned int, double*) {}

void Flip(unsigned int n, float const* src, float* dst) { flip(n, src, dst); }
void Flip(unsigned int n, double const* src, double* dst) { flip(n, src, dst); }
void Flip_InPlace(unsigned int, float*) {}
void Flip_InPlace(unsigned int, double*) {}

void Convolve(unsigned int, float const*, unsigned int, float const*, float*) {}
void Convolve(unsigned int, double const*, unsigned int, double const*, double*) {}

} // namespace Cordel::IPP
