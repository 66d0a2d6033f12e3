#pragma once
// Signal generators: ramps, tones and uniform noise (the conventions of Arithmetic.h apply).
//
// The noise comes from one linear congruential step, seed = seed·214013 + 2531011 (32 bits,
// wrapping), whose draw is bits 16 to 30 of the new seed: a value from 0 to 32767.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// dst = a ramp from start (first sample) to end (last sample), formed in single precision;
// one sample is start.
CORDEL_API void GenerateRamp(unsigned int n, float* dst, float start, float end);

// dst[i] = amplitude·sin(2πi / period): phase 0 at the first sample, period samples per cycle.
// Nothing is written when period is 0.
CORDEL_API void GenerateTone(unsigned int n, float* dst, float amplitude, unsigned int period);

// A uniform generator: draws map to low + draw·step, so 32768 evenly spaced values from low to high.
struct RandUniformState_Float {
    float low;
    float high;
    unsigned int seed; // advanced by every draw
    float step;        // (high − low) / 32767
};

// Creates a generator state and stores it in *state; release it with RandUniformFree.
CORDEL_API void RandUniformInit(RandUniformState_Float** state, float low, float high, unsigned int seed);
// n draws; the seed carries on, so a sequence split over several calls equals one long call.
CORDEL_API void RandUniformGenerate(RandUniformState_Float* state, unsigned int n, float* dst);
CORDEL_API void RandUniformFree(RandUniformState_Float* state);

// One step on the caller's seed; returns the draw.
CORDEL_API int simpleRand(int& seed);

// Inert: the Gaussian generator keeps its interface but creates, draws and frees nothing.
struct RandGaussianState_Float;
CORDEL_API void RandGaussianInit(RandGaussianState_Float** state, float mean, float stdDev, unsigned int seed);
CORDEL_API void RandGaussianGenerate(RandGaussianState_Float* state, unsigned int n, float* dst);
CORDEL_API void RandGaussianFree(RandGaussianState_Float* state);

} // namespace Cordel::IPP
