// The six FFT flavours and the portable engine, against a direct DFT in long double.

#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/detail/FftImpl.h>

#include "AllocationCount.h"
#include "InstructionSets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <numbers>
#include <random>
#include <vector>

using namespace Cordel::IPP;
using LComplex = std::complex<long double>;

namespace {

constexpr unsigned int largestTestedOrder = 16;

// Direct DFT of the chosen bins: all of them up to 1024 points, a spread of 64 above, where
// O(n²) would take minutes. sign -1 is the forward transform.
struct Oracle {
    unsigned int n;
    std::vector<LComplex> roots; // e^(-2πi·j/n)
    std::vector<unsigned int> bins;

    explicit Oracle(unsigned int size) : n(size), roots(size)
    {
        for (unsigned int j = 0; j < n; ++j) {
            long double const a = -2.0L * std::numbers::pi_v<long double> * j / n;
            roots[j] = {std::cos(a), std::sin(a)};
        }
        if (n <= 1024) {
            for (unsigned int k = 0; k < n; ++k)
                bins.push_back(k);
        } else {
            std::mt19937 pick(n);
            bins = {0, 1, n / 2, n - 1, n / 4};
            while (bins.size() < 64)
                bins.push_back(pick() % n);
        }
    }

    LComplex bin(std::vector<LComplex> const& x, unsigned int k, int sign) const
    {
        LComplex sum = 0;
        for (unsigned int j = 0; j < n; ++j) {
            LComplex const w = roots[(std::uint64_t{j} * k) % n];
            sum += x[j] * (sign < 0 ? w : std::conj(w));
        }
        return sum;
    }
};

std::vector<LComplex> randomSignal(unsigned int n, unsigned int seed, bool real)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> d(-1.0, 1.0);
    std::vector<LComplex> x(n);
    for (auto& v : x)
        v = {static_cast<long double>(d(gen)), real ? 0.0L : static_cast<long double>(d(gen))};
    return x;
}

long double norm2(std::vector<LComplex> const& x)
{
    long double s = 0;
    for (auto const& v : x)
        s += std::norm(v);
    return std::sqrt(s);
}

// Error bounds relative to the input's norm. The fast engine's error grows like ε·log2 n, as a
// radix-2 transform's should. The portable engine builds its twiddles as a running product of
// rotations, whose error grows with the number of rotations: it is held to ε·(2·log2 n + n).
template <typename T>
long double bound(unsigned int order, bool portable)
{
    long double const eps = std::numeric_limits<T>::epsilon();
    long double const logn = order + 1;
    return eps * (2 * logn + (portable ? std::ldexp(1.0L, int(order)) : 0));
}

template <typename T>
struct Checked {
    long double worst = 0;
    void add(LComplex got, LComplex want, long double scale) { worst = std::max(worst, std::abs(got - want) / scale); }
};

// The six public flavours behind one interface: forward and inverse on long double vectors.
template <typename T>
struct RealFlavour {
    using State = std::conditional_t<std::is_same_v<T, float>, FFTState_Float, FFTState_Double>;
    static constexpr bool real = true;
    State* s = nullptr;
    unsigned int n;
    explicit RealFlavour(unsigned int order) : n(1u << order) { FFTInit(&s, order); }
    ~RealFlavour() { FFTFree(s); }
    void forward(std::vector<T> const& in, std::vector<T>& out) { FFTFwd(in.data(), out.data(), s, nullptr); }
    void inverse(std::vector<T> const& in, std::vector<T>& out) { FFTInv(in.data(), out.data(), s, nullptr); }
};

template <typename T>
struct InterleavedFlavour {
    using C = std::conditional_t<std::is_same_v<T, float>, Complex_Float, Complex_Double>;
    using State = std::conditional_t<std::is_same_v<T, float>, FFTState_Complex_Float_Interleaved,
                                     FFTState_Complex_Double_Interleaved>;
    static constexpr bool real = false;
    State* s = nullptr;
    unsigned int n;
    explicit InterleavedFlavour(unsigned int order) : n(1u << order) { FFTInit(&s, order); }
    ~InterleavedFlavour() { FFTFree(s); }
    void forward(std::vector<T> const& in, std::vector<T>& out)
    {
        FFTFwd(reinterpret_cast<C const*>(in.data()), reinterpret_cast<C*>(out.data()), s, nullptr);
    }
    void inverse(std::vector<T> const& in, std::vector<T>& out)
    {
        FFTInv(reinterpret_cast<C const*>(in.data()), reinterpret_cast<C*>(out.data()), s, nullptr);
    }
};

