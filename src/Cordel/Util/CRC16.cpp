#include <Cordel/Util/CRC16.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace Cordel::Util {

namespace {

// The CRC of each single byte, formed from the CRCs of its bits: the CRC is linear, so the
// value for a byte is the XOR of the values of its set bits.
constexpr std::array<std::uint16_t, 256> byteTable()
{
    constexpr std::uint16_t perBit[8] = {0xC0C1, 0xC181, 0xC301, 0xC601, 0xCC01, 0xD801, 0xF001, 0xA001};
    std::array<std::uint16_t, 256> table{};
    for (unsigned int i = 0; i < 256; ++i)
        for (unsigned int bit = 0; bit < 8; ++bit)
            if (i & (1u << bit))
                table[i] ^= perBit[bit];
    return table;
}

// Slices[k][b]: the CRC contribution of byte b followed by k zero bytes. With them 16 bytes are
// folded in with 16 independent look-ups instead of a chain of 16 dependent ones.
constexpr int sliceCount = 16;
using Slices = std::array<std::array<std::uint16_t, 256>, sliceCount>;

constexpr Slices sliceTables()
{
    Slices slices{};
    slices[0] = byteTable();
    for (int k = 1; k < sliceCount; ++k)
        for (unsigned int b = 0; b < 256; ++b) {
            std::uint16_t const previous = slices[k - 1][b];
            slices[k][b] = static_cast<std::uint16_t>((previous >> 8) ^ slices[0][previous & 0xFF]);
        }
    return slices;
}

// Built by the compiler: no first-call race and no start-up cost.
constexpr Slices slices = sliceTables();

std::uint16_t step(std::uint16_t crc, unsigned char byte)
{
    return static_cast<std::uint16_t>((crc >> 8) ^ slices[0][(crc ^ byte) & 0xFF]);
}

std::uint16_t fold16(std::uint16_t crc, unsigned char const* p)
{
    std::uint64_t lo;
    std::uint64_t hi;
    std::memcpy(&lo, p, 8);
    std::memcpy(&hi, p + 8, 8);
    lo ^= crc; // the running value meets the first two bytes (little-endian host)
    std::uint32_t r = 0;
    for (int i = 0; i < 8; ++i)
        r ^= slices[15 - i][(lo >> (8 * i)) & 0xFF];
    for (int i = 0; i < 8; ++i)
        r ^= slices[7 - i][(hi >> (8 * i)) & 0xFF];
    return static_cast<std::uint16_t>(r);
}

} // namespace

unsigned short CRC16(unsigned short crc, char const* data, unsigned int length)
{
    auto const* p = reinterpret_cast<unsigned char const*>(data);
    std::uint16_t c = crc;
    for (; length >= 16; length -= 16, p += 16)
        c = fold16(c, p);
    for (; length > 0; --length)
        c = step(c, *p++);
    return c;
}

unsigned short CRC16(char const* data, unsigned int length) { return CRC16(static_cast<unsigned short>(0), data, length); }

void CRC16(unsigned short& crc, char byte) { crc = step(crc, static_cast<unsigned char>(byte)); }

} // namespace Cordel::Util
