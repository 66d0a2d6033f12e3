#include <Cordel/IPP/Generate.h>

#include <Cordel/IPP/detail/Random.h>

#include <cmath>

namespace Cordel::IPP {

void GenerateRamp(unsigned int n, float* dst, float start, float end)
{
    if (n == 0)
        return;
    if (n == 1) {
        dst[0] = start;
        return;
    }
    float const last = static_cast<float>(n - 1);
    float const span = end - start;
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<float>(i) / last * span + start;
}

void GenerateTone(unsigned int n, float* dst, float amplitude, unsigned int period)
{
    if (period == 0)
        return;
    constexpr float pi = 3.1415927f;
    float const cycle = static_cast<float>(period);
    for (unsigned int i = 0; i < n; ++i) {
        float const angle = 2.0f * static_cast<float>(i) * pi / cycle;
        dst[i] = amplitude * static_cast<float>(std::sin(static_cast<double>(angle)));
    }
}

void RandUniformInit(RandUniformState_Float** state, float low, float high, unsigned int seed)
{
    *state = new RandUniformState_Float{low, high, seed, (high - low) / 32767.0f};
}

void RandUniformGenerate(RandUniformState_Float* state, unsigned int n, float* dst)
{
    unsigned int seed = state->seed;
    float const step = state->step;
    float const low = state->low;
    for (unsigned int i = 0; i < n; ++i) {
        seed = detail::nextSeed(seed);
        dst[i] = static_cast<float>(detail::drawOf(seed)) * step + low;
    }
    state->seed = seed;
}

void RandUniformFree(RandUniformState_Float* state) { delete state; }

int simpleRand(int& seed)
{
    unsigned int const next = detail::nextSeed(static_cast<unsigned int>(seed));
    seed = static_cast<int>(next);
    return static_cast<int>(detail::drawOf(next));
}

void RandGaussianInit(RandGaussianState_Float**, float, float, unsigned int) {}
void RandGaussianGenerate(RandGaussianState_Float*, unsigned int, float*) {}
void RandGaussianFree(RandGaussianState_Float*) {}

} // namespace Cordel::IPP