template <typename T>
struct DeinterleavedFlavour {
    using State = std::conditional_t<std::is_same_v<T, float>, FFTState_Complex_Float_Deinterleaved,
                                     FFTState_Complex_Double_Deinterleaved>;
    static constexpr bool real = false;
    State* s = nullptr;
    unsigned int n;
    std::vector<T> re, im, reOut, imOut;
    explicit DeinterleavedFlavour(unsigned int order) : n(1u << order), re(n), im(n), reOut(n), imOut(n)
    {
        FFTInit(&s, order);
    }
    ~DeinterleavedFlavour() { FFTFree(s); }
    template <typename F>
    void run(std::vector<T> const& in, std::vector<T>& out, F f)
    {
        for (unsigned int j = 0; j < n; ++j) {
            re[j] = in[2 * j];
            im[j] = in[2 * j + 1];
        }
        f(re.data(), im.data(), reOut.data(), imOut.data(), s, nullptr);
        for (unsigned int j = 0; j < n; ++j) {
            out[2 * j] = reOut[j];
            out[2 * j + 1] = imOut[j];
        }
    }
    void forward(std::vector<T> const& in, std::vector<T>& out)
    {
        run(in, out, [](auto... a) { FFTFwd(a...); });
    }
    void inverse(std::vector<T> const& in, std::vector<T>& out)
    {
        run(in, out, [](auto... a) { FFTInv(a...); });
    }
};

// The portable engine at any order, through the same interface.
template <typename T, bool isReal>
struct PortableFlavour {
    static constexpr bool real = isReal;
    detail::FftImpl<T> impl;
    unsigned int n;
    explicit PortableFlavour(unsigned int order)
        : impl(isReal ? detail::FftMode::Real : detail::FftMode::Complex, 1u << order), n(1u << order)
    {
    }
    void forward(std::vector<T> const& in, std::vector<T>& out)
    {
        if constexpr (isReal)
            impl.ForwardReal(in.data(), out.data());
        else
            impl.ForwardComplex(in.data(), out.data());
    }
    void inverse(std::vector<T> const& in, std::vector<T>& out)
    {
        if constexpr (isReal)
            impl.InverseReal(in.data(), out.data());
        else
            impl.InverseComplex(in.data(), out.data());
    }
};

