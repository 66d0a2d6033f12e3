#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/detail/Deadline.h>
#include <Cordel/Util/detail/RecursiveMutex.h>

namespace Cordel::Atomic {

CriticalSection::CriticalSection(String const& name) : name(name), handle(new detail::RecursiveMutex) {}

CriticalSection::~CriticalSection()
{
    delete handle;
}

void CriticalSection::Lock()
{
    handle->Lock();
}

void CriticalSection::Unlock()
{
    handle->Unlock();
}

bool CriticalSection::TryLock()
{
    return handle->TryLock();
}

WaitCondition::WaitCondition(String const& name) : name(name)
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

WaitCondition::~WaitCondition()
{
    pthread_cond_destroy(&condition);
}

void WaitCondition::WakeSingle()
{
    pthread_cond_signal(&condition);
}

void WaitCondition::WakeAll()
{
    pthread_cond_broadcast(&condition);
}

bool WaitCondition::Wait(CriticalSection* section, checked_value<unsigned int> const& timeoutMs)
{
    // Reported as woken: a caller without a section has nothing to wait under.
    if (!section || !section->GetHandle())
        return true;
    if (!timeoutMs.IsSet())
        return section->GetHandle()->Wait(&condition, nullptr);
    // The deadline is on the wall clock, so changing the system time moves it; that is accepted.
    timeval now;
    gettimeofday(&now, nullptr);
    timespec const deadline = detail::WaitDeadline(now, timeoutMs.Get());
    return section->GetHandle()->Wait(&condition, &deadline);
}

} // namespace Cordel::Atomic
