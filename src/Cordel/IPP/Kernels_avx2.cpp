// The hot loops compiled for AVX2 (the build adds the instruction-set flags to this file).
#define CORDEL_KERNEL_VECTOR_BYTES 32
#include "detail/KernelLoops.h"

namespace Cordel::IPP::detail {
Kernels const avx2Kernels = makeKernels();
}
