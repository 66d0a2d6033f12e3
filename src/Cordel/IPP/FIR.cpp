// The float FIR filter.

#include <Cordel/IPP/FIR.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/detail/FirKernels.h>

#include <algorithm>

namespace Cordel::IPP {

namespace {

// Samples laid out in time order per pass of the block form.
constexpr unsigned int blockLength = 256;

float dotProduct(unsigned int n, float const* a, float const* b)
{
    float sum = 0;
    for (unsigned int j = 0; j < n; ++j)
        sum += a[j] * b[j];
    return sum;
}

// Whole groups go to the kernel in use, the rest through the portable loop.
void filterBlock(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0)
{
    detail::FirEntry const& kernel = detail::dispatch().fir;
    unsigned int const done = m - m % kernel.group;
    kernel.block(h, L, x, y, done, c0);
    detail::firBlockPortable(h, L, x + done, y + done, m - done, (c0 - 1 + done) % L + 1);
}

} // namespace

void detail::firBlockPortable(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0)
{
    for (unsigned int i = 0; i < m; ++i) {
        unsigned int const c = (c0 - 1 + i) % L + 1;
        float first = 0;
        for (unsigned int k = 0; k < c; ++k)
            first += h[k] * x[int(i) - int(k)];
        float second = 0;
        for (unsigned int k = c; k < L; ++k)
            second += h[k] * x[int(i) - int(k)];
        y[i] = first + second;
    }
}

struct FIRState_Float {
    aligned_vector<float> taps;
    aligned_vector<float> dly;
    unsigned int index = 0;
    aligned_vector<float> timeOrdered; // L-1 past samples then up to blockLength new ones
};

void FIRInit(FIRState_Float** state, float const* taps, unsigned int L, float const* dly)
{
    if (state == nullptr || taps == nullptr || L == 0)
        return;
    auto* s = new FIRState_Float;
    s->taps.assign(taps, taps + L);
    s->dly.assign(L, 0.0f);
    if (dly != nullptr)
        std::copy(dly, dly + L, s->dly.begin());
    s->timeOrdered.resize(std::size_t{L} - 1 + blockLength);
    *state = s;
}

float FIR(float x, FIRState_Float* s)
{
    unsigned int const L = static_cast<unsigned int>(s->taps.size());
    unsigned int const p0 = s->index;
    s->dly[p0] = x;
    s->index = p0 == 0 ? L - 1 : p0 - 1;
    float const* h = s->taps.data();
    float const* d = s->dly.data();
    float const first = dotProduct(L - p0, h, d + p0);
    float const second = dotProduct(p0, h + (L - p0), d);
    return first + second;
}

// Lays the history out in time order, filters a block from it, then writes the newest samples
// back into the circular line where the one-sample form would have put them.
void FIR(unsigned int n, float const* src, float* dst, FIRState_Float* s)
{
    unsigned int const L = static_cast<unsigned int>(s->taps.size());
    float* const history = s->timeOrdered.data();
    float* const fresh = history + (L - 1);
    while (n > 0) {
        unsigned int const m = std::min(n, blockLength);
        unsigned int const p = s->index;
        for (unsigned int k = 1; k < L; ++k)
            fresh[-int(k)] = s->dly[(p + k) % L];
        std::copy(src, src + m, fresh);
        filterBlock(s->taps.data(), L, fresh, dst, m, L - p);
        for (unsigned int j = m > L ? m - L : 0; j < m; ++j)
            s->dly[(p + L - j % L) % L] = fresh[j];
        s->index = (p + L - m % L) % L;
        src += m;
        dst += m;
        n -= m;
    }
}

void FIR_InPlace(unsigned int n, float* x, FIRState_Float* s)
{
    FIR(n, x, x, s);
}

void FIRGetDlyLine(FIRState_Float const* s, float* out)
{
    std::copy(s->dly.begin(), s->dly.end(), out);
}

void FIRSetDlyLine(FIRState_Float* s, float const* in)
{
    if (in == nullptr)
        std::fill(s->dly.begin(), s->dly.end(), 0.0f);
    else
        std::copy(in, in + s->dly.size(), s->dly.begin());
}

void FIRFree(FIRState_Float* s)
{
    delete s;
}

} // namespace Cordel::IPP
