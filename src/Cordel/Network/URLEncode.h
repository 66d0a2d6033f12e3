#pragma once
// Percent-encoding of URL components and of HTML form data.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <utility>
#include <vector>

namespace Cordel::Network {

enum class URLEncoding {
    // A URL component: every byte but ALPHA, DIGIT and "-._~" becomes "%XX" (upper-case hex).
    Component,
    // application/x-www-form-urlencoded: a space becomes "+", ALPHA, DIGIT and "*-._" stay, every
    // other byte ("~" and "+" among them) becomes "%XX".
    Form,
};

// Encodes the bytes of text (UTF-8 text is encoded byte by byte, not by character).
CORDEL_API String URLEncode(String const& text, URLEncoding mode = URLEncoding::Component);

// The inverse: "%XX" (either case of hex digit) becomes its byte, and in form mode "+" becomes a
// space; everything else is kept as it is. A "%" not followed by two hex digits throws
// Network::Exception::BadURLEncoding rather than being guessed at.
CORDEL_API String URLDecode(String const& text, URLEncoding mode = URLEncoding::Component);

// "name=value&name=value", each side in form encoding, in the order given.
CORDEL_API String FormEncode(std::vector<std::pair<String, String>> const& fields);

} // namespace Cordel::Network
