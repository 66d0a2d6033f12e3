// The CRC-16 a user would write: one table look-up per byte.

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

std::array<std::uint16_t, 256> makeTable()
{
    std::array<std::uint16_t, 256> table{};
    for (unsigned int i = 0; i < 256; ++i) {
        std::uint16_t crc = static_cast<std::uint16_t>(i);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<std::uint16_t>((crc >> 1) ^ 0xA001) : static_cast<std::uint16_t>(crc >> 1);
        table[i] = crc;
    }
    return table;
}

std::array<std::uint16_t, 256> const table = makeTable();

} // namespace

unsigned short tableLoopCRC16(unsigned char const* data, std::size_t length)
{
    std::uint16_t crc = 0;
    for (std::size_t i = 0; i < length; ++i)
        crc = static_cast<std::uint16_t>((crc >> 8) ^ table[(crc ^ data[i]) & 0xFF]);
    return crc;
}
