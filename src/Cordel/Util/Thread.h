#pragma once
// The base of every worker thread: a subclass supplies Run(); the base starts one native thread
// per StartThread and waits for it on demand and when destroyed. Threads are never killed: a
// subclass gives its body a way to be told to stop, and stops and waits for it in its own
// destructor (the base waits too, but by then the subclass's part of the object is gone).

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <pthread.h>

namespace Cordel::Atomic {
class CriticalSection;
}

namespace Cordel::Util {

class CORDEL_API Thread : noncopyable {
public:
    explicit Thread(String const& name);
    virtual ~Thread();

    // Waits for a previous run that is still alive, then starts Run() on a new thread.
    void StartThread();
    // May still say true for a body that has just returned, until the thread is waited for.
    bool IsThreadRunning();
    // Waits without limit for the body to return; the time-out is ignored and the result is true.
    bool WaitThread(checked_value<unsigned int> const& timeoutMs = {});
    // Waits for the body to return on its own: there is no forced stop.
    void TerminateThread();

    static unsigned int GetCurrentThreadID();
    // Sleeps for ms x 1000 microseconds, computed in 32 bits.
    static void SleepThread(unsigned int ms);

protected:
    virtual void Run() = 0;

private:
    enum : unsigned int { Idle = 0, Started = 1, Running = 2, Finished = 3 };

    void checkFinished();
    static void* threadFunc(void* arg);

    String name;
    Atomic::CriticalSection* lock;
    volatile unsigned int state;
    pthread_t handle;
};

} // namespace Cordel::Util
