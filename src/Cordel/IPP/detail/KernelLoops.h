#pragma once
// The hot loops of the vector layer, written once and compiled in one translation unit per
// instruction set (Dispatch.cpp, Kernels_avx2.cpp, Kernels_avx512.cpp). Each file includes this
// header after choosing its vector width; everything here has internal linkage, so the three
// copies never meet at link time.
//
// Every loop states its element's result exactly as the portable definition does, and the
// compiler only widens it. Contraction of a·b + c into one fused instruction would change the
// rounding, so the library is built with -ffp-contract=off.

#include <Cordel/IPP/detail/Kernels.h>

#ifndef CORDEL_KERNEL_VECTOR_BYTES
#error "define CORDEL_KERNEL_VECTOR_BYTES before including KernelLoops.h"
#endif


namespace Cordel::IPP::detail {
namespace {

template <typename T>
void addLoop(unsigned int n, T const* a, T const* b, T* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = a[i] + b[i];
}

template <typename T>
void mulConstantLoop(unsigned int n, T const* src, T* dst, T c)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = src[i] * c;
}

void addProductLoop(unsigned int n, float const* a, float const* b, float* srcDst)
{
    for (unsigned int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] + a[i] * b[i];
}

void shortToFloatLoop(unsigned int n, short const* src, float* dst, float factor)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<float>(src[i]) * factor;
}

// Values beyond the 16-bit range saturate; a value that is not a number becomes 0.
void floatToShortLoop(unsigned int n, float const* src, short* dst, float multiplier, float bias)
{
    for (unsigned int i = 0; i < n; ++i) {
        float v = src[i] * multiplier + bias;
        v = v > 32767.0f ? 32767.0f : v;
        v = v < -32768.0f ? -32768.0f : v;
        v = v == v ? v : 0.0f;
        dst[i] = static_cast<short>(static_cast<int>(v));
    }
}

void intToFloatLoop(unsigned int n, int const* src, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<float>(src[i]);
}

// The definition itself: scaled in double, where the product and the half added for rounding are
// exact, so that a value just below one half never rounds up. Saturates; not a number becomes 0.
template <bool Round>
void floatToIntLoop(unsigned int n, float const* src, int* dst, float multiplier)
{
    for (unsigned int i = 0; i < n; ++i) {
        double v = static_cast<double>(src[i]) * static_cast<double>(multiplier);
        if constexpr (Round)
            v = v + (v >= 0.0 ? 0.5 : -0.5);
        v = v > 2147483647.0 ? 2147483647.0 : v;
        v = v < -2147483648.0 ? -2147483648.0 : v;
        v = v == v ? v : 0.0;
        dst[i] = static_cast<int>(v);
    }
}

template <typename T>
void interleaveLoop(unsigned int n, T const* left, T const* right, T* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        dst[2 * i] = left[i];
        dst[2 * i + 1] = right[i];
    }
}

template <typename T>
void deinterleaveLoop(unsigned int n, T const* src, T* left, T* right)
{
    for (unsigned int i = 0; i < n; ++i) {
        left[i] = src[2 * i];
        right[i] = src[2 * i + 1];
    }
}

template <bool Greater, typename T>
bool replaces(T candidate, T current)
{
    return Greater ? candidate > current : candidate < current;
}

template <bool Greater, typename T>
T extremeScalar(unsigned int n, T const* x)
{
    T m = x[0];
    for (unsigned int i = 1; i < n; ++i)
        if (replaces<Greater>(x[i], m))
            m = x[i];
    return m;
}

// The largest (or smallest) element, the first one kept on ties, and the first element kept when
// it is not a number (no comparison with it succeeds). Every lane starts from x[0], so a leading
// NaN stays in every lane; otherwise the lanes agree with the scalar scan on the value. Only the
// sign of a zero result depends on which element came first, and that rare case is rescanned.
template <bool Greater, typename T>
T extremeLoop(unsigned int n, T const* x)
{
    if (n == 0)
        return 0;
    constexpr unsigned int lanes = CORDEL_KERNEL_VECTOR_BYTES / sizeof(T);
    typedef T Vector __attribute__((vector_size(CORDEL_KERNEL_VECTOR_BYTES)));
    if (n < 2 * lanes)
        return extremeScalar<Greater>(n, x);

    Vector acc;
    for (unsigned int l = 0; l < lanes; ++l)
        acc[l] = x[0];
    unsigned int i = 0;
    for (; i + lanes <= n; i += lanes) {
        Vector v;
        __builtin_memcpy(&v, x + i, sizeof v);
        acc = (Greater ? v > acc : v < acc) ? v : acc;
    }
    T m = acc[0];
    for (unsigned int l = 1; l < lanes; ++l)
        if (replaces<Greater>(acc[l], m))
            m = acc[l];
    for (; i < n; ++i)
        if (replaces<Greater>(x[i], m))
            m = x[i];
    return m == 0 ? extremeScalar<Greater>(n, x) : m;
}

constexpr Kernels makeKernels()
{
    return Kernels{
        addLoop<float>,
        addLoop<double>,
        mulConstantLoop<float>,
        mulConstantLoop<double>,
        addProductLoop,
        shortToFloatLoop,
        floatToShortLoop,
        intToFloatLoop,
        floatToIntLoop<false>,
        floatToIntLoop<true>,
        interleaveLoop<short>,
        interleaveLoop<float>,
        deinterleaveLoop<short>,
        deinterleaveLoop<float>,
        extremeLoop<true, float>,
        extremeLoop<true, double>,
        extremeLoop<false, float>,
        extremeLoop<false, double>,
    };
}

} // namespace
} // namespace Cordel::IPP::detail

