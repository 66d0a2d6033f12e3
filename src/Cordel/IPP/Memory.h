#pragma once
// Copying, filling and allocating vectors.
//
// Like every member of the vector layer: the count comes first, sources before destinations,
// nothing is checked and nothing is reported; a count of 0 does nothing.

#include <Cordel/common/Export.h>

#include <cstddef>
#include <new>
#include <vector>

namespace Cordel::IPP {

// Element copy of n elements; the ranges must not overlap.
CORDEL_API void Copy(unsigned int n, unsigned char const* src, unsigned char* dst);
CORDEL_API void Copy(unsigned int n, char const* src, char* dst);
CORDEL_API void Copy(unsigned int n, short const* src, short* dst);
CORDEL_API void Copy(unsigned int n, int const* src, int* dst);
CORDEL_API void Copy(unsigned int n, unsigned int const* src, unsigned int* dst);
CORDEL_API void Copy(unsigned int n, float const* src, float* dst);
CORDEL_API void Copy(unsigned int n, double const* src, double* dst);

// Copy of n elements between ranges that may overlap.
CORDEL_API void Move(unsigned int n, unsigned char const* src, unsigned char* dst);
CORDEL_API void Move(unsigned int n, short const* src, short* dst);
CORDEL_API void Move(unsigned int n, float const* src, float* dst);
CORDEL_API void Move(unsigned int n, double const* src, double* dst);

CORDEL_API void Set(unsigned int n, unsigned char* dst, unsigned char value);
CORDEL_API void Set(unsigned int n, short* dst, short value);
CORDEL_API void Set(unsigned int n, int* dst, int value);
CORDEL_API void Set(unsigned int n, unsigned int* dst, unsigned int value);
CORDEL_API void Set(unsigned int n, float* dst, float value);
CORDEL_API void Set(unsigned int n, double* dst, double value);

CORDEL_API void Zero(unsigned int n, unsigned char* dst);
CORDEL_API void Zero(unsigned int n, short* dst);
CORDEL_API void Zero(unsigned int n, int* dst);
CORDEL_API void Zero(unsigned int n, unsigned int* dst);
CORDEL_API void Zero(unsigned int n, float* dst);
CORDEL_API void Zero(unsigned int n, double* dst);

// Ordinary array allocations of n elements, released with the matching Free (which ignores null).
CORDEL_API float* Malloc_Float(unsigned int n);
CORDEL_API double* Malloc_Double(unsigned int n);
CORDEL_API short* Malloc_Int16(unsigned int n);
CORDEL_API unsigned char* Malloc_Byte(unsigned int n);
CORDEL_API void Free(float* p);
CORDEL_API void Free(double* p);
CORDEL_API void Free(short* p);
CORDEL_API void Free(unsigned char* p);

// The standard-container allocator over the vector layer's allocation.
template <typename T>
struct IPPAllocator {
    using value_type = T;
    IPPAllocator() = default;
    template <typename U>
    IPPAllocator(IPPAllocator<U> const&) noexcept {}
    T* allocate(std::size_t n) { return static_cast<T*>(::operator new[](n * sizeof(T))); }
    void deallocate(T* p, std::size_t) noexcept { ::operator delete[](p); }
    template <typename U>
    friend bool operator==(IPPAllocator const&, IPPAllocator<U> const&) { return true; }
};

} // namespace Cordel::IPP

namespace Cordel {

// A growable array over the vector layer's allocator; growing to n zero-fills the new elements.
template <typename T>
using aligned_vector = std::vector<T, IPP::IPPAllocator<T>>;

} // namespace Cordel
