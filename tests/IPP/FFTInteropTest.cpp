// labels: interop
// pkg: fftw3 fftw3f
// The FFT flavours against FFTW on the same inputs, on both engines (orders 1 to 16).

#include <Cordel/IPP/FFT.h>

#include <fftw3.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace Cordel::IPP;

namespace {

template <typename T>
std::vector<T> noise(std::size_t n, unsigned int seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<T> d(-1, 1);
    std::vector<T> x(n);
    for (auto& v : x)
        v = d(gen);
    return x;
}

// Largest difference relative to the largest FFTW magnitude, against ε·(log2 n + 1)·c; the
// portable engine (orders 1 and 14 up) gets an allowance that grows with n, like its running twiddles.
template <typename T>
void expectClose(std::vector<T> const& got, std::vector<T> const& want, unsigned int order)
{
    T peak = 0, worst = 0;
    for (std::size_t j = 0; j < want.size(); ++j) {
        peak = std::max(peak, std::abs(want[j]));
        worst = std::max(worst, std::abs(got[j] - want[j]));
    }
    bool const portable = order < 2 || order > 13;
    double const eps = std::numeric_limits<T>::epsilon();
    double const allowed = eps * (4.0 * (order + 1) + (portable ? std::ldexp(1.0, int(order)) : 0.0));
    EXPECT_LE(worst / peak, allowed) << "order " << order;
}

} // namespace

TEST(FFTInterop, RealFloatMatchesFftw)
{
    for (unsigned int order = 1; order <= 16; ++order) {
        unsigned int const n = 1u << order;
        auto x = noise<float>(n, order);
        std::vector<float> ours(n + 2), theirs(n + 2);
        FFTState_Float* s = nullptr;
        FFTInit(&s, order);
        FFTFwd(x.data(), ours.data(), s, nullptr);
        FFTFree(s);
        fftwf_plan p = fftwf_plan_dft_r2c_1d(int(n), x.data(), reinterpret_cast<fftwf_complex*>(theirs.data()),
                                             FFTW_ESTIMATE);
        fftwf_execute(p);
        fftwf_destroy_plan(p);
        expectClose(ours, theirs, order);
    }
}

TEST(FFTInterop, RealDoubleInverseMatchesFftw)
{
    for (unsigned int order = 1; order <= 16; ++order) {
        unsigned int const n = 1u << order;
        auto spectrum = noise<double>(n + 2, order);
        spectrum[1] = spectrum[n + 1] = 0;
        std::vector<double> ours(n), theirs(n), in = spectrum;
        FFTState_Double* s = nullptr;
        FFTInit(&s, order);
        FFTInv(spectrum.data(), ours.data(), s, nullptr);
        FFTFree(s);
        fftw_plan p = fftw_plan_dft_c2r_1d(int(n), reinterpret_cast<fftw_complex*>(in.data()), theirs.data(),
                                           FFTW_ESTIMATE);
        fftw_execute(p);
        fftw_destroy_plan(p);
        for (auto& v : theirs)
            v /= n;
        expectClose(ours, theirs, order);
    }
}

TEST(FFTInterop, ComplexMatchesFftwBothWays)
{
    for (unsigned int order = 1; order <= 16; ++order) {
        unsigned int const n = 1u << order;
        auto x = noise<float>(2 * n, order);
        std::vector<float> ours(2 * n), theirs(2 * n);
        FFTState_Complex_Float_Interleaved* s = nullptr;
        FFTInit(&s, order);
        FFTFwd(reinterpret_cast<Complex_Float*>(x.data()), reinterpret_cast<Complex_Float*>(ours.data()), s, nullptr);
        fftwf_plan p = fftwf_plan_dft_1d(int(n), reinterpret_cast<fftwf_complex*>(x.data()),
                                         reinterpret_cast<fftwf_complex*>(theirs.data()), FFTW_FORWARD, FFTW_ESTIMATE);
        fftwf_execute(p);
        fftwf_destroy_plan(p);
        expectClose(ours, theirs, order);

        FFTInv(reinterpret_cast<Complex_Float*>(x.data()), reinterpret_cast<Complex_Float*>(ours.data()), s, nullptr);
        FFTFree(s);
        p = fftwf_plan_dft_1d(int(n), reinterpret_cast<fftwf_complex*>(x.data()),
                              reinterpret_cast<fftwf_complex*>(theirs.data()), FFTW_BACKWARD, FFTW_ESTIMATE);
        fftwf_execute(p);
        fftwf_destroy_plan(p);
        for (auto& v : theirs)
            v /= float(n);
        expectClose(ours, theirs, order);

        auto re = noise<double>(n, order + 50), im = noise<double>(n, order + 60);
        std::vector<double> reOut(n), imOut(n), both(2 * n), ref(2 * n);
        FFTState_Complex_Double_Deinterleaved* d = nullptr;
        FFTInit(&d, order);
        FFTFwd(re.data(), im.data(), reOut.data(), imOut.data(), d, nullptr);
        FFTFree(d);
        for (unsigned int j = 0; j < n; ++j) {
            both[2 * j] = re[j];
            both[2 * j + 1] = im[j];
        }
        fftw_plan q = fftw_plan_dft_1d(int(n), reinterpret_cast<fftw_complex*>(both.data()),
                                       reinterpret_cast<fftw_complex*>(ref.data()), FFTW_FORWARD, FFTW_ESTIMATE);
        fftw_execute(q);
        fftw_destroy_plan(q);
        for (unsigned int j = 0; j < n; ++j) {
            both[2 * j] = reOut[j];
            both[2 * j + 1] = imOut[j];
        }
        expectClose(both, ref, order);
    }
}
