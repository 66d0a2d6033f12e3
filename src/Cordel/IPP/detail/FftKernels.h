#pragma once
// The inner loops of the fast FFT engine, one set per instruction set.
//
// The engine is a Stockham transform of radix 8 and 4 on split-complex data: every pass reads one
// buffer and writes the other, so the result comes out in natural order and no bit-reversal pass
// is needed. The first pass may read interleaved pairs and the last one may write them, so that
// converting between the caller's layout and the split one costs no pass of its own.
//
// A radix-R pass over sub-transforms of n points (stride s = N/n, g = n/R groups) reads
// x[m + k·N/R], k < R, for m = i + s·p (i < s, p < g), and writes y[i + s·(R·p + k)]: the k-th
// output of the R-point DFT, twiddled by w^(k·p), w = e^(-2πi/n).
// When s is at least the register width, a register covers consecutive i and the twiddles are
// one value per p (broadcast); when s is narrower, a register covers several p and the outputs
// are interleaved in blocks of s before they are stored, with twiddles tabulated per m.
// The last pass (p = 0 only) needs no twiddles.

#include <Cordel/IPP/detail/Dispatch.h>

#include <cstddef>

namespace Cordel::IPP::detail {

template <typename T>
struct FftPass {
    unsigned int radix;  // 8, 4, or 2 (only as the whole transform)
    unsigned int stride; // s
    unsigned int groups; // g = n/R
    // w^kp for k = 1 .. R−1, real and imaginary parts, in the order the pass reads them: `count`
    // being g when s is at least the register width, 2(R−1) scalars per p (re, im, re, im, ...);
    // otherwise count = N/R, one value per m, in blocks of 2(R−1) registers per register of m.
    // Null for the last pass.
    T const* twiddles;
    unsigned int count;
};

enum : unsigned int {
    fftInInterleaved = 1,  // input is n interleaved pairs at inRe (inIm unused)
    fftOutInterleaved = 2, // output likewise at outRe
    // Inverse: real and imaginary parts exchanged on the way in and out (which turns the forward
    // transform into the inverse one) and the output multiplied by the given scale.
    fftInverse = 4,
};

// The working buffers are padded by one cache line after every 2 KiB, so that the power-of-two
// distances between the streams of a pass do not map them all to the same few cache sets.
template <typename T>
struct FftPadding {
    static constexpr unsigned int chunkLog = sizeof(T) == 4 ? 9 : 8;
    static constexpr unsigned int pad = 64 / sizeof(T);
    static constexpr std::size_t length(std::size_t n) { return n + (n >> chunkLog) * pad; }
};

template <typename T>
struct FftPlan {
    static constexpr unsigned int maxPasses = 16;
    unsigned int size = 0;
    unsigned int passCount = 0;
    FftPass<T> passes[maxPasses] = {};
    // The two working buffers the passes alternate between: pass i writes buffer i % 2. Neither
    // may be the caller's input or output. The first pass may read one of them and the last pass
    // write the one it does not read: they then use them unpadded.
    T* re[2] = {};
    T* im[2] = {};
    // The first pass's twiddles in the lane order of the kernels' paired reads (see
    // FftKernels::pairedLanes), when they have one.
    T const* pairedTwiddles = nullptr;
};

// The radices of the passes: radix 8 as far as the order allows (fewer passes over memory), after
// the leading radix-4 passes asked for; or radix 4 only. The last pass is the one of 4 or 2 points
// when there is one.
struct Radices {
    unsigned int count = 0;
    unsigned int radix[FftPlan<float>::maxPasses] = {};
    constexpr void add(unsigned int r) { radix[count++] = r; }
};

constexpr Radices radices(unsigned int order, bool eights, unsigned int leadingFours)
{
    Radices r;
    if (order == 1) {
        r.add(2);
    } else if (!eights || order < 3) {
        for (unsigned int o = order; o > 0; o -= o >= 2 ? 2 : 1)
            r.add(o >= 2 ? 4 : 2);
    } else {
        for (; leadingFours > 0 && order >= 5; --leadingFours, order -= 2)
            r.add(4);
        if (order == 1) {
            r.add(2);
            return r;
        }
        if (order == 2) {
            r.add(4);
            return r;
        }
        unsigned int fours = order % 3 == 2 ? 1 : order % 3 == 1 ? 2 : 0;
        for (unsigned int e = (order - 2 * fours) / 3; e > 0; --e)
            r.add(8);
        for (; fours > 0; --fours)
            r.add(4);
    }
    return r;
}

template <typename T>
struct FftKernels {
    unsigned int width; // complex points per register
    void (*run)(FftPlan<T> const& plan, T const* inRe, T const* inIm, T* outRe, T* outIm, unsigned int flags,
                T scale);
    // Real forward: Z (m points, split, natural order) of the n = 2m samples read as complex
    // pairs, to the packed spectrum of n + 2 values; rotation t_k = e^(-2πik/n) split, k < m.
    // Z may be read up to a register past its m points (a working buffer has room there).
    void (*untangle)(unsigned int m, T const* zRe, T const* zIm, T const* tRe, T const* tIm, T* out);
    // Real inverse: the packed spectrum to the m complex points whose forward transform, taken
    // with real and imaginary parts exchanged, gives the samples (zRe, zIm are written).
    void (*tangle)(unsigned int m, T const* in, T const* tRe, T const* tIm, T* zRe, T* zIm);
    // Real forward of the 2·plan.size samples at `in` to the packed spectrum at `out`, the last
    // pass and the untangling in one; null for the sets without it (the float and portable ones).
    void (*forwardReal)(FftPlan<T> const& plan, T const* in, T const* tRe, T const* tIm, T* out);
    // Sets whose interleaved reads and writes keep to in-lane shuffles leave the points of a
    // register in this order (lane l holds point pairedLanes[l]); null when they do not.
    unsigned char const* pairedLanes;
};

// Each build's kernels (FftFast.cpp, FftKernels_avx2.cpp, FftKernels_avx512.cpp).
extern FftKernels<float> const fftPortableFloat;
extern FftKernels<double> const fftPortableDouble;
extern FftKernels<float> const fftAvx2Float;
extern FftKernels<double> const fftAvx2Double;
extern FftKernels<float> const fftAvx512Float;
extern FftKernels<double> const fftAvx512Double;
// The 256-bit kernels built for AVX-512 (32 registers).
extern FftKernels<float> const fftAvx512HalfFloat;
extern FftKernels<double> const fftAvx512HalfDouble;

// The FFT's entries in the dispatch table.
inline constexpr FftEntry fftPortable{{&fftPortableFloat, nullptr, false}, {&fftPortableDouble, nullptr, false}};
inline constexpr FftEntry fftAvx2{{&fftAvx2Float, nullptr, false}, {&fftAvx2Double, nullptr, false}};
inline constexpr FftEntry fftAvx512{{&fftAvx512Float, &fftAvx512HalfFloat, true},
                                    {&fftAvx512Double, &fftAvx512HalfDouble, true}};

} // namespace Cordel::IPP::detail
