#pragma once
// The vector layer's hot loops: its entry in the dispatch table (Dispatch.h).

namespace Cordel::IPP::detail {

struct Kernels {
    void (*addFloat)(unsigned int n, float const* a, float const* b, float* dst);
    void (*addDouble)(unsigned int n, double const* a, double const* b, double* dst);
    void (*mulConstantFloat)(unsigned int n, float const* src, float* dst, float c);
    void (*mulConstantDouble)(unsigned int n, double const* src, double* dst, double c);
    void (*addProductFloat)(unsigned int n, float const* a, float const* b, float* srcDst);
    void (*shortToFloat)(unsigned int n, short const* src, float* dst, float factor);
    void (*floatToShort)(unsigned int n, float const* src, short* dst, float multiplier, float bias);
    void (*intToFloat)(unsigned int n, int const* src, float* dst);
    // The multiplier is a power of two from 2^-64 to 2^64 (see floatToIntLoop).
    void (*floatToInt)(unsigned int n, float const* src, int* dst, float multiplier);
    void (*floatToIntRounded)(unsigned int n, float const* src, int* dst, float multiplier);
    void (*interleaveShort)(unsigned int n, short const* left, short const* right, short* dst);
    void (*interleaveFloat)(unsigned int n, float const* left, float const* right, float* dst);
    void (*deinterleaveShort)(unsigned int n, short const* src, short* left, short* right);
    void (*deinterleaveFloat)(unsigned int n, float const* src, float* left, float* right);
    float (*maxFloat)(unsigned int n, float const* x);
    double (*maxDouble)(unsigned int n, double const* x);
    float (*minFloat)(unsigned int n, float const* x);
    double (*minDouble)(unsigned int n, double const* x);
    bool operator==(Kernels const&) const = default;
};

// The wider builds (Kernels_avx2.cpp, Kernels_avx512.cpp); the portable one is Dispatch.cpp's.
extern Kernels const avx2Kernels;
extern Kernels const avx512Kernels;

} // namespace Cordel::IPP::detail
