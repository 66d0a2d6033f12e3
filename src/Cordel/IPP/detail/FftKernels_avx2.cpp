// AVX2 + FMA kernels of the fast FFT engine.

#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftRegisters256.h>
#include <Cordel/IPP/detail/FftStages.h>

// The register types and the stage templates have internal linkage, so that no code built for
// AVX2 can be picked by the linker for a baseline caller.

namespace Cordel::IPP::detail {

constinit FftKernels<float> const fftAvx2Float = stages::kernels<F8>();
constinit FftKernels<double> const fftAvx2Double = stages::kernels<D4>();

} // namespace Cordel::IPP::detail
