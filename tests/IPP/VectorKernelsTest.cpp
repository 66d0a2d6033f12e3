// The hot loops are compiled once per instruction set; each must give, element for element and
// bit for bit, what the portable definition gives, on every instruction set this machine runs.

#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/Interleave.h>
#include <Cordel/IPP/Statistics.h>

#include "InstructionSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

using namespace Cordel;
using IPP::InstructionSet;

namespace {

float const inf = std::numeric_limits<float>::infinity();
float const nan = std::numeric_limits<float>::quiet_NaN();

// Values that catch rounding, saturation and ordering faults, followed by random ones.
std::vector<float> testFloats(unsigned int n, unsigned int seed)
{
    std::vector<float> const special{0.0f, -0.0f, 1.5f, -1.5f, 0.5f, -0.5f, 0.49999997f, -0.49999997f, 2.5f,
                                     -1.7f, 32767.0f, 32767.5f, 32768.0f, -32768.0f, -32768.5f, -32769.0f,
                                     40000.0f, -40000.0f, 2147483520.0f, 2147483648.0f, -2147483648.0f,
                                     -2147483904.0f, 1e30f, -1e30f, inf, -inf, nan, 1e-40f, -1e-40f,
                                     1e-45f, 8388607.5f, -8388607.5f, 4194303.75f, 0.75f, -2.5f, 6.0f, 3e-39f};
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> wide(-70000.0f, 70000.0f);
    std::vector<float> v(n);
    for (unsigned int i = 0; i < n; ++i)
        v[i] = (i + seed) % 3 == 0 ? special[(i * 7 + seed) % special.size()] : wide(random);
    return v;
}

template <typename T>
::testing::AssertionResult sameBits(std::vector<T> const& expected, std::vector<T> const& actual)
{
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (std::memcmp(&expected[i], &actual[i], sizeof(T)) != 0)
            return ::testing::AssertionFailure() << "element " << i << ": expected " << +expected[i] << ", got "
                                                 << +actual[i];
    return ::testing::AssertionSuccess();
}

class VectorKernels : public CordelTest::OnEveryInstructionSet<> {
protected:
    // Lengths around every vector width, and starts that are not aligned.
    static constexpr unsigned int lengths[] = {0, 1, 3, 7, 8, 15, 16, 17, 31, 33, 63, 64, 65, 127, 1000, 4099};
};

TEST_P(VectorKernels, ArithmeticMatchesTheScalarDefinition)
{
    for (unsigned int n : lengths) {
        std::vector<float> a = testFloats(n + 1, n), b = testFloats(n + 1, n + 5), c = testFloats(n + 1, n + 9);
        std::vector<float> sum(n), product(n), accumulated(c.begin() + 1, c.end()), scaled(n);
        std::vector<float> expectSum(n), expectProduct(n), expectAccumulated(n), expectScaled(n);
        for (unsigned int i = 0; i < n; ++i) {
            expectSum[i] = a[i + 1] + b[i + 1];
            float const ab = a[i + 1] * b[i + 1];
            expectAccumulated[i] = c[i + 1] + ab;
            expectScaled[i] = a[i + 1] * 0.3f;
        }
        IPP::Add(n, a.data() + 1, b.data() + 1, sum.data());
        IPP::AddProduct(n, a.data() + 1, b.data() + 1, accumulated.data());
        IPP::MulConstant(n, a.data() + 1, scaled.data(), 0.3f);
        EXPECT_TRUE(sameBits(expectSum, sum)) << n;
        EXPECT_TRUE(sameBits(expectAccumulated, accumulated)) << n;
        EXPECT_TRUE(sameBits(expectScaled, scaled)) << n;

        // In place: the loops read each element before they overwrite it, whole vectors and the
        // masked tail alike.
        std::vector<float> x(a.begin() + 1, a.end());
        IPP::MulConstant_InPlace(n, x.data(), 0.3f);
        EXPECT_TRUE(sameBits(expectScaled, x)) << n;
        x.assign(a.begin() + 1, a.end());
        IPP::Add_InPlace(n, b.data() + 1, x.data());
        EXPECT_TRUE(sameBits(expectSum, x)) << n;

        std::vector<double> da(a.begin(), a.end()), db(b.begin(), b.end()), dsum(n + 1), dscaled(n);
        IPP::Add(n, da.data() + 1, db.data() + 1, dsum.data() + 1);
        IPP::MulConstant_InPlace(n, da.data() + 1, 0.1);
        for (unsigned int i = 0; i < n; ++i) {
            double const s = double(a[i + 1]) + double(b[i + 1]);
            double const m = double(a[i + 1]) * 0.1;
            ASSERT_EQ(0, std::memcmp(&s, &dsum[i + 1], sizeof s)) << i;
            ASSERT_EQ(0, std::memcmp(&m, &da[i + 1], sizeof m)) << i;
        }
    }
}

// Long runs first bring their stores to an alignment boundary: every element must still be
// written once, whatever the destination's offset from a cache line, and nothing around it.
TEST_P(VectorKernels, LongRunsCoverEveryElementAtEveryDestinationOffset)
{
    unsigned int const n = 4099;
    std::vector<float> const x = testFloats(n, 11);
    std::vector<short> xs(n);
    for (unsigned int i = 0; i < n; ++i)
        xs[i] = static_cast<short>(i * 37);
    // The window from a 64-byte boundary inside an over-long buffer, refilled with a sentinel.
    auto const window = [](auto& v, unsigned int size) {
        auto* p = v.data();
        while (reinterpret_cast<std::uintptr_t>(p) % 64 != 0)
            ++p;
        std::fill(p, p + size, -7);
        return p;
    };
    auto const run = [&](unsigned int offset, auto& s, auto& i32, auto& f, auto& g) {
        unsigned int const size = n + 48;
        short* const sp = window(s, size);
        int* const ip = window(i32, size);
        float* const fp = window(f, size);
        float* const gp = window(g, size);
        IPP::Convert(n, x.data(), sp + offset, -15, true);
        IPP::Convert(n, x.data(), ip + offset, -31, true);
        IPP::MulConstant(n, x.data(), fp + offset, 0.25f);
        IPP::Convert(n, xs.data(), gp + offset, 15);
        return std::tuple(std::vector<short>(sp, sp + size), std::vector<int>(ip, ip + size),
                          std::vector<float>(fp, fp + size), std::vector<float>(gp, gp + size));
    };
    std::vector<short> s(n + 96);
    std::vector<int> i32(n + 64);
    std::vector<float> f(n + 64), g(n + 64);
    for (unsigned int offset = 0; offset < 32; ++offset) {
        ASSERT_TRUE(IPP::UseInstructionSet(InstructionSet::Portable));
        auto const [expectS, expectI, expectF, expectG] = run(offset, s, i32, f, g);
        ASSERT_TRUE(IPP::UseInstructionSet(GetParam()));
        auto const [actualS, actualI, actualF, actualG] = run(offset, s, i32, f, g);
        EXPECT_TRUE(sameBits(expectS, actualS)) << offset;
        EXPECT_TRUE(sameBits(expectI, actualI)) << offset;
        EXPECT_TRUE(sameBits(expectF, actualF)) << offset;
        EXPECT_TRUE(sameBits(expectG, actualG)) << offset;
    }
}

// Long runs pick their direction from where dst lies against its sources modulo a 4096-byte page,
// and align the first source: each placement must still write every element once and nothing
// around it, including two sources that want different directions.
TEST_P(VectorKernels, LongRunsCoverEveryElementWhereverTheSourcesLie)
{
    unsigned int const n = 4099;
    // Element positions from a page boundary: before and after dst's within the page, by a few
    // bytes and by nearly half a page, and not a multiple of the vector.
    unsigned int const dstAt = 512 + 3;
    unsigned int const sourceAt[] = {dstAt, dstAt - 1, dstAt - 16, dstAt - 500, dstAt + 1, dstAt + 16, dstAt + 500, 7};
    auto const page = [](auto& v, unsigned int at) {
        auto* p = v.data();
        while (reinterpret_cast<std::uintptr_t>(p) % 4096 != 0)
            ++p;
        return p + at;
    };
    std::vector<float> sourceA(n + 2048), sourceB(n + 2048), f(n + 2048);
    std::vector<int> i32(n + 2048);
    for (unsigned int a : sourceAt) {
        for (unsigned int b : {dstAt - 16, dstAt + 16}) {
            std::vector<float> const x = testFloats(n, a), y = testFloats(n, b);
            std::copy(x.begin(), x.end(), page(sourceA, a));
            std::copy(y.begin(), y.end(), page(sourceB, b));
            auto const run = [&] {
                std::fill(f.begin(), f.end(), -7.0f);
                std::fill(i32.begin(), i32.end(), -7);
                float const* const pa = page(sourceA, a);
                IPP::Convert(n, pa, page(i32, dstAt), -31, true);
                std::vector<float> scaled(f.size()), sum;
                IPP::MulConstant(n, pa, page(f, dstAt), 0.25f);
                scaled = f;
                std::fill(f.begin(), f.end(), -7.0f);
                IPP::Add(n, pa, page(sourceB, b), page(f, dstAt));
                return std::tuple(i32, scaled, f);
            };
            ASSERT_TRUE(IPP::UseInstructionSet(InstructionSet::Portable));
            auto const [expectI, expectScaled, expectSum] = run();
            ASSERT_TRUE(IPP::UseInstructionSet(GetParam()));
            auto const [actualI, actualScaled, actualSum] = run();
            EXPECT_TRUE(sameBits(expectI, actualI)) << a << " " << b;
            EXPECT_TRUE(sameBits(expectScaled, actualScaled)) << a << " " << b;
            EXPECT_TRUE(sameBits(expectSum, actualSum)) << a << " " << b;
        }
    }
}

TEST_P(VectorKernels, ConversionsMatchTheScalarDefinition)
{
    for (unsigned int n : lengths) {
        std::vector<float> const x = testFloats(n, n + 1);
        // Multipliers on both sides of the float-width kernels' limits, and ones that make halves
        // of odd values and products beyond float's range.
        for (int scaleFactor : {0, -15, -31, 3, 1, 2, 24, -64, 64, -65, 65, -127, 150, -1000}) {
            float const m16 = float(int(1u << (unsigned(-scaleFactor) & 31u)));
            double const m32 = std::pow(2.0, -scaleFactor);
            for (bool round : {false, true}) {
                std::vector<short> s(n), expectS(n);
                std::vector<int> i32(n), expectI(n);
                for (unsigned int i = 0; i < n; ++i) {
                    float v = x[i] * m16;
                    v = v + (round ? 0.5f : 0.0f);
                    expectS[i] = std::isnan(v) ? 0 : v >= 32767.0f ? 32767 : v <= -32768.0f ? -32768 : short(v);
                    double d = double(x[i]) * m32;
                    if (round)
                        d += d >= 0 ? 0.5 : -0.5;
                    expectI[i] = std::isnan(d) ? 0 : d >= 2147483647.0 ? 2147483647 : d <= -2147483648.0 ? INT32_MIN : int(d);
                }
                IPP::Convert(n, x.data(), s.data(), scaleFactor, round);
                IPP::Convert(n, x.data(), i32.data(), scaleFactor, round);
                EXPECT_TRUE(sameBits(expectS, s)) << n << " " << scaleFactor << " " << round;
                EXPECT_TRUE(sameBits(expectI, i32)) << n << " " << scaleFactor << " " << round;
            }
        }

        std::vector<short> shorts(n);
        std::vector<int> ints(n);
        for (unsigned int i = 0; i < n; ++i) {
            shorts[i] = short(i * 2654435761u >> 16);
            ints[i] = int(i * 2654435761u);
        }
        for (int scaleFactor : {0, 15, -2}) {
            std::vector<float> f(n), expect(n);
            float const factor = 1.0f / float(int(1u << (unsigned(scaleFactor) & 31u)));
            for (unsigned int i = 0; i < n; ++i)
                expect[i] = float(shorts[i]) * factor;
            IPP::Convert(n, shorts.data(), f.data(), scaleFactor);
            EXPECT_TRUE(sameBits(expect, f)) << n << " " << scaleFactor;
        }
        std::vector<float> f(n), expect(n);
        for (unsigned int i = 0; i < n; ++i)
            expect[i] = float(ints[i]);
        IPP::Convert(n, ints.data(), f.data(), 7);
        EXPECT_TRUE(sameBits(expect, f)) << n;
    }
}

TEST_P(VectorKernels, InterleaveRoundTripsBothTypes)
{
    for (unsigned int n : lengths) {
        std::vector<float> left = testFloats(n, 1), right = testFloats(n, 2), frames(2 * n), l(n), r(n);
        IPP::Interleave(n, left.data(), right.data(), frames.data(), false);
        for (unsigned int j = 0; j < n; ++j) {
            ASSERT_EQ(0, std::memcmp(&frames[2 * j], &left[j], 4));
            ASSERT_EQ(0, std::memcmp(&frames[2 * j + 1], &right[j], 4));
        }
        IPP::Deinterleave(n, frames.data(), l.data(), r.data(), true);
        EXPECT_TRUE(sameBits(left, l));
        EXPECT_TRUE(sameBits(right, r));

        std::vector<short> sl(n), sr(n), sframes(2 * n), sl2(n), sr2(n);
        for (unsigned int j = 0; j < n; ++j) {
            sl[j] = short(j * 3 + 1);
            sr[j] = short(-int(j) * 5);
        }
        IPP::Interleave(n, sl.data(), sr.data(), sframes.data(), false);
        for (unsigned int j = 0; j < n; ++j)
            ASSERT_TRUE(sframes[2 * j] == sl[j] && sframes[2 * j + 1] == sr[j]) << j;
        IPP::Deinterleave(n, sframes.data(), sl2.data(), sr2.data(), false);
        EXPECT_EQ(sl, sl2);
        EXPECT_EQ(sr, sr2);
    }
}

template <typename T>
T scalarExtreme(std::vector<T> const& x, bool greater)
{
    if (x.empty())
        return 0;
    T m = x[0];
    for (T v : x)
        if (greater ? v > m : v < m)
            m = v;
    return m;
}

template <typename T>
void expectExtremesMatch(std::vector<T> const& x, std::string const& what)
{
    auto const n = static_cast<unsigned int>(x.size());
    T const max = IPP::Max(n, x.data());
    T const min = IPP::Min(n, x.data());
    T const expectMax = scalarExtreme(x, true);
    T const expectMin = scalarExtreme(x, false);
    EXPECT_EQ(0, std::memcmp(&expectMax, &max, sizeof(T))) << what << " max " << expectMax << " got " << max;
    EXPECT_EQ(0, std::memcmp(&expectMin, &min, sizeof(T))) << what << " min " << expectMin << " got " << min;
}

TEST_P(VectorKernels, MaxAndMinKeepTheFirstOfTiesAndALeadingNaN)
{
    for (unsigned int n : lengths) {
        std::vector<float> x = testFloats(n, n + 3);
        for (float& v : x)
            v = std::isnan(v) ? 1.0f : v;
        expectExtremesMatch(x, "random " + std::to_string(n));
        expectExtremesMatch(std::vector<double>(x.begin(), x.end()), "double " + std::to_string(n));
        if (n < 2)
            continue;
        // Zeros of both signs: the result's sign comes from the first zero in index order.
        for (unsigned int at : {0u, 1u, n / 2, n - 1}) {
            std::vector<float> zeros(n, -1.0f);
            zeros[n - 1 - at / 2] = 0.0f;
            zeros[at] = -0.0f;
            expectExtremesMatch(zeros, "zeros " + std::to_string(n) + " at " + std::to_string(at));
            for (float& v : zeros)
                v = -v;
            expectExtremesMatch(zeros, "negated zeros " + std::to_string(n));
        }
        x[0] = nan;
        expectExtremesMatch(x, "leading NaN " + std::to_string(n));
        x[0] = 0.25f;
        x[n / 2] = nan;
        expectExtremesMatch(x, "inner NaN " + std::to_string(n));
    }
}

CORDEL_ON_EVERY_INSTRUCTION_SET(VectorKernels);

} // namespace
