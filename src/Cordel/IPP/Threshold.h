#pragma once
// Clamping and thresholded reciprocals of vectors (the conventions of Arithmetic.h apply).

#include <Cordel/IPP/Complex.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Types.h>

namespace Cordel::IPP {

// x below range.minimum becomes the minimum; otherwise x above range.maximum becomes the maximum.
// The minimum is tested first, so an inverted range clamps everything below it to the minimum.
CORDEL_API void Trim(unsigned int n, float* x, value_range<float> const& range);

// x < level becomes level.
CORDEL_API void Threshold_LT_InPlace(unsigned int n, float* x, float level);
CORDEL_API void Threshold_LT_InPlace(unsigned int n, double* x, double level);

// x > level becomes level.
CORDEL_API void Threshold_GT_InPlace(unsigned int n, float* x, float level);
CORDEL_API void Threshold_GT_InPlace(unsigned int n, double* x, double level);

// Reciprocals that never exceed 1/level in magnitude: 0 becomes 1/level, |x| < level becomes
// ±1/level with the sign of x, anything else 1/x.
CORDEL_API void Invert_Threshold_InPlace(unsigned int n, float* x, float level);
CORDEL_API void Invert_Threshold_InPlace(unsigned int n, double* x, double level);

// Complex reciprocals: z with |z|² < level² becomes (1/level, 0), dropping its phase; any other z
// becomes 1/z. Does nothing when x is null or level is not greater than 0 (a NaN level is taken).
CORDEL_API void Invert_Threshold_InPlace(unsigned int n, Complex_Float* x, float level);
CORDEL_API void Invert_Threshold_InPlace(unsigned int n, Complex_Double* x, double level);

} // namespace Cordel::IPP
