// The portable hot loops and the choice, once at load time, of the widest set the CPU runs.
#define CORDEL_KERNEL_VECTOR_BYTES 16
#include <Cordel/IPP/detail/KernelLoops.h>

#include <Cordel/IPP/InstructionSet.h>

namespace Cordel::IPP::detail {

Kernels const baselineKernels = makeKernels();
constinit Kernels activeKernels = makeKernels();

} // namespace Cordel::IPP::detail

namespace Cordel::IPP {

namespace {

InstructionSet activeSet = InstructionSet::Baseline;

detail::Kernels const* tableFor(InstructionSet set)
{
    switch (set) {
    case InstructionSet::AVX512:
        return &detail::avx512Kernels;
    case InstructionSet::AVX2:
        return &detail::avx2Kernels;
    case InstructionSet::Baseline:
        break;
    }
    return &detail::baselineKernels;
}

InstructionSet widestSupported()
{
    if (IsSupported(InstructionSet::AVX512))
        return InstructionSet::AVX512;
    if (IsSupported(InstructionSet::AVX2))
        return InstructionSet::AVX2;
    return InstructionSet::Baseline;
}

struct LoadTimeSelection {
    LoadTimeSelection() { UseInstructionSet(widestSupported()); }
};
LoadTimeSelection const loadTimeSelection;

} // namespace

bool IsSupported(InstructionSet set)
{
    // The CPU model may not be known yet when this runs from a load-time constructor.
    __builtin_cpu_init();
    switch (set) {
    case InstructionSet::AVX512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
            && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")
            && __builtin_cpu_supports("fma");
    case InstructionSet::AVX2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case InstructionSet::Baseline:
        return true;
    }
    return false;
}

InstructionSet ActiveInstructionSet()
{
    return activeSet;
}

bool UseInstructionSet(InstructionSet set)
{
    if (!IsSupported(set))
        return false;
    detail::activeKernels = *tableFor(set);
    activeSet = set;
    return true;
}

} // namespace Cordel::IPP
