#pragma once
// CRC-16 of byte runs: the reflected CRC of polynomial 0x8005, starting from 0, without a final
// XOR (the check value of "123456789" is 0xBB3D). The running form continues a value over one
// more byte, so a stream can be checked block by block or byte by byte with the same result.

#include <Cordel/common/Export.h>

namespace Cordel::Util {

CORDEL_API unsigned short CRC16(char const* data, unsigned int length);

// Updates crc (start from 0) with one byte.
CORDEL_API void CRC16(unsigned short& crc, char byte);

// Updates crc (start from 0) with a run of bytes: CRC16(data, n) is CRC16(crc = 0, data, n).
CORDEL_API unsigned short CRC16(unsigned short crc, char const* data, unsigned int length);

} // namespace Cordel::Util
