// labels: threads
#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/LockFreeFIFO.h>
#include <Cordel/Util/detail/CommandPipeClock.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

using namespace Cordel;
using namespace Cordel::Atomic;

TEST(LockFreeFIFO, RingOfFourHoldsThreeAndDoublesInOrderAlsoWhenWrapped)
{
    for (unsigned int shift = 0; shift < 4; ++shift) {
        LockFreeFIFO<int> fifo("f", 4);
        int value = 0;
        // Move the indices round so that the contents wrap past the end of the ring.
        for (unsigned int i = 0; i < shift; ++i) {
            fifo.Push(-1);
            EXPECT_TRUE(fifo.Pop(value));
        }
        for (int i = 1; i <= 3; ++i)
            fifo.Push(i);
        EXPECT_EQ(fifo.GetRingSize(), 4u);
        fifo.Push(4);
        EXPECT_EQ(fifo.GetRingSize(), 8u) << "shift " << shift;
        for (int i = 5; i <= 20; ++i)
            fifo.Push(i);
        for (int i = 1; i <= 20; ++i) {
            ASSERT_TRUE(fifo.Pop(value));
            ASSERT_EQ(value, i) << "shift " << shift;
        }
        EXPECT_FALSE(fifo.Pop(value));
    }
}

TEST(LockFreeFIFO, SizeZeroStillAcceptsAndHugeSizesAreRefused)
{
    LockFreeFIFO<int> fifo("f", 0);
    fifo.Push(7);
    int value = 0;
    EXPECT_TRUE(fifo.Pop(value));
    EXPECT_EQ(value, 7);
    EXPECT_THROW(LockFreeFIFO<int>("big", 0x40000000u), std::bad_alloc);
}

namespace {

// Scripted command: how many runs on each side return true before it finishes, counted runs and
// destructor calls, and a check that nothing runs after finishing.
struct Log {
    int high = 0;
    int low = 0;
    int deleted = 0;
    int ranAfterFinishing = 0;
};

class Scripted : public Command {
public:
    Scripted(Log& log, int highRuns, int lowRuns) : log(log), highRuns(highRuns), lowRuns(lowRuns) {}
    ~Scripted() override { ++log.deleted; }
    bool ExecuteHigh() override { return step(log.high, highRuns); }
    bool ExecuteLow() override { return step(log.low, lowRuns); }

private:
    bool step(int& counter, int& remaining)
    {
        if (finished)
            ++log.ranAfterFinishing;
        ++counter;
        finished = remaining-- <= 0;
        return !finished;
    }

    Log& log;
    int highRuns;
    int lowRuns;
    bool finished = false;
};

constexpr int forever = 1 << 30;

struct Pipe {
    explicit Pipe(checked_value<unsigned int> watchdog = {}) : pipe("test", &context, 4, watchdog, external) {}
    int context = 0;
    CriticalSection external{"external"};
    CommandPipe pipe;
};

} // namespace

TEST(CommandPipe, CommandsPingPongUntilOneSideFinishes)
{
    Pipe p;
    Log highEnds, lowEnds, never, inactive;
    p.pipe.ProcessHigh();
    p.pipe.PostHigh(new Scripted(highEnds, 0, forever));
    p.pipe.PostHigh(new Scripted(lowEnds, forever, 2));
    auto* endless = new Scripted(never, forever, forever);
    p.pipe.PostHigh(endless);
    auto* dormant = new Scripted(inactive, forever, forever);
    dormant->active = false;
    p.pipe.PostLow(dormant);
    EXPECT_EQ(endless->context, &p.context);

    for (int cycle = 1; cycle <= 10; ++cycle) {
        p.pipe.ProcessHigh();
        p.pipe.ProcessLow();
        EXPECT_EQ(never.high, cycle);
        EXPECT_EQ(never.low, cycle);
    }
    EXPECT_EQ(highEnds.high, 1);
    EXPECT_EQ(highEnds.low, 0);
    EXPECT_EQ(highEnds.deleted, 1);
    EXPECT_EQ(lowEnds.high, 3);
    EXPECT_EQ(lowEnds.low, 3);
    EXPECT_EQ(lowEnds.deleted, 1);
    EXPECT_EQ(inactive.high + inactive.low, 0);
    EXPECT_EQ(inactive.deleted, 1);
    EXPECT_EQ(never.deleted, 0);
    EXPECT_EQ(highEnds.ranAfterFinishing + lowEnds.ranAfterFinishing + never.ranAfterFinishing, 0);

    // Cleared from outside, the endless command passes through once more without running.
    endless->active = false;
    p.pipe.ProcessHigh();
    p.pipe.ProcessLow();
    EXPECT_EQ(never.high, 10);
    EXPECT_EQ(never.deleted, 1);
}

TEST(CommandPipe, DestroyingThePipeLeavesQueuedCommandsUndeleted)
{
    Log log;
    auto* command = new Scripted(log, forever, forever);
    {
        Pipe p;
        p.pipe.PostHigh(command);
    }
    EXPECT_EQ(log.deleted, 0);
    delete command;
}

