#pragma once
// Runs a parameterised test once per instruction set of the library's SIMD code: the set is switched on
// for the test (skipped when the processor lacks it) and the previous one restored afterwards.
//
//   class MyTest : public CordelTest::OnEveryInstructionSet<> {};
//   CORDEL_ON_EVERY_INSTRUCTION_SET(MyTest);

#include <Cordel/IPP/InstructionSet.h>

#include <gtest/gtest.h>

namespace CordelTest {

template <typename Base = ::testing::Test>
class OnEveryInstructionSet : public Base, public ::testing::WithParamInterface<Cordel::IPP::InstructionSet> {
protected:
    void SetUp() override
    {
        Base::SetUp();
        if (!Cordel::IPP::IsSupported(GetParam()))
            GTEST_SKIP() << "this processor lacks the instruction set";
        previous = Cordel::IPP::ActiveInstructionSet();
        ASSERT_TRUE(Cordel::IPP::UseInstructionSet(GetParam()));
    }
    void TearDown() override
    {
        Cordel::IPP::UseInstructionSet(previous);
        Base::TearDown();
    }

    Cordel::IPP::InstructionSet previous = Cordel::IPP::InstructionSet::Portable;
};

inline std::string instructionSetName(::testing::TestParamInfo<Cordel::IPP::InstructionSet> const& info)
{
    switch (info.param) {
    case Cordel::IPP::InstructionSet::AVX2: return "AVX2";
    case Cordel::IPP::InstructionSet::AVX512: return "AVX512";
    default: return "Portable";
    }
}

} // namespace CordelTest

#define CORDEL_ON_EVERY_INSTRUCTION_SET(Suite)                                                                    \
    INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, Suite,                                                          \
                             ::testing::Values(Cordel::IPP::InstructionSet::Portable,                              \
                                               Cordel::IPP::InstructionSet::AVX2,                                  \
                                               Cordel::IPP::InstructionSet::AVX512),                               \
                             CordelTest::instructionSetName)
