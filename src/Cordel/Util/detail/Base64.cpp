#include <Cordel/Util/detail/Base64.h>

namespace Cordel::Util::detail {

namespace {

char const alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int sextet(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

std::string EncodeBase64(std::vector<unsigned char> const& data)
{
    std::string text;
    text.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < data.size(); i += 3) {
        std::size_t const n = data.size() - i < 3 ? data.size() - i : 3;
        unsigned int group = unsigned(data[i]) << 16;
        if (n > 1)
            group |= unsigned(data[i + 1]) << 8;
        if (n > 2)
            group |= data[i + 2];
        text += alphabet[group >> 18];
        text += alphabet[(group >> 12) & 63];
        text += n > 1 ? alphabet[(group >> 6) & 63] : '=';
        text += n > 2 ? alphabet[group & 63] : '=';
    }
    return text;
}

std::optional<std::vector<unsigned char>> DecodeBase64(std::string_view text)
{
    std::string compact;
    for (char c : text)
        if (!isSpace(c))
            compact += c;
    if (compact.size() % 4 != 0)
        return std::nullopt;
    std::vector<unsigned char> data;
    data.reserve(compact.size() / 4 * 3);
    for (std::size_t i = 0; i < compact.size(); i += 4) {
        bool const last = i + 4 == compact.size();
        int const padding = last ? (compact[i + 3] == '=') + (compact[i + 2] == '=') : 0;
        if (padding == 1 && compact[i + 2] == '=')
            return std::nullopt;
        unsigned int group = 0;
        for (int k = 0; k < 4 - padding; ++k) {
            int const v = sextet(compact[i + k]);
            if (v < 0)
                return std::nullopt;
            group |= unsigned(v) << (18 - 6 * k);
        }
        data.push_back(static_cast<unsigned char>(group >> 16));
        if (padding < 2)
            data.push_back(static_cast<unsigned char>(group >> 8));
        if (padding < 1)
            data.push_back(static_cast<unsigned char>(group));
    }
    return data;
}

} // namespace Cordel::Util::detail
