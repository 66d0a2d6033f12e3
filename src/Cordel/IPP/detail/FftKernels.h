#pragma once
// The inner loops of the fast FFT engine, one set per instruction set, chosen once at load time.
//
// Data are split-complex (separate real and imaginary arrays) of n points. The stages are
// decimation in frequency, in place, so the result comes out in bit-reversed order. Twiddle
// tables hold, per stage, contiguous real parts then imaginary parts:
//   radix-2 stage of half size h: w^j (j < h), w = e^(-2πi/(2h));
//   radix-4 stage of quarter size q: w^j, w^2j, w^3j (j < q), w = e^(-2πi/(4q)).
// The tail kernel does the last tailLog radix-2 stages of every block of 2^tailLog points.

namespace Cordel::IPP::detail {

template <typename T>
struct FftKernels {
    void (*deinterleave)(unsigned int n, T const* src, T* re, T* im);
    void (*radix2)(T* re, T* im, unsigned int n, unsigned int h, T const* tw);
    void (*radix4)(T* re, T* im, unsigned int n, unsigned int q, T const* tw);
    void (*tail)(T* re, T* im, unsigned int n);
    unsigned int tailLog; // 0 when there is no tail kernel
    // A wider radix-4 kernel for stages whose quarter size is at least wideQuarter (null if none).
    void (*radix4Wide)(T* re, T* im, unsigned int n, unsigned int q, T const* tw);
    unsigned int wideQuarter;
};

FftKernels<float> const& fftKernelsFloat();
FftKernels<double> const& fftKernelsDouble();

// AVX2 + FMA kernels (FftKernels_avx2.cpp).
void deinterleaveAvx2(unsigned int n, float const* src, float* re, float* im);
void deinterleaveAvx2(unsigned int n, double const* src, double* re, double* im);
void radix2Avx2(float* re, float* im, unsigned int n, unsigned int h, float const* tw);
void radix2Avx2(double* re, double* im, unsigned int n, unsigned int h, double const* tw);
void radix4Avx2(float* re, float* im, unsigned int n, unsigned int q, float const* tw);
void radix4Avx2(double* re, double* im, unsigned int n, unsigned int q, double const* tw);
void tailAvx2(float* re, float* im, unsigned int n);
void tailAvx2(double* re, double* im, unsigned int n);

// AVX-512 kernels (FftKernels_avx512.cpp).
void radix4Avx512(float* re, float* im, unsigned int n, unsigned int q, float const* tw);
void radix4Avx512(double* re, double* im, unsigned int n, unsigned int q, double const* tw);

} // namespace Cordel::IPP::detail
