#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/Thread.h>

#include <unistd.h>

namespace Cordel::Util {

Thread::Thread(String const& name)
    : name(name.View()),
      lock(new Atomic::CriticalSection(String("%1 critical section").Arg(name))),
      state(Idle),
      handle()
{
}

Thread::~Thread()
{
    lock->Lock();
    lock->Lock();
    checkFinished();
    lock->Unlock();
    unsigned int const s = Atomic::AtomicRead(state);
    if (s == Started || s == Running)
        TerminateThread();
    lock->Unlock();
    delete lock;
}

void Thread::StartThread()
{
    lock->Lock();
    checkFinished();
    unsigned int const s = Atomic::AtomicRead(state);
    if (s == Started || s == Running) {
        // The second call finds the thread idle and returns at once; the section is recursive,
        // so waiting while holding it is allowed.
        WaitThread({});
        WaitThread({});
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE);
    pthread_create(&handle, &attributes, &Thread::threadFunc, this);
    pthread_attr_destroy(&attributes);
    // Stored after the create: a very short body may already have stored Running or Finished,
    // which this overwrites. The object then says "running" until it is waited for.
    Atomic::AtomicWrite(state, Started);
    lock->Unlock();
}

bool Thread::IsThreadRunning()
{
    lock->Lock();
    checkFinished();
    unsigned int const s = Atomic::AtomicRead(state);
    lock->Unlock();
    return s == Started || s == Running;
}

bool Thread::WaitThread(checked_value<unsigned int> const&)
{
    lock->Lock();
    checkFinished();
    if (Atomic::AtomicRead(state) != Idle) {
        pthread_join(handle, nullptr);
        Atomic::AtomicWrite(state, Idle);
        handle = pthread_t();
    }
    lock->Unlock();
    return true;
}

void Thread::TerminateThread()
{
    lock->Lock();
    checkFinished();
    if (Atomic::AtomicRead(state) != Idle)
        WaitThread({});
    lock->Unlock();
}

void Thread::checkFinished()
{
    if (Atomic::AtomicRead(state) == Finished) {
        // The body has returned, so this join only collects the thread's last instructions;
        // without it the finished thread would keep its stack for good.
        pthread_join(handle, nullptr);
        handle = pthread_t();
        Atomic::AtomicWrite(state, Idle);
    }
}

void* Thread::threadFunc(void* arg)
{
    if (!arg)
        return nullptr;
    Thread* const thread = static_cast<Thread*>(arg);
    Atomic::AtomicWrite(thread->state, Running);
    thread->Run();
    Atomic::AtomicWrite(thread->state, Finished);
    return nullptr;
}

unsigned int Thread::GetCurrentThreadID()
{
    return static_cast<unsigned int>(gettid());
}

void Thread::SleepThread(unsigned int ms)
{
    usleep(ms * 1000u);
}

} // namespace Cordel::Util
