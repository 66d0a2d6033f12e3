#pragma once
// The lowest layer of threading: word-sized atomics, a recursive critical section and a wait
// condition. Everything that runs on more than one thread is built on these.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <pthread.h>

namespace Cordel::Atomic {

// Read and write carry no fence instruction on x86-64 (they compile to plain moves); the
// acquire/release ordering only stops the compiler from moving other accesses across them,
// which is what lets the FIFO publish an element by writing its index.
inline unsigned int AtomicRead(volatile unsigned int const& value)
{
    return __atomic_load_n(&value, __ATOMIC_ACQUIRE);
}

inline void AtomicWrite(volatile unsigned int& value, unsigned int newValue)
{
    __atomic_store_n(&value, newValue, __ATOMIC_RELEASE);
}

// Full-barrier increment; returns the new value (wraps from 0xFFFFFFFF to 0).
inline unsigned int AtomicIncrement(volatile unsigned int& value)
{
    return __atomic_add_fetch(&value, 1u, __ATOMIC_SEQ_CST);
}

// Full-barrier decrement; returns the new value (wraps from 0 to 0xFFFFFFFF).
inline unsigned int AtomicDecrement(volatile unsigned int& value)
{
    return __atomic_sub_fetch(&value, 1u, __ATOMIC_SEQ_CST);
}

// Stores `exchange` into `dest` if it holds `comparand`. The destination-exchange-comparand
// order is the interlocked order that callers already know; the result says whether it stored.
inline bool AtomicCompareExchange(volatile unsigned int& dest, unsigned int exchange, unsigned int comparand)
{
    return __atomic_compare_exchange_n(&dest, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

namespace detail {
struct RecursiveMutex;
}

// A named recursive mutex: the owning thread may lock again and must unlock as often.
class CORDEL_API CriticalSection : noncopyable {
public:
    using Handle = detail::RecursiveMutex*;

    explicit CriticalSection(String const& name);
    ~CriticalSection();

    void Lock();
    void Unlock();
    // True when the section is now held by the caller (possibly once more); never blocks.
    bool TryLock();
    Handle GetHandle() const { return handle; }

private:
    String name;
    Handle handle;
};

// A named condition variable, used together with an Atomic::CriticalSection.
class CORDEL_API WaitCondition : noncopyable {
public:
    explicit WaitCondition(String const& name);
    ~WaitCondition();

    void WakeSingle();
    void WakeAll();
    // The caller holds `section` (at any depth); it is released while waiting and held again, at
    // the same depth, on return. True when woken (spurious wake-ups included), false on time-out.
    // A null section returns true at once. An unset time-out waits without limit.
    bool Wait(CriticalSection* section, checked_value<unsigned int> const& timeoutMs);

private:
    String name;
    pthread_cond_t condition;
};

} // namespace Cordel::Atomic
