#include <Cordel/Util/Time.h>
#include <Cordel/Util/detail/TickCount.h>

#include <ctime>

namespace Cordel::Util {

unsigned int GetTickCountMillis()
{
    // Served from the vDSO: no system call, so the real-time side may read it.
    timespec now;
    clock_gettime(CLOCK_BOOTTIME, &now);
    return detail::TickFromSeconds(static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9);
}

long long GetTimeSeconds()
{
    return static_cast<long long>(time(nullptr));
}

void TimeMeasureStart(bool)
{
}

void TimeMeasureEnd(bool, char const*)
{
}

} // namespace Cordel::Util
