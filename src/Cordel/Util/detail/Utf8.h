#pragma once
// Internal: checks on text that is handed on as UTF-8.

#include <string_view>

namespace Cordel::Util::detail {

// Well-formed UTF-8: shortest forms only, no surrogates, nothing past U+10FFFF.
bool IsValidUtf8(std::string_view text);

// Well-formed UTF-8 without control characters (below U+0020): text that can name a file or an
// XML attribute and come back as it was.
bool IsPrintableUtf8(std::string_view text);

} // namespace Cordel::Util::detail
