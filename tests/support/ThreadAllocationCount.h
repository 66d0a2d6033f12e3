#pragma once
// Replaces the allocator of a test program to count the allocations made by the threads that ask
// for it, to show that a real-time path allocates nothing while other threads do as they like.
// Include it in exactly one source of the program.

#include <atomic>
#include <cstdlib>
#include <new>

extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);

namespace CordelTest {

// Set on a thread to count its allocations into `threadAllocations`.
inline thread_local bool countThisThread = false;
inline std::atomic<long> threadAllocations{0};

inline void noteAllocation()
{
    if (countThisThread)
        ++threadAllocations;
}

} // namespace CordelTest

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Every operator new of the C++ library allocates through these.
extern "C" void* malloc(size_t n)
{
    CordelTest::noteAllocation();
    return __libc_malloc(n);
}
extern "C" void* calloc(size_t n, size_t size)
{
    CordelTest::noteAllocation();
    return __libc_calloc(n, size);
}
extern "C" void* realloc(void* p, size_t n)
{
    CordelTest::noteAllocation();
    return __libc_realloc(p, n);
}
#else
// The sanitizers own the C allocator; count at the C++ level, with a matching delete (which the
// compiler cannot see pairs new-over-malloc with delete-over-free).
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t n)
{
    CordelTest::noteAllocation();
    if (void* p = std::malloc(n ? n : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, size_t) noexcept
{
    std::free(p);
}
#endif
