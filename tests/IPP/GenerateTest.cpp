// Ramps, tones and the random generators.

#include <Cordel/IPP/Generate.h>
#include <Cordel/IPP/Random.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <vector>

using namespace Cordel;
using ::testing::ElementsAre;

namespace {

TEST(Generate, RampEndsOnStartAndEnd)
{
    float r[3];
    IPP::GenerateRamp(3, r, 1, 2);
    EXPECT_THAT(r, ElementsAre(1, 1.5f, 2));
    float one[2] = {0, -1};
    IPP::GenerateRamp(1, one, 7, 9);
    EXPECT_THAT(one, ElementsAre(7, -1));
    std::vector<float> down(101);
    IPP::GenerateRamp(101, down.data(), 1, -1);
    EXPECT_EQ(1.0f, down.front());
    EXPECT_EQ(-1.0f, down.back());
    EXPECT_EQ(0.0f, down[50]);
}

TEST(Generate, ToneStartsAtPhaseZero)
{
    float t[4];
    IPP::GenerateTone(4, t, 1, 4);
    EXPECT_THAT(t, ElementsAre(0, 1, ::testing::FloatNear(0, 1e-7f), -1));
    float untouched[2] = {5, 5};
    IPP::GenerateTone(2, untouched, 1, 0);
    EXPECT_THAT(untouched, ElementsAre(5, 5));
    std::vector<float> tone(100);
    IPP::GenerateTone(100, tone.data(), 0.5f, 50);
    EXPECT_NEAR(0.5f, tone[62], 0.01f); // near the crest of the second cycle
    EXPECT_EQ(0.5f * float(std::sin(double(2.0f * 62.0f * 3.1415927f / 50.0f))), tone[62]);
}

TEST(Generate, SimpleRandFromSeedZero)
{
    int seed = 0;
    EXPECT_EQ(38, IPP::simpleRand(seed));
    EXPECT_EQ(2531011, seed);
    int const second = IPP::simpleRand(seed);
    EXPECT_EQ(int((2531011u * 214013u + 2531011u) >> 16 & 0x7FFF), second);
}

TEST(Generate, UniformDrawsAreWholeStepsAndContinueAcrossCalls)
{
    IPP::RandUniformState_Float* state = nullptr;
    IPP::RandUniformInit(&state, 0, 32767, 12345);
    ASSERT_NE(nullptr, state);
    std::vector<float> a(1000);
    IPP::RandUniformGenerate(state, 1000, a.data());
    for (float v : a)
        ASSERT_TRUE(v == std::floor(v) && v >= 0 && v <= 32767) << v;
    IPP::RandUniformFree(state);

    IPP::RandUniformState_Float *whole = nullptr, *split = nullptr;
    IPP::RandUniformInit(&whole, -1, 1, 7);
    IPP::RandUniformInit(&split, -1, 1, 7);
    std::vector<float> one(10), two(10);
    IPP::RandUniformGenerate(whole, 10, one.data());
    IPP::RandUniformGenerate(split, 4, two.data());
    IPP::RandUniformGenerate(split, 6, two.data() + 4);
    EXPECT_EQ(one, two);
    int seed = 7;
    EXPECT_EQ(float(IPP::simpleRand(seed)) * (2.0f / 32767.0f) - 1.0f, one[0]);
    IPP::RandUniformFree(whole);
    IPP::RandUniformFree(split);
}

TEST(Random, GeneratorFillsTheWholeVector)
{
    Util::RandGenerator uniform({-2, 2}, Util::RandGenerator::Uniform, 3u);
    std::vector<float> v(500, 9.0f);
    uniform.Compute(v);
    for (float x : v)
        ASSERT_TRUE(x >= -2 && x <= 2) << x;
    std::vector<float> empty;
    uniform.Compute(empty);
    EXPECT_TRUE(empty.empty());

    Util::RandGenerator none({0, 1}, Util::RandGenerator::Gaussian, 3u);
    std::vector<float> kept(3, 9.0f);
    none.Compute(kept);
    EXPECT_THAT(kept, ElementsAre(9, 9, 9));
}

TEST(Random, SimpleGeneratorKeepsOnlyTheDrawAsState)
{
    Util::SimpleRandGenerator g(0u);
    EXPECT_EQ(38u, g.GetNext());
    EXPECT_EQ(162u, g.GetNext()); // from 38: 38·214013 + 2531011 = 10663505
    g.Seed(0u);
    EXPECT_EQ(38.0f / 32767.0f, g.GetNextFloat());

    // The state never leaves 0..32767, so the sequence repeats within 32768 draws.
    Util::SimpleRandGenerator cycle(12345u);
    cycle.GetNext();
    std::set<unsigned int> seen;
    unsigned int draws = 0;
    while (seen.insert(cycle.GetNext()).second)
        ASSERT_LE(++draws, 32768u);
    Util::SimpleRandGenerator other(*seen.begin());
    Util::SimpleRandGenerator same(*seen.begin());
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(other.GetNext(), same.GetNext());
}

} // namespace
