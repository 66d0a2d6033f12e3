// A call posted by signature against a command written by hand for the same work: a slot taking
// an unsigned int and a float on an object of the high side. Across the pipe, each iteration
// posts a command and waits until the high thread has run it, the low side building the next
// one and deleting finished ones meanwhile; in place, a command is built, run and deleted on one
// thread, which shows what building by signature costs on its own.
// repetitions: interleaved
#include "PipeHighSide.h"

#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/Signals.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <thread>

using namespace Cordel;

namespace {

class Synth : public Util::Object {
    CORDEL_OBJECT(Synth, Util::Object)
public:
    void setParameter(unsigned int n, float v)
    {
        parameters[n & 15] = v;
        done.store(done.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }
    float parameters[16] = {};
    std::atomic<long> done{0};
    CORDEL_SLOTS(CORDEL_MEMBER(setParameter, "setParameter(uint,float)"))
};

// What an application writes without the invocation object.
class SetParameter : public Atomic::Command {
public:
    SetParameter(Synth* synth, unsigned int n, float v) : synth(synth), n(n), v(v) {}
    bool ExecuteHigh() override
    {
        synth->setParameter(n, v);
        return false;
    }
    bool ExecuteLow() override { return false; }

private:
    Synth* synth;
    unsigned int n;
    float v;
};

Atomic::Command* byHand(Synth* synth, unsigned int n) { return new SetParameter(synth, n, 0.5f); }
Atomic::Command* bySignature(Synth* synth, unsigned int n)
{
    return new Util::ObjectInvokeImpl(synth, "1setParameter(uint,float)", n, 0.5f);
}

template <Atomic::Command* (*make)(Synth*, unsigned int)>
void acrossPipe(benchmark::State& state)
{
    Synth synth;
    PipeHighSide side;
    Atomic::CommandPipe& pipe = side.pipe;
    long expected = 0;
    Atomic::Command* next = make(&synth, 0);
    for (auto _ : state) {
        pipe.PostHigh(next);
        ++expected;
        // While the call crosses, the low side does its own part: builds the next command and
        // deletes the last one.
        next = make(&synth, static_cast<unsigned int>(expected));
        pipe.ProcessLow();
        while (synth.done.load(std::memory_order_acquire) < expected)
            std::this_thread::yield();
    }
    delete next;
    side.Stop();
    pipe.ProcessLow();
}

template <Atomic::Command* (*make)(Synth*, unsigned int)>
void inPlace(benchmark::State& state)
{
    Synth synth;
    unsigned int n = 0;
    for (auto _ : state) {
        Atomic::Command* command = make(&synth, n++);
        command->ExecuteHigh();
        delete command;
    }
    benchmark::DoNotOptimize(synth.parameters);
}

} // namespace

BENCHMARK(acrossPipe<bySignature>)->Name("posted_call/Cordel")->UseRealTime();
BENCHMARK(acrossPipe<byHand>)->Name("posted_call/hand-written command")->UseRealTime();
BENCHMARK(inPlace<bySignature>)->Name("build_run_delete/Cordel");
BENCHMARK(inPlace<byHand>)->Name("build_run_delete/hand-written command");

BENCHMARK_MAIN();
