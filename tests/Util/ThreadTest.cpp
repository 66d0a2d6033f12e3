// labels: threads
#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace Cordel;

namespace {

// A body that runs until released, counting its runs.
class Gate : public Util::Thread {
public:
    Gate() : Thread("gate") {}
    ~Gate() override
    {
        Release();
        WaitThread();
    }

    void Release() { open = true; }
    bool WaitUntilEntered(int runs) const
    {
        auto const limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (entered.load() < runs)
            if (std::chrono::steady_clock::now() > limit)
                return false;
            else
                std::this_thread::yield();
        return true;
    }

    std::atomic<int> entered{0};
    std::atomic<int> finished{0};
    std::atomic<bool> open{false};

protected:
    void Run() override
    {
        ++entered;
        while (!open)
            std::this_thread::yield();
        ++finished;
    }
};

} // namespace

TEST(Thread, WaitOnANeverStartedThreadReturnsAtOnce)
{
    Gate gate;
    EXPECT_TRUE(gate.WaitThread());
    EXPECT_FALSE(gate.IsThreadRunning());
}

TEST(Thread, WaitIgnoresItsTimeOutAndReturnsAfterTheBody)
{
    Gate gate;
    gate.StartThread();
    ASSERT_TRUE(gate.WaitUntilEntered(1));
    EXPECT_TRUE(gate.IsThreadRunning());
    std::thread releaser([&] {
        Util::Thread::SleepThread(50);
        gate.Release();
    });
    EXPECT_TRUE(gate.WaitThread(10u));
    EXPECT_EQ(gate.finished.load(), 1);
    EXPECT_FALSE(gate.IsThreadRunning());
    EXPECT_TRUE(gate.WaitThread()) << "waiting again after the end";
    releaser.join();
}

TEST(Thread, EndedBodyLeavesTheObjectIdleAndRestartable)
{
    Gate gate;
    gate.Release();
    gate.StartThread();
    gate.WaitThread();
    EXPECT_FALSE(gate.IsThreadRunning());
    gate.StartThread();
    gate.WaitThread();
    EXPECT_EQ(gate.finished.load(), 2);
}

TEST(Thread, SecondStartWaitsForTheFirstRun)
{
    Gate gate;
    gate.StartThread();
    ASSERT_TRUE(gate.WaitUntilEntered(1));
    std::thread starter([&] { gate.StartThread(); });
    // The second run cannot begin before the first ends.
    EXPECT_EQ(gate.entered.load(), 1);
    gate.Release();
    starter.join();
    ASSERT_TRUE(gate.WaitUntilEntered(2));
    gate.WaitThread();
    EXPECT_EQ(gate.finished.load(), 2);
}

namespace {

// The body keeps its flags outside the object: it is still running while the object is torn down.
std::atomic<bool> workerEntered{false};
std::atomic<bool> workerOpen{false};
std::atomic<bool> workerDone{false};

struct Worker : Util::Thread {
    Worker() : Thread("worker") {}
    void Run() override
    {
        workerEntered = true;
        while (!workerOpen)
            std::this_thread::yield();
        workerDone = true;
    }
};

} // namespace

TEST(Thread, DestroyingARunningThreadWaitsForItsBody)
{
    auto* worker = new Worker;
    worker->StartThread();
    while (!workerEntered)
        std::this_thread::yield();
    std::thread releaser([] {
        Util::Thread::SleepThread(20);
        workerOpen = true;
    });
    delete worker;
    EXPECT_TRUE(workerDone.load());
    releaser.join();
}

TEST(Thread, IdentifiesThreadsAndSleepsZeroPromptly)
{
    unsigned int other = 0;
    std::thread([&] { other = Util::Thread::GetCurrentThreadID(); }).join();
    EXPECT_NE(other, Util::Thread::GetCurrentThreadID());
    EXPECT_NE(other, 0u);
    auto const start = std::chrono::steady_clock::now();
    Util::Thread::SleepThread(0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
