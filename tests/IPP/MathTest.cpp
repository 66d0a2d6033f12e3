// Guarded logarithms, decibels and complex helpers.

#include <Cordel/IPP/ComplexMath.h>
#include <Cordel/IPP/Math.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Cordel;

namespace {

TEST(Math, LogarithmsOfZeroAndTinyValuesAreGuarded)
{
    EXPECT_EQ(-1e35, Util::Log(0));
    EXPECT_EQ(-1e35, Util::Log10(0));
    EXPECT_EQ(-1e35, Util::Log2(0));
    EXPECT_EQ(-1e35, Util::Log(-1e-40));
    EXPECT_EQ(-1e35, Util::Log2(9e-37));
    EXPECT_TRUE(std::isnan(Util::Log(-1)));
    EXPECT_NEAR(std::log(1e-36), Util::Log(1e-36), 1e-9);
    EXPECT_DOUBLE_EQ(3.0, Util::Log10(1000));
    EXPECT_EQ(std::log(1024.0) * 1.4426950408889536, Util::Log2(1024)); // the constant is a little short of 1/ln 2
    EXPECT_EQ(0.75, Util::Frac(-0.25));
    EXPECT_DOUBLE_EQ(std::asinh(2.0), Util::ASinh(2));
    EXPECT_FALSE(Util::IsFinite(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(Util::IsFinite(std::nan("")));
    EXPECT_TRUE(Util::IsFinite(1e308));
}

TEST(Math, Decibels)
{
    EXPECT_EQ(0.0f, Util::SampleToDecibels(1));
    EXPECT_EQ(-400.0f, Util::SampleToDecibels(0));
    EXPECT_EQ(-400.0f, Util::SampleToDecibels(-0.5f));
    EXPECT_EQ(-400.0f, Util::SampleToDecibels(9e-21f));
    EXPECT_NEAR(-6.0206f, Util::SampleToDecibels(0.5f), 1e-4f);
    EXPECT_NEAR(0.5f, Util::DecibelsToSample(-6.0206f), 1e-5f);
    EXPECT_EQ(1.0f, Util::DecibelsToSample(0));
}

TEST(Complex, SquareRootSigns)
{
    Util::Complex r = Util::csqrt({-4, 0});
    EXPECT_EQ(0.0, r.re);
    EXPECT_EQ(2.0, r.im);
    r = Util::csqrt({-4, -0.0});
    EXPECT_EQ(2.0, r.im);
    r = Util::csqrt({3, -4});
    EXPECT_EQ(2.0, r.re);
    EXPECT_EQ(-1.0, r.im);
    r = Util::csqrt({4, -1e-300}); // the imaginary part is 0, negated: −0
    EXPECT_TRUE(std::signbit(r.im));
    EXPECT_EQ(5.0, Util::hypot({3, 4}));
    EXPECT_DOUBLE_EQ(M_PI / 2, Util::atan2({0, 1}));
    Util::Complex const e = Util::cexp({std::log(2.0), M_PI});
    EXPECT_NEAR(-2.0, e.re, 1e-15);
    EXPECT_NEAR(0.0, e.im, 1e-15);
    EXPECT_NEAR(1.0, Util::expj(M_PI / 2).im, 1e-15);
}

TEST(Complex, EvaluateIsARatioOfHornerPolynomials)
{
    Util::Complex const onePlusZ[2] = {{1, 0}, {1, 0}};
    Util::Complex const one[1] = {{1, 0}};
    Util::Complex v = Util::evaluate(onePlusZ, 1, one, 0, {2, 0});
    EXPECT_EQ(3.0, v.re);
    EXPECT_EQ(0.0, v.im);
    // (z² + 1) / (z − i) at z = 2 + i: (4 + 4i) / 2 = 2 + 2i.
    Util::Complex const num[3] = {{1, 0}, {0, 0}, {1, 0}};
    Util::Complex const den[2] = {{0, -1}, {1, 0}};
    v = Util::evaluate(num, 2, den, 1, {2, 1});
    EXPECT_DOUBLE_EQ(2.0, v.re);
    EXPECT_DOUBLE_EQ(2.0, v.im);
    EXPECT_EQ(0.0, Util::evaluate(num, -1, den, 1, {2, 1}).re);
    EXPECT_TRUE(std::isnan(Util::evaluate(num, 2, den, -1, {2, 1}).re));
}

} // namespace
