#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/Time.h>
#include <Cordel/Util/detail/CommandPipeClock.h>
#include <Cordel/Util/detail/RecursiveMutex.h>

namespace Cordel::Atomic {

namespace detail {
constinit Clock watchdogClock = &Util::GetTickCountMillis;
}

namespace {

// Holds a section for a scope, so that an exception from a command releases it.
class Hold {
public:
    explicit Hold(CriticalSection& section) : section(section) { section.Lock(); }
    ~Hold() { section.Unlock(); }
    Hold(Hold const&) = delete;
    Hold& operator=(Hold const&) = delete;

private:
    CriticalSection& section;
};

void wake(std::atomic<WaitCondition*> const& condition)
{
    if (WaitCondition* const c = condition.load(std::memory_order_acquire))
        c->WakeAll();
}

} // namespace

CommandPipe::CommandPipe(String const& name, void* context, unsigned int size,
                         checked_value<unsigned int> const& watchdogTimeoutMs, CriticalSection& externalLock)
    : name(name),
      context(context),
      highWait(nullptr),
      lowWait(nullptr),
      highQueue(String("%1 High-Priority Queue").Arg(name), size),
      lowQueue(String("%1 Low-Priority Queue").Arg(name), size),
      watchdogTimeout(watchdogTimeoutMs),
      externalLock(externalLock),
      highActive(false),
      lastHighTick(0),
      highThread(nullptr)
{
}

CommandPipe::~CommandPipe() = default;

void CommandPipe::ProcessHigh()
{
    highActive.store(true, std::memory_order_relaxed);
    AtomicWrite(lastHighTick, detail::watchdogClock());
    highThread.store(detail::callerIdentity(), std::memory_order_relaxed);
    drainHigh();
}

void CommandPipe::PostLow(Command* command)
{
    command->context = context;
    pushLow(command);
}

void CommandPipe::StopHigh()
{
    Hold hold(externalLock);
    highActive.store(false, std::memory_order_relaxed);
    highThread.store(nullptr, std::memory_order_relaxed);
    drainHigh();
}

void CommandPipe::SetHighWaitCondition(WaitCondition* condition)
{
    highWait.store(condition, std::memory_order_release);
}

void CommandPipe::PostHigh(Command* command)
{
    command->context = context;
    pushHigh(command);
}

void CommandPipe::SetLowWaitCondition(WaitCondition* condition)
{
    lowWait.store(condition, std::memory_order_release);
}

void CommandPipe::ProcessLow()
{
    Command* command;
    while (lowQueue.Pop(command)) {
        if (command->active && !command->ExecuteLow())
            command->active = false;
        if (command->active)
            pushHigh(command);
        else
            delete command;
    }
    if (!highSideAlive())
        takeOver();
}

// Every command goes back to the low side, finished or not: only the low side deletes.
void CommandPipe::drainHigh()
{
    Command* command;
    while (highQueue.Pop(command)) {
        if (command->active && !command->ExecuteHigh())
            command->active = false;
        pushLow(command);
    }
}

void CommandPipe::pushLow(Command* command)
{
    lowQueue.Push(command);
    wake(lowWait);
}

void CommandPipe::pushHigh(Command* command)
{
    highQueue.Push(command);
    wake(highWait);
}

bool CommandPipe::IsHighSideRunning() const
{
    if (!highActive.load(std::memory_order_relaxed))
        return false;
    // Unsigned 32-bit arithmetic, as the tick itself is.
    return !watchdogTimeout.IsSet() || detail::watchdogClock() < AtomicRead(lastHighTick) + watchdogTimeout.Get();
}

bool CommandPipe::IsHighThread() const
{
    return highThread.load(std::memory_order_relaxed) == detail::callerIdentity();
}

// A high side found silent stays stopped until its next ProcessHigh.
bool CommandPipe::highSideAlive()
{
    if (IsHighSideRunning())
        return true;
    highActive.store(false, std::memory_order_relaxed);
    return false;
}

void CommandPipe::takeOver()
{
    Hold hold(externalLock);
    drainHigh();
}

} // namespace Cordel::Atomic
