#pragma once
// Replaces the global allocation functions of a test program with counting ones, to show that a
// real-time path allocates nothing. Include it in exactly one source of the program.

#include <cstdlib>
#include <new>

namespace CordelTest {

inline unsigned long allocationCount = 0;

// Allocations made since the object was created.
struct AllocationCounter {
    unsigned long const start = allocationCount;
    unsigned long Made() const { return allocationCount - start; }
};

} // namespace CordelTest

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size)
{
    ++CordelTest::allocationCount;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size)
{
    return operator new(size);
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}
#pragma GCC diagnostic pop
