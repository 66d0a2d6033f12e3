#pragma once
// A second named recursive mutex, a distinct type from Atomic::CriticalSection with the same
// behaviour. It offers no handle, so it cannot be waited on.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

namespace Cordel::Atomic::detail {
struct RecursiveMutex;
}

namespace Cordel::Util {

class CORDEL_API CriticalSection : noncopyable {
public:
    explicit CriticalSection(String const& name);
    ~CriticalSection();

    void Lock();
    void Unlock();
    bool TryLock();

private:
    String name;
    Atomic::detail::RecursiveMutex* handle;
};

} // namespace Cordel::Util
