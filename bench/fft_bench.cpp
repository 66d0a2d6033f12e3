// pkg: fftw3 fftw3f kissfft-float
// repetitions: interleaved
// FFT: Cordel against FFTW (plans made with FFTW_ESTIMATE and FFTW_MEASURE) and KissFFT, complex
// and real, float and double, on the same data in one process.
// A transform's speed here depends on where its arrays land, beyond their offsets within a page:
// some placements run 10-20 % slower for as long as they live, for every library alike (likely
// the first-level cache, which picks a line's way by a hash of its virtual address). Repetitions
// in random order allocate anew at other addresses, so each median spans several placements.

#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/Memory.h>

#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <kiss_fft.h>
#include <kiss_fftr.h>

#include <random>
#include <string>
#include <vector>

using namespace Cordel::IPP;

namespace {

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

void items(benchmark::State& state, unsigned int n)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * n);
}

template <typename T, bool real>
void cordel(benchmark::State& state, unsigned int order)
{
    unsigned int const n = 1u << order;
    // On the library's own aligned buffers, as FFTW's rows are on fftw_alloc's.
    auto const x = noise<T>(2 * n + 2);
    Cordel::aligned_vector<T> in(x.begin(), x.end());
    Cordel::aligned_vector<T> out(2 * n + 2);
    if constexpr (real) {
        std::conditional_t<std::is_same_v<T, float>, FFTState_Float, FFTState_Double>* s = nullptr;
        FFTInit(&s, order);
        for (auto _ : state) {
            FFTFwd(in.data(), out.data(), s, nullptr);
            benchmark::DoNotOptimize(out.data());
        }
        FFTFree(s);
    } else {
        using C = std::conditional_t<std::is_same_v<T, float>, Complex_Float, Complex_Double>;
        std::conditional_t<std::is_same_v<T, float>, FFTState_Complex_Float_Interleaved,
                           FFTState_Complex_Double_Interleaved>* s = nullptr;
        FFTInit(&s, order);
        for (auto _ : state) {
            FFTFwd(reinterpret_cast<C const*>(in.data()), reinterpret_cast<C*>(out.data()), s, nullptr);
            benchmark::DoNotOptimize(out.data());
        }
        FFTFree(s);
    }
    items(state, n);
}

template <bool real>
void fftwFloat(benchmark::State& state, unsigned int order, unsigned int flags)
{
    int const n = 1 << order;
    float* in = fftwf_alloc_real(2 * n + 2);
    float* out = fftwf_alloc_real(2 * n + 2);
    // FFTW keeps what FFTW_MEASURE learned for later plans of any rigour: forget it, so that an
    // FFTW_ESTIMATE row is what FFTW_ESTIMATE alone gives.
    fftwf_forget_wisdom();
    fftwf_plan p = real ? fftwf_plan_dft_r2c_1d(n, in, reinterpret_cast<fftwf_complex*>(out), flags)
                        : fftwf_plan_dft_1d(n, reinterpret_cast<fftwf_complex*>(in),
                                            reinterpret_cast<fftwf_complex*>(out), FFTW_FORWARD, flags);
    auto const x = noise<float>(2 * n + 2);
    std::copy(x.begin(), x.end(), in);
    for (auto _ : state) {
        fftwf_execute(p);
        benchmark::DoNotOptimize(out);
    }
    fftwf_destroy_plan(p);
    fftwf_free(in);
    fftwf_free(out);
    items(state, n);
}

template <bool real>
void fftwDouble(benchmark::State& state, unsigned int order, unsigned int flags)
{
    int const n = 1 << order;
    double* in = fftw_alloc_real(2 * n + 2);
    double* out = fftw_alloc_real(2 * n + 2);
    fftw_forget_wisdom();
    fftw_plan p = real ? fftw_plan_dft_r2c_1d(n, in, reinterpret_cast<fftw_complex*>(out), flags)
                       : fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out),
                                          FFTW_FORWARD, flags);
    auto const x = noise<double>(2 * n + 2);
    std::copy(x.begin(), x.end(), in);
    for (auto _ : state) {
        fftw_execute(p);
        benchmark::DoNotOptimize(out);
    }
    fftw_destroy_plan(p);
    fftw_free(in);
    fftw_free(out);
    items(state, n);
}

template <bool real>
void kiss(benchmark::State& state, unsigned int order)
{
    int const n = 1 << order;
    auto in = noise<float>(2 * n + 2);
    std::vector<float> out(2 * n + 2);
    if constexpr (real) {
        kiss_fftr_cfg cfg = kiss_fftr_alloc(n, 0, nullptr, nullptr);
        for (auto _ : state) {
            kiss_fftr(cfg, in.data(), reinterpret_cast<kiss_fft_cpx*>(out.data()));
            benchmark::DoNotOptimize(out.data());
        }
        kiss_fft_free(cfg);
    } else {
        kiss_fft_cfg cfg = kiss_fft_alloc(n, 0, nullptr, nullptr);
        for (auto _ : state) {
            kiss_fft(cfg, reinterpret_cast<kiss_fft_cpx const*>(in.data()), reinterpret_cast<kiss_fft_cpx*>(out.data()));
            benchmark::DoNotOptimize(out.data());
        }
        kiss_fft_free(cfg);
    }
    items(state, n);
}

template <bool real>
void registerCase(char const* name)
{
    std::vector<unsigned int> orders;
    for (unsigned int o = 4; o <= 13; ++o)
        orders.push_back(o);
    orders.push_back(14);
    orders.push_back(16);
    for (unsigned int o : orders) {
        std::string const n = std::to_string(1u << o);
        std::string const f = std::string(name) + "_float/";
        std::string const d = std::string(name) + "_double/";
        benchmark::RegisterBenchmark((f + "Cordel/" + n).c_str(), cordel<float, real>, o);
        benchmark::RegisterBenchmark((f + "FFTW_MEASURE/" + n).c_str(), fftwFloat<real>, o, FFTW_MEASURE);
        benchmark::RegisterBenchmark((f + "FFTW_ESTIMATE/" + n).c_str(), fftwFloat<real>, o, FFTW_ESTIMATE);
        benchmark::RegisterBenchmark((f + "KissFFT/" + n).c_str(), kiss<real>, o);
        benchmark::RegisterBenchmark((d + "Cordel/" + n).c_str(), cordel<double, real>, o);
        benchmark::RegisterBenchmark((d + "FFTW_MEASURE/" + n).c_str(), fftwDouble<real>, o, FFTW_MEASURE);
        benchmark::RegisterBenchmark((d + "FFTW_ESTIMATE/" + n).c_str(), fftwDouble<real>, o, FFTW_ESTIMATE);
    }
}

} // namespace

int main(int argc, char** argv)
{
    registerCase<false>("fft_complex");
    registerCase<true>("fft_real");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
