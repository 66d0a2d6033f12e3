// The plain loops an audio developer would write, compiled -O3 -march=native as the peer to beat.

#include <cstddef>

// y[n] = Σ h[k]·x[n-k]; x points past a history of L-1 samples.
void plainFir(float const* h, unsigned int L, float const* x, float* y, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i) {
        float sum = 0;
        for (unsigned int k = 0; k < L; ++k)
            sum += h[k] * x[i - k];
        y[i] = sum;
    }
}

// Transposed direct form II biquads in cascade; taps b0 b1 b2 a1 a2 per section, state two per section.
void plainBiquads(double const* taps, double* state, unsigned int sections, double const* x, double* y, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i) {
        double v = x[i];
        for (unsigned int s = 0; s < sections; ++s) {
            double const* t = taps + 5 * s;
            double* z = state + 2 * s;
            double const out = t[0] * v + z[0];
            z[0] = t[1] * v + z[1] - t[3] * out;
            z[1] = t[2] * v - t[4] * out;
            v = out;
        }
        y[i] = v;
    }
}
