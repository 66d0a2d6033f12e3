#include <Cordel/Network/BadURLEncoding.h>

namespace Cordel::Network::Exception {

BadURLEncoding::BadURLEncoding(String const& message, String const& text, unsigned int offset)
    : Base(message), text(text), offset(offset)
{
}

BadURLEncoding::~BadURLEncoding() = default;

String BadURLEncoding::ToString() const
{
    return Base::ToString() + String("\nBadURLEncoding: at offset %1 of '%2'\n").Arg(offset).Arg(text);
}

} // namespace Cordel::Network::Exception
