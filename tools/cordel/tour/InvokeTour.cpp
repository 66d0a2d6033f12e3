// Tour stop: signal proxies tell one editor which of its knobs moved, and calls by signature
// travel across a command pipe to an object of the processing side, one of them blocking.

#include "Tour.h"

#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/SignalProxy.h>
#include <Cordel/Util/Signals.h>
#include <Cordel/Util/Thread.h>

#include <atomic>
#include <vector>

using namespace Cordel;
using Cordel::Util::Object;
using Cordel::Util::ObjectInvokeImpl;

namespace CordelTool {

namespace {

class Knob : public Object {
    CORDEL_OBJECT(Knob, Object)
public:
    void valueChanged(float value) { Emit<&Knob::valueChanged>(value); }
    CORDEL_SIGNALS(CORDEL_MEMBER(valueChanged, "valueChanged(float)"))
};

class Editor : public Object {
    CORDEL_OBJECT(Editor, Object)
public:
    void parameterMoved(unsigned int parameter, float value)
    {
        TourSay(String("  editor: parameter %1 moved to %2").Arg(parameter).Arg(value, 2));
    }
    CORDEL_SLOTS(CORDEL_MEMBER(parameterMoved, "parameterMoved(uint,float)"))
};

// Lives on the processing side: its slot runs on whichever thread serves the pipe's high side.
class Filter : public Object {
    CORDEL_OBJECT(Filter, Object)
public:
    void setCutoff(unsigned int band, float hertz)
    {
        cutoffs[band] = hertz;
        ranOnProcessingThread = ranOnProcessingThread && Util::Thread::GetCurrentThreadID() != workerThread;
    }
    float cutoffs[2] = {0, 0};
    unsigned int workerThread = 0;
    bool ranOnProcessingThread = true;
    CORDEL_SLOTS(CORDEL_MEMBER(setCutoff, "setCutoff(uint,float)"))
};

// The processing loop of the tour: serves the pipe's high side until told to stop.
class Processing : public Util::Thread {
public:
    explicit Processing(Atomic::CommandPipeHigh& pipe) : Thread("tour processing"), pipe(pipe) {}
    ~Processing() override
    {
        stop = true;
        WaitThread();
    }
    std::atomic<bool> running{false};

protected:
    void Run() override
    {
        while (!stop) {
            pipe.ProcessHigh();
            running = true;
            SleepThread(1);
        }
        pipe.StopHigh();
    }

private:
    Atomic::CommandPipeHigh& pipe;
    std::atomic<bool> stop{false};
};

void proxies()
{
    Editor editor;
    Knob knobs[3];
    for (unsigned int parameter = 0; parameter < 3; ++parameter) {
        auto* proxy = new Util::SignalProxyFloat(parameter);
        editor.AddAutoDelete(proxy);
        Object::Connect(&knobs[parameter], "2valueChanged(float)", proxy, "1proxy(float)");
        Object::Connect(proxy, "2sigProxy(uint,float)", &editor, "1parameterMoved(uint,float)");
    }
    TourSay("Three knobs, each through a SignalProxyFloat tagged with its parameter, reach one slot:");
    knobs[2].valueChanged(0.25f);
    knobs[0].valueChanged(0.75f);
}

void postedCalls()
{
    Atomic::CriticalSection external("tour invoke");
    Atomic::CommandPipe pipe("tour invoke", nullptr, 16, 500u, external);
    Filter filter;
    filter.workerThread = Util::Thread::GetCurrentThreadID();
    Processing processing(pipe);
    processing.StartThread();
    while (!processing.running)
        Util::Thread::SleepThread(1);

    TourSay("Posted: \"1setCutoff(uint,float)\" with 0, 440.0f; then a blocking call with 1, 2500.0f");
    pipe.PostHigh(new ObjectInvokeImpl(&filter, "1setCutoff(uint,float)", 0u, 440.0f));
    checked_value<bool> const taken =
        ObjectInvokeImpl::PostHighAndWait(pipe, new ObjectInvokeImpl(&filter, "1setCutoff(uint,float)", 1u, 2500.0f), 5000u);
    TourSay(String("  the blocking call came back: %1; cutoffs now %2 Hz and %3 Hz, set on the %4 thread")
                .Arg(taken.IsSet() ? (taken.Get() ? "taken" : "receiver gone") : "timed out")
                .Arg(filter.cutoffs[0], 1)
                .Arg(filter.cutoffs[1], 1)
                .Arg(filter.ranOnProcessingThread ? "processing" : "worker"));
    try {
        ObjectInvokeImpl(&filter, "1setCutoff(uint,float)", 1u, 2500.0);
    } catch (Exception::Base const& e) {
        TourSay(String("  a double where the slot takes a float is refused at once: %1").Arg(e.GetMessage()));
    }
    pipe.ProcessLow(); // deletes the finished calls
}

void invokeTour()
{
    proxies();
    postedCalls();
}

} // namespace

CORDEL_TOUR_STOP(95, "Proxies and posted calls: senders told apart, slots called across a command pipe", invokeTour);

} // namespace CordelTool
