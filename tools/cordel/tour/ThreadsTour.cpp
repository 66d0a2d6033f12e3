// Tour stop: a worker thread and a command pipe. The main thread plays the real-time side; the
// worker posts commands to it and finishes them off, and the log shows which thread ran what.

#include "Tour.h"

#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/Thread.h>

#include <atomic>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

// Lines are collected and printed by the main thread once both threads are done.
class Log {
public:
    void Add(String const& line)
    {
        section.Lock();
        lines.push_back(line);
        section.Unlock();
    }
    void Print()
    {
        for (String const& line : lines)
            TourSay(line);
    }

private:
    Atomic::CriticalSection section{"tour log"};
    std::vector<String> lines;
};

Log tourLog;
std::atomic<int> commandsDone{0};

// Asks the processing side for a new gain; the worker hears back once it is applied.
class SetGain : public Atomic::Command {
public:
    explicit SetGain(int decibels) : decibels(decibels) {}
    ~SetGain() override { ++commandsDone; }
    bool ExecuteHigh() override
    {
        tourLog.Add(String("processing thread: gain set to %1 dB").Arg(decibels));
        return true; // back to the worker for the confirmation
    }
    bool ExecuteLow() override
    {
        tourLog.Add(String("worker thread:     gain of %1 dB confirmed, command done").Arg(decibels));
        return false;
    }

private:
    int decibels;
};

// Posted by the processing side: only the worker's half runs.
class ReportLevel : public Atomic::Command {
public:
    explicit ReportLevel(int cycle) : cycle(cycle) {}
    ~ReportLevel() override { ++commandsDone; }
    bool ExecuteHigh() override { return false; }
    bool ExecuteLow() override
    {
        tourLog.Add(String("worker thread:     level report from processing cycle %1").Arg(cycle));
        return false;
    }

private:
    int cycle;
};

class Worker : public Util::Thread {
public:
    explicit Worker(Atomic::CommandPipeLow& pipe) : Thread("tour worker"), pipe(pipe) { pipe.SetLowWaitCondition(&wake); }
    ~Worker() override
    {
        stop = true;
        wake.WakeAll();
        WaitThread();
        pipe.SetLowWaitCondition(nullptr);
    }

protected:
    void Run() override
    {
        for (int decibels : {-6, -12})
            pipe.PostHigh(new SetGain(decibels));
        while (!stop) {
            pipe.ProcessLow();
            section.Lock();
            wake.Wait(&section, 20u);
            section.Unlock();
        }
        pipe.ProcessLow();
    }

private:
    Atomic::CommandPipeLow& pipe;
    Atomic::WaitCondition wake{"tour worker wake"};
    Atomic::CriticalSection section{"tour worker"};
    std::atomic<bool> stop{false};
};

void threadsTour()
{
    Atomic::CriticalSection external("tour pipe");
    Atomic::CommandPipe pipe("tour", nullptr, 4, 500u, external);
    Atomic::CommandPipeHigh& high = pipe;
    {
        Worker worker(pipe);
        worker.StartThread();
        // The processing loop: one ProcessHigh per cycle, as an audio callback would call it.
        for (int cycle = 1; commandsDone.load() < 3 && cycle < 100000; ++cycle) {
            high.ProcessHigh();
            if (cycle == 1)
                high.PostLow(new ReportLevel(cycle));
            Util::Thread::SleepThread(1);
        }
        high.StopHigh();
    }
    tourLog.Print();
    TourSay(String("%1 commands finished and were deleted by the worker").Arg(commandsDone.load()));
}

} // namespace

CORDEL_TOUR_STOP(50, "Threads: a worker thread and a processing thread talking through a command pipe", threadsTour);

} // namespace CordelTool
