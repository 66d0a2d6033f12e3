#pragma once
// Internal: lets tests drive a pipe's watchdog with a clock of their own.

#include <Cordel/Util/CommandPipe.h>

namespace Cordel::Atomic::detail {

struct CommandPipeClock {
    static void Set(CommandPipe& pipe, unsigned int (*clock)()) { pipe.tickClock = clock; }
};

} // namespace Cordel::Atomic::detail
