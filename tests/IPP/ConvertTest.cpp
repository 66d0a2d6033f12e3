// Conversions between sample types: the two rounding rules, saturation and scale factors.

#include <Cordel/IPP/Convert.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using namespace Cordel;
using ::testing::ElementsAre;

namespace {

TEST(Convert, FloatToShortAddsAHalfEvenToNegativeValues)
{
    float const x[6] = {1.5f, -1.5f, 40000, -40000, -1.7f, 0.49999997f};
    short s[6];
    IPP::Convert(6, x, s, 0, true);
    EXPECT_THAT(s, ElementsAre(2, -1, 32767, -32768, -1, 1)); // the half is added in float
    IPP::Convert(6, x, s, 0, false);
    EXPECT_THAT(s, ElementsAre(1, -1, 32767, -32768, -1, 0));
}

TEST(Convert, FloatToShortScaleFactorShiftsModulo32)
{
    float const x[2] = {0.5f, -0.25f};
    short s[2];
    IPP::Convert(2, x, s, -15, false);
    EXPECT_THAT(s, ElementsAre(16384, -8192));
    float const one[1] = {1};
    IPP::Convert(1, one, s, -31, false); // 1 << 31 wraps to −2^31
    EXPECT_EQ(-32768, s[0]);
    float const nan[1] = {NAN};
    IPP::Convert(1, nan, s, 0, true);
    EXPECT_EQ(0, s[0]);
}

TEST(Convert, FloatToIntRoundsHalfAwayFromZeroAndSaturates)
{
    float const x[6] = {-1.5f, 1.5f, 0.49999997f, -2.5f, 3e9f, -3e9f};
    int i[6];
    IPP::Convert(6, x, i, 0, true);
    EXPECT_THAT(i, ElementsAre(-2, 2, 0, -3, INT_MAX, INT_MIN));
    IPP::Convert(6, x, i, 0, false);
    EXPECT_THAT(i, ElementsAre(-1, 1, 0, -2, INT_MAX, INT_MIN));
    float const unit[1] = {0.75f};
    IPP::Convert(1, unit, i, -31, false);
    EXPECT_EQ(1610612736, i[0]);
    IPP::Convert(1, unit, i, 2, true);
    EXPECT_EQ(0, i[0]); // 0.1875 rounds to 0
}

TEST(Convert, IntegersToFloatingPoint)
{
    short const s[3] = {-32768, 16384, 1};
    float f[3];
    IPP::Convert(3, s, f, 15);
    EXPECT_THAT(f, ElementsAre(-1.0f, 0.5f, 1.0f / 32768));
    double d[3];
    IPP::Convert(3, s, d, 0);
    EXPECT_THAT(d, ElementsAre(-32768, 16384, 1));
    int const i[2] = {16777217, -7};
    float g[2];
    IPP::Convert(2, i, g, 30); // the scale factor is ignored
    EXPECT_THAT(g, ElementsAre(16777216.0f, -7.0f));
    unsigned char const b[2] = {0, 255};
    IPP::Convert(2, b, g);
    EXPECT_THAT(g, ElementsAre(0.0f, 255.0f));
    double const dd[1] = {0.1};
    IPP::Convert(1, dd, f);
    EXPECT_EQ(0.1f, f[0]);
}

TEST(Convert, InertConversionsLeaveTheDestination)
{
    int const i[1] = {5};
    double d[1] = {9};
    IPP::Convert(1, i, d, 0);
    EXPECT_EQ(9, d[0]);
    int o[1] = {9};
    IPP::Convert(1, d, o, 0, true);
    EXPECT_EQ(9, o[0]);
    float const f[1] = {3};
    unsigned char b[1] = {9};
    IPP::Convert(1, f, b, 0, true);
    EXPECT_EQ(9, b[0]);
}

} // namespace
