#pragma once
// A command pipe with its high side running on a thread of its own, as a real-time thread would
// run it: ProcessHigh in a loop until the object goes, then StopHigh.

#include <Cordel/Util/CommandPipe.h>

#include <atomic>
#include <thread>

class PipeHighSide {
public:
    PipeHighSide() : pipe("bench", nullptr, 64, {}, external)
    {
        pipe.ProcessHigh();
        high = std::thread([this] {
            while (!stop.load(std::memory_order_relaxed)) {
                pipe.ProcessHigh();
                std::this_thread::yield();
            }
            pipe.StopHigh();
        });
    }
    ~PipeHighSide() { Stop(); }

    // Stops and joins the high thread; from then on ProcessLow takes over its work.
    void Stop()
    {
        stop = true;
        if (high.joinable())
            high.join();
    }

    Cordel::Atomic::CriticalSection external{"bench"};
    Cordel::Atomic::CommandPipe pipe;

private:
    std::atomic<bool> stop{false};
    std::thread high;
};
