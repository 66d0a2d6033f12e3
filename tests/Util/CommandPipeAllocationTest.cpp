// labels: threads
// The high side of a pipe must not allocate in steady state. This program replaces the allocator
// to count the allocations made on the high thread while it runs.
#include <Cordel/Util/CommandPipe.h>

#include <gtest/gtest.h>
#include <ThreadAllocationCount.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace Cordel;
using namespace Cordel::Atomic;

namespace {

std::atomic<int> repliesDeleted{0};

// Posted by the high side to the low side, which deletes it.
struct Reply : Command {
    ~Reply() override { ++repliesDeleted; }
    bool ExecuteHigh() override { return false; }
    bool ExecuteLow() override { return false; }
};

// Circles between the sides for as long as it is active.
struct Circling : Command {
    bool ExecuteHigh() override { return true; }
    bool ExecuteLow() override { return true; }
};

} // namespace

TEST(CommandPipeAllocation, HighSideAllocatesNothingInSteadyState)
{
    CriticalSection external("external");
    CommandPipe pipe("alloc", nullptr, 64, 1000u, external);
    WaitCondition wait("low");
    pipe.SetLowWaitCondition(&wait);

    constexpr int rounds = 200000;
    constexpr int replyEvery = 10;
    std::vector<Command*> circling;
    for (int i = 0; i < 8; ++i) {
        circling.push_back(new Circling);
        pipe.PostHigh(circling.back());
    }
    // Made before the high thread starts: posting one must not allocate.
    std::vector<Reply*> replies;
    for (int i = 0; i < rounds / replyEvery; ++i)
        replies.push_back(new Reply);

    std::atomic<bool> highDone{false};
    std::atomic<bool> lowBehind{false};
    std::thread high([&] {
        CordelTest::countThisThread = true;
        auto const limit = std::chrono::steady_clock::now() + std::chrono::minutes(5);
        for (int i = 0; i < rounds; ++i) {
            pipe.ProcessHigh();
            if (i % replyEvery == 0) {
                int const k = i / replyEvery;
                // Never more than a few replies in flight, so that the rings never have to grow.
                while (repliesDeleted.load() < k - 16 && !lowBehind)
                    if (std::chrono::steady_clock::now() > limit)
                        lowBehind = true;
                    else
                        std::this_thread::yield();
                pipe.PostLow(replies[k]);
            }
        }
        CordelTest::countThisThread = false;
        highDone = true;
    });
    while (!highDone) {
        pipe.ProcessLow();
        std::this_thread::yield();
    }
    high.join();
    pipe.ProcessLow();

    EXPECT_FALSE(lowBehind.load());
    EXPECT_EQ(CordelTest::threadAllocations.load(), 0);
    EXPECT_EQ(repliesDeleted.load(), rounds / replyEvery);

    // Finished from outside, the circling commands are handed over and deleted by the low side.
    for (Command* c : circling)
        c->active = false;
    pipe.ProcessLow();
    pipe.ProcessHigh();
    pipe.ProcessLow();
}
