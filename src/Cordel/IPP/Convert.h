#pragma once
// Conversions between sample types (the conventions of Arithmetic.h apply).
//
// An integer scale factor s follows the integer-primitive convention: an integer result is the
// exact result times 2^-s, an integer input converted to floating point is multiplied by 2^-s.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

CORDEL_API void Convert(unsigned int n, unsigned char const* src, float* dst);

// dst = src·(1 / 2^scaleFactor), the shift taken modulo 32.
CORDEL_API void Convert(unsigned int n, short const* src, float* dst, int scaleFactor);
CORDEL_API void Convert(unsigned int n, short const* src, double* dst, int scaleFactor);

// dst = src; the scale factor is ignored.
CORDEL_API void Convert(unsigned int n, int const* src, float* dst, int scaleFactor);
// Inert.
CORDEL_API void Convert(unsigned int n, int const* src, double* dst, int scaleFactor);
CORDEL_API void Convert(unsigned int n, float const* src, unsigned char* dst, int scaleFactor, bool round);

// dst = m·x (+ 0.5 when round, also for negative values, so −1.7 gives −1) truncated toward zero
// and saturated to the 16-bit range; m is the 32-bit integer 1 << (−scaleFactor mod 32) as a
// float, 2^−scaleFactor for scale factors 0 to −30. A value that is not a number gives 0.
CORDEL_API void Convert(unsigned int n, float const* src, short* dst, int scaleFactor, bool round);

// dst = x·2^−scaleFactor, rounded half away from zero when round (−1.5 gives −2), else truncated,
// and saturated to the 32-bit range; scaled and rounded in double. A value that is not a number
// gives 0.
CORDEL_API void Convert(unsigned int n, float const* src, int* dst, int scaleFactor, bool round);
// Inert.
CORDEL_API void Convert(unsigned int n, double const* src, int* dst, int scaleFactor, bool round);

CORDEL_API void Convert(unsigned int n, float const* src, double* dst);
CORDEL_API void Convert(unsigned int n, double const* src, float* dst);

} // namespace Cordel::IPP
