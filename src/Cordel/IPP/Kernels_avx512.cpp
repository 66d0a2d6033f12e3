// The hot loops compiled for AVX-512 (the build adds the instruction-set flags to this file).
#pragma GCC target("prefer-vector-width=512")
#define CORDEL_KERNEL_VECTOR_BYTES 64
#include "detail/KernelLoops.h"

namespace Cordel::IPP::detail {
Kernels const avx512Kernels = makeKernels();
}
