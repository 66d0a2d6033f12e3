// The double IIR filters; the float family is inert.

#include <Cordel/IPP/IIR.h>
#include <Cordel/IPP/Memory.h>

#include <algorithm>

namespace Cordel::IPP {

struct IIRState_Double {
    unsigned int count = 0; // the order, or the number of sections
    bool biquad = false;
    aligned_vector<double> taps;
    aligned_vector<double> dly;
};

namespace {

void makeState(IIRState_Double** state, double const* taps, unsigned int count, bool biquad, double const* dly)
{
    auto* s = new IIRState_Double;
    s->count = count;
    s->biquad = biquad;
    std::size_t const tapCount = biquad ? 6 * std::size_t{count} : 2 * (std::size_t{count} + 1);
    std::size_t const delayCount = biquad ? 2 * std::size_t{count} : count;
    // A biquad cascade is scaled by its first section's a0, the general form by its own a0.
    double const scale = 1.0 / (biquad ? taps[3] : taps[count + 1]);
    s->taps.resize(tapCount);
    for (std::size_t j = 0; j < tapCount; ++j)
        s->taps[j] = taps[j] * scale;
    s->dly.assign(delayCount, 0.0);
    if (dly != nullptr)
        std::copy(dly, dly + delayCount, s->dly.begin());
    *state = s;
}

double generalOrder(double x, IIRState_Double* s)
{
    unsigned int const order = s->count;
    double const* b = s->taps.data();
    double const* a = b + order + 1;
    double* z = s->dly.data();
    double const y = b[0] * x + z[0];
    for (unsigned int k = 1; k < order; ++k)
        z[k - 1] = b[k] * x + z[k] - a[k] * y;
    z[order - 1] = b[order] * x - a[order] * y;
    return y;
}

double cascade(double x, IIRState_Double* s)
{
    double const* t = s->taps.data();
    double* z = s->dly.data();
    for (unsigned int j = 0; j < s->count; ++j, t += 6, z += 2) {
        double const y = t[0] * x + z[0];
        z[0] = t[1] * x + z[1] - t[4] * y;
        z[1] = t[2] * x - t[5] * y;
        x = y;
    }
    return x;
}

} // namespace

void IIRInit(IIRState_Double** state, double const* taps, unsigned int order, double const* dly)
{
    if (state == nullptr || taps == nullptr || order == 0)
        return;
    makeState(state, taps, order, false, dly);
}

void IIRInit_BiQuad(IIRState_Double** state, double const* taps, unsigned int count, double const* dly)
{
    if (state == nullptr || taps == nullptr || count == 0)
        return;
    makeState(state, taps, count, true, dly);
}

void IIRSetTaps(IIRState_Double* s, double const* taps)
{
    std::copy(taps, taps + s->taps.size(), s->taps.begin());
}

void IIRGetDlyLine(IIRState_Double const* s, double* out)
{
    std::copy(s->dly.begin(), s->dly.end(), out);
}

void IIRSetDlyLine(IIRState_Double* s, double const* in)
{
    if (in == nullptr)
        std::fill(s->dly.begin(), s->dly.end(), 0.0);
    else
        std::copy(in, in + s->dly.size(), s->dly.begin());
}

double IIR(double x, IIRState_Double* s)
{
    return s->biquad ? cascade(x, s) : generalOrder(x, s);
}

void IIR(unsigned int n, double const* src, double* dst, IIRState_Double* s)
{
    if (s->biquad)
        for (unsigned int j = 0; j < n; ++j)
            dst[j] = cascade(src[j], s);
    else
        for (unsigned int j = 0; j < n; ++j)
            dst[j] = generalOrder(src[j], s);
}

void IIR_InPlace(unsigned int, double*, IIRState_Double*) {}

void IIRFree(IIRState_Double* s)
{
    delete s;
}

void IIRInit(IIRState_Float**, float const*, unsigned int, float const*) {}
void IIRInit_BiQuad(IIRState_Float**, float const*, unsigned int, float const*) {}
float IIR(float, IIRState_Float*)
{
    return 0;
}
void IIR(unsigned int, float const*, float*, IIRState_Float*) {}
void IIR_InPlace(unsigned int, float*, IIRState_Float*) {}
void IIRGetDlyLine(IIRState_Float const*, float*) {}
void IIRSetDlyLine(IIRState_Float*, float const*) {}
void IIRFree(IIRState_Float*) {}

} // namespace Cordel::IPP
