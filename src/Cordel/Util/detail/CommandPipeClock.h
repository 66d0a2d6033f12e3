#pragma once
// The clock that every pipe's watchdog reads, in milliseconds. Tests substitute their own while
// no pipe is in use on another thread.

namespace Cordel::Atomic::detail {

using Clock = unsigned int (*)();
extern Clock watchdogClock;

} // namespace Cordel::Atomic::detail
