// The choice of instruction set, and the one table through which every SIMD user reaches it.

#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/detail/Dispatch.h>
#include <Cordel/IPP/detail/FftFast.h>

#include <gtest/gtest.h>

using namespace Cordel::IPP;

TEST(InstructionSet, LoadTimeChoiceIsTheWidestSupported)
{
    InstructionSet const expected = IsSupported(InstructionSet::AVX512) ? InstructionSet::AVX512
        : IsSupported(InstructionSet::AVX2)                             ? InstructionSet::AVX2
                                                                        : InstructionSet::Portable;
    EXPECT_EQ(expected, ActiveInstructionSet());
}

// Each wider set gives every SIMD user kernels of its own, and switching to the portable set takes
// every one of them back: the vector layer, the FFT (a plan made afterwards), the FIR, Base64 and
// the 24-bit samples.
TEST(InstructionSet, SwitchingMovesEverySimdUser)
{
    InstructionSet const loaded = ActiveInstructionSet();
    detail::Dispatch const portable = detail::dispatchFor(InstructionSet::Portable);
    for (InstructionSet set : {InstructionSet::AVX2, InstructionSet::AVX512}) {
        if (!IsSupported(set))
            continue;
        SCOPED_TRACE(testing::Message() << "set " << int(set));
        ASSERT_TRUE(UseInstructionSet(set));
        detail::Dispatch const& active = detail::dispatch();
        EXPECT_TRUE(active == detail::dispatchFor(set));
        EXPECT_FALSE(active.vector == portable.vector);
        EXPECT_FALSE(active.fft == portable.fft);
        EXPECT_FALSE(active.fir == portable.fir);
        EXPECT_FALSE(active.base64 == portable.base64);
        EXPECT_FALSE(active.int24 == portable.int24);
        EXPECT_NE(&detail::FastFft<float>(10).Kernels(), &detail::fftPortableFloat);

        ASSERT_TRUE(UseInstructionSet(InstructionSet::Portable));
        EXPECT_EQ(InstructionSet::Portable, ActiveInstructionSet());
        EXPECT_TRUE(detail::dispatch() == portable);
        EXPECT_EQ(&detail::FastFft<float>(10).Kernels(), &detail::fftPortableFloat);
        EXPECT_EQ(&detail::FastFft<double>(10).Kernels(), &detail::fftPortableDouble);
    }
    UseInstructionSet(loaded);
}
