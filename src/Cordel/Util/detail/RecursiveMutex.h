#pragma once
// Internal: the recursive mutex behind both critical-section classes.
//
// A plain (non-recursive) pthread mutex plus an owner and a depth. The owner is only ever equal
// to the calling thread if that thread stored it, so reading it without the lock is safe; the
// depth is touched by the owner alone. Compared with the platform's recursive mutex type this
// keeps re-entry off the mutex entirely and lets a wait release every level, not just one.

#include <Cordel/common/Types.h>

#include <atomic>
#include <pthread.h>

namespace Cordel::Atomic::detail {

// Identifies the calling thread by the address of a thread-local byte: cheaper than asking the
// thread library, and never equal for two live threads.
inline void const* callerIdentity()
{
    static thread_local char identity __attribute__((tls_model("initial-exec")));
    return &identity;
}

// One cache line each, so that the two locks of a FIFO never share a line between threads.
struct alignas(64) RecursiveMutex {
    RecursiveMutex() { pthread_mutex_init(&mutex, nullptr); }
    ~RecursiveMutex() { pthread_mutex_destroy(&mutex); }
    RecursiveMutex(RecursiveMutex const&) = delete;
    RecursiveMutex& operator=(RecursiveMutex const&) = delete;

    bool OwnedByCaller() const { return owner.load(std::memory_order_relaxed) == callerIdentity(); }

    void Lock()
    {
        if (OwnedByCaller()) {
            ++depth;
            return;
        }
        pthread_mutex_lock(&mutex);
        take();
    }

    void Unlock()
    {
        if (--depth == 0) {
            owner.store(nullptr, std::memory_order_relaxed);
            pthread_mutex_unlock(&mutex);
        }
    }

    bool TryLock()
    {
        if (OwnedByCaller()) {
            ++depth;
            return true;
        }
        if (pthread_mutex_trylock(&mutex) != 0)
            return false;
        take();
        return true;
    }

    // Waits on `condition` with every level released; `deadline` null waits without limit.
    bool Wait(pthread_cond_t* condition, timespec const* deadline)
    {
        unsigned int const saved = depth;
        depth = 0;
        owner.store(nullptr, std::memory_order_relaxed);
        int const result = deadline ? pthread_cond_timedwait(condition, &mutex, deadline)
                                    : pthread_cond_wait(condition, &mutex);
        take();
        depth = saved;
        return result == 0;
    }

    pthread_mutex_t mutex;
    std::atomic<void const*> owner{nullptr};
    unsigned int depth = 0;

private:
    void take()
    {
        owner.store(callerIdentity(), std::memory_order_relaxed);
        depth = 1;
    }
};

} // namespace Cordel::Atomic::detail
