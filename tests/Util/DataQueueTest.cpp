#include <Cordel/Util/DataQueue.h>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

using namespace Cordel;

namespace {

std::vector<unsigned char> frames(unsigned char first, unsigned int count, unsigned int frameBytes = 4)
{
    std::vector<unsigned char> bytes(count * frameBytes);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

} // namespace

TEST(DataQueue, PushReturnsBytesAndPopReturnsFrames)
{
    Util::DataQueue queue(2, 2, 4);
    auto const in = frames(0, 3);
    EXPECT_EQ(queue.Push(in.data(), 3), 12u);
    EXPECT_EQ(queue.GetSize(), 3u);
    std::vector<unsigned char> out(40, 0xEE);
    EXPECT_EQ(queue.Pop(out.data(), 10), 3u) << "only what is queued";
    EXPECT_TRUE(std::equal(in.begin(), in.end(), out.begin()));
    EXPECT_EQ(out[12], 0xEE);
    EXPECT_EQ(queue.Pop(out.data(), 1), 0u);
    EXPECT_EQ(queue.GetSize(), 0u);
}

TEST(DataQueue, AppendEndingAtTheEndCompactsAndDoubles)
{
    Util::DataQueue queue(4, 1, 4);
    queue.Push(frames(0, 3).data(), 3);
    std::vector<unsigned char> out(16);
    // 16 bytes would end exactly at the end of a 16-byte storage: the slow path doubles it.
    queue.Push(frames(12, 1).data(), 1);
    EXPECT_EQ(queue.GetSize(), 4u);
    queue.Push(frames(16, 3).data(), 3);
    EXPECT_EQ(queue.GetSize(), 7u);
    std::vector<unsigned char> all(28);
    EXPECT_EQ(queue.Pop(all.data(), 7), 7u);
    EXPECT_EQ(all, frames(0, 7));
}

TEST(DataQueue, CompactionMovesTheRemainingFramesToTheFront)
{
    Util::DataQueue queue(4, 1, 4);
    queue.Push(frames(0, 3).data(), 3);
    std::vector<unsigned char> out(8);
    EXPECT_EQ(queue.Pop(out.data(), 2), 2u);
    EXPECT_EQ(out, frames(0, 2));
    // 12 + 12 bytes does not fit in 16: the one queued frame moves to the front, no growth needed.
    queue.Push(frames(100, 3).data(), 3);
    std::vector<unsigned char> rest(16);
    EXPECT_EQ(queue.Pop(rest.data(), 4), 4u);
    auto expected = frames(8, 1);
    auto const more = frames(100, 3);
    expected.insert(expected.end(), more.begin(), more.end());
    EXPECT_EQ(rest, expected);
}

TEST(DataQueue, SteadyStreamKeepsOrderAcrossManyCompactions)
{
    Util::DataQueue queue(3, 2, 5);
    unsigned char next = 0;
    unsigned char expect = 0;
    std::vector<unsigned char> out(6 * 7);
    for (int round = 0; round < 500; ++round) {
        unsigned int const n = 1 + round % 7;
        auto const in = frames(next, n, 6);
        next = static_cast<unsigned char>(next + 6 * n);
        queue.Push(in.data(), n);
        unsigned int const got = queue.Pop(out.data(), (round * 5) % 7 + 1);
        for (unsigned int i = 0; i < got * 6; ++i, ++expect)
            ASSERT_EQ(out[i], expect) << "round " << round;
    }
}

TEST(DataQueue, ClearEmptiesAndDegenerateSizesDoNotCrash)
{
    Util::DataQueue queue(2, 1, 8);
    queue.Push(frames(0, 2, 2).data(), 2);
    queue.Clear();
    EXPECT_EQ(queue.GetSize(), 0u);

    Util::DataQueue noCapacity(2, 1, 0);
    EXPECT_EQ(noCapacity.Push(frames(0, 5, 2).data(), 5), 10u);
    std::vector<unsigned char> out(10);
    EXPECT_EQ(noCapacity.Pop(out.data(), 5), 5u);
    EXPECT_EQ(out, frames(0, 5, 2));

    Util::DataQueue noFrame(0, 4, 8);
    EXPECT_EQ(noFrame.Push(out.data(), 3), 0u);
    EXPECT_EQ(noFrame.GetSize(), 0u);
    EXPECT_EQ(noFrame.Pop(out.data(), 3), 0u);
}
