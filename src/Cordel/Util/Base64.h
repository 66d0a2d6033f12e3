#pragma once
// Base64 text for byte vectors, in the standard alphabet "A-Z a-z 0-9 + /" with "=" padding.
//
// Encoding gives exactly 4 characters per started group of 3 bytes and no line breaks.
// Decoding is forgiving: every character outside the alphabet ("=", blanks, line breaks,
// anything else) is skipped without ending or breaking the decoding, so wrapped or padded text
// decodes as well as bare text. A final group of 2 or 3 characters gives 1 or 2 bytes; a single
// leftover character gives nothing.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <vector>

namespace Cordel::Util {

CORDEL_API String Base64Encode(std::vector<unsigned char> const& bytes);

// bytes is cleared, then filled with what text decodes to.
CORDEL_API void Base64Decode(String const& text, std::vector<unsigned char>& bytes);

} // namespace Cordel::Util
