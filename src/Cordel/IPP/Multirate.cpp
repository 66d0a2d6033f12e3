// The float multirate FIR; the double family and the resamplers are inert.

#include <Cordel/IPP/Multirate.h>
#include <Cordel/IPP/Memory.h>

#include <cstdint>

namespace Cordel::IPP {

struct MRFState_Float {
    unsigned int up = 1;
    unsigned int down = 1;
    unsigned int upPhase = 0;
    aligned_vector<float> taps;
    aligned_vector<float> ring; // inputs by index modulo its power-of-two size
    std::int64_t consumed = 0;  // inputs seen so far
    std::int64_t nextOutput = 0; // upsampled index of the next output
};

namespace {

std::int64_t floorMod(std::int64_t a, std::int64_t b)
{
    std::int64_t const r = a % b;
    return r < 0 ? r + b : r;
}

float input(MRFState_Float const* s, std::int64_t j)
{
    return s->ring[static_cast<std::size_t>(j) & (s->ring.size() - 1)];
}

// Only the taps that meet a nonzero upsampled sample contribute: k ≡ m - upPhase (mod U).
float outputAt(MRFState_Float const* s, std::int64_t m)
{
    std::int64_t const U = s->up;
    std::int64_t const L = static_cast<std::int64_t>(s->taps.size());
    std::int64_t const shifted = m - s->upPhase;
    float sum = 0;
    for (std::int64_t k = floorMod(shifted, U); k < L; k += U)
        sum += s->taps[static_cast<std::size_t>(k)] * input(s, (shifted - k) / U);
    return sum;
}

} // namespace

void MRFInit(MRFState_Float** state, unsigned int upFactor, unsigned int downFactor, float const* taps,
             unsigned int tapCount, std::vector<float>& dlyLine, unsigned int upPhase, unsigned int downPhase)
{
    if (state == nullptr || taps == nullptr || tapCount == 0 || upFactor == 0 || downFactor == 0)
        return;
    auto* s = new MRFState_Float;
    s->up = upFactor;
    s->down = downFactor;
    s->upPhase = upPhase % upFactor;
    s->taps.assign(taps, taps + tapCount);
    std::size_t const history = (std::size_t{tapCount} - 1 + s->upPhase + upFactor - 1) / upFactor;
    std::size_t size = 1;
    while (size < history + 1)
        size *= 2;
    s->ring.assign(size, 0.0f);
    dlyLine.resize(history, 0.0f);
    for (std::size_t t = 0; t < history; ++t)
        s->ring[(size - 1 - t) & (size - 1)] = dlyLine[t];
    s->nextOutput = downPhase % downFactor;
    *state = s;
}

void MRFProcess(float const* src, float* dst, unsigned int n, MRFState_Float* s)
{
    for (unsigned int j = 0; j < n; ++j) {
        std::int64_t const index = s->consumed++;
        s->ring[static_cast<std::size_t>(index) & (s->ring.size() - 1)] = src[j];
        std::int64_t const end = (index + 1) * s->up;
        for (; s->nextOutput < end; s->nextOutput += s->down)
            *dst++ = outputAt(s, s->nextOutput);
    }
}

void MRFFree(MRFState_Float* s)
{
    delete s;
}

void MRFInit(MRFState_Double**, unsigned int, unsigned int, double const*, unsigned int, std::vector<double>&,
             unsigned int, unsigned int)
{
}
void MRFProcess(double const*, double*, unsigned int, MRFState_Double*) {}
void MRFFree(MRFState_Double*) {}

void UpSample(unsigned int, float const*, float*, unsigned int, unsigned int) {}
void UpSample(unsigned int, double const*, double*, unsigned int, unsigned int) {}
void DownSample(unsigned int, float const*, float*, unsigned int, unsigned int) {}
void DownSample(unsigned int, double const*, double*, unsigned int, unsigned int) {}

} // namespace Cordel::IPP
