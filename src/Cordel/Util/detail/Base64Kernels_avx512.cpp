// The byte permutes of AVX-512 VBMI do the whole job here: one permute spreads the bytes, one
// multishift cuts out the 6-bit values, one permute looks up 64 characters at once. They are
// enabled per function so that the rest of the library's AVX-512 code stays within F/BW/DQ/VL.

#include <Cordel/Util/detail/Base64Kernels.h>

#include <array>
#include <cstdint>
#include <immintrin.h>

#define CORDEL_VBMI __attribute__((target("avx512vbmi")))

namespace Cordel::Util::detail {

namespace {

// Each group b0 b1 b2 of 48 bytes spread over a 32-bit word as b1 b0 b2 b1, so that every 6-bit
// value lies whole within 8 bits starting at a fixed offset.
constexpr std::array<unsigned char, 64> spreadOrder()
{
    std::array<unsigned char, 64> order{};
    for (int group = 0; group < 16; ++group) {
        unsigned char const first = static_cast<unsigned char>(3 * group);
        order[4 * group + 0] = first + 1;
        order[4 * group + 1] = first;
        order[4 * group + 2] = first + 2;
        order[4 * group + 3] = first + 1;
    }
    return order;
}
constexpr auto spread = spreadOrder();

// The offsets of the four values in each spread word (10, 4, 22, 16), for both words of a qword.
constexpr std::uint64_t valueOffsets = 0x3036242A1016040AULL;

// The value of every code 0-127, 0x80 for codes outside the alphabet.
constexpr std::array<unsigned char, 128> valueTable()
{
    std::array<unsigned char, 128> table{};
    for (auto& entry : table)
        entry = 0x80;
    for (int v = 0; v < 64; ++v)
        table[static_cast<unsigned char>(base64Alphabet[v])] = static_cast<unsigned char>(v);
    return table;
}
constexpr auto values = valueTable();

// The three bytes of each packed word, most significant first, gathered into the low 48 bytes.
constexpr std::array<unsigned char, 64> gatherOrder()
{
    std::array<unsigned char, 64> order{};
    for (int k = 0; k < 48; ++k)
        order[k] = static_cast<unsigned char>(4 * (k / 3) + 2 - k % 3);
    return order;
}
constexpr auto gather = gatherOrder();

CORDEL_VBMI __m512i load(void const* p) { return _mm512_loadu_si512(p); }

// The plain forms of these two permutes trip a false "maybe uninitialized" in the compiler's own
// header; with every lane selected the zero-masking forms are the same instructions.
constexpr __mmask64 all = ~__mmask64(0);
CORDEL_VBMI __m512i permute(__m512i order, __m512i table) { return _mm512_maskz_permutexvar_epi8(all, order, table); }
CORDEL_VBMI __m512i multishift(__m512i offsets, __m512i words)
{
    return _mm512_maskz_multishift_epi64_epi8(all, offsets, words);
}

} // namespace

CORDEL_VBMI std::size_t Base64EncodeAVX512(unsigned char const* in, std::size_t n, char* out)
{
    __m512i const order = load(spread.data());
    __m512i const offsets = _mm512_set1_epi64(static_cast<long long>(valueOffsets));
    __m512i const alphabet = load(base64Alphabet);
    std::size_t i = 0;
    // Each step reads 64 bytes and uses 48.
    for (; i + 64 <= n; i += 48, out += 64) {
        __m512i const words = permute(order, load(in + i));
        __m512i const sixBits = multishift(offsets, words); // top 2 bits ignored below
        _mm512_storeu_si512(out, permute(sixBits, alphabet));
    }
    return i;
}

CORDEL_VBMI std::size_t Base64DecodeAVX512(unsigned char const* in, std::size_t n, unsigned char* out)
{
    __m512i const lowCodes = load(values.data());
    __m512i const highCodes = load(values.data() + 64);
    __m512i const order = load(gather.data());
    std::size_t i = 0;
    for (; i + 64 <= n; i += 64, out += 48) {
        __m512i const characters = load(in + i);
        // Codes 128-255 index the table by their low 7 bits; their own top bit flags them.
        __m512i const v = _mm512_permutex2var_epi8(lowCodes, characters, highCodes);
        if (_mm512_movepi8_mask(_mm512_or_si512(v, characters)) != 0)
            break;
        __m512i const pairs = _mm512_maddubs_epi16(v, _mm512_set1_epi32(0x01400140));
        __m512i const groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
        _mm512_storeu_si512(out, permute(order, groups)); // 48 bytes and 16 of slack
    }
    return i;
}

} // namespace Cordel::Util::detail
