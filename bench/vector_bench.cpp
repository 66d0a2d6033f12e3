// The vector layer's hot loops against the same loop compiled for this machine, and against a
// memcpy that moves as many bytes through memory (half read, half written): the bandwidth bound.
// Throughput counts every byte read and written.

#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/Interleave.h>
#include <Cordel/IPP/Statistics.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <random>
#include <vector>

namespace Native {
void add(unsigned int n, float const* a, float const* b, float* dst);
void mulConstant(unsigned int n, float const* src, float* dst, float c);
void addProduct(unsigned int n, float const* a, float const* b, float* srcDst);
void shortToFloat(unsigned int n, short const* src, float* dst);
void floatToShort(unsigned int n, float const* src, short* dst);
void intToFloat(unsigned int n, int const* src, float* dst);
void floatToInt(unsigned int n, float const* src, int* dst);
void interleave(unsigned int n, float const* left, float const* right, float* dst);
void deinterleave(unsigned int n, float const* src, float* left, float* right);
void interleave(unsigned int n, short const* left, short const* right, short* dst);
void deinterleave(unsigned int n, short const* src, short* left, short* right);
float max(unsigned int n, float const* x);
void nothing(unsigned int n, short* x, short c, int scaleFactor);
} // namespace Native

using namespace Cordel;

namespace {

constexpr unsigned int mebi = 1u << 20;

// Buffers for one run: samples in (−1, 1) and their 16- and 32-bit forms.
struct Data {
    explicit Data(unsigned int n) : a(2 * n), b(2 * n), c(2 * n), s(2 * n), t(2 * n), i(n), j(n)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
        for (float& x : a)
            x = unit(random);
        for (float& x : b)
            x = unit(random);
        for (std::size_t k = 0; k < s.size(); ++k)
            s[k] = static_cast<short>(a[k] * 32767);
        for (std::size_t k = 0; k < i.size(); ++k)
            i[k] = static_cast<int>(a[k] * 2147483520.0f);
    }
    std::vector<float> a, b, c;
    std::vector<short> s, t;
    std::vector<int> i, j;
};

template <typename Work>
void run(benchmark::State& state, std::size_t bytesPerElement, Work work)
{
    auto const n = static_cast<unsigned int>(state.range(0));
    Data d(n);
    for (auto _ : state) {
        work(n, d);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(n) * int64_t(bytesPerElement));
}

// One case: Cordel, the native loop and the memcpy of the same traffic into the buffer the case
// writes (where the pages of a buffer fall moves a run's time by up to a fifth).
#define VECTOR_CASE(name, bytesPerElement, destination, cordel, native)                                                    \
    void name##Cordel(benchmark::State& state) { run(state, bytesPerElement, [](unsigned int n, Data& d) cordel); } \
    void name##Native(benchmark::State& state) { run(state, bytesPerElement, [](unsigned int n, Data& d) native); } \
    void name##Memcpy(benchmark::State& state)                                                                 \
    {                                                                                                           \
        run(state, bytesPerElement, [](unsigned int n, Data& d) {                                               \
            std::memcpy(d.destination.data(), d.a.data(), std::size_t(n) * (bytesPerElement) / 2);                       \
        });                                                                                                     \
    }                                                                                                           \
    BENCHMARK(name##Cordel)->Name(#name "/Cordel")->Arg(64)->Arg(1024)->Arg(16384)->Arg(mebi);                 \
    BENCHMARK(name##Native)->Name(#name "/native")->Arg(64)->Arg(1024)->Arg(16384)->Arg(mebi);                 \
    BENCHMARK(name##Memcpy)->Name(#name "/memcpy")->Arg(16384)->Arg(mebi)

VECTOR_CASE(Add, 12, c, { IPP::Add(n, d.a.data(), d.b.data(), d.c.data()); },
            { Native::add(n, d.a.data(), d.b.data(), d.c.data()); });
VECTOR_CASE(MulConstant, 8, c, { IPP::MulConstant(n, d.a.data(), d.c.data(), 0.5f); },
            { Native::mulConstant(n, d.a.data(), d.c.data(), 0.5f); });
VECTOR_CASE(AddProduct, 16, c, { IPP::AddProduct(n, d.a.data(), d.b.data(), d.c.data()); },
            { Native::addProduct(n, d.a.data(), d.b.data(), d.c.data()); });
VECTOR_CASE(ShortToFloat, 6, c, { IPP::Convert(n, d.s.data(), d.c.data(), 15); },
            { Native::shortToFloat(n, d.s.data(), d.c.data()); });
VECTOR_CASE(FloatToShort, 6, t, { IPP::Convert(n, d.a.data(), d.t.data(), -15, true); },
            { Native::floatToShort(n, d.a.data(), d.t.data()); });
VECTOR_CASE(IntToFloat, 8, c, { IPP::Convert(n, d.i.data(), d.c.data(), 0); },
            { Native::intToFloat(n, d.i.data(), d.c.data()); });
VECTOR_CASE(FloatToInt, 8, j, { IPP::Convert(n, d.a.data(), d.j.data(), -31, true); },
            { Native::floatToInt(n, d.a.data(), d.j.data()); });
VECTOR_CASE(InterleaveFloat, 16, c, { IPP::Interleave(n, d.a.data(), d.b.data(), d.c.data(), false); },
            { Native::interleave(n, d.a.data(), d.b.data(), d.c.data()); });
VECTOR_CASE(DeinterleaveFloat, 16, b, { IPP::Deinterleave(n, d.a.data(), d.b.data(), d.c.data(), false); },
            { Native::deinterleave(n, d.a.data(), d.b.data(), d.c.data()); });
VECTOR_CASE(InterleaveShort, 8, t, { IPP::Interleave(n, d.s.data(), d.s.data() + n, d.t.data(), false); },
            { Native::interleave(n, d.s.data(), d.s.data() + n, d.t.data()); });
VECTOR_CASE(DeinterleaveShort, 8, t, { IPP::Deinterleave(n, d.s.data(), d.t.data(), d.t.data() + n, false); },
            { Native::deinterleave(n, d.s.data(), d.t.data(), d.t.data() + n); });
VECTOR_CASE(Max, 4, c, { benchmark::DoNotOptimize(IPP::Max(n, d.a.data())); },
            { benchmark::DoNotOptimize(Native::max(n, d.a.data())); });

// The call alone: a member of the library that returns at once, against an empty function of this
// program. At n = 64 the loops above take a few nanoseconds, so this difference bounds their ratios.
void CallCordel(benchmark::State& state)
{
    Data d(64);
    for (auto _ : state) {
        IPP::MulConstant_InPlace(64, d.s.data(), short(1), 0);
        benchmark::ClobberMemory();
    }
}
void CallNative(benchmark::State& state)
{
    Data d(64);
    for (auto _ : state) {
        Native::nothing(64, d.s.data(), short(1), 0);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(CallCordel)->Name("Call/Cordel")->Arg(64);
BENCHMARK(CallNative)->Name("Call/native")->Arg(64);

} // namespace

// CORDEL_ISA=portable|avx2|avx512 runs the library on another instruction set than the one it
// picks by itself, to compare them.
int main(int argc, char** argv)
{
    if (char const* isa = std::getenv("CORDEL_ISA")) {
        std::string const name = isa;
        IPP::InstructionSet const set = name == "avx512" ? IPP::InstructionSet::AVX512
            : name == "avx2"                              ? IPP::InstructionSet::AVX2
                                                          : IPP::InstructionSet::Portable;
        if (!IPP::UseInstructionSet(set))
            return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