template <typename F, typename T>
void checkAgainstOracle(unsigned int order, bool portable)
{
    SCOPED_TRACE(testing::Message() << "order " << order);
    F f(order);
    unsigned int const n = f.n;
    Oracle oracle(n);
    auto const x = randomSignal(n, 7 * order + 1, F::real);
    long double const scale = norm2(x);
    std::vector<T> in(F::real ? n : 2 * n);
    for (unsigned int j = 0; j < n; ++j) {
        if (F::real) {
            in[j] = static_cast<T>(x[j].real());
        } else {
            in[2 * j] = static_cast<T>(x[j].real());
            in[2 * j + 1] = static_cast<T>(x[j].imag());
        }
    }
    std::vector<T> spectrum(F::real ? n + 2 : 2 * n);
    f.forward(in, spectrum);
    Checked<T> fwd;
    std::vector<LComplex> exact(n);
    for (unsigned int k = 0; k < n; ++k)
        exact[k] = F::real ? LComplex(in[k]) : LComplex(in[2 * k], in[2 * k + 1]);
    for (unsigned int k : oracle.bins) {
        if (F::real && k > n / 2)
            continue;
        fwd.add({spectrum[2 * k], spectrum[2 * k + 1]}, oracle.bin(exact, k, -1), scale);
    }
    EXPECT_LE(fwd.worst, bound<T>(order, portable)) << "forward";
    if (F::real) {
        EXPECT_EQ(spectrum[1], T(0));
        EXPECT_EQ(spectrum[n + 1], T(0));
    }

    // The inverse of the spectrum, against the oracle's inverse of the same spectrum, scaled by 1/n.
    std::vector<LComplex> exactBins(n);
    for (unsigned int k = 0; k < n; ++k) {
        unsigned int const src = F::real && k > n / 2 ? n - k : k;
        LComplex v(spectrum[2 * src], spectrum[2 * src + 1]);
        exactBins[k] = F::real && k > n / 2 ? std::conj(v) : v;
    }
    std::vector<T> back(in.size());
    f.inverse(spectrum, back);
    Checked<T> inv;
    for (unsigned int j : oracle.bins) {
        LComplex const want = oracle.bin(exactBins, j, +1) / static_cast<long double>(n);
        LComplex const got = F::real ? LComplex(back[j]) : LComplex(back[2 * j], back[2 * j + 1]);
        inv.add(got, want, scale / std::sqrt(static_cast<long double>(n)));
    }
    EXPECT_LE(inv.worst, 2 * bound<T>(order, portable)) << "inverse";

    // Round trip.
    Checked<T> trip;
    for (unsigned int j = 0; j < n; ++j)
        trip.add(F::real ? LComplex(back[j]) : LComplex(back[2 * j], back[2 * j + 1]), exact[j],
                 scale / std::sqrt(static_cast<long double>(n)));
    EXPECT_LE(trip.worst, 3 * bound<T>(order, portable)) << "round trip";
}

template <typename F, typename T>
void checkAllOrders(bool portable)
{
    for (unsigned int order = 1; order <= largestTestedOrder; ++order)
        checkAgainstOracle<F, T>(order, portable || order < 2 || order > 13);
}

} // namespace

TEST(FFT, RealFloatMatchesDft) { checkAllOrders<RealFlavour<float>, float>(false); }
TEST(FFT, RealDoubleMatchesDft) { checkAllOrders<RealFlavour<double>, double>(false); }
TEST(FFT, InterleavedFloatMatchesDft) { checkAllOrders<InterleavedFlavour<float>, float>(false); }
TEST(FFT, InterleavedDoubleMatchesDft) { checkAllOrders<InterleavedFlavour<double>, double>(false); }
TEST(FFT, DeinterleavedFloatMatchesDft) { checkAllOrders<DeinterleavedFlavour<float>, float>(false); }
TEST(FFT, DeinterleavedDoubleMatchesDft) { checkAllOrders<DeinterleavedFlavour<double>, double>(false); }

TEST(FFT, PortableEngineMatchesDftAtEveryOrder)
{
    for (unsigned int order = 0; order <= largestTestedOrder; ++order) {
        checkAgainstOracle<PortableFlavour<float, false>, float>(order, true);
        checkAgainstOracle<PortableFlavour<double, false>, double>(order, true);
        checkAgainstOracle<PortableFlavour<float, true>, float>(order, true);
        checkAgainstOracle<PortableFlavour<double, true>, double>(order, true);
    }
}

// States made on each instruction set this processor runs take that set's kernels.
class FFTKernels : public CordelTest::OnEveryInstructionSet<> {};

