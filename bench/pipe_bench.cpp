// The lock-free FIFO and the command pipe against moodycamel's ReaderWriterQueue and boost's
// spsc_queue: push+pop on one thread, items passed from one thread to another, and a token
// bouncing between two threads. Also the cost of an uncontended lock: the critical section
// against the platform's recursive mutex.
#include "PipeHighSide.h"

#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/LockFreeFIFO.h>

#include <benchmark/benchmark.h>
#include <boost/lockfree/spsc_queue.hpp>
#include <readerwriterqueue/readerwriterqueue.h>

#include <atomic>
#include <pthread.h>
#include <thread>

using namespace Cordel;

namespace {

constexpr unsigned int ringSize = 8192;
constexpr long batch = 4096; // items in flight at most, so that no queue ever has to grow

// Every wait spins with a yield: the machine is shared, and a waiting thread must not keep
// the one it waits for off the processor.

// The three queues behind one push/pop face. Push spins while a bounded ring is full.
struct CordelQueue {
    Atomic::LockFreeFIFO<void*> fifo{"bench", ringSize};
    void push(void* p) { fifo.Push(p); }
    bool pop(void*& p) { return fifo.Pop(p); }
};

struct MoodycamelQueue {
    moodycamel::ReaderWriterQueue<void*> queue{ringSize};
    void push(void* p) { queue.enqueue(p); }
    bool pop(void*& p) { return queue.try_dequeue(p); }
};

struct BoostQueue {
    boost::lockfree::spsc_queue<void*, boost::lockfree::capacity<ringSize>> queue;
    void push(void* p)
    {
        while (!queue.push(p))
            std::this_thread::yield();
    }
    bool pop(void*& p) { return queue.pop(p); }
};

template <typename Queue>
void pushPopOneThread(benchmark::State& state)
{
    Queue queue;
    void* item = &queue;
    for (auto _ : state) {
        queue.push(item);
        queue.pop(item);
        benchmark::DoNotOptimize(item);
    }
    state.SetItemsProcessed(state.iterations());
}

// A producer thread keeps up to `batch` items ahead of the consumer, which is the timed thread.
template <typename Queue>
void crossThreadThroughput(benchmark::State& state)
{
    Queue queue;
    std::atomic<long> demand{0};
    std::atomic<bool> stop{false};
    std::thread producer([&] {
        long produced = 0;
        while (!stop.load(std::memory_order_relaxed)) {
            long const wanted = demand.load(std::memory_order_acquire);
            if (produced == wanted)
                std::this_thread::yield();
            while (produced < wanted) {
                queue.push(reinterpret_cast<void*>(produced + 1));
                ++produced;
            }
        }
    });
    void* item = nullptr;
    for (auto _ : state) {
        demand.fetch_add(batch, std::memory_order_release);
        for (long got = 0; got < batch;)
            if (queue.pop(item))
                ++got;
            else
                std::this_thread::yield();
    }
    stop = true;
    producer.join();
    benchmark::DoNotOptimize(item);
    state.SetItemsProcessed(state.iterations() * batch);
}

// A token goes to the other thread and comes back: one round trip per iteration.
template <typename Queue>
void roundTrip(benchmark::State& state)
{
    Queue there, back;
    std::atomic<bool> stop{false};
    std::thread echo([&] {
        void* item;
        while (!stop.load(std::memory_order_relaxed))
            if (there.pop(item))
                back.push(item);
            else
                std::this_thread::yield();
    });
    void* item = &there;
    for (auto _ : state) {
        there.push(item);
        while (!back.pop(item))
            std::this_thread::yield();
    }
    stop = true;
    echo.join();
}

// The pipe's own round trip: a command that never finishes runs once on each side per trip.
struct Bouncer : Atomic::Command {
    bool ExecuteHigh() override { return true; }
    bool ExecuteLow() override
    {
        ++trips;
        return true;
    }
    long trips = 0;
};

void pipeRoundTrip(benchmark::State& state)
{
    PipeHighSide side;
    Atomic::CommandPipe& pipe = side.pipe;
    auto* command = new Bouncer;
    pipe.PostHigh(command);
    long expected = 0;
    for (auto _ : state) {
        ++expected;
        while (command->trips < expected) {
            pipe.ProcessLow();
            std::this_thread::yield();
        }
    }
    side.Stop();
    command->active = false;
    pipe.ProcessLow(); // the stopped high side's work is taken over; the command comes back
    pipe.ProcessLow(); // and is deleted
}

// The platform's recursive mutex, held the way the critical section holds its handle.
struct PlatformRecursive {
    PlatformRecursive()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~PlatformRecursive()
    {
        pthread_mutex_destroy(mutex);
        delete mutex;
    }
    __attribute__((noinline)) void Lock() { pthread_mutex_lock(mutex); }
    __attribute__((noinline)) void Unlock() { pthread_mutex_unlock(mutex); }
    pthread_mutex_t* mutex = new pthread_mutex_t();
};

struct CordelSection {
    Atomic::CriticalSection section{"bench"};
    void Lock() { section.Lock(); }
    void Unlock() { section.Unlock(); }
};

template <typename Lock>
void uncontendedLock(benchmark::State& state)
{
    Lock lock;
    for (auto _ : state) {
        lock.Lock();
        lock.Unlock();
    }
}

template <typename Lock>
void reentrantLock(benchmark::State& state)
{
    Lock lock;
    lock.Lock();
    for (auto _ : state) {
        lock.Lock();
        lock.Unlock();
    }
    lock.Unlock();
}

} // namespace

BENCHMARK(pushPopOneThread<CordelQueue>)->Name("fifo_push_pop/Cordel");
BENCHMARK(pushPopOneThread<MoodycamelQueue>)->Name("fifo_push_pop/moodycamel");
BENCHMARK(pushPopOneThread<BoostQueue>)->Name("fifo_push_pop/boost");
BENCHMARK(crossThreadThroughput<CordelQueue>)->Name("cross_thread/Cordel")->UseRealTime();
BENCHMARK(crossThreadThroughput<MoodycamelQueue>)->Name("cross_thread/moodycamel")->UseRealTime();
BENCHMARK(crossThreadThroughput<BoostQueue>)->Name("cross_thread/boost")->UseRealTime();
BENCHMARK(pipeRoundTrip)->Name("round_trip/Cordel")->UseRealTime();
BENCHMARK(roundTrip<CordelQueue>)->Name("round_trip/CordelFIFO")->UseRealTime();
BENCHMARK(roundTrip<MoodycamelQueue>)->Name("round_trip/moodycamel")->UseRealTime();
BENCHMARK(roundTrip<BoostQueue>)->Name("round_trip/boost")->UseRealTime();
BENCHMARK(uncontendedLock<CordelSection>)->Name("lock_unlock/Cordel");
BENCHMARK(uncontendedLock<PlatformRecursive>)->Name("lock_unlock/platform_recursive");
BENCHMARK(reentrantLock<CordelSection>)->Name("lock_unlock_reentrant/Cordel");
BENCHMARK(reentrantLock<PlatformRecursive>)->Name("lock_unlock_reentrant/platform_recursive");

BENCHMARK_MAIN();
