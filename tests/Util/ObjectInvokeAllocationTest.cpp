// labels: threads
// Running a posted call whose arguments are numbers must not allocate on the high side. This
// program replaces the allocator to count the allocations made on the high thread while it runs.
#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/Signals.h>

#include <gtest/gtest.h>
#include <ThreadAllocationCount.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace Cordel;
using namespace Cordel::Util;

namespace {

// A processor on the high side: a slot, and a signal that a meter on the same side listens to.
class Processor : public Object {
    CORDEL_OBJECT(Processor, Object)
public:
    void setParameter(unsigned int n, float v) { sum += n * v; }
    void bypass(bool on) { bypassed = on; }
    void changed(unsigned int n, double v) { Emit<&Processor::changed>(n, v); }
    double sum = 0;
    bool bypassed = false;
    CORDEL_SIGNALS(CORDEL_MEMBER(changed, "changed(uint,double)"))
    CORDEL_SLOTS(CORDEL_MEMBER(setParameter, "setParameter(uint,float)"), CORDEL_MEMBER(bypass, "bypass(bool)"))
};

class Meter : public Object {
    CORDEL_OBJECT(Meter, Object)
public:
    void show(unsigned int, double v) { last = v; }
    double last = 0;
    CORDEL_SLOTS(CORDEL_MEMBER(show, "show(uint,double)"))
};

// Deleted by the low side, which counts it.
struct Counted : ObjectInvokeImpl {
    using ObjectInvokeImpl::ObjectInvokeImpl;
    ~Counted() override { ++*deletions; }
    int* deletions = nullptr;
};

} // namespace

TEST(ObjectInvokeAllocation, HighSideRunsNumberCallsWithoutAllocating)
{
    Atomic::CriticalSection external("external");
    Atomic::CommandPipe pipe("alloc", nullptr, 256, {}, external);
    Processor processor;
    Meter meter;
    ASSERT_TRUE(Object::Connect(&processor, "2changed(uint,double)", &meter, "1show(uint,double)"));

    constexpr int total = 150000;
    constexpr int inFlight = 200; // below the ring size, so that no ring has to grow
    std::atomic<bool> stop{false};
    long countedByHand = 0;
    std::thread high([&] {
        CordelTest::countThisThread = true;
        ::operator delete(::operator new(8)); // proves that the count sees this thread's allocations
        countedByHand = CordelTest::threadAllocations.exchange(0);
        while (!stop.load()) {
            pipe.ProcessHigh();
            std::this_thread::yield();
        }
        CordelTest::countThisThread = false;
        pipe.StopHigh();
    });

    auto const limit = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    int posted = 0;
    int deleted = 0;
    while (deleted < total && std::chrono::steady_clock::now() < limit) {
        while (posted < total && posted - deleted < inFlight) {
            Counted* call;
            switch (posted % 3) {
            case 0: call = new Counted(&processor, "1setParameter(uint,float)", 3u, 0.5f); break;
            case 1: call = new Counted(&processor, "2changed(uint,double)", 1u, 0.25); break;
            default: call = new Counted(&processor, "1bypass(bool)", posted % 2 == 0); break;
            }
            call->deletions = &deleted;
            pipe.PostHigh(call);
            ++posted;
        }
        pipe.ProcessLow();
        std::this_thread::yield();
    }
    stop = true;
    high.join();
    pipe.ProcessLow();

    EXPECT_EQ(countedByHand, 1);
    EXPECT_EQ(deleted, total);
    EXPECT_EQ(CordelTest::threadAllocations.load(), 0);
    EXPECT_DOUBLE_EQ(processor.sum, 1.5 * ((total + 2) / 3));
    EXPECT_EQ(meter.last, 0.25);
}
