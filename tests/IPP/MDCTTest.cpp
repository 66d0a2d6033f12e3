// The MDCT against its direct formula, and time-domain alias cancellation across frames.

#include <Cordel/IPP/MDCT.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using namespace Cordel::IPP;

namespace {

long double phase(unsigned int N, unsigned int n, unsigned int k)
{
    return 2.0L * std::numbers::pi_v<long double> / N * (n + 0.5L + N / 4.0L) * (k + 0.5L);
}

std::vector<float> noise(unsigned int n, unsigned int seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> d(-1, 1);
    std::vector<float> x(n);
    for (auto& v : x)
        v = d(gen);
    return x;
}

} // namespace

TEST(MDCT, ForwardAndInverseMatchTheDirectFormula)
{
    for (unsigned int N : {4u, 8u, 16u, 32u, 64u, 256u, 2048u}) {
        SCOPED_TRACE(testing::Message() << "N = " << N);
        MDCTStateFwd_Float* fwd = nullptr;
        MDCTStateInv_Float* inv = nullptr;
        MDCTInitFwd(&fwd, N);
        MDCTInitInv(&inv, N);
        auto const x = noise(N, N);
        std::vector<float> data = x;
        MDCTFwd_InPlace(data.data(), fwd, nullptr);
        long double const tolerance = 1e-5L * std::log2(N);
        for (unsigned int k = 0; k < N / 2; ++k) {
            long double want = 0;
            for (unsigned int n = 0; n < N; ++n)
                want += x[n] * std::cos(phase(N, n, k));
            want /= std::sqrt(static_cast<long double>(N));
            ASSERT_NEAR(data[k], want, tolerance) << "coefficient " << k;
        }
        std::vector<float> const c(data.begin(), data.begin() + N / 2);
        MDCTInv_InPlace(data.data(), inv, nullptr);
        for (unsigned int n = 0; n < N; ++n) {
            long double want = 0;
            for (unsigned int k = 0; k < N / 2; ++k)
                want += c[k] * std::cos(phase(N, n, k));
            want *= 4 / std::sqrt(static_cast<long double>(N));
            ASSERT_NEAR(data[n], want, tolerance * 4) << "sample " << n;
        }
        MDCTFwdFree(fwd);
        MDCTInvFree(inv);
    }
}

// A sine window satisfies w[n]² + w[n + N/2]² = 1; frames advancing by N/2, windowed before the
// forward and after the inverse and overlap-added, give back the input where two frames meet.
TEST(MDCT, OverlappingFramesCancelTheirAliasing)
{
    unsigned int const N = 512, hop = N / 2, frames = 8;
    MDCTStateFwd_Float* fwd = nullptr;
    MDCTStateInv_Float* inv = nullptr;
    MDCTInitFwd(&fwd, N);
    MDCTInitInv(&inv, N);
    std::vector<float> window(N);
    for (unsigned int n = 0; n < N; ++n)
        window[n] = static_cast<float>(std::sin(std::numbers::pi * (n + 0.5) / N));
    auto const x = noise(hop * (frames + 1), 3);
    std::vector<float> y(x.size(), 0.0f), frame(N);
    for (unsigned int f = 0; f < frames; ++f) {
        for (unsigned int n = 0; n < N; ++n)
            frame[n] = x[f * hop + n] * window[n];
        MDCTFwd_InPlace(frame.data(), fwd, nullptr);
        MDCTInv_InPlace(frame.data(), inv, nullptr);
        for (unsigned int n = 0; n < N; ++n)
            y[f * hop + n] += frame[n] * window[n];
    }
    for (unsigned int j = hop; j < hop * frames; ++j)
        ASSERT_NEAR(y[j], x[j], 1e-5f) << "sample " << j;
    MDCTFwdFree(fwd);
    MDCTInvFree(inv);
}

TEST(MDCT, BufferSizesAreOneAndTinyLengthsAreHarmless)
{
    MDCTStateFwd_Float* fwd = nullptr;
    MDCTStateInv_Float* inv = nullptr;
    MDCTInitFwd(&fwd, 0);
    EXPECT_EQ(fwd, nullptr);
    MDCTInitFwd(&fwd, 2);
    MDCTInitInv(&inv, 2);
    unsigned int a = 0, b = 0;
    MDCTGetFwdBufSize(fwd, &a);
    MDCTGetInvBufSize(inv, &b);
    EXPECT_EQ(a, 1u);
    EXPECT_EQ(b, 1u);
    float x[2] = {1, 2};
    MDCTFwd_InPlace(x, fwd, nullptr);
    MDCTInv_InPlace(x, inv, nullptr);
    MDCTFwdFree(fwd);
    MDCTInvFree(inv);
}
