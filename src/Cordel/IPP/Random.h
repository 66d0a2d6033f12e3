#pragma once
// Random number generators over the vector layer's linear congruential step.

#include <Cordel/common/Export.h>
#include <Cordel/common/Types.h>

#include <vector>

namespace Cordel::IPP {
struct RandUniformState_Float;
}

namespace Cordel::Util {

// Fills vectors with noise; only the uniform distribution is available.
class CORDEL_API RandGenerator : noncopyable {
public:
    enum Distribution { Uniform = 0, Gaussian = 1 };

    // An unset seed seeds from the current time in seconds. Any distribution other than Uniform
    // creates no generator, and Compute then leaves vectors as they are.
    RandGenerator(value_range<float> const& range, Distribution distribution, checked_value<unsigned int> const& seed);
    ~RandGenerator();

    // Fills all of v (its current size) with draws over the range, minimum and maximum included.
    void Compute(std::vector<float>& v);

private:
    IPP::RandUniformState_Float* state;
};

// A cheap generator of 15-bit draws. Its state is the last draw itself, not the full 32-bit seed,
// so the sequence repeats within at most 32768 draws: good enough for dither and jitter, and
// deliberately so, since sequences are expected to reproduce.
class CORDEL_API SimpleRandGenerator {
public:
    // An unset seed seeds from the current time in seconds.
    explicit SimpleRandGenerator(checked_value<unsigned int> const& seed = {});
    void Seed(checked_value<unsigned int> const& seed);

    // One draw, 0 to 32767.
    unsigned int GetNext();
    // One draw divided by 32767: 0 to 1, both included.
    float GetNextFloat();

private:
    unsigned int state;
};

} // namespace Cordel::Util
