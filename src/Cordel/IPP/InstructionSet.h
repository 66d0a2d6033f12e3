#pragma once
// Which instruction set the library's SIMD code runs on.
//
// The library is built for baseline x86-64; its hot loops (the vector layer, the FFT, the FIR,
// Base64, 24-bit audio samples) are also compiled for AVX2 and AVX-512, and the widest set the
// processor supports is picked when the library loads. Every set gives the portable code's results
// bit for bit, except the FFT, whose sets round differently within the same error bounds; an FFT
// state keeps the set that was active when it was made. Switching is of interest to tests and
// benchmarks only.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

enum class InstructionSet { Portable, AVX2, AVX512 };

// The instruction set in use.
CORDEL_API InstructionSet ActiveInstructionSet();

// True when this processor can run the given instruction set.
CORDEL_API bool IsSupported(InstructionSet set);

// Switches all of the library's SIMD code to the given instruction set; false (and no change) when
// the processor lacks it. Not for use while other threads are calling into the library.
CORDEL_API bool UseInstructionSet(InstructionSet set);

} // namespace Cordel::IPP
