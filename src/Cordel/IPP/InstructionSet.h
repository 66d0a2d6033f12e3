#pragma once
// Which instruction set the vector layer's hot loops run on.
//
// The library is built for baseline x86-64; the element-wise loops are also compiled for AVX2 and
// AVX-512 and the widest one the processor supports is picked when the library loads. Every
// instruction set gives bit-identical results, so switching is only of interest to tests and
// benchmarks.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

enum class InstructionSet { Baseline, AVX2, AVX512 };

// The instruction set in use.
CORDEL_API InstructionSet ActiveInstructionSet();

// True when this processor can run the given instruction set.
CORDEL_API bool IsSupported(InstructionSet set);

// Switches the vector layer to the given instruction set; false (and no change) when the processor
// lacks it. Not for use while other threads are calling into the vector layer.
CORDEL_API bool UseInstructionSet(InstructionSet set);

} // namespace Cordel::IPP
