#pragma once
// Interleaving channels into frames and back (the conventions of Arithmetic.h apply). The flag
// argument has no effect; it is kept for the shape of the interface.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// dst[2j] = left[j], dst[2j+1] = right[j] for n frames.
CORDEL_API void Interleave(unsigned int n, short const* left, short const* right, short* dst, bool flag);
CORDEL_API void Interleave(unsigned int n, float const* left, float const* right, float* dst, bool flag);

// dst[j·channels + c] = src[c][j] for n frames; the channel count comes first.
CORDEL_API void Interleave(unsigned int channels, unsigned int n, float const* const* src, float* dst, bool flag);
CORDEL_API void Interleave(unsigned int channels, unsigned int n, double const* const* src, double* dst, bool flag);

// left[j] = src[2j], right[j] = src[2j+1] for n frames.
CORDEL_API void Deinterleave(unsigned int n, short const* src, short* left, short* right, bool flag);
CORDEL_API void Deinterleave(unsigned int n, float const* src, float* left, float* right, bool flag);

// dst[c][j] = src[j·channels + c] for n frames.
CORDEL_API void Deinterleave(unsigned int channels, unsigned int n, float const* src, float* const* dst, bool flag);
CORDEL_API void Deinterleave(unsigned int channels, unsigned int n, double const* src, double* const* dst, bool flag);

} // namespace Cordel::IPP
