#include <Cordel/Util/detail/Base64Kernels.h>

#include <immintrin.h>

namespace Cordel::Util::detail {

namespace {

// ---------------------------------------------------------------------------------------------
// Encoding: 24 bytes to 32 characters per step

// Loads 12 bytes into each 128-bit lane (the lanes cannot exchange bytes later) and spreads each
// group b0 b1 b2 over a 32-bit word as b1 b0 b2 b1, so that every 6-bit value lies whole inside
// one 16-bit half. Each load reads 4 bytes beyond the 12 it uses.
__m256i spreadGroups(unsigned char const* in)
{
    __m128i const low = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    __m128i const high = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in + 12));
    __m256i const bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    __m256i const order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10, //
                                           1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    return _mm256_shuffle_epi8(bytes, order);
}

// The four 6-bit values of each word, one per byte in text order. The 16-bit multiplies are
// per-half shifts: the high product moves the first and third values down, the low product
// moves the second and fourth up into the next byte.
__m256i sixBitValues(__m256i words)
{
    __m256i const firstThird = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                                  _mm256_set1_epi32(0x04000040));
    __m256i const secondFourth = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                                    _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(firstThird, secondFourth);
}

// Within each of the five runs of the alphabet (A-Z, a-z, 0-9, "+", "/") a character is its
// value plus a fixed offset. The run is numbered without branches: 52-63 give 1-12 by a
// saturating subtraction, 0-25 are then marked 13 and 26-51 stay 0; the number picks the offset.
__m256i toCharacters(__m256i values)
{
    __m256i run = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    __m256i const upperCase = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    run = _mm256_or_si256(run, _mm256_and_si256(upperCase, _mm256_set1_epi8(13)));
    __m256i const offsets = _mm256_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                             '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0, //
                                             'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                             '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, run));
}

// ---------------------------------------------------------------------------------------------
// Decoding: 32 characters to 24 bytes per step

// True when all 32 characters are in the alphabet; their values are then left in values.
//
// Codes fall in rows of 16 by their high nibble. hiRows gives each row one bit; loColumns gives
// each low nibble the bits of the rows in which that column is not in the alphabet ("+" and "/"
// are the only members of row 2, "0"-"9" open row 3, "A"-"Z" and "a"-"z" rows 4-7 but for "@",
// "`" and the codes after "Z" and "z"). Rows 0, 1 and 8-15 share a bit set in every column.
// A character is in the alphabet exactly when its row and column share no bit.
bool toValues(__m256i characters, __m256i& values)
{
    __m256i const hiRows = _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10,
                                            0x10, 0x10, 0x10, //
                                            0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10,
                                            0x10, 0x10, 0x10);
    __m256i const loColumns = _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A,
                                               0x1B, 0x1B, 0x1B, 0x1A, //
                                               0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A,
                                               0x1B, 0x1B, 0x1B, 0x1A);
    __m256i const nibble = _mm256_set1_epi8(0x0F);
    __m256i const hi = _mm256_and_si256(_mm256_srli_epi32(characters, 4), nibble);
    __m256i const lo = _mm256_and_si256(characters, nibble);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(loColumns, lo), _mm256_shuffle_epi8(hiRows, hi)))
        return false;
    // Within a row a value is the code plus one offset, except that "/" shares row 2 with "+":
    // it borrows slot 1, unused otherwise.
    __m256i const offsets = _mm256_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0,
                                             0, 0, 0, 0, //
                                             0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0,
                                             0, 0, 0, 0);
    __m256i const slot = _mm256_add_epi8(hi, _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/')));
    values = _mm256_add_epi8(characters, _mm256_shuffle_epi8(offsets, slot));
    return true;
}

// Packs each 4 values into their 24 bits (multiply-adds: pairs to 12 bits, then to 24), then
// gathers the three bytes of each word, most significant first, into the low 24 bytes.
__m256i toBytes(__m256i values)
{
    __m256i const pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    __m256i const groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    __m256i const order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, //
                                           2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    __m256i const lanes = _mm256_shuffle_epi8(groups, order);
    return _mm256_permutevar8x32_epi32(lanes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

} // namespace

std::size_t Base64EncodeAVX2(unsigned char const* in, std::size_t n, char* out)
{
    std::size_t i = 0;
    for (; i + 28 <= n; i += 24, out += 32)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), toCharacters(sixBitValues(spreadGroups(in + i))));
    return i;
}

std::size_t Base64DecodeAVX2(unsigned char const* in, std::size_t n, unsigned char* out)
{
    std::size_t i = 0;
    __m256i values;
    for (; i + 32 <= n; i += 32, out += 24) {
        if (!toValues(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(in + i)), values))
            break;
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), toBytes(values));
    }
    return i;
}

} // namespace Cordel::Util::detail
