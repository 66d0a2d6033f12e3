// The MDCT: the input is folded to N/2 values, whose DCT-IV is computed as an N/4-point complex
// FFT between two rotations by θ_k = 2π(k + 1/8)/N.

#include <Cordel/IPP/MDCT.h>
#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/Memory.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace Cordel::IPP {

namespace {

struct MDCTInner {
    unsigned int order = 0;
    FFTState_Complex_Float_Interleaved* fft = nullptr;
    unsigned char* buffer = nullptr;
};

unsigned int innerOrder(unsigned int N)
{
    unsigned int const q = N / 4;
    if (q <= 2)
        return 1;
    unsigned int b = 2;
    while ((1u << b) < q)
        ++b;
    return b;
}

MDCTInner* makeInner(unsigned int N)
{
    auto* inner = new MDCTInner;
    inner->order = innerOrder(N);
    FFTInit(&inner->fft, inner->order);
    return inner;
}

void freeInner(MDCTInner* inner)
{
    if (inner == nullptr)
        return;
    FFTFree(inner->fft);
    Free(inner->buffer);
    delete inner;
}

float angle(unsigned int k, int N)
{
    return (static_cast<float>(k) + 0.125f) * (2.0f * std::numbers::pi_v<float>) / static_cast<float>(N);
}

// Rotates (a, b) by -θ: (cos θ·a + sin θ·b, -sin θ·a + cos θ·b).
Complex_Float rotate(float a, float b, float theta)
{
    float const c = std::cos(theta);
    float const s = std::sin(theta);
    return {c * a + s * b, -s * a + c * b};
}

// Room for the inner transform even when its 2^order points exceed N/4.
std::vector<Complex_Float> workspace(unsigned int N, unsigned int order)
{
    std::size_t const points = std::size_t{1} << order;
    return std::vector<Complex_Float>(std::max<std::size_t>(points, N / 2), Complex_Float{0, 0});
}

// The DCT-IV core shared by both directions: pre-rotation, FFT, post-rotation scaled by factor.
// in[k] holds the k-th (a, b) pair; results come back as (re', im') in the same array.
void rotatedTransform(std::vector<Complex_Float>& data, std::vector<Complex_Float>& spectrum, int N,
                      MDCTInner const* inner, float factor)
{
    unsigned int const quarter = static_cast<unsigned int>(N) / 4;
    for (unsigned int k = 0; k < quarter; ++k)
        data[k] = rotate(data[k].re, data[k].im, angle(k, N));
    FFTFwd(data.data(), spectrum.data(), inner->fft, nullptr);
    for (unsigned int k = 0; k < quarter; ++k) {
        Complex_Float const r = rotate(spectrum[k].re, spectrum[k].im, angle(k, N));
        spectrum[k] = {r.re * factor, r.im * factor};
    }
}

} // namespace

struct MDCTStateFwd_Float {
    int N = 0;
    MDCTInner* inner = nullptr;
};

struct MDCTStateInv_Float {
    int N = 0;
    MDCTInner* inner = nullptr;
};

void MDCTInitFwd(MDCTStateFwd_Float** state, unsigned int N)
{
    if (state == nullptr || N == 0)
        return;
    *state = new MDCTStateFwd_Float{static_cast<int>(N), makeInner(N)};
}

void MDCTInitInv(MDCTStateInv_Float** state, unsigned int N)
{
    if (state == nullptr || N == 0)
        return;
    *state = new MDCTStateInv_Float{static_cast<int>(N), makeInner(N)};
}

void MDCTGetFwdBufSize(MDCTStateFwd_Float const*, unsigned int* size)
{
    if (size != nullptr)
        *size = 1;
}

void MDCTGetInvBufSize(MDCTStateInv_Float const*, unsigned int* size)
{
    if (size != nullptr)
        *size = 1;
}

// With the input in quarters (A, B, C, D), the folded sequence is v = (-C_r - D, A - B_r), and
// the FFT's k-th input pairs v[2k] with v[N/2-1-2k]; which quarters meet depends on the half of
// the range k falls in.
void MDCTFwd_InPlace(float* x, MDCTStateFwd_Float* state, unsigned char*)
{
    int const N = state->N;
    unsigned int const n = static_cast<unsigned int>(N);
    unsigned int const quarter = n / 4;
    auto data = workspace(n, state->inner->order);
    auto spectrum = workspace(n, state->inner->order);
    float const s = std::sqrt(static_cast<float>(N));
    for (unsigned int k = 0; k < quarter; ++k) {
        float a, b;
        if (2 * k < quarter) {
            a = (-x[3 * quarter - 1 - 2 * k] - x[3 * quarter + 2 * k]) * 0.5f;
            b = (x[quarter + 2 * k] - x[quarter - 1 - 2 * k]) * -0.5f;
        } else {
            a = (x[2 * k - quarter] - x[3 * quarter - 1 - 2 * k]) * 0.5f;
            b = (x[quarter + 2 * k] + x[5 * quarter - 1 - 2 * k]) * -0.5f;
        }
        data[k] = {a, b};
    }
    rotatedTransform(data, spectrum, N, state->inner, 2.0f / s);
    for (unsigned int k = 0; k < quarter; ++k) {
        x[2 * k] = spectrum[k].re;
        x[n / 2 - 1 - 2 * k] = -spectrum[k].im;
    }
}

// The DCT-IV of the coefficients gives u = (U1, U2) of N/4 values each; the output quarters are
// (U2, -U2_r, -U1_r, -U1), the time-domain aliasing that overlap-add cancels.
void MDCTInv_InPlace(float* x, MDCTStateInv_Float* state, unsigned char*)
{
    int const N = state->N;
    unsigned int const n = static_cast<unsigned int>(N);
    unsigned int const quarter = n / 4;
    unsigned int const halfN = n / 2;
    auto data = workspace(n, state->inner->order);
    auto spectrum = workspace(n, state->inner->order);
    float const s = std::sqrt(static_cast<float>(N));
    for (unsigned int k = 0; k < quarter; ++k)
        data[k] = {x[2 * k] * 0.5f, x[halfN - 1 - 2 * k] * 0.5f};
    rotatedTransform(data, spectrum, N, state->inner, 8.0f / s);
    std::vector<float> u(halfN);
    for (unsigned int k = 0; k < quarter; ++k) {
        u[2 * k] = spectrum[k].re;
        u[halfN - 1 - 2 * k] = -spectrum[k].im;
    }
    for (unsigned int j = 0; j < quarter; ++j) {
        x[j] = u[quarter + j];
        x[quarter + j] = -u[halfN - 1 - j];
        x[2 * quarter + j] = -u[quarter - 1 - j];
        x[3 * quarter + j] = -u[j];
    }
}

void MDCTFwdFree(MDCTStateFwd_Float* state)
{
    if (state == nullptr)
        return;
    freeInner(state->inner);
    delete state;
}

void MDCTInvFree(MDCTStateInv_Float* state)
{
    if (state == nullptr)
        return;
    freeInner(state->inner);
    delete state;
}

} // namespace Cordel::IPP
