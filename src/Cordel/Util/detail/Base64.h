#pragma once
// Internal: standard Base64 (RFC 4648 alphabet, "=" padding) for binary preference values.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Cordel::Util::detail {

std::string EncodeBase64(std::vector<unsigned char> const& data);
// Nothing when the text is not padded Base64; white space between characters is allowed.
std::optional<std::vector<unsigned char>> DecodeBase64(std::string_view text);

} // namespace Cordel::Util::detail
