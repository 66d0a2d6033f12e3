#include <Cordel/Util/CriticalSection.h>
#include <Cordel/Util/detail/RecursiveMutex.h>

namespace Cordel::Util {

CriticalSection::CriticalSection(String const& name) : name(name), handle(new Atomic::detail::RecursiveMutex) {}

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

} // namespace Cordel::Util
