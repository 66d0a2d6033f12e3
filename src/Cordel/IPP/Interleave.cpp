#include <Cordel/IPP/Interleave.h>

#include <Cordel/IPP/detail/Dispatch.h>

#include <cstddef>

namespace Cordel::IPP {

namespace {

// One channel at a time: each pass reads one source row contiguously and writes with a fixed stride.
template <typename T>
void interleave(unsigned int channels, unsigned int n, T const* const* src, T* dst)
{
    for (unsigned int c = 0; c < channels; ++c) {
        T const* row = src[c];
        for (unsigned int j = 0; j < n; ++j)
            dst[std::size_t(j) * channels + c] = row[j];
    }
}

template <typename T>
void deinterleave(unsigned int channels, unsigned int n, T const* src, T* const* dst)
{
    for (unsigned int c = 0; c < channels; ++c) {
        T* row = dst[c];
        for (unsigned int j = 0; j < n; ++j)
            row[j] = src[std::size_t(j) * channels + c];
    }
}

} // namespace

void Interleave(unsigned int n, short const* left, short const* right, short* dst, bool)
{
    detail::dispatch().vector.interleaveShort(n, left, right, dst);
}

void Interleave(unsigned int n, float const* left, float const* right, float* dst, bool)
{
    detail::dispatch().vector.interleaveFloat(n, left, right, dst);
}

void Interleave(unsigned int channels, unsigned int n, float const* const* src, float* dst, bool)
{
    if (channels == 2)
        detail::dispatch().vector.interleaveFloat(n, src[0], src[1], dst);
    else
        interleave(channels, n, src, dst);
}

void Interleave(unsigned int channels, unsigned int n, double const* const* src, double* dst, bool)
{
    interleave(channels, n, src, dst);
}

void Deinterleave(unsigned int n, short const* src, short* left, short* right, bool)
{
    detail::dispatch().vector.deinterleaveShort(n, src, left, right);
}

void Deinterleave(unsigned int n, float const* src, float* left, float* right, bool)
{
    detail::dispatch().vector.deinterleaveFloat(n, src, left, right);
}

void Deinterleave(unsigned int channels, unsigned int n, float const* src, float* const* dst, bool)
{
    if (channels == 2)
        detail::dispatch().vector.deinterleaveFloat(n, src, dst[0], dst[1]);
    else
        deinterleave(channels, n, src, dst);
}

void Deinterleave(unsigned int channels, unsigned int n, double const* src, double* const* dst, bool)
{
    deinterleave(channels, n, src, dst);
}

} // namespace Cordel::IPP