namespace {
unsigned int fakeTick = 0;
unsigned int fakeClock()
{
    return fakeTick;
}

// Puts the watchdogs on fakeTick for the life of the guard.
struct FakeClock {
    FakeClock() { detail::watchdogClock = &fakeClock; }
    ~FakeClock() { detail::watchdogClock = previous; }
    detail::Clock previous = detail::watchdogClock;
};
} // namespace

TEST(CommandPipe, WatchdogTakesOverAfterExactlyItsTimeOut)
{
    // Never finished: the pipe leaves it alone when destroyed, and the test deletes it after.
    Log log;
    Scripted command(log, forever, forever);
    Pipe p(500u);
    FakeClock clock;
    fakeTick = 1000;
    p.pipe.ProcessHigh();
    p.pipe.PostHigh(&command);

    fakeTick = 1499;
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 0) << "T + 499: the high side still counts as alive";

    fakeTick = 1500;
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 1) << "T + 500: the low side ran the high side's work";
    EXPECT_EQ(log.low, 0) << "the drained command waits for the next ProcessLow";
    EXPECT_TRUE(p.external.TryLock());
    p.external.Unlock();

    // Once taken over, every ProcessLow that empties its queue does the high side's work.
    p.pipe.ProcessLow();
    EXPECT_EQ(log.low, 1);
    EXPECT_EQ(log.high, 2);

    // The high side comes back: no more take-over until it is silent again.
    p.pipe.ProcessHigh();
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 2);
    EXPECT_EQ(log.low, 2);
}

TEST(CommandPipe, WatchdogComparisonWrapsLikeTheTick)
{
    Log log;
    Scripted command(log, forever, forever);
    Pipe p(500u);
    FakeClock clock;
    fakeTick = 0xFFFFFF00u;
    p.pipe.ProcessHigh();
    p.pipe.PostHigh(&command);
    // lastHighTick + 500 wraps to 0xF4 in 32 bits, so the high side is already overdue.
    fakeTick = 0xFFFFFF01u;
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 1);
}

TEST(CommandPipe, WithoutWatchdogTakeOverOnlyBeforeFirstProcessHighOrAfterStopHigh)
{
    Log log;
    Scripted command(log, forever, forever);
    Pipe p;
    p.pipe.PostHigh(&command);
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 1) << "before the first ProcessHigh";
    p.pipe.ProcessHigh();
    for (int i = 0; i < 3; ++i)
        p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 1) << "the high side is alive and silent: nothing runs";
    EXPECT_EQ(log.low, 1);
    p.pipe.StopHigh();
    EXPECT_EQ(log.high, 2) << "StopHigh drains on the calling thread";
    p.pipe.ProcessLow();
    EXPECT_EQ(log.low, 2);
    EXPECT_EQ(log.high, 3);
}

TEST(CommandPipe, ExceptionsFromCommandsPassThroughWithEveryLockReleased)
{
    struct Throwing : Command {
        bool ExecuteHigh() override { throw std::runtime_error("high"); }
        bool ExecuteLow() override { throw std::runtime_error("low"); }
    };
    Pipe p;
    Throwing high, low, takenOver;
    p.pipe.ProcessHigh();
    p.pipe.PostHigh(&high);
    EXPECT_THROW(p.pipe.ProcessHigh(), std::runtime_error);
    p.pipe.PostLow(&low);
    EXPECT_THROW(p.pipe.ProcessLow(), std::runtime_error);
    p.pipe.StopHigh();
    p.pipe.PostHigh(&takenOver);
    EXPECT_THROW(p.pipe.ProcessLow(), std::runtime_error);

    // Every lock is free for another thread: the external one and those of both queues.
    bool free = false;
    std::thread([&] {
        free = p.external.TryLock();
        if (free)
            p.external.Unlock();
        Log log;
        p.pipe.PostHigh(new Scripted(log, 0, 0));
        p.pipe.ProcessLow();
        p.pipe.ProcessLow();
        free = free && log.deleted == 1;
    }).join();
    EXPECT_TRUE(free);
}

TEST(CommandPipe, PostsWakeTheOtherSidesWaitCondition)
{
    Pipe p;
    WaitCondition lowWait("low"), highWait("high");
    CriticalSection section("s");
    Log log;
    // Without wait conditions the command is still queued.
    p.pipe.PostHigh(new Scripted(log, 0, forever));
    p.pipe.SetHighWaitCondition(&highWait);
    p.pipe.SetLowWaitCondition(&lowWait);

    section.Lock();
    std::thread high([&] {
        section.Lock();
        section.Unlock();
        p.pipe.ProcessHigh(); // finishes the command and posts it back, waking the low side
    });
    bool woke = lowWait.Wait(&section, 30000u);
    section.Unlock();
    high.join();
    EXPECT_TRUE(woke);
    p.pipe.ProcessLow();
    EXPECT_EQ(log.high, 1);
    EXPECT_EQ(log.deleted, 1);
}
