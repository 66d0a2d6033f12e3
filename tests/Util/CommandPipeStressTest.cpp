// labels: threads
// A high and a low thread exchanging a million commands through a pipe whose rings start at 4
// slots, so that they grow under load, while other threads post from both sides at once.
#include <Cordel/Util/CommandPipe.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace Cordel;
using namespace Cordel::Atomic;

namespace {

int pipeContext = 0;
std::atomic<long long> executions{0};
std::atomic<long long> deletions{0};
std::atomic<long long> faults{0};

// Runs `budget` times in all, alternating sides, then reports itself finished.
class Bouncing : public Command {
public:
    explicit Bouncing(int budget) : budget(budget), remaining(budget) {}
    ~Bouncing() override
    {
        if (remaining != 0 || context != &pipeContext)
            ++faults;
        ++deletions;
    }
    bool ExecuteHigh() override { return step(); }
    bool ExecuteLow() override { return step(); }

private:
    bool step()
    {
        if (remaining <= 0)
            ++faults; // executed after finishing
        ++executions;
        return --remaining > 0;
    }

    int const budget;
    int remaining;
};

using Clock = std::chrono::steady_clock;

} // namespace

TEST(CommandPipeStress, MillionCommandsThroughGrowingRingsWithSeveralPosters)
{
    constexpr int lowPosts = 1000000;
    constexpr int posters = 3;
    constexpr int postsPerPoster = 20000;
    constexpr long long total = lowPosts + posters * postsPerPoster;
    auto budgetOf = [](int i) { return 1 + i % 4; };
    long long expectedExecutions = 0;
    for (int i = 0; i < lowPosts; ++i)
        expectedExecutions += budgetOf(i);
    for (int i = 0; i < postsPerPoster; ++i)
        expectedExecutions += posters * budgetOf(i);

    CriticalSection external("external");
    CommandPipe pipe("stress", &pipeContext, 4, {}, external);
    WaitCondition highWait("high"), lowWait("low");
    pipe.SetHighWaitCondition(&highWait);
    pipe.SetLowWaitCondition(&lowWait);
    std::atomic<bool> stop{false};
    auto const deadline = Clock::now() + std::chrono::minutes(10);
    auto finished = [&] { return deletions.load() == total || Clock::now() > deadline; };
    pipe.ProcessHigh();

    std::thread high([&] {
        CriticalSection section("high side");
        while (!stop) {
            pipe.ProcessHigh();
            section.Lock();
            highWait.Wait(&section, 1u);
            section.Unlock();
        }
        pipe.StopHigh();
    });
    std::thread low([&] {
        CriticalSection section("low side");
        for (int i = 0; i < lowPosts; ++i) {
            pipe.PostHigh(new Bouncing(budgetOf(i)));
            if (i % 64 == 63)
                pipe.ProcessLow();
        }
        while (!finished()) {
            pipe.ProcessLow();
            section.Lock();
            lowWait.Wait(&section, 1u);
            section.Unlock();
        }
    });
    std::vector<std::thread> others;
    for (int t = 0; t < posters; ++t)
        others.emplace_back([&, t] {
            for (int i = 0; i < postsPerPoster; ++i) {
                // Half of them join the low side's traffic, half the high side's.
                if ((i + t) % 2)
                    pipe.PostHigh(new Bouncing(budgetOf(i)));
                else
                    pipe.PostLow(new Bouncing(budgetOf(i)));
            }
        });
    for (auto& t : others)
        t.join();
    low.join();
    stop = true;
    high.join();

    EXPECT_EQ(deletions.load(), total) << "commands lost (or the time bound was hit)";
    EXPECT_EQ(executions.load(), expectedExecutions);
    EXPECT_EQ(faults.load(), 0) << "run after finishing, deleted unfinished, or without the pipe's context";
}
