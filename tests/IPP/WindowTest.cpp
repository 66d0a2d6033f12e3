// Window shapes against their formulas.

#include <Cordel/IPP/Window.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace Cordel;
using ::testing::ElementsAre;
using ::testing::FloatNear;
using ::testing::Pointwise;

namespace {

template <typename T>
std::vector<T> ones(unsigned int n) { return std::vector<T>(n, T(1)); }

TEST(Window, BartlettAndHannOfFiveAndFour)
{
    auto x = ones<float>(5);
    IPP::WindowBartlett(5, x.data());
    EXPECT_THAT(x, ElementsAre(0, 0.5f, 1, 0.5f, 0));
    x = ones<float>(4);
    IPP::WindowBartlett(4, x.data());
    EXPECT_THAT(x, Pointwise(FloatNear(1e-6f), std::vector<float>{0, 2.0f / 3, 2.0f / 3, 0}));
    auto d = ones<double>(5);
    IPP::WindowHann(5, d.data());
    EXPECT_THAT(d, Pointwise(FloatNear(1e-6f), std::vector<double>{0, 0.5, 1, 0.5, 0}));
}

TEST(Window, MultipliesInsteadOfOverwriting)
{
    std::vector<float> x(5, 2.0f);
    IPP::WindowHann(5, x.data());
    EXPECT_NEAR(2.0f, x[2], 1e-6f);
    EXPECT_NEAR(1.0f, x[1], 1e-6f);
}

TEST(Window, SinglePrecisionFormsFollowTheirConstants)
{
    unsigned int const n = 64;
    float const step = 6.2831855f / float(n - 1);
    float const step2 = 12.566371f / float(n - 1);
    auto hamming = ones<float>(n), blackman = ones<float>(n);
    auto hammingD = ones<double>(n);
    IPP::WindowHamming(n, hamming.data());
    IPP::WindowHamming(n, hammingD.data());
    IPP::WindowBlackman(n, blackman.data(), -0.16f);
    for (unsigned int i = 0; i < n; ++i) {
        float const c1 = float(std::cos(double(float(i) * step)));
        float const c2 = float(std::cos(double(float(i) * step2)));
        ASSERT_EQ(0.54f - 0.46f * c1, hamming[i]) << i;
        ASSERT_EQ(0.5399999991059303 - 0.46000000089406967 * std::cos(double(i) * double(step)), hammingD[i]) << i;
        ASSERT_EQ((-0.16f + 1.0f) / 2.0f - 0.5f * c1 - -0.08f * c2, blackman[i]) << i;
    }
    EXPECT_NEAR(0.08, hammingD[0], 1e-7);
    EXPECT_NEAR(0.0f, blackman[0], 1e-6f);
}

// I0 by its series to full convergence, as an independent oracle.
double besselI0(double x)
{
    double term = 1, sum = 1;
    for (int k = 1; k < 200; ++k) {
        term *= x / 2 / k;
        sum += term * term;
    }
    return sum;
}

TEST(Window, KaiserFollowsTheBesselRatio)
{
    auto x = ones<float>(7);
    IPP::WindowKaiser(7, x.data(), 0.0f);
    EXPECT_THAT(x, ElementsAre(1, 1, 1, 1, 1, 1, 1));

    unsigned int const n = 33;
    auto d = ones<double>(n);
    auto f = ones<float>(n);
    IPP::WindowKaiser(n, d.data(), 0.5f);
    IPP::WindowKaiser(n, f.data(), 0.5f);
    double const middle = (n - 1) / 2.0;
    for (unsigned int i = 0; i < n; ++i) {
        double const expected = besselI0(0.5 * std::sqrt(middle * middle - (i - middle) * (i - middle))) / besselI0(0.5 * middle);
        ASSERT_NEAR(expected, d[i], 1e-9 * expected) << i; // the series stops at 1e-10 of its sum
        ASSERT_NEAR(expected, f[i], 1e-6 * expected) << i;
    }
    EXPECT_EQ(1.0, d[n / 2]);
    // A large alpha needs all 49 terms and stops there; the result still peaks at 1 in the middle.
    auto wide = ones<double>(9);
    IPP::WindowKaiser(9, wide.data(), 20.0f);
    EXPECT_EQ(1.0, wide[4]);
    EXPECT_LT(wide[0], 1e-10);
}

TEST(Window, ZeroAndOneSampleLeaveTheArray)
{
    float x[1] = {3};
    IPP::WindowHann(0, x);
    IPP::WindowHann(1, x);
    IPP::WindowBartlett(1, x);
    IPP::WindowKaiser(1, x, 2.0f);
    EXPECT_EQ(3.0f, x[0]);
}

} // namespace
