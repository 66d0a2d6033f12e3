#include <Cordel/Util/detail/Utf8.h>

#include <algorithm>
#include <cstddef>

namespace Cordel::Util::detail {

bool IsValidUtf8(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size()) {
        unsigned char const c = static_cast<unsigned char>(text[i]);
        int const extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (extra < 0 || text.size() - i <= std::size_t(extra))
            return false;
        unsigned int code = extra == 0 ? c : c & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k) {
            unsigned char const next = static_cast<unsigned char>(text[i + std::size_t(k)]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (next & 0x3F);
        }
        unsigned int const least[] = {0, 0x80, 0x800, 0x10000};
        if (code < least[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += std::size_t(extra) + 1;
    }
    return true;
}

bool IsPrintableUtf8(std::string_view text)
{
    return IsValidUtf8(text) && std::none_of(text.begin(), text.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20;
           });
}

} // namespace Cordel::Util::detail
