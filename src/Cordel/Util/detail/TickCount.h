#pragma once
// Internal: seconds since start to the 32-bit millisecond tick.

#include <cmath>

namespace Cordel::Util::detail {

// Rounded half away from zero and held inside the 32-bit range, so the tick never goes
// negative and never wraps back to a small value.
inline unsigned int TickFromSeconds(double seconds)
{
    double const millis = std::round(seconds * 1000.0);
    if (!(millis > 0.0))
        return 0;
    if (millis >= 4294967295.0)
        return 4294967295u;
    return static_cast<unsigned int>(millis);
}

} // namespace Cordel::Util::detail
