// The FIR, IIR and multirate filters.

#include <Cordel/IPP/FIR.h>
#include <Cordel/IPP/IIR.h>
#include <Cordel/IPP/Multirate.h>

#include "AllocationCount.h"
#include "InstructionSets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

using namespace Cordel::IPP;

namespace {

std::vector<float> noise(std::size_t n, unsigned int seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> d(-1, 1);
    std::vector<float> x(n);
    for (auto& v : x)
        v = d(gen);
    return x;
}

std::vector<float> firOneByOne(std::vector<float> const& taps, std::vector<float> const& x, float const* dly)
{
    FIRState_Float* s = nullptr;
    FIRInit(&s, taps.data(), static_cast<unsigned int>(taps.size()), dly);
    std::vector<float> y(x.size());
    for (std::size_t j = 0; j < x.size(); ++j)
        y[j] = FIR(x[j], s);
    FIRFree(s);
    return y;
}

// RBJ cookbook low-pass, normalised to a0 = 1: b0 b1 b2 a0 a1 a2.
std::vector<double> cookbookLowPass(double rate, double frequency, double q)
{
    double const w = 2 * std::numbers::pi * frequency / rate;
    double const alpha = std::sin(w) / (2 * q);
    double const a0 = 1 + alpha;
    double const c = std::cos(w);
    return {(1 - c) / 2 / a0, (1 - c) / a0, (1 - c) / 2 / a0, 1, -2 * c / a0, (1 - alpha) / a0};
}

} // namespace

TEST(FIR, IdentityAndOneSampleDelay)
{
    std::vector<float> const x = {1, -2, 3.5f, 4, -5};
    EXPECT_EQ(firOneByOne({1, 0, 0}, x, nullptr), x);
    EXPECT_EQ(firOneByOne({0, 1}, x, nullptr), (std::vector<float>{0, 1, -2, 3.5f, 4}));
}

TEST(FIR, MatchesDirectConvolutionIncludingAPrimedDelayLine)
{
    auto const taps = noise(19, 1);
    auto const x = noise(300, 2);
    auto dly = noise(19, 3);
    auto const y = firOneByOne(taps, x, dly.data());
    for (std::size_t n = 0; n < x.size(); ++n) {
        double want = 0;
        for (std::size_t k = 0; k < taps.size(); ++k)
            want += double(taps[k]) * (k <= n ? x[n - k] : dly[k - n]);
        ASSERT_NEAR(y[n], want, 1e-5) << "sample " << n;
    }
}

// The block form runs the kernel of each instruction set.
class FIRBlocks : public CordelTest::OnEveryInstructionSet<> {};

// Every block size, on lengths around the vector kernel's groups, gives the one-sample results bit for bit.
TEST_P(FIRBlocks, BlockSizesGiveIdenticalOutput)
{
    for (unsigned int L : {1u, 2u, 3u, 31u, 32u, 33u, 100u, 300u}) {
        SCOPED_TRACE(testing::Message() << "taps " << L);
        auto const taps = noise(L, L);
        auto const x = noise(2000, L + 1);
        auto const dly = noise(L, L + 2);
        auto const want = firOneByOne(taps, x, dly.data());
        for (unsigned int block : {1u, 7u, 64u, 1000u}) {
            FIRState_Float* s = nullptr;
            FIRInit(&s, taps.data(), L, dly.data());
            std::vector<float> y(x.size());
            for (std::size_t at = 0; at < x.size(); at += block) {
                unsigned int const m = static_cast<unsigned int>(std::min<std::size_t>(block, x.size() - at));
                FIR(m, x.data() + at, y.data() + at, s);
            }
            ASSERT_EQ(y, want) << "blocks of " << block;
            std::vector<float> inPlace = x;
            FIRSetDlyLine(s, dly.data());
            std::vector<float> raw(L);
            FIRGetDlyLine(s, raw.data());
            FIRFree(s);
            FIRInit(&s, taps.data(), L, dly.data());
            FIR_InPlace(static_cast<unsigned int>(x.size()), inPlace.data(), s);
            ASSERT_EQ(inPlace, want) << "in place";
            FIRFree(s);
        }
    }
}

CORDEL_ON_EVERY_INSTRUCTION_SET(FIRBlocks);

