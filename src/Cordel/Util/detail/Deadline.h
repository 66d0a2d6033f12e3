#pragma once
// Internal: the absolute wall-clock deadline of a timed wait.

#include <ctime>
#include <sys/time.h>

namespace Cordel::Atomic::detail {

// `now` plus `timeoutMs`. The sub-second part is built in nanoseconds in a signed 32-bit value
// (at most 999999 us + 999 ms, which fits) and carried into the seconds.
inline timespec WaitDeadline(timeval const& now, unsigned int timeoutMs)
{
    int const ns = (static_cast<int>(now.tv_usec) + static_cast<int>(timeoutMs % 1000) * 1000) * 1000;
    timespec deadline;
    deadline.tv_sec = now.tv_sec + timeoutMs / 1000 + ns / 1000000000;
    deadline.tv_nsec = ns % 1000000000;
    return deadline;
}

} // namespace Cordel::Atomic::detail
