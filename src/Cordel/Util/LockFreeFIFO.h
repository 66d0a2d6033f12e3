#pragma once
// A ring of elements whose producer and consumer never wait for each other. Producers are
// serialised among themselves by the write lock and consumers by the read lock; the two sides
// meet only when a full ring is doubled, which is the one allocation on the pushing path.

#include <Cordel/Util/Atomic.h>

#include <algorithm>
#include <new>
#include <vector>

namespace Cordel::Atomic {

template <typename T>
class LockFreeFIFO : noncopyable {
public:
    // A ring of `size` holds size - 1 elements before it grows (a size of 0 is taken as 1).
    LockFreeFIFO(String const& name, unsigned int size)
        : name(name), readIndex(0), writeIndex(0), buffer(checkedSize(std::max(size, 1u))),
          readLock(String("%1 Read Lock").Arg(name)), writeLock(String("%1 Write Lock").Arg(name))
    {
    }

    // Always succeeds: a full ring is doubled. Fails only with std::bad_alloc, holding no lock.
    void Push(T const& item)
    {
        writeLock.Lock();
        for (;;) {
            unsigned int const r = AtomicRead(readIndex);
            unsigned int const w = AtomicRead(writeIndex);
            unsigned int const next = advance(w);
            if (r != next) {
                // The element is in place before the index that publishes it moves.
                buffer[w] = item;
                AtomicWrite(writeIndex, next);
                writeLock.Unlock();
                return;
            }
            grow();
        }
    }

    // Takes the oldest element into `item`; false when the FIFO is empty.
    bool Pop(T& item)
    {
        readLock.Lock();
        for (;;) {
            unsigned int const r = AtomicRead(readIndex);
            if (r == AtomicRead(writeIndex)) {
                readLock.Unlock();
                return false;
            }
            item = buffer[r];
            if (AtomicCompareExchange(readIndex, advance(r), r)) {
                readLock.Unlock();
                return true;
            }
        }
    }

    // The current ring size; for the producer side (growth changes it under the write lock).
    unsigned int GetRingSize() const { return static_cast<unsigned int>(buffer.size()); }

private:
    static constexpr unsigned int maxSize = 0x3FFFFFFF;

    static unsigned int checkedSize(unsigned int size)
    {
        if (size > maxSize)
            throw std::bad_alloc();
        return size;
    }

    unsigned int advance(unsigned int i) const { return i + 1 < buffer.size() ? i + 1 : 0; }

    // Called with the write lock held on a full ring. The new ring is allocated before the read
    // lock is taken, so a consumer (often the real-time side) is never held up by the allocator.
    void grow()
    {
        unsigned int const n = GetRingSize();
        std::vector<T> bigger;
        try {
            bigger.resize(checkedSize(n > maxSize / 2 ? maxSize + 1u : 2 * n));
        } catch (...) {
            writeLock.Unlock();
            throw;
        }
        readLock.Lock();
        // Counted again under the read lock: a consumer may have taken elements since the ring
        // was found full, and only the ones still queued may be carried over.
        unsigned int const r = AtomicRead(readIndex);
        unsigned int const w = AtomicRead(writeIndex);
        unsigned int const count = w >= r ? w - r : n - r + w;
        // Oldest first: from r towards the end of the old ring, then the slots that wrapped.
        unsigned int const tail = std::min(count, n - r);
        std::copy(buffer.begin() + r, buffer.begin() + r + tail, bigger.begin());
        std::copy(buffer.begin(), buffer.begin() + (count - tail), bigger.begin() + tail);
        buffer.swap(bigger);
        AtomicWrite(readIndex, 0);
        AtomicWrite(writeIndex, count);
        readLock.Unlock();
    }

    String name;
    alignas(64) volatile unsigned int readIndex;
    alignas(64) volatile unsigned int writeIndex;
    std::vector<T> buffer;
    CriticalSection readLock;
    CriticalSection writeLock;
};

} // namespace Cordel::Atomic
