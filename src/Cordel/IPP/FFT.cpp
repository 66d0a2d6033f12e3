// The FFT states and their entry points: orders 2 to 13 run on the fast engine, every other
// order on the portable one.

#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/detail/FftFast.h>
#include <Cordel/IPP/detail/FftImpl.h>

namespace Cordel::IPP {

namespace {

// Above this order n + 2 no longer fits the 32-bit lengths of the interface.
constexpr unsigned int largestOrder = 30;

bool isWorkaroundOrder(unsigned int order)
{
    return order < 2 || order > 13;
}

} // namespace

// Common to the six states: the fast engine (which holds its own working buffers) or the
// portable one.
template <typename T, typename Engine, detail::FftMode mode>
struct FFTStateOf {
    unsigned int order = 0;
    unsigned int n = 0;
    Engine* setup = nullptr;
    detail::FftImpl<T>* impl = nullptr;

    explicit FFTStateOf(unsigned int o) : order(o), n(1u << o)
    {
        if (isWorkaroundOrder(order))
            impl = new detail::FftImpl<T>(mode, n);
        else
            setup = new Engine(order);
    }
    FFTStateOf(FFTStateOf const&) = delete;
    FFTStateOf& operator=(FFTStateOf const&) = delete;
    ~FFTStateOf()
    {
        delete setup;
        delete impl;
    }
};

struct FFTState_Float : FFTStateOf<float, detail::FastRealFft<float>, detail::FftMode::Real> {
    using FFTStateOf::FFTStateOf;
};
struct FFTState_Double : FFTStateOf<double, detail::FastRealFft<double>, detail::FftMode::Real> {
    using FFTStateOf::FFTStateOf;
};
struct FFTState_Complex_Float_Interleaved : FFTStateOf<float, detail::FastFft<float>, detail::FftMode::Complex> {
    using FFTStateOf::FFTStateOf;
};
struct FFTState_Complex_Float_Deinterleaved : FFTStateOf<float, detail::FastFft<float>, detail::FftMode::Complex> {
    using FFTStateOf::FFTStateOf;
};
struct FFTState_Complex_Double_Interleaved : FFTStateOf<double, detail::FastFft<double>, detail::FftMode::Complex> {
    using FFTStateOf::FFTStateOf;
};
struct FFTState_Complex_Double_Deinterleaved : FFTStateOf<double, detail::FastFft<double>, detail::FftMode::Complex> {
    using FFTStateOf::FFTStateOf;
};

namespace {

template <typename State>
void init(State** out, unsigned int order)
{
    if (out == nullptr || order == 0 || order > largestOrder)
        return;
    *out = new State(order);
}

void getBufSize(unsigned int* size)
{
    if (size != nullptr)
        *size = 0;
}

template <typename T, typename State>
void forwardReal(T const* in, T* out, State* s)
{
    if (s->impl != nullptr)
        s->impl->ForwardReal(in, out);
    else
        s->setup->Forward(in, out);
}

template <typename T, typename State>
void inverseReal(T const* in, T* out, State* s)
{
    if (s->impl != nullptr)
        s->impl->InverseReal(in, out);
    else
        s->setup->Inverse(in, out);
}

template <typename T, typename C, typename State>
void forwardInterleaved(C const* in, C* out, State* s)
{
    auto const* i = reinterpret_cast<T const*>(in);
    auto* o = reinterpret_cast<T*>(out);
    if (s->impl != nullptr)
        s->impl->ForwardComplex(i, o);
    else
        s->setup->ForwardInterleaved(i, o);
}

template <typename T, typename C, typename State>
void inverseInterleaved(C const* in, C* out, State* s)
{
    auto const* i = reinterpret_cast<T const*>(in);
    auto* o = reinterpret_cast<T*>(out);
    if (s->impl != nullptr)
        s->impl->InverseComplex(i, o);
    else
        s->setup->InverseInterleaved(i, o);
}

template <typename T, typename State>
void forwardSplit(T const* re, T const* im, T* reOut, T* imOut, State* s)
{
    if (s->impl != nullptr)
        s->impl->ForwardDeinterleaved(re, im, reOut, imOut);
    else
        s->setup->ForwardSplit(re, im, reOut, imOut);
}

template <typename T, typename State>
void inverseSplit(T const* re, T const* im, T* reOut, T* imOut, State* s)
{
    if (s->impl != nullptr)
        s->impl->InverseDeinterleaved(re, im, reOut, imOut);
    else
        s->setup->InverseSplit(re, im, reOut, imOut);
}

} // namespace

void FFTInit(FFTState_Float** out, unsigned int order) { init(out, order); }
void FFTInit(FFTState_Double** out, unsigned int order) { init(out, order); }
void FFTInit(FFTState_Complex_Float_Interleaved** out, unsigned int order) { init(out, order); }
void FFTInit(FFTState_Complex_Float_Deinterleaved** out, unsigned int order) { init(out, order); }
void FFTInit(FFTState_Complex_Double_Interleaved** out, unsigned int order) { init(out, order); }
void FFTInit(FFTState_Complex_Double_Deinterleaved** out, unsigned int order) { init(out, order); }

void FFTGetBufSize(FFTState_Float const*, unsigned int* size) { getBufSize(size); }
void FFTGetBufSize(FFTState_Double const*, unsigned int* size) { getBufSize(size); }
void FFTGetBufSize(FFTState_Complex_Float_Interleaved const*, unsigned int* size)
{
    getBufSize(size);
}
void FFTGetBufSize(FFTState_Complex_Float_Deinterleaved const*, unsigned int* size)
{
    getBufSize(size);
}
void FFTGetBufSize(FFTState_Complex_Double_Interleaved const*, unsigned int* size)
{
    getBufSize(size);
}
void FFTGetBufSize(FFTState_Complex_Double_Deinterleaved const*, unsigned int* size)
{
    getBufSize(size);
}

void FFTFwd(float const* in, float* out, FFTState_Float* state, unsigned char*) { forwardReal(in, out, state); }
void FFTFwd(double const* in, double* out, FFTState_Double* state, unsigned char*) { forwardReal(in, out, state); }
void FFTInv(float const* in, float* out, FFTState_Float* state, unsigned char*) { inverseReal(in, out, state); }
void FFTInv(double const* in, double* out, FFTState_Double* state, unsigned char*) { inverseReal(in, out, state); }

void FFTFwd(Complex_Float const* in, Complex_Float* out, FFTState_Complex_Float_Interleaved* state, unsigned char*)
{
    forwardInterleaved<float>(in, out, state);
}
void FFTFwd(Complex_Double const* in, Complex_Double* out, FFTState_Complex_Double_Interleaved* state, unsigned char*)
{
    forwardInterleaved<double>(in, out, state);
}
void FFTInv(Complex_Float const* in, Complex_Float* out, FFTState_Complex_Float_Interleaved* state, unsigned char*)
{
    inverseInterleaved<float>(in, out, state);
}
void FFTInv(Complex_Double const* in, Complex_Double* out, FFTState_Complex_Double_Interleaved* state, unsigned char*)
{
    inverseInterleaved<double>(in, out, state);
}

void FFTFwd(float const* re, float const* im, float* reOut, float* imOut, FFTState_Complex_Float_Deinterleaved* state,
            unsigned char*)
{
    forwardSplit(re, im, reOut, imOut, state);
}
void FFTFwd(double const* re, double const* im, double* reOut, double* imOut,
            FFTState_Complex_Double_Deinterleaved* state, unsigned char*)
{
    forwardSplit(re, im, reOut, imOut, state);
}
void FFTInv(float const* re, float const* im, float* reOut, float* imOut, FFTState_Complex_Float_Deinterleaved* state,
            unsigned char*)
{
    inverseSplit(re, im, reOut, imOut, state);
}
void FFTInv(double const* re, double const* im, double* reOut, double* imOut,
            FFTState_Complex_Double_Deinterleaved* state, unsigned char*)
{
    inverseSplit(re, im, reOut, imOut, state);
}

void FFTFree(FFTState_Float* state) { delete state; }
void FFTFree(FFTState_Double* state) { delete state; }
void FFTFree(FFTState_Complex_Float_Interleaved* state) { delete state; }
void FFTFree(FFTState_Complex_Float_Deinterleaved* state) { delete state; }
void FFTFree(FFTState_Complex_Double_Interleaved* state) { delete state; }
void FFTFree(FFTState_Complex_Double_Deinterleaved* state) { delete state; }

} // namespace Cordel::IPP
