#include <Cordel/IPP/Memory.h>

#include <algorithm>
#include <cstring>

namespace Cordel::IPP {

namespace {

template <typename T>
void copy(unsigned int n, T const* src, T* dst)
{
    if (n)
        std::memcpy(dst, src, std::size_t(n) * sizeof(T));
}

template <typename T>
void move(unsigned int n, T const* src, T* dst)
{
    if (n)
        std::memmove(dst, src, std::size_t(n) * sizeof(T));
}

template <typename T>
void set(unsigned int n, T* dst, T value)
{
    std::fill_n(dst, n, value);
}

} // namespace

void Copy(unsigned int n, unsigned char const* src, unsigned char* dst) { copy(n, src, dst); }
void Copy(unsigned int n, char const* src, char* dst) { copy(n, src, dst); }
void Copy(unsigned int n, short const* src, short* dst) { copy(n, src, dst); }
void Copy(unsigned int n, int const* src, int* dst) { copy(n, src, dst); }
void Copy(unsigned int n, unsigned int const* src, unsigned int* dst) { copy(n, src, dst); }
void Copy(unsigned int n, float const* src, float* dst) { copy(n, src, dst); }
void Copy(unsigned int n, double const* src, double* dst) { copy(n, src, dst); }

void Move(unsigned int n, unsigned char const* src, unsigned char* dst) { move(n, src, dst); }
void Move(unsigned int n, short const* src, short* dst) { move(n, src, dst); }
void Move(unsigned int n, float const* src, float* dst) { move(n, src, dst); }
void Move(unsigned int n, double const* src, double* dst) { move(n, src, dst); }

void Set(unsigned int n, unsigned char* dst, unsigned char value) { set(n, dst, value); }
void Set(unsigned int n, short* dst, short value) { set(n, dst, value); }
void Set(unsigned int n, int* dst, int value) { set(n, dst, value); }
void Set(unsigned int n, unsigned int* dst, unsigned int value) { set(n, dst, value); }
void Set(unsigned int n, float* dst, float value) { set(n, dst, value); }
void Set(unsigned int n, double* dst, double value) { set(n, dst, value); }

void Zero(unsigned int n, unsigned char* dst) { set<unsigned char>(n, dst, 0); }
void Zero(unsigned int n, short* dst) { set<short>(n, dst, 0); }
void Zero(unsigned int n, int* dst) { set(n, dst, 0); }
void Zero(unsigned int n, unsigned int* dst) { set(n, dst, 0u); }
void Zero(unsigned int n, float* dst) { set(n, dst, 0.0f); }
void Zero(unsigned int n, double* dst) { set(n, dst, 0.0); }

float* Malloc_Float(unsigned int n) { return new float[n]; }
double* Malloc_Double(unsigned int n) { return new double[n]; }
short* Malloc_Int16(unsigned int n) { return new short[n]; }
unsigned char* Malloc_Byte(unsigned int n) { return new unsigned char[n]; }
void Free(float* p) { delete[] p; }
void Free(double* p) { delete[] p; }
void Free(short* p) { delete[] p; }
void Free(unsigned char* p) { delete[] p; }

} // namespace Cordel::IPP
