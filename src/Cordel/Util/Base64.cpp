#include <Cordel/Util/Base64.h>
#include <Cordel/Util/detail/Base64Kernels.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace Cordel::Util {

namespace {

using detail::base64Alphabet;

// ---------------------------------------------------------------------------------------------
// Encoding

// Two characters for every 12-bit value, first character in the low byte: one look-up per
// 12 bits instead of two per 6.
constexpr std::array<std::uint16_t, 4096> pairTable()
{
    std::array<std::uint16_t, 4096> table{};
    for (unsigned int v = 0; v < 4096; ++v)
        table[v] = static_cast<std::uint16_t>(static_cast<unsigned char>(base64Alphabet[v >> 6])
                                              | (static_cast<unsigned char>(base64Alphabet[v & 63]) << 8));
    return table;
}
constexpr auto pairs = pairTable();

// 3 bytes to 4 characters.
void encodeblock(unsigned char const* in, char* out)
{
    std::uint32_t const v = (std::uint32_t(in[0]) << 16) | (std::uint32_t(in[1]) << 8) | in[2];
    std::uint32_t const chars = pairs[v >> 12] | (std::uint32_t(pairs[v & 0xFFF]) << 16);
    std::memcpy(out, &chars, 4);
}

// Six bytes to eight characters; reads 8 bytes, so the caller leaves 2 bytes of slack.
void encodeSix(unsigned char const* in, char* out)
{
    std::uint64_t word;
    std::memcpy(&word, in, 8);
    word = __builtin_bswap64(word); // the six bytes now lead, most significant first
    std::uint64_t const chars = std::uint64_t(pairs[(word >> 52) & 0xFFF]) | (std::uint64_t(pairs[(word >> 40) & 0xFFF]) << 16)
        | (std::uint64_t(pairs[(word >> 28) & 0xFFF]) << 32) | (std::uint64_t(pairs[(word >> 16) & 0xFFF]) << 48);
    std::memcpy(out, &chars, 8);
}

// ---------------------------------------------------------------------------------------------
// Decoding

// The decoding table for the codes 43 ("+") to 122 ("z"): "$" marks a code outside the alphabet,
// any other entry minus 62 is the code's 6-bit value.
constexpr char decodingTable[] = "|$$$}rstuvwxyz{$$$$$$$>?@ABCDEFGHIJKLMNOPQRSTUVW$$$$$$XYZ[\\]^_`abcdefghijklmnopq";
constexpr unsigned char invalid = 0xFF;

// The table spread over all 256 codes, every code outside 43-122 marked invalid.
constexpr std::array<unsigned char, 256> valueTable()
{
    std::array<unsigned char, 256> table{};
    for (unsigned int c = 0; c < 256; ++c) {
        bool const covered = c >= 43 && c <= 122 && decodingTable[c - 43] != '$';
        table[c] = covered ? static_cast<unsigned char>(decodingTable[c - 43] - 62) : invalid;
    }
    return table;
}
constexpr auto values = valueTable();

// For the fast path: each character's value already shifted to its place in a 24-bit group
// (position 0 to 3), invalid codes flagged in bit 31 so that one test covers four characters.
constexpr std::array<std::array<std::uint32_t, 256>, 4> placedTables()
{
    std::array<std::array<std::uint32_t, 256>, 4> placed{};
    for (int position = 0; position < 4; ++position)
        for (unsigned int c = 0; c < 256; ++c)
            placed[position][c] = values[c] == invalid ? 0x80000000u : std::uint32_t(values[c]) << (18 - 6 * position);
    return placed;
}
constexpr auto placed = placedTables();

// 4 values to 3 bytes.
void decodeblock(unsigned char const* v, unsigned char* out)
{
    out[0] = static_cast<unsigned char>(v[0] * 4 + v[1] / 16);
    out[1] = static_cast<unsigned char>((v[1] % 16) * 16 + v[2] / 4);
    out[2] = static_cast<unsigned char>((v[2] % 4) * 64 + v[3]);
}

// Eight characters to six bytes when all eight are in the alphabet; writes 8 bytes, so the
// caller leaves 2 bytes of slack. False, having written nothing, otherwise.
bool decodeEight(unsigned char const* in, unsigned char* out)
{
    std::uint32_t const a = placed[0][in[0]] | placed[1][in[1]] | placed[2][in[2]] | placed[3][in[3]];
    std::uint32_t const b = placed[0][in[4]] | placed[1][in[5]] | placed[2][in[6]] | placed[3][in[7]];
    if ((a | b) & 0x80000000u)
        return false;
    std::uint64_t const bytes = (std::uint64_t(a) << 40) | (std::uint64_t(b) << 16);
    std::uint64_t const stored = __builtin_bswap64(bytes);
    std::memcpy(out, &stored, 8);
    return true;
}

String encode(std::vector<unsigned char> const& bytes, IPP::detail::Base64Entry const& kernels)
{
    std::size_t const n = bytes.size();
    if (n == 0)
        return String();
    std::size_t const length = (n + 2) / 3 * 4;
    String text;
    // A writable buffer of length - 1 bytes plus its terminator slot: exactly length bytes.
    char* out = text.detachAndExtend(static_cast<unsigned int>(length - 1));
    unsigned char const* in = bytes.data();

    std::size_t i = kernels.encode(in, n, out);
    out += i / 3 * 4;
    for (; i + 8 <= n; i += 6, out += 8)
        encodeSix(in + i, out);
    for (; i + 3 <= n; i += 3, out += 4)
        encodeblock(in + i, out);
    if (std::size_t const left = n - i) {
        unsigned char last[3] = {in[i], left == 2 ? in[i + 1] : static_cast<unsigned char>(0), 0};
        char chars[4];
        encodeblock(last, chars);
        out[0] = chars[0];
        out[1] = chars[1];
        out[2] = left == 2 ? chars[2] : '=';
        out[3] = '=';
    }
    return text;
}

void decode(String const& text, std::vector<unsigned char>& bytes, IPP::detail::Base64Entry const& kernels)
{
    bytes.clear();
    std::size_t const n = text.Length();
    if (n == 0)
        return;
    // At most 3 bytes for every 4 characters, plus room for the wide stores of the fast paths.
    bytes.resize(n / 4 * 3 + detail::decodeSlack);
    auto const* in = reinterpret_cast<unsigned char const*>(text.c_str());
    unsigned char* out = bytes.data();

    unsigned char group[4];
    int gathered = 0;
    std::size_t i = 0;
    while (i < n) {
        // The bulk kernel takes clean text from a group boundary on. Whatever stopped it (a
        // skipped character, a short tail) goes one character at a time, or eight where a whole
        // group of eight is clean, until that character is behind us and a group is complete
        // again, so that the kernel always starts on a boundary.
        std::size_t const done = kernels.decode(in + i, n - i, out);
        i += done;
        out += done / 4 * 3;
        bool skipped = false;
        while (i < n && !(skipped && gathered == 0)) {
            if (gathered == 0 && i + 8 <= n && decodeEight(in + i, out)) {
                i += 8;
                out += 6;
                continue;
            }
            unsigned char const v = values[in[i++]];
            if (v == invalid) {
                skipped = true;
                continue;
            }
            group[gathered++] = v;
            if (gathered == 4) {
                decodeblock(group, out);
                out += 3;
                gathered = 0;
            }
        }
    }
    if (gathered >= 2) {
        for (int k = gathered; k < 4; ++k)
            group[k] = 0;
        unsigned char last[3];
        decodeblock(group, last);
        std::memcpy(out, last, gathered - 1);
        out += gathered - 1;
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
}

} // namespace

String Base64Encode(std::vector<unsigned char> const& bytes) { return encode(bytes, IPP::detail::dispatch().base64); }

void Base64Decode(String const& text, std::vector<unsigned char>& bytes) { decode(text, bytes, IPP::detail::dispatch().base64); }

// The portable code has no bulk kernel: its eight-at-a-time loops do the whole run.
std::size_t detail::Base64EncodePortable(unsigned char const*, std::size_t, char*) { return 0; }
std::size_t detail::Base64DecodePortable(unsigned char const*, std::size_t, unsigned char*) { return 0; }

} // namespace Cordel::Util
