#pragma once
// The one dispatch layer of the library. Code for wider instruction sets lives in translation units
// of its own, *_avx2.cpp and *_avx512.cpp, built with the flags of src/CMakeLists.txt; it is
// reached only through the table below. Each area contributes one entry per instruction set,
// beside its kernels; the table starts on the portable entries, so that whatever runs before the
// load-time choice (another library's constructors) is safe, and is switched to the widest set the
// processor runs when the library loads, and by IPP::UseInstructionSet.

#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/detail/Kernels.h>

#include <cstddef>

namespace Cordel::IPP::detail {

// What the processor offers, one bit for each set of flags that kernels are built with. Each bit
// includes the ones before it.
enum Capability : unsigned int {
    // CORDEL_AVX2_FLAGS (-mavx2 -mfma): the *_avx2.cpp files.
    cpuAvx2 = 1,
    // CORDEL_AVX512_FLAGS (F, BW, DQ and VL on top of the above): the *_avx512.cpp files.
    cpuAvx512 = 2,
    // The byte permutes of AVX-512 VBMI, which the Base64 kernels enable function by function.
    cpuAvx512Vbmi = 4,
};

// The one test of the processor. It must ask for exactly the flags above, so that no kernel can
// run on a processor that lacks an instruction the compiler was allowed to use.
unsigned int cpuCapabilities();

template <typename T>
struct FftKernels;

// The FFT's kernels of one instruction set in one precision. A plan takes, when it is made, the
// widest that fits its size (FftFast.cpp), so it keeps the set that was active then.
template <typename T>
struct FftChoice {
    FftKernels<T> const* full;
    // 256-bit registers from the same build, for transforms too short for the full ones; or null.
    FftKernels<T> const* half;
    // Radix-8 passes need 32 registers.
    bool radix8;
    bool operator==(FftChoice const&) const = default;
};

struct FftEntry {
    FftChoice<float> floats;
    FftChoice<double> doubles;
    bool operator==(FftEntry const&) const = default;
};

// The FIR's block kernel, which filters whole groups of `group` outputs (FirKernels.h).
struct FirEntry {
    void (*block)(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0);
    unsigned int group;
    bool operator==(FirEntry const&) const = default;
};

// Base64's bulk kernels (Util/detail/Base64Kernels.h).
struct Base64Entry {
    std::size_t (*encode)(unsigned char const* in, std::size_t n, char* out);
    std::size_t (*decode)(unsigned char const* in, std::size_t n, unsigned char* out);
    bool operator==(Base64Entry const&) const = default;
};

// The packing of 24-bit audio samples (Audio/detail/SampleConversion.h).
struct Int24Entry {
    void (*toFloat)(std::size_t n, unsigned char const* in, float* out);
    void (*fromFloat)(std::size_t n, float const* in, unsigned char* out);
    bool operator==(Int24Entry const&) const = default;
};

// Every SIMD user's kernels for one instruction set.
struct Dispatch {
    // Held by value, so that each call of the vector layer, often on a short vector, costs one
    // load before the jump.
    Kernels vector;
    FftEntry fft;
    FirEntry fir;
    Base64Entry base64;
    Int24Entry int24;
    bool operator==(Dispatch const&) const = default;
};

// The table of an instruction set. Its Base64 entry depends on this processor's VBMI.
Dispatch dispatchFor(InstructionSet set);

// The table in use. Not written while other threads call into the library (see UseInstructionSet).
extern constinit Dispatch activeDispatch;

inline Dispatch const& dispatch() { return activeDispatch; }

} // namespace Cordel::IPP::detail