// The fast engine's kernels lay out and scale alike on every set: each is held to the oracle, and
// in-place calls agree with out-of-place ones.
TEST_P(FFTKernels, MatchDft)
{
    for (unsigned int order = 2; order <= 13; ++order) {
        checkAgainstOracle<RealFlavour<float>, float>(order, false);
        checkAgainstOracle<RealFlavour<double>, double>(order, false);
        checkAgainstOracle<InterleavedFlavour<float>, float>(order, false);
        checkAgainstOracle<InterleavedFlavour<double>, double>(order, false);
        checkAgainstOracle<DeinterleavedFlavour<float>, float>(order, false);
        checkAgainstOracle<DeinterleavedFlavour<double>, double>(order, false);

        unsigned int const n = 1u << order;
        std::vector<Complex_Float> x(n), y(n);
        for (unsigned int j = 0; j < n; ++j)
            x[j] = {std::sin(0.3f * j), std::cos(0.7f * j * j)};
        FFTState_Complex_Float_Interleaved* c = nullptr;
        FFTInit(&c, order);
        FFTFwd(x.data(), y.data(), c, nullptr);
        FFTFwd(x.data(), x.data(), c, nullptr);
        ASSERT_EQ(0, std::memcmp(x.data(), y.data(), n * sizeof(Complex_Float))) << "order " << order;
        FFTInv(y.data(), x.data(), c, nullptr);
        FFTInv(y.data(), y.data(), c, nullptr);
        ASSERT_EQ(0, std::memcmp(x.data(), y.data(), n * sizeof(Complex_Float))) << "order " << order;
        FFTFree(c);

        std::vector<double> re(n), im(n), reOut(n), imOut(n);
        for (unsigned int j = 0; j < n; ++j) {
            re[j] = std::cos(0.1 * j * j);
            im[j] = std::sin(1.3 * j);
        }
        FFTState_Complex_Double_Deinterleaved* d = nullptr;
        FFTInit(&d, order);
        FFTInv(re.data(), im.data(), reOut.data(), imOut.data(), d, nullptr);
        FFTInv(re.data(), im.data(), re.data(), im.data(), d, nullptr);
        ASSERT_EQ(re, reOut) << "order " << order;
        ASSERT_EQ(im, imOut) << "order " << order;
        FFTFree(d);
    }
}

// Interleaved and split data run the same arithmetic and differ only in how the points are
// moved between registers, so the two layouts must agree to the bit, signed zeros included.
template <typename T, typename Interleaved, typename Split, typename C>
void checkLayoutsAgree(unsigned int order)
{
    unsigned int const n = 1u << order;
    std::mt19937 gen(order);
    std::uniform_real_distribution<T> d(-1, 1);
    for (int input = 0; input < 2; ++input) {
        std::vector<C> x(n), y(n);
        std::vector<T> re(n), im(n), reOut(n), imOut(n);
        for (unsigned int j = 0; j < n; ++j) {
            // Noise, then an impulse among negative zeros.
            x[j] = input == 0 ? C{d(gen), d(gen)} : C{j == 1 ? T(1) : T(-0.0), T(-0.0)};
            re[j] = x[j].re;
            im[j] = x[j].im;
        }
        Interleaved* a = nullptr;
        Split* b = nullptr;
        FFTInit(&a, order);
        FFTInit(&b, order);
        for (bool inverse : {false, true}) {
            if (inverse) {
                FFTInv(x.data(), y.data(), a, nullptr);
                FFTInv(re.data(), im.data(), reOut.data(), imOut.data(), b, nullptr);
            } else {
                FFTFwd(x.data(), y.data(), a, nullptr);
                FFTFwd(re.data(), im.data(), reOut.data(), imOut.data(), b, nullptr);
            }
            for (unsigned int j = 0; j < n; ++j) {
                ASSERT_EQ(0, std::memcmp(&y[j].re, &reOut[j], sizeof(T))) << "order " << order << " point " << j;
                ASSERT_EQ(0, std::memcmp(&y[j].im, &imOut[j], sizeof(T))) << "order " << order << " point " << j;
            }
        }
        FFTFree(a);
        FFTFree(b);
    }
}

TEST_P(FFTKernels, InterleavedAndSplitLayoutsAgreeExactly)
{
    for (unsigned int order = 1; order <= 13; ++order) {
        checkLayoutsAgree<float, FFTState_Complex_Float_Interleaved, FFTState_Complex_Float_Deinterleaved,
                          Complex_Float>(order);
        checkLayoutsAgree<double, FFTState_Complex_Double_Interleaved, FFTState_Complex_Double_Deinterleaved,
                          Complex_Double>(order);
    }
}

CORDEL_ON_EVERY_INSTRUCTION_SET(FFTKernels);

TEST(FFT, OrderZeroLeavesTheStateUntouched)
{
    auto* sentinel = reinterpret_cast<FFTState_Float*>(0x1234);
    FFTState_Float* real = sentinel;
    FFTInit(&real, 0);
    EXPECT_EQ(real, sentinel);
    FFTInit(static_cast<FFTState_Float**>(nullptr), 5);
    FFTState_Complex_Double_Deinterleaved* complex = nullptr;
    FFTInit(&complex, 0);
    EXPECT_EQ(complex, nullptr);
}

