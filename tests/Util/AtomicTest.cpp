// labels: threads
#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/CriticalSection.h>
#include <Cordel/Util/detail/Deadline.h>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace Cordel;
using namespace Cordel::Atomic;

TEST(Atomic, IncrementAndDecrementReturnTheNewValueAndWrap)
{
    volatile unsigned int x = 0xFFFFFFFFu;
    EXPECT_EQ(AtomicIncrement(x), 0u);
    EXPECT_EQ(x, 0u);
    EXPECT_EQ(AtomicDecrement(x), 0xFFFFFFFFu);
    EXPECT_EQ(AtomicIncrement(x), 0u);
    EXPECT_EQ(AtomicIncrement(x), 1u);
}

TEST(Atomic, CompareExchangeTakesExchangeBeforeComparandAndReportsSuccess)
{
    volatile unsigned int x = 7;
    EXPECT_TRUE(AtomicCompareExchange(x, 5, 7));
    EXPECT_EQ(x, 5u);
    AtomicWrite(x, 6);
    EXPECT_FALSE(AtomicCompareExchange(x, 5, 7));
    EXPECT_EQ(AtomicRead(x), 6u);
}

template <typename Section>
void expectRecursiveAndExclusive()
{
    Section section("test");
    section.Lock();
    section.Lock();
    EXPECT_TRUE(section.TryLock());
    auto tryElsewhere = [&] {
        bool taken = true;
        std::thread([&] {
            taken = section.TryLock();
            if (taken)
                section.Unlock();
        }).join();
        return taken;
    };
    section.Unlock();
    section.Unlock();
    EXPECT_FALSE(tryElsewhere()) << "one level is still held";
    section.Unlock();
    EXPECT_TRUE(tryElsewhere());
}

TEST(CriticalSection, BothKindsAreRecursiveAndExcludeOtherThreads)
{
    expectRecursiveAndExclusive<Atomic::CriticalSection>();
    expectRecursiveAndExclusive<Util::CriticalSection>();
}

TEST(CriticalSection, ProtectsACounterAcrossThreads)
{
    Atomic::CriticalSection section("counter");
    long long counter = 0;
    std::thread threads[3];
    for (auto& t : threads)
        t = std::thread([&] {
            for (int i = 0; i < 20000; ++i) {
                section.Lock();
                section.Lock();
                ++counter;
                section.Unlock();
                section.Unlock();
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(counter, 60000);
}

TEST(WaitCondition, NullSectionCountsAsWokenAtOnce)
{
    WaitCondition condition("c");
    EXPECT_TRUE(condition.Wait(nullptr, {}));
    EXPECT_TRUE(condition.Wait(nullptr, 1000000u));
}

TEST(WaitCondition, ZeroTimeOutAndWakeWithoutWaiterBothTimeOut)
{
    WaitCondition condition("c");
    Atomic::CriticalSection section("s");
    condition.WakeAll();
    condition.WakeSingle();
    section.Lock();
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(condition.Wait(&section, 0u));
    EXPECT_FALSE(condition.Wait(&section, 20u)) << "an earlier wake must leave nothing behind";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    // Still held after the wait: another thread cannot take it.
    bool taken = true;
    std::thread([&] { taken = section.TryLock(); }).join();
    EXPECT_FALSE(taken);
    section.Unlock();
}

TEST(WaitCondition, UnlimitedWaitIsWokenByAnotherThreadWithEveryLevelReleased)
{
    WaitCondition condition("c");
    Atomic::CriticalSection section("s");
    bool ready = false;
    section.Lock();
    section.Lock();
    std::thread waker([&] {
        // Only possible if the waiter released both levels.
        section.Lock();
        ready = true;
        condition.WakeAll();
        section.Unlock();
    });
    while (!ready)
        EXPECT_TRUE(condition.Wait(&section, {}));
    // Held twice again: two unlocks are needed before another thread gets in.
    section.Unlock();
    bool taken = true;
    std::thread([&] { taken = section.TryLock(); }).join();
    EXPECT_FALSE(taken);
    section.Unlock();
    waker.join();
}

TEST(WaitCondition, DeadlineCarriesMillisecondsIntoNanosecondsAndSeconds)
{
    timespec d = detail::WaitDeadline(timeval{100, 200000}, 1500);
    EXPECT_EQ(d.tv_sec, 101);
    EXPECT_EQ(d.tv_nsec, 700000000);

    d = detail::WaitDeadline(timeval{100, 600000}, 1500);
    EXPECT_EQ(d.tv_sec, 102);
    EXPECT_EQ(d.tv_nsec, 100000000);

    d = detail::WaitDeadline(timeval{100, 999999}, 999);
    EXPECT_EQ(d.tv_sec, 101);
    EXPECT_EQ(d.tv_nsec, 998999000);

    d = detail::WaitDeadline(timeval{100, 0}, 0xFFFFFFFFu);
    EXPECT_EQ(d.tv_sec, 100 + 4294967);
    EXPECT_EQ(d.tv_nsec, 295000000);
}
