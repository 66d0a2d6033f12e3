// The dispatch table, the test of the processor, and the choice of the widest set at load time.
//
// The vector layer's portable loops are compiled here, so that the table can start on them
// without a dynamic initialiser; the other areas' portable entries are constants of their headers.
#define CORDEL_KERNEL_VECTOR_BYTES 16
#include <Cordel/IPP/detail/KernelLoops.h>

#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/detail/Dispatch.h>
#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FirKernels.h>
#include <Cordel/Util/detail/Base64Kernels.h>

#include <initializer_list>

namespace Cordel::IPP::detail {

namespace {

constexpr Dispatch portableDispatch{
    makeKernels(), fftPortable, firPortable, Util::detail::base64Portable, Audio::detail::int24Portable,
};

} // namespace

constinit Dispatch activeDispatch = portableDispatch;

// Goes with CORDEL_AVX2_FLAGS and CORDEL_AVX512_FLAGS in src/CMakeLists.txt: a flag added there
// is a feature to test here.
unsigned int cpuCapabilities()
{
    // The CPU model may not be known yet when this runs from a load-time constructor.
    __builtin_cpu_init();
    unsigned int caps = 0;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        caps |= cpuAvx2;
    if ((caps & cpuAvx2) && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
        && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
        caps |= cpuAvx512;
    if ((caps & cpuAvx512) && __builtin_cpu_supports("avx512vbmi"))
        caps |= cpuAvx512Vbmi;
    return caps;
}

Dispatch dispatchFor(InstructionSet set)
{
    switch (set) {
    case InstructionSet::AVX512:
        // The FIR has no kernel of its own here, and Base64's needs VBMI besides: the AVX2 ones
        // serve in their place.
        return {avx512Kernels, fftAvx512, firAvx2,
                cpuCapabilities() & cpuAvx512Vbmi ? Util::detail::base64Avx512Vbmi : Util::detail::base64Avx2,
                Audio::detail::int24Avx512};
    case InstructionSet::AVX2:
        return {avx2Kernels, fftAvx2, firAvx2, Util::detail::base64Avx2, Audio::detail::int24Avx2};
    case InstructionSet::Portable:
        break;
    }
    return portableDispatch;
}

} // namespace Cordel::IPP::detail

namespace Cordel::IPP {

namespace {

InstructionSet activeSet = InstructionSet::Portable;

unsigned int requiredCapabilities(InstructionSet set)
{
    switch (set) {
    case InstructionSet::AVX512:
        return detail::cpuAvx2 | detail::cpuAvx512;
    case InstructionSet::AVX2:
        return detail::cpuAvx2;
    case InstructionSet::Portable:
        return 0;
    }
    return ~0u; // not an instruction set
}

InstructionSet widestSupported()
{
    for (InstructionSet set : {InstructionSet::AVX512, InstructionSet::AVX2})
        if (IsSupported(set))
            return set;
    return InstructionSet::Portable;
}

struct LoadTimeSelection {
    LoadTimeSelection() { UseInstructionSet(widestSupported()); }
};
LoadTimeSelection const loadTimeSelection;

} // namespace

bool IsSupported(InstructionSet set)
{
    unsigned int const required = requiredCapabilities(set);
    return (detail::cpuCapabilities() & required) == required;
}

InstructionSet ActiveInstructionSet()
{
    return activeSet;
}

bool UseInstructionSet(InstructionSet set)
{
    if (!IsSupported(set))
        return false;
    detail::activeDispatch = detail::dispatchFor(set);
    activeSet = set;
    return true;
}

} // namespace Cordel::IPP
