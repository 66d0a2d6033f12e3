// URLDecode on arbitrary text in both modes: no crash; either a BadURLEncoding at a "%" that
// starts no escape, or bytes that encode and decode back to themselves, never longer than the text.

#include <Cordel/Network/BadURLEncoding.h>
#include <Cordel/Network/URLEncode.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace Cordel;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    String const text(std::string_view(reinterpret_cast<char const*>(data), size));
    for (Network::URLEncoding mode : {Network::URLEncoding::Component, Network::URLEncoding::Form}) {
        try {
            String const decoded = Network::URLDecode(text, mode);
            if (decoded.Length() > text.Length() || Network::URLDecode(Network::URLEncode(decoded, mode), mode) != decoded)
                std::abort();
        } catch (Network::Exception::BadURLEncoding const& e) {
            if (e.GetOffset() >= size || data[e.GetOffset()] != '%')
                std::abort();
        }
    }
    return 0;
}