TEST(FIR, DelayLineIsTheRawCircularBuffer)
{
    float const taps[4] = {1, 2, 3, 4};
    FIRState_Float* s = nullptr;
    FIRInit(&s, taps, 4, nullptr);
    FIR(10.0f, s);
    FIR(20.0f, s);
    FIR(30.0f, s);
    float raw[4];
    FIRGetDlyLine(s, raw);
    // Written at 0, then 3, then 2: the buffer runs backwards from the first write.
    EXPECT_EQ(std::vector<float>(raw, raw + 4), (std::vector<float>{10, 0, 30, 20}));
    // Replacing the buffer keeps the write position: the next sample goes to index 1.
    FIRSetDlyLine(s, nullptr);
    EXPECT_EQ(FIR(1.0f, s), 1.0f);
    FIRGetDlyLine(s, raw);
    EXPECT_EQ(std::vector<float>(raw, raw + 4), (std::vector<float>{0, 1, 0, 0}));
    FIRFree(s);

    FIRState_Float* untouched = nullptr;
    FIRInit(&untouched, taps, 0, nullptr);
    FIRInit(&untouched, nullptr, 4, nullptr);
    EXPECT_EQ(untouched, nullptr);
}

TEST(FIR, BlockFilteringDoesNotAllocate)
{
    auto const taps = noise(128, 5);
    auto x = noise(4096, 6);
    FIRState_Float* s = nullptr;
    FIRInit(&s, taps.data(), 128, nullptr);
    CordelTest::AllocationCounter counter;
    FIR_InPlace(4096, x.data(), s);
    EXPECT_EQ(counter.Made(), 0u);
    FIRFree(s);
}

TEST(IIR, GeneralOrderIsNormalisedByA0)
{
    double const taps[4] = {2, 0, 2, 0};
    IIRState_Double* s = nullptr;
    IIRInit(&s, taps, 1, nullptr);
    for (double x : {1.0, -3.5, 0.25})
        EXPECT_EQ(IIR(x, s), x);
    IIRFree(s);
}

TEST(IIR, CascadeIsScaledByTheFirstSectionsA0Only)
{
    double const taps[12] = {1, 0, 0, 1, 0, 0, 0.5, 0, 0, 2, 0, 0};
    IIRState_Double* s = nullptr;
    IIRInit_BiQuad(&s, taps, 2, nullptr);
    EXPECT_EQ(IIR(4.0, s), 2.0); // the second section's own a0 of 2 is not applied
    IIRFree(s);

    double const scaled[12] = {2, 0, 0, 2, 0, 0, 3, 0, 0, 1, 0, 0};
    IIRInit_BiQuad(&s, scaled, 2, nullptr);
    EXPECT_EQ(IIR(1.0, s), 1.5); // both sections halved by the first a0
    // Raw taps are stored as given: 2·3 = 6.
    IIRSetTaps(s, scaled);
    EXPECT_EQ(IIR(1.0, s), 6.0);
    IIRFree(s);
}

// A cookbook low-pass, its impulse response against the analytic one from its two poles.
TEST(IIR, BiquadImpulseResponseMatchesItsPoles)
{
    auto const t = cookbookLowPass(48000, 1000, 0.7071);
    IIRState_Double* s = nullptr;
    IIRInit_BiQuad(&s, t.data(), 1, nullptr);
    using C = std::complex<long double>;
    long double const b0 = t[0], b1 = t[1], b2 = t[2], a1 = t[4], a2 = t[5];
    C const root = std::sqrt(C(a1 * a1 - 4 * a2));
    C const p = (-a1 + root) / 2.0L, q = (-a1 - root) / 2.0L;
    long double const c1 = b1 - b0 * a1, c0 = b2 - b0 * a2;
    std::vector<double> impulse(400, 0.0), h(400);
    impulse[0] = 1;
    IIR(400, impulse.data(), h.data(), s);
    EXPECT_NEAR(h[0], b0, 1e-15);
    for (int n = 1; n < 400; ++n) {
        C const want = (c1 * p + c0) / (p - q) * std::pow(p, n - 1) + (c1 * q + c0) / (q - p) * std::pow(q, n - 1);
        ASSERT_NEAR(h[n], static_cast<double>(want.real()), 1e-12) << "sample " << n;
    }
    IIRFree(s);
}

