// AVX2 block kernel of the FIR: eight outputs per register, each lane keeping its own two sums in
// tap order, so that the results equal the one-sample form bit for bit (no fused multiply-add,
// no reassociation). Several registers run side by side to hide the latency of the additions.

#include <Cordel/IPP/detail/FirKernels.h>

#include <immintrin.h>

// The library is built with -ffp-contract=off: a product and its sum are never fused into one
// rounding, so the block form matches the one-sample form bit for bit.

namespace Cordel::IPP::detail {

namespace {

constexpr int groups = 4;

// Taps k in [from, to): products go to the first sums where k < c, to the second sums otherwise.
template <int mode> // 0: first sums only, 1: split by c, 2: second sums only
inline void accumulate(float const* h, float const* x, unsigned int from, unsigned int to, __m256i const* c,
                       __m256* first, __m256* second)
{
    for (unsigned int k = from; k < to; ++k) {
        __m256 const tap = _mm256_broadcast_ss(h + k);
        __m256i const kk = _mm256_set1_epi32(int(k));
        for (int g = 0; g < groups; ++g) {
            __m256 const p = _mm256_mul_ps(tap, _mm256_loadu_ps(x + 8 * g - int(k)));
            if constexpr (mode == 0) {
                first[g] = _mm256_add_ps(first[g], p);
            } else if constexpr (mode == 2) {
                second[g] = _mm256_add_ps(second[g], p);
            } else {
                // Adding +0 leaves a sum unchanged: a sum that starts at +0 never becomes -0.
                __m256 const below = _mm256_castsi256_ps(_mm256_cmpgt_epi32(c[g], kk));
                first[g] = _mm256_add_ps(first[g], _mm256_and_ps(below, p));
                second[g] = _mm256_add_ps(second[g], _mm256_andnot_ps(below, p));
            }
        }
    }
}

} // namespace

// m is a multiple of 8 * groups.
void firBlockAvx2(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0)
{
    for (unsigned int i = 0; i < m; i += 8 * groups, x += 8 * groups, y += 8 * groups) {
        alignas(32) int split[8 * groups];
        unsigned int lowest = L;
        unsigned int highest = 0;
        for (unsigned int j = 0; j < 8 * groups; ++j) {
            unsigned int const c = (c0 - 1 + i + j) % L + 1;
            split[j] = int(c);
            lowest = c < lowest ? c : lowest;
            highest = c > highest ? c : highest;
        }
        __m256i c[groups];
        __m256 first[groups];
        __m256 second[groups];
        for (int g = 0; g < groups; ++g) {
            c[g] = _mm256_load_si256(reinterpret_cast<__m256i const*>(split + 8 * g));
            first[g] = _mm256_setzero_ps();
            second[g] = _mm256_setzero_ps();
        }
        accumulate<0>(h, x, 0, lowest, c, first, second);
        accumulate<1>(h, x, lowest, highest, c, first, second);
        accumulate<2>(h, x, highest, L, c, first, second);
        for (int g = 0; g < groups; ++g)
            _mm256_storeu_ps(y + 8 * g, _mm256_add_ps(first[g], second[g]));
    }
}

} // namespace Cordel::IPP::detail
