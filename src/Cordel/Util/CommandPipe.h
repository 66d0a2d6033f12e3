#pragma once
// A two-way command channel between a high-priority thread (typically real-time processing,
// which must never block) and a low-priority thread (user interface or worker).
//
// A command posted from one side runs on the other, then travels back, running once on each side
// per round, until one of its Execute functions says it is finished; the low side then deletes
// it. The high side's path takes only its own uncontended queue locks and allocates nothing
// while the rings have room. A watchdog lets the low side take over the high side's work when the
// high thread has stopped calling ProcessHigh.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>
#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/LockFreeFIFO.h>

#include <atomic>

namespace Cordel::Atomic {

class CORDEL_API Command {
public:
    Command() = default;
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;

    // Run on the high and on the low side; false means the command is finished.
    virtual bool ExecuteHigh() = 0;
    virtual bool ExecuteLow() = 0;
    virtual ~Command() = default;

    void* context = nullptr; // the pipe's context, stamped by every post
    bool active = true;      // false once finished; a command created inactive never runs
};

// What the high-priority thread sees of a pipe.
class CORDEL_API CommandPipeHigh {
public:
    virtual void ProcessHigh() = 0;
    virtual void PostLow(Command* command) = 0;
    virtual void StopHigh() = 0;
    virtual void SetHighWaitCondition(WaitCondition* condition) = 0;
    virtual ~CommandPipeHigh() = default;
};

// What the low-priority thread sees of a pipe.
class CORDEL_API CommandPipeLow {
public:
    virtual void ProcessLow() = 0;
    virtual void PostHigh(Command* command) = 0;
    virtual void SetLowWaitCondition(WaitCondition* condition) = 0;
    virtual ~CommandPipeLow() = default;
};

class CORDEL_API CommandPipe : public CommandPipeHigh, public CommandPipeLow, noncopyable {
public:
    // `size` is the initial ring size of both queues (they grow when full, which allocates, so
    // it should cover the largest burst). An unset `watchdogTimeoutMs` disables the watchdog.
    // `externalLock` is held whenever the low side runs the high side's work.
    CommandPipe(String const& name, void* context, unsigned int size,
                checked_value<unsigned int> const& watchdogTimeoutMs, CriticalSection& externalLock);
    // Commands still queued are neither run nor deleted.
    ~CommandPipe() override;

    void ProcessHigh() override;
    void PostLow(Command* command) override;
    // For the high thread when it stops: from now on the low side does the high side's work.
    void StopHigh() override;
    void SetHighWaitCondition(WaitCondition* condition) override;

    void ProcessLow() override;
    void PostHigh(Command* command) override;
    void SetLowWaitCondition(WaitCondition* condition) override;

    // For a low-side caller that means to wait for a command it posts with PostHigh. The high
    // side is running while its thread calls ProcessHigh, has not called StopHigh and has not
    // been silent past the watchdog; otherwise the low side's take-over runs the high queue.
    bool IsHighSideRunning() const;
    // Whether the calling thread is the one that last called ProcessHigh and has not stopped.
    bool IsHighThread() const;

private:
    void drainHigh();
    void pushLow(Command* command);
    void pushHigh(Command* command);
    bool highSideAlive();
    void takeOver();

    String name;
    void* context;
    std::atomic<WaitCondition*> highWait;
    std::atomic<WaitCondition*> lowWait;
    LockFreeFIFO<Command*> highQueue;
    LockFreeFIFO<Command*> lowQueue;
    checked_value<unsigned int> watchdogTimeout;
    CriticalSection& externalLock;
    std::atomic<bool> highActive;
    volatile unsigned int lastHighTick;
    std::atomic<void const*> highThread; // identity of the thread calling ProcessHigh, or null
};

} // namespace Cordel::Atomic
