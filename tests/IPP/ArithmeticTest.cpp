// The element-wise members, reductions and thresholds: edge behaviour, and the inert members.

#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Image.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/Polar.h>
#include <Cordel/IPP/Statistics.h>
#include <Cordel/IPP/Threshold.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <vector>

using namespace Cordel;
using ::testing::ElementsAre;

namespace {

TEST(Arithmetic, CountZeroTouchesNothing)
{
    float f[1] = {3};
    double d[1] = {3};
    int i[1] = {3};
    IPP::AddConstant_InPlace(0, f, 1.0f);
    IPP::AddConstant_InPlace(0, i, 1, 0);
    IPP::Add(0, f, f, f);
    IPP::AddProduct(0, f, f, f);
    IPP::SubConstantRev_InPlace(0, d, 1.0);
    IPP::MulConstant(0, d, d, 2.0);
    IPP::Normalize(0, f, f, 1.0f, 2.0f);
    IPP::Flip(0, d, d);
    IPP::Trim(0, f, {0, 1});
    EXPECT_EQ(3.0f, f[0]);
    EXPECT_EQ(3.0, d[0]);
    EXPECT_EQ(3, i[0]);
    EXPECT_EQ(0.0f, IPP::Sum(0, f));
    EXPECT_EQ(0.0f, IPP::Max(0, f));
    EXPECT_EQ(0.0, IPP::Min(0, d));
    EXPECT_EQ(0.0f, IPP::NormL2(0, f));
    EXPECT_EQ(0.0f, IPP::DotProduct(0, f, f));
    EXPECT_TRUE(IPP::Equal(0, nullptr, nullptr));
}

TEST(Arithmetic, InertMembersLeaveTheirBuffersAlone)
{
    std::vector<float> const f0{-1, 2, -3};
    std::vector<double> const d0{-1, 2, -3};
    std::vector<float> f = f0, g = f0;
    std::vector<double> d = d0, e = d0;
    std::vector<short> s{1, 2, 3};
    std::vector<unsigned int> pixels{1, 2, 3};
    IPP::Add_InPlace(3, s.data(), s.data(), 0);
    IPP::MulConstant_InPlace(3, s.data(), short(2), 0);
    IPP::DivConstant_InPlace(3, f.data(), 2.0f);
    IPP::DivConstant_InPlace(3, d.data(), 2.0);
    IPP::Div_InPlace(3, g.data(), f.data());
    IPP::Div_InPlace(3, e.data(), d.data());
    IPP::Abs(3, g.data(), f.data());
    IPP::Abs(3, e.data(), d.data());
    IPP::Abs_InPlace(3, f.data());
    IPP::Abs_InPlace(3, d.data());
    IPP::Flip_InPlace(3, f.data());
    IPP::Flip_InPlace(3, d.data());
    IPP::Convolve(3, g.data(), 3, g.data(), f.data());
    IPP::Convolve(3, e.data(), 3, e.data(), d.data());
    IPP::ImageSet(7, pixels.data(), 3, 3, 1);
    EXPECT_EQ(0.0, IPP::DotProduct(3, d.data(), d.data()));
    EXPECT_EQ(f0, f);
    EXPECT_EQ(d0, d);
    EXPECT_THAT(s, ElementsAre(1, 2, 3));
    EXPECT_THAT(pixels, ElementsAre(1u, 2u, 3u));
}

TEST(Arithmetic, MembersComputeTheirRows)
{
    float a[3] = {1, 2, 4}, b[3] = {3, 5, 8}, r[3];
    IPP::Div(3, a, b, r);
    EXPECT_THAT(r, ElementsAre(1.0f / 3, 0.4f, 0.5f));
    IPP::Sub_InPlace(3, a, b);
    EXPECT_THAT(b, ElementsAre(2, 3, 4));
    IPP::SubConstantRev_InPlace(3, b, 10.0f);
    EXPECT_THAT(b, ElementsAre(8, 7, 6));
    IPP::Normalize(3, b, r, 6.0f, 4.0f);
    EXPECT_THAT(r, ElementsAre(0.5f, 0.25f, 0.0f));
    IPP::Flip(3, a, r);
    EXPECT_THAT(r, ElementsAre(4, 2, 1));
    int x[2] = {INT_MAX, -5};
    IPP::AddConstant_InPlace(2, x, 1, 12);
    EXPECT_THAT(x, ElementsAre(INT_MIN, -4)); // wraps, scale factor ignored

    IPP::Complex_Float ca[1] = {{1, 2}}, cb[1] = {{3, -4}}, cr[1];
    IPP::Mul(1, ca, cb, cr);
    EXPECT_EQ(11.0f, cr[0].re);
    EXPECT_EQ(2.0f, cr[0].im);
    IPP::Complex_Double da[1] = {{0, 1}}, db[1] = {{0, 1}};
    IPP::Mul_InPlace(1, da, db);
    EXPECT_EQ(-1.0, db[0].re);
    EXPECT_EQ(0.0, db[0].im);
}

TEST(Arithmetic, ReductionsKeepTheirOrderAndPrecision)
{
    // Left to right in float, 1e8 + 1 + 1 ... never grows; pairwise it would.
    std::vector<float> x(1000, 1.0f);
    x[0] = 1e8f;
    EXPECT_EQ(1e8f, IPP::Sum(1000, x.data()));
    EXPECT_EQ(1e8f, IPP::DotProduct(1000, x.data(), std::vector<float>(1000, 1.0f).data()));
    float const squares[2] = {3, 4};
    EXPECT_EQ(5.0f, IPP::NormL2(2, squares));
    float const big[2] = {1e20f, 1e20f}; // squares overflow float, each square is formed in float
    EXPECT_TRUE(std::isinf(IPP::NormL2(2, big)));

    float a[3] = {1, 5, 2}, b[3] = {4, 0, 2};
    IPP::MaxEvery(3, a, b);
    EXPECT_THAT(b, ElementsAre(4, 5, 2));
    unsigned char p[3] = {1, 2, 3}, q[3] = {1, 2, 4};
    EXPECT_TRUE(IPP::Equal(2, p, q));
    EXPECT_FALSE(IPP::Equal(3, p, q));
}

TEST(Threshold, TrimTestsTheMinimumFirst)
{
    float x[5] = {1, -1, 2, -2, 0.5f};
    IPP::Trim(5, x, {-1, 1});
    EXPECT_THAT(x, ElementsAre(1, -1, 1, -1, 0.5f));
    float y[2] = {0, 5};
    IPP::Trim(2, y, {3, 1}); // inverted range: below 3 becomes 3, else above 1 becomes 1
    EXPECT_THAT(y, ElementsAre(3, 1));

    double d[3] = {-1, 0, 1};
    IPP::Threshold_LT_InPlace(3, d, 0.0);
    EXPECT_THAT(d, ElementsAre(0, 0, 1));
    IPP::Threshold_GT_InPlace(3, d, 0.5);
    EXPECT_THAT(d, ElementsAre(0, 0, 0.5));
}

TEST(Threshold, InvertThresholdCases)
{
    float x[5] = {0, 0.25f, -0.25f, 4, -0.0f};
    IPP::Invert_Threshold_InPlace(5, x, 0.5f);
    EXPECT_THAT(x, ElementsAre(2, 2, -2, 0.25f, 2)); // −0 is exactly 0
    double d[2] = {-8, 1e-300};
    IPP::Invert_Threshold_InPlace(2, d, 0.5);
    EXPECT_THAT(d, ElementsAre(-0.125, 2));

    IPP::Complex_Float z[2] = {{0.1f, 0.1f}, {0, 2}};
    IPP::Invert_Threshold_InPlace(2, z, 0.5f);
    EXPECT_EQ(2.0f, z[0].re);
    EXPECT_EQ(0.0f, z[0].im);
    EXPECT_EQ(0.0f, z[1].re);
    EXPECT_EQ(-0.5f, z[1].im);
    IPP::Complex_Double w[1] = {{0.1, 0}};
    IPP::Invert_Threshold_InPlace(1, w, 0.0); // a level not above 0 leaves the array alone
    IPP::Invert_Threshold_InPlace(1, w, -1.0);
    EXPECT_EQ(0.1, w[0].re);
    IPP::Invert_Threshold_InPlace(1, static_cast<IPP::Complex_Double*>(nullptr), 1.0);
    IPP::Invert_Threshold_InPlace(1, w, std::nan("")); // a NaN level is taken: 1/z
    EXPECT_DOUBLE_EQ(10.0, w[0].re);
}

TEST(Polar, MagnitudeAndPhaseRoundTrip)
{
    float const pairs[4] = {3, 4, -1, 0};
    float mag[2], phase[2], back[4];
    IPP::CartToPolar(2, pairs, mag, phase);
    EXPECT_THAT(mag, ElementsAre(5, 1));
    EXPECT_FLOAT_EQ(std::atan2(4.0f, 3.0f), phase[0]);
    EXPECT_FLOAT_EQ(float(M_PI), phase[1]);
    IPP::PolarToCart(2, mag, phase, back);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(pairs[i], back[i], 1e-6f);
    IPP::Complex_Float const z[1] = {{-6, 8}};
    float m[1];
    IPP::Magnitude(1, z, m);
    EXPECT_EQ(10.0f, m[0]);
    double const re[1] = {5}, im[1] = {12};
    double dm[1];
    IPP::Magnitude(1, re, im, dm);
    EXPECT_EQ(13.0, dm[0]);
}

TEST(Image, ChannelsClampAndPremultiply)
{
    unsigned int const pixel = 0x80FF1020u;
    EXPECT_EQ(0x80u, IPP::PixelAlpha(pixel));
    EXPECT_EQ(0xFFu, IPP::PixelRed(pixel));
    EXPECT_EQ(0x10u, IPP::PixelGreen(pixel));
    EXPECT_EQ(0x20u, IPP::PixelBlue(pixel));
    EXPECT_EQ(0x010203u, IPP::MakePixel(1, 2, 3));

    // Two rows of two pixels with a stride of three: the third pixel of each row is not touched.
    std::vector<unsigned int> image{pixel, 0, 7, pixel, 0x01020304u, 7};
    IPP::ImageAddConstant_InPlace(0xAA0102F0u, image.data(), 3, 2, 2);
    EXPECT_THAT(image, ElementsAre(0x80FF12FFu, 0x000102F0u, 7u, 0x80FF12FFu, 0x010305F4u, 7u));
    IPP::ImageAddConstant_InPlace(0x00FFFFFFu, image.data(), 3, 2, 0);
    EXPECT_EQ(0x80FF12FFu, image[0]);
    IPP::ImagePreMultiplyAlphaConstant_InPlace(128, image.data(), 3, 1, 2);
    EXPECT_EQ(0x80800980u, image[0]); // 255·128/255 = 128, 18·128/255 = 9.03 → 9
    EXPECT_EQ(7u, image[2]);
}

TEST(Memory, AlignedVectorZeroFillsWhenItGrows)
{
    aligned_vector<float> v(3, 5.0f);
    v.resize(1);
    v.resize(64);
    EXPECT_EQ(5.0f, v[0]);
    for (std::size_t i = 1; i < v.size(); ++i)
        ASSERT_EQ(0.0f, v[i]) << i;
    IPP::Free(static_cast<float*>(nullptr));
    short* s = IPP::Malloc_Int16(4);
    IPP::Set(4, s, short(-3));
    IPP::Move(3, s, s + 1);
    IPP::Zero(1, s);
    EXPECT_EQ(0, s[0]);
    EXPECT_EQ(-3, s[3]);
    IPP::Free(s);
}

} // namespace