TEST(FFT, BufferSizeIsZero)
{
    FFTState_Double* s = nullptr;
    FFTInit(&s, 10);
    unsigned int size = 99;
    FFTGetBufSize(s, &size);
    EXPECT_EQ(size, 0u);
    FFTFree(s);
}

// Exact results where the arithmetic allows nothing else: on both engines (orders 1..16).
TEST(FFT, ImpulseAndConstantGiveExactBins)
{
    for (unsigned int order = 1; order <= largestTestedOrder; ++order) {
        SCOPED_TRACE(testing::Message() << "order " << order);
        unsigned int const n = 1u << order;
        FFTState_Float* s = nullptr;
        FFTInit(&s, order);
        std::vector<float> x(n, 0.0f), out(n + 2, -1.0f);
        x[0] = 1;
        FFTFwd(x.data(), out.data(), s, nullptr);
        for (unsigned int k = 0; k <= n / 2; ++k) {
            ASSERT_EQ(out[2 * k], 1.0f) << "bin " << k;
            ASSERT_EQ(out[2 * k + 1], 0.0f) << "bin " << k;
        }
        std::fill(x.begin(), x.end(), 0.25f);
        FFTFwd(x.data(), out.data(), s, nullptr);
        EXPECT_EQ(out[0], 0.25f * n);
        EXPECT_EQ(out[1], 0.0f);
        EXPECT_EQ(out[n + 1], 0.0f);
        for (unsigned int j = 2; j < n + 2; ++j)
            ASSERT_NEAR(out[j], 0.0f, 1e-6f * n) << "value " << j;
        FFTFree(s);
    }
}

TEST(FFT, RealInverseIgnoresImaginaryPartsOfEdgeBins)
{
    for (unsigned int order : {1u, 2u, 3u, 6u, 13u, 14u}) {
        SCOPED_TRACE(testing::Message() << "order " << order);
        unsigned int const n = 1u << order;
        FFTState_Double* s = nullptr;
        FFTInit(&s, order);
        std::vector<double> x(n), spectrum(n + 2), a(n), b(n);
        std::mt19937 gen(order);
        for (auto& v : x)
            v = std::uniform_real_distribution<double>(-1, 1)(gen);
        FFTFwd(x.data(), spectrum.data(), s, nullptr);
        FFTInv(spectrum.data(), a.data(), s, nullptr);
        spectrum[1] = 123.0;
        spectrum[n + 1] = -45.0;
        FFTInv(spectrum.data(), b.data(), s, nullptr);
        EXPECT_EQ(a, b);
        FFTFree(s);
    }
}

TEST(FFT, TransformsOnTheFastEngineDoNotAllocate)
{
    for (unsigned int order = 2; order <= 13; ++order) {
        unsigned int const n = 1u << order;
        FFTState_Float* real = nullptr;
        FFTState_Complex_Double_Interleaved* complex = nullptr;
        FFTState_Complex_Float_Deinterleaved* split = nullptr;
        FFTInit(&real, order);
        FFTInit(&complex, order);
        FFTInit(&split, order);
        std::vector<float> x(2 * n + 2, 0.5f), y(2 * n + 2), re(n, 1.0f), im(n);
        std::vector<Complex_Double> c(n, Complex_Double{1, 2}), d(n);
        CordelTest::AllocationCounter counter;
        FFTFwd(x.data(), y.data(), real, nullptr);
        FFTInv(y.data(), x.data(), real, nullptr);
        FFTFwd(c.data(), d.data(), complex, nullptr);
        FFTInv(d.data(), c.data(), complex, nullptr);
        FFTFwd(re.data(), im.data(), re.data(), im.data(), split, nullptr);
        FFTInv(re.data(), im.data(), re.data(), im.data(), split, nullptr);
        EXPECT_EQ(counter.Made(), 0u) << "order " << order;
        FFTFree(real);
        FFTFree(complex);
        FFTFree(split);
    }
}