TEST(IIR, GeneralOrderMatchesTheDifferenceEquationAndTheBiquadForm)
{
    auto const lp = cookbookLowPass(44100, 3000, 1.2);
    double const general[6] = {lp[0], lp[1], lp[2], 1, lp[4], lp[5]};
    IIRState_Double* g = nullptr;
    IIRState_Double* b = nullptr;
    IIRInit(&g, general, 2, nullptr);
    IIRInit_BiQuad(&b, lp.data(), 1, nullptr);
    auto const xf = noise(500, 9);
    std::vector<double> x(xf.begin(), xf.end()), yg(500), yb(500);
    IIR(250, x.data(), yg.data(), g);
    for (std::size_t j = 250; j < 500; ++j)
        yg[j] = IIR(x[j], g);
    IIR(500, x.data(), yb.data(), b);
    EXPECT_EQ(yg, yb);
    for (std::size_t n = 2; n < 500; ++n) {
        double const want = lp[0] * x[n] + lp[1] * x[n - 1] + lp[2] * x[n - 2] - lp[4] * yg[n - 1] - lp[5] * yg[n - 2];
        ASSERT_NEAR(yg[n], want, 1e-12);
    }
    double saved[2];
    IIRGetDlyLine(b, saved);
    double const next = IIR(0.5, b);
    IIRSetDlyLine(b, saved);
    EXPECT_EQ(IIR(0.5, b), next);
    IIRFree(g);
    IIRFree(b);
}

TEST(IIR, FloatFamilyIsInert)
{
    IIRState_Float* s = nullptr;
    float const taps[4] = {1, 0, 1, 0};
    IIRInit(&s, taps, 1, nullptr);
    EXPECT_EQ(s, nullptr);
    EXPECT_EQ(IIR(1.0f, s), 0.0f);
}

// Upsample by U at upPhase, filter, downsample by D from downPhase, computed the long way.
TEST(MRF, MatchesUpsampleFilterDownsample)
{
    struct Case {
        unsigned int up, down, taps, upPhase, downPhase;
    };
    for (Case c : {Case{1, 1, 5, 0, 0}, Case{2, 1, 8, 0, 0}, Case{1, 3, 7, 0, 2}, Case{3, 2, 24, 1, 1},
                   Case{4, 3, 31, 3, 0}, Case{5, 7, 1, 2, 6}}) {
        SCOPED_TRACE(testing::Message() << c.up << "/" << c.down << " taps " << c.taps << " phases " << c.upPhase
                                        << "," << c.downPhase);
        auto const h = noise(c.taps, c.taps);
        auto const x = noise(c.down * 60, c.up);
        std::vector<float> dly = noise(3, 4);
        std::vector<float> const past = dly;
        MRFState_Float* s = nullptr;
        MRFInit(&s, c.up, c.down, h.data(), c.taps, dly, c.upPhase, c.downPhase);
        std::size_t const history = (c.taps - 1 + c.upPhase + c.up - 1) / c.up;
        ASSERT_EQ(dly.size(), history);

        // The long way, with the past inputs in front: u has U·(history + len) points.
        std::vector<float> full(history, 0.0f);
        for (std::size_t t = 0; t < history; ++t)
            full[history - 1 - t] = t < past.size() ? past[t] : 0.0f;
        full.insert(full.end(), x.begin(), x.end());
        std::vector<float> u(full.size() * c.up, 0.0f);
        for (std::size_t j = 0; j < full.size(); ++j)
            u[j * c.up + c.upPhase] = full[j];
        std::size_t const origin = history * c.up;
        std::vector<float> want;
        for (std::size_t m = origin + c.downPhase; m < u.size(); m += c.down) {
            float sum = 0;
            for (std::size_t k = 0; k < c.taps; ++k)
                sum += h[k] * u[m - k];
            want.push_back(sum);
        }

        std::vector<float> got(want.size() + 8, -99.0f);
        std::size_t written = 0;
        for (unsigned int at = 0; at < x.size(); at += c.down * 3) {
            MRFProcess(x.data() + at, got.data() + written, c.down * 3, s);
            written += 3 * c.up;
        }
        got.resize(written);
        ASSERT_EQ(got, want);
        MRFFree(s);
    }
}
