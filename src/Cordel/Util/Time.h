#pragma once
// Clocks: milliseconds since the system started, and the calendar time.

#include <Cordel/common/Export.h>

namespace Cordel::Util {

// Milliseconds since system start (time spent suspended included). It stops at 4294967295
// after about 49.7 days of up-time instead of wrapping.
CORDEL_API unsigned int GetTickCountMillis();

// Whole seconds since 1970-01-01 UTC.
CORDEL_API long long GetTimeSeconds();

// Hooks for timing a stretch of code; they do nothing.
CORDEL_API void TimeMeasureStart(bool enable);
CORDEL_API void TimeMeasureEnd(bool enable, char const* label);

} // namespace Cordel::Util
