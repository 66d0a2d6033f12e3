// The hot loops compiled for AVX-512 (the build adds the instruction-set flags to this file). The
// compiler widens most of them well by itself; conversions and interleaving are spelled out.
#define CORDEL_KERNEL_VECTOR_BYTES 64
#include <Cordel/IPP/detail/KernelLoops.h>

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>

// The AVX-512 intrinsics start some results from a deliberately undefined register, which GCC 12
// then reports as possibly uninitialised.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace Cordel::IPP::detail {

namespace {

// Truncated to 32 bits, for the saturating narrowing to 16 that follows: only the top needs a
// clamp, since anything below -32768 truncates to a value at or below it (or to 0x80000000 beyond
// the 32-bit range), which the narrowing takes to -32768. min(bound, v) keeps a NaN v, as the scalar
// test does, and the ordered mask turns it into 0. (The full clamp and a separate zeroing cost a
// third of the speed of a long conversion.)
__m512i clampTruncate(__m512 v)
{
    v = _mm512_min_ps(_mm512_set1_ps(32767.0f), v);
    return _mm512_maskz_cvttps_epi32(_mm512_cmp_ps_mask(v, v, _CMP_ORD_Q), v);
}

// x·m at float width, which gives the double definition's result for the multipliers the caller
// passes (see Convert.cpp), truncated and saturated, NaN giving 0. With rounding, the half (with
// the sign of x) is added to the exact product in one fused step rounded toward zero: that sum
// has the integer part of the exact one, because the integer between them would be a float
// closer to it, and integers are floats wherever a fraction is left. No clamp is needed: beyond
// either end of the range the truncation gives 0x80000000, which at the top end is flipped to
// 0x7FFFFFFF.
template <bool Round>
__m512i scaleToInt(__m512 x, __m512 m)
{
    __m512 v;
    if constexpr (Round) {
        __m512i const half = _mm512_set1_epi32(0x3F000000);
        __m512i const sign = _mm512_set1_epi32(INT32_MIN);
        // half | (sign & x), in one step that overwrites a copy of the constant rather than x
        __m512 const signedHalf = _mm512_castsi512_ps(_mm512_ternarylogic_epi32(half, sign, _mm512_castps_si512(x), 0xF8));
        v = _mm512_fmadd_round_ps(x, m, signedHalf, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    } else {
        v = _mm512_mul_ps(x, m);
    }
    __m512i const i = _mm512_maskz_cvttps_epi32(_mm512_cmp_ps_mask(v, v, _CMP_ORD_Q), v);
    __mmask16 const above = _mm512_cmp_ps_mask(v, _mm512_set1_ps(2147483648.0f), _CMP_GE_OQ);
    return _mm512_mask_xor_epi32(i, above, i, _mm512_set1_epi32(-1));
}

// Runs at least this long are arranged for memory rather than for the first few elements: they go
// in the direction that keeps loads clear of pending stores and start with the partial vector that
// brings one stream to a cache-line boundary.
constexpr unsigned int alignFrom = 4096;

// Elements (of the given size) to handle before p reaches a cache-line boundary; 0 when p cannot
// reach one in whole elements.
template <std::size_t ElementBytes>
unsigned int toCacheLine(void const* p)
{
    auto const address = reinterpret_cast<std::uintptr_t>(p);
    return address % ElementBytes == 0 ? static_cast<unsigned int>((0 - address) % 64 / ElementBytes) : 0;
}

// Elements (of the given size) between the last cache-line boundary and p; 0 when p is not on a
// whole element.
template <std::size_t ElementBytes>
unsigned int pastCacheLine(void const* p)
{
    auto const address = reinterpret_cast<std::uintptr_t>(p);
    return address % ElementBytes == 0 ? static_cast<unsigned int>(address % 64 / ElementBytes) : 0;
}

// The processor checks a load against the pending stores by the low twelve bits of the address
// first: a load that matches an earlier store a little behind it in the same page position waits
// for that store, though the two never overlap. Going forward, that is the case for every load when
// dst is up to a few hundred bytes past a source modulo 4096 (a long conversion then ran at half the
// speed of memcpy); going backward, when dst is as far before a source. So a run goes backward when
// every source that is not at dst's page position lies in the half page before it.
template <typename Src>
bool backwardKeepsLoadsClear(void const* dst, std::initializer_list<Src const*> sources)
{
    bool backward = false;
    for (Src const* source : sources) {
        auto const distance = (reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(source)) % 4096;
        if (distance >= 2048)
            return false;
        backward = backward || distance != 0;
    }
    return backward;
}

// Loads and stores of 16 elements, all of them or the first few under a mask. Masked loads never
// fault on the lanes they leave out, so a partial vector reads nothing beyond the buffer.
struct Whole {
    static __m512 load(float const* p) { return _mm512_loadu_ps(p); }
    static __m512i load(int const* p) { return _mm512_loadu_si512(p); }
    static __m256i load(short const* p) { return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p)); }
    static void store(float* p, __m512 v) { _mm512_storeu_ps(p, v); }
    static void store(int* p, __m512i v) { _mm512_storeu_si512(p, v); }
    static void store(short* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
};

struct Partial {
    // The first `count` (below 16) of the 16 lanes.
    explicit Partial(unsigned int count) : mask(static_cast<__mmask16>((1u << count) - 1)) {}
    __m512 load(float const* p) const { return _mm512_maskz_loadu_ps(mask, p); }
    __m512i load(int const* p) const { return _mm512_maskz_loadu_epi32(mask, p); }
    __m256i load(short const* p) const { return _mm256_maskz_loadu_epi16(mask, p); }
    void store(float* p, __m512 v) const { _mm512_mask_storeu_ps(p, mask, v); }
    void store(int* p, __m512i v) const { _mm512_mask_storeu_epi32(p, mask, v); }
    void store(short* p, __m256i v) const { _mm256_mask_storeu_epi16(p, mask, v); }
    __mmask16 mask;
};

// A long run from its end down: the partial vector that brings `aligned` back to a cache-line
// boundary, whole vectors four to a turn and then one, and the first few elements last.
template <typename Aligned, typename Step>
[[gnu::noinline]] void backward16(unsigned int n, Aligned const* aligned, Step step)
{
    std::size_t end = n;
    if (unsigned int const tail = pastCacheLine<sizeof(Aligned)>(aligned + n) % 16) {
        end -= tail;
        step(end, Partial(tail));
    }
    while (end >= 64) {
        end -= 64;
        step(end + 48, Whole());
        step(end + 32, Whole());
        step(end + 16, Whole());
        step(end, Whole());
    }
    while (end >= 16) {
        end -= 16;
        step(end, Whole());
    }
    if (end != 0)
        step(std::size_t(0), Partial(static_cast<unsigned int>(end)));
}

// Calls step(i, io) over n elements 16 at a time: whole vectors four to a turn while they last,
// then one to a turn, then the rest under a mask. A short run thus costs what the plain loop costs,
// with no alignment peeling and no scalar remainder. A long one (see alignFrom) first stores the
// partial vector that brings a stream to a cache-line boundary: the first source when it has dst's
// element size (split loads cost more than split stores once the data comes from beyond L2),
// otherwise dst; and it runs backward where that keeps loads clear of pending stores.
template <typename Dst, typename Src, typename Step>
[[gnu::always_inline]] inline void forEach16(unsigned int n, Dst const* dst, std::initializer_list<Src const*> sources, Step step)
{
    // The loops are written rotated, each entered only when it runs at least once: the compiler's
    // own rotation jumps to the condition first, a taken branch that a short run notices.
    std::size_t i = 0;
    if (n >= 64) {
        if (n >= alignFrom) [[unlikely]] {
            if constexpr (sizeof(Src) == sizeof(Dst)) {
                if (backwardKeepsLoadsClear(dst, sources))
                    return backward16(n, *sources.begin(), step);
                i = toCacheLine<sizeof(Src)>(*sources.begin()) % 16;
            } else {
                // One step stores 16 elements: 64 bytes, or 32 for 16-bit ones, which need only
                // reach a 32-byte boundary to keep every store within a line.
                i = toCacheLine<sizeof(Dst)>(dst) % 16;
            }
            step(std::size_t(0), Partial(static_cast<unsigned int>(i)));
        }
        do {
            step(i, Whole());
            step(i + 16, Whole());
            step(i + 32, Whole());
            step(i + 48, Whole());
            i += 64;
        } while (i + 64 <= n);
    }
    if (i + 16 <= n) {
        do {
            step(i, Whole());
            i += 16;
        } while (i + 16 <= n);
    }
    if (i < n)
        step(i, Partial(static_cast<unsigned int>(n - i)));
}

void addAvx512(unsigned int n, float const* a, float const* b, float* dst)
{
    forEach16(n, dst, {a, b}, [=](std::size_t i, auto io) { io.store(dst + i, _mm512_add_ps(io.load(a + i), io.load(b + i))); });
}

void mulConstantAvx512(unsigned int n, float const* src, float* dst, float c)
{
    __m512 const m = _mm512_set1_ps(c);
    forEach16(n, dst, {src}, [=](std::size_t i, auto io) { io.store(dst + i, _mm512_mul_ps(io.load(src + i), m)); });
}

// The product is rounded before the sum, as in the definition: never one fused step.
void addProductAvx512(unsigned int n, float const* a, float const* b, float* srcDst)
{
    forEach16(n, srcDst, {a, b}, [=](std::size_t i, auto io) {
        io.store(srcDst + i, _mm512_add_ps(io.load(srcDst + i), _mm512_mul_ps(io.load(a + i), io.load(b + i))));
    });
}

void shortToFloatAvx512(unsigned int n, short const* src, float* dst, float factor)
{
    __m512 const f = _mm512_set1_ps(factor);
    forEach16(n, dst, {src}, [=](std::size_t i, auto io) {
        io.store(dst + i, _mm512_mul_ps(_mm512_cvtepi32_ps(_mm512_cvtepi16_epi32(io.load(src + i))), f));
    });
}

void intToFloatAvx512(unsigned int n, int const* src, float* dst)
{
    forEach16(n, dst, {src}, [=](std::size_t i, auto io) { io.store(dst + i, _mm512_cvtepi32_ps(io.load(src + i))); });
}

void floatToShortAvx512(unsigned int n, float const* src, short* dst, float multiplier, float bias)
{
    __m512 const m = _mm512_set1_ps(multiplier);
    __m512 const b = _mm512_set1_ps(bias);
    forEach16(n, dst, {src}, [=](std::size_t i, auto io) {
        __m512 const x = _mm512_add_ps(_mm512_mul_ps(io.load(src + i), m), b);
        io.store(dst + i, _mm512_cvtsepi32_epi16(clampTruncate(x)));
    });
}

template <bool Round>
void floatToIntAvx512(unsigned int n, float const* src, int* dst, float multiplier)
{
    __m512 const m = _mm512_set1_ps(multiplier);
    forEach16(n, dst, {src}, [=](std::size_t i, auto io) { io.store(dst + i, scaleToInt<Round>(io.load(src + i), m)); });
}

// Index vectors for the two-source permutes: element k of the first operand is index k, of the
// second 16 + k (32 + k for 16-bit elements).
__m512i zipIndex(int first)
{
    alignas(64) int index[16];
    for (int k = 0; k < 16; ++k)
        index[k] = first / 2 + k / 2 + (k % 2 ? 16 : 0);
    return _mm512_load_si512(index);
}

__m512i zipIndex16(int first)
{
    alignas(64) short index[32];
    for (int k = 0; k < 32; ++k)
        index[k] = static_cast<short>(first / 2 + k / 2 + (k % 2 ? 32 : 0));
    return _mm512_load_si512(index);
}

void interleaveFloatAvx512(unsigned int n, float const* left, float const* right, float* dst)
{
    __m512i const low = zipIndex(0);
    __m512i const high = zipIndex(16);
    unsigned int i = 0;
    if (n >= alignFrom) {
        i = toCacheLine<2 * sizeof(float)>(dst);
        interleaveLoop(i, left, right, dst);
    }
    for (; i + 16 <= n; i += 16) {
        __m512 const l = _mm512_loadu_ps(left + i);
        __m512 const r = _mm512_loadu_ps(right + i);
        _mm512_storeu_ps(dst + 2 * i, _mm512_permutex2var_ps(l, low, r));
        _mm512_storeu_ps(dst + 2 * i + 16, _mm512_permutex2var_ps(l, high, r));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveFloatAvx512(unsigned int n, float const* src, float* left, float* right)
{
    __m512i const evens = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    __m512i const odds = _mm512_add_epi32(evens, _mm512_set1_epi32(1));
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m512 const a = _mm512_loadu_ps(src + 2 * i);
        __m512 const b = _mm512_loadu_ps(src + 2 * i + 16);
        _mm512_storeu_ps(left + i, _mm512_permutex2var_ps(a, evens, b));
        _mm512_storeu_ps(right + i, _mm512_permutex2var_ps(a, odds, b));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

void interleaveShortAvx512(unsigned int n, short const* left, short const* right, short* dst)
{
    __m512i const low = zipIndex16(0);
    __m512i const high = zipIndex16(32);
    unsigned int i = 0;
    for (; i + 32 <= n; i += 32) {
        __m512i const l = _mm512_loadu_si512(left + i);
        __m512i const r = _mm512_loadu_si512(right + i);
        _mm512_storeu_si512(dst + 2 * i, _mm512_permutex2var_epi16(l, low, r));
        _mm512_storeu_si512(dst + 2 * i + 32, _mm512_permutex2var_epi16(l, high, r));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveShortAvx512(unsigned int n, short const* src, short* left, short* right)
{
    alignas(64) short index[32];
    for (int k = 0; k < 32; ++k)
        index[k] = static_cast<short>(2 * k);
    __m512i const evens = _mm512_load_si512(index);
    __m512i const odds = _mm512_add_epi16(evens, _mm512_set1_epi16(1));
    unsigned int i = 0;
    for (; i + 32 <= n; i += 32) {
        __m512i const a = _mm512_loadu_si512(src + 2 * i);
        __m512i const b = _mm512_loadu_si512(src + 2 * i + 32);
        _mm512_storeu_si512(left + i, _mm512_permutex2var_epi16(a, evens, b));
        _mm512_storeu_si512(right + i, _mm512_permutex2var_epi16(a, odds, b));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

constexpr Kernels makeAvx512Kernels()
{
    Kernels k = makeKernels();
    k.addFloat = addAvx512;
    k.mulConstantFloat = mulConstantAvx512;
    k.addProductFloat = addProductAvx512;
    k.shortToFloat = shortToFloatAvx512;
    k.intToFloat = intToFloatAvx512;
    k.floatToShort = floatToShortAvx512;
    k.floatToInt = floatToIntAvx512<false>;
    k.floatToIntRounded = floatToIntAvx512<true>;
    k.interleaveFloat = interleaveFloatAvx512;
    k.deinterleaveFloat = deinterleaveFloatAvx512;
    k.interleaveShort = interleaveShortAvx512;
    k.deinterleaveShort = deinterleaveShortAvx512;
    return k;
}

} // namespace

constinit Kernels const avx512Kernels = makeAvx512Kernels();

} // namespace Cordel::IPP::detail
