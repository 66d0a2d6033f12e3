// Filters: Cordel's FIR and biquad cascade against plain direct-form loops built -O3 -march=native,
// over 1 Mi samples.

#include <Cordel/IPP/FIR.h>
#include <Cordel/IPP/IIR.h>

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

using namespace Cordel::IPP;

void plainFir(float const* h, unsigned int L, float const* x, float* y, std::size_t n);
void plainBiquads(double const* taps, double* state, unsigned int sections, double const* x, double* y, std::size_t n);

namespace {

constexpr std::size_t samples = 1 << 20;

template <typename T>
std::vector<T> noise(std::size_t n)
{
    std::mt19937 gen(1);
    std::uniform_real_distribution<T> d(-1, 1);
    std::vector<T> x(n);
    for (auto& v : x)
        v = d(gen);
    return x;
}

void cordelFir(benchmark::State& state, unsigned int L)
{
    auto const taps = noise<float>(L);
    auto const x = noise<float>(samples);
    std::vector<float> y(samples);
    FIRState_Float* s = nullptr;
    FIRInit(&s, taps.data(), L, nullptr);
    for (auto _ : state) {
        FIR(samples, x.data(), y.data(), s);
        benchmark::DoNotOptimize(y.data());
    }
    FIRFree(s);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * samples));
}

void nativeFir(benchmark::State& state, unsigned int L)
{
    auto const taps = noise<float>(L);
    auto x = noise<float>(samples + L);
    std::vector<float> y(samples);
    for (auto _ : state) {
        plainFir(taps.data(), L, x.data() + L - 1, y.data(), samples);
        benchmark::DoNotOptimize(y.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * samples));
}

// Four gentle low-pass sections with a0 = 1.
std::vector<double> sections()
{
    std::vector<double> t;
    for (int s = 0; s < 4; ++s) {
        double const b = 0.02 + 0.01 * s;
        t.insert(t.end(), {b, 2 * b, b, 1, -1.6, 0.64 + 4 * b});
    }
    return t;
}

void cordelBiquads(benchmark::State& state)
{
    auto const t = sections();
    auto const x = noise<double>(samples);
    std::vector<double> y(samples);
    IIRState_Double* s = nullptr;
    IIRInit_BiQuad(&s, t.data(), 4, nullptr);
    for (auto _ : state) {
        IIR(samples, x.data(), y.data(), s);
        benchmark::DoNotOptimize(y.data());
    }
    IIRFree(s);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * samples));
}

void nativeBiquads(benchmark::State& state)
{
    auto const all = sections();
    std::vector<double> t;
    for (int s = 0; s < 4; ++s)
        t.insert(t.end(), {all[6 * s], all[6 * s + 1], all[6 * s + 2], all[6 * s + 4], all[6 * s + 5]});
    std::vector<double> z(8, 0.0);
    auto const x = noise<double>(samples);
    std::vector<double> y(samples);
    for (auto _ : state) {
        plainBiquads(t.data(), z.data(), 4, x.data(), y.data(), samples);
        benchmark::DoNotOptimize(y.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * samples));
}

} // namespace

int main(int argc, char** argv)
{
    for (unsigned int L : {32u, 128u, 512u}) {
        std::string const taps = std::to_string(L);
        benchmark::RegisterBenchmark(("fir/Cordel/" + taps).c_str(), cordelFir, L)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("fir/plain_loop/" + taps).c_str(), nativeFir, L)->Unit(benchmark::kMillisecond);
    }
    benchmark::RegisterBenchmark("biquad4/Cordel", cordelBiquads)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("biquad4/plain_loop", nativeBiquads)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
