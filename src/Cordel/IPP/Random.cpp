#include <Cordel/IPP/Random.h>

#include <Cordel/IPP/Generate.h>

#include <Cordel/IPP/detail/Random.h>

#include <algorithm>
#include <ctime>
#include <limits>

namespace Cordel::Util {

namespace {

unsigned int seedOrClock(checked_value<unsigned int> const& seed)
{
    return seed.IsSet() ? seed.Get() : static_cast<unsigned int>(std::time(nullptr));
}

} // namespace

RandGenerator::RandGenerator(value_range<float> const& range, Distribution distribution,
                             checked_value<unsigned int> const& seed)
    : state(nullptr)
{
    if (distribution == Uniform)
        IPP::RandUniformInit(&state, range.minimum, range.maximum, seedOrClock(seed));
}

RandGenerator::~RandGenerator()
{
    if (state != nullptr)
        IPP::RandUniformFree(state);
}

void RandGenerator::Compute(std::vector<float>& v)
{
    if (state == nullptr)
        return;
    // The generator counts in 32 bits; longer vectors are filled in pieces, which gives the same draws.
    for (std::size_t done = 0; done < v.size();) {
        std::size_t const piece = std::min<std::size_t>(v.size() - done, std::numeric_limits<unsigned int>::max());
        IPP::RandUniformGenerate(state, static_cast<unsigned int>(piece), v.data() + done);
        done += piece;
    }
}

SimpleRandGenerator::SimpleRandGenerator(checked_value<unsigned int> const& seed) : state(seedOrClock(seed)) {}

void SimpleRandGenerator::Seed(checked_value<unsigned int> const& seed) { state = seedOrClock(seed); }

unsigned int SimpleRandGenerator::GetNext()
{
    state = IPP::detail::drawOf(IPP::detail::nextSeed(state));
    return state;
}

float SimpleRandGenerator::GetNextFloat() { return static_cast<float>(GetNext()) / 32767.0f; }

} // namespace Cordel::Util
