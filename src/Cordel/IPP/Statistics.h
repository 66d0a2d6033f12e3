#pragma once
// Reductions and comparisons over vectors (the conventions of Arithmetic.h apply).
//
// Reductions run from index 0 upward; the float sums stay in float, in that order, so that their
// rounding is reproducible from one machine to the next.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// The sum in float, left to right; 0 for n = 0.
CORDEL_API float Sum(unsigned int n, float const* x);

// The largest / smallest element, the first one kept on ties; 0 for n = 0. A NaN first element is
// the result; any later NaN is passed over.
CORDEL_API float Max(unsigned int n, float const* x);
CORDEL_API double Max(unsigned int n, double const* x);
CORDEL_API float Min(unsigned int n, float const* x);
CORDEL_API double Min(unsigned int n, double const* x);

// srcDst = the larger of src and srcDst (srcDst is kept unless src is greater).
CORDEL_API void MaxEvery(unsigned int n, float const* src, float* srcDst);

// √(Σ x²), each square formed in float and summed in double; 0 for n = 0.
CORDEL_API float NormL2(unsigned int n, float const* x);

// Σ a·b in float, left to right; 0 for n = 0.
CORDEL_API float DotProduct(unsigned int n, float const* a, float const* b);
// Inert: returns 0.
CORDEL_API double DotProduct(unsigned int n, double const* a, double const* b);

// True when all n bytes are equal; true for n = 0.
CORDEL_API bool Equal(unsigned int n, unsigned char const* a, unsigned char const* b);

} // namespace Cordel::IPP
