#include <Cordel/Network/BadURLEncoding.h>
#include <Cordel/Network/URLEncode.h>
#include <Cordel/Util/detail/Throw.h>

#include <string>

namespace Cordel::Network {

namespace {

bool isAlphaNumeric(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

bool staysAsItIs(unsigned char c, URLEncoding mode)
{
    if (isAlphaNumeric(c) || c == '-' || c == '.' || c == '_')
        return true;
    return mode == URLEncoding::Component ? c == '~' : c == '*';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

String URLEncode(String const& text, URLEncoding mode)
{
    static char const hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.Length());
    for (char const ch : text.View()) {
        auto const c = static_cast<unsigned char>(ch);
        if (staysAsItIs(c, mode))
            out += ch;
        else if (c == ' ' && mode == URLEncoding::Form)
            out += '+';
        else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return String(std::string_view(out));
}

String URLDecode(String const& text, URLEncoding mode)
{
    std::string_view const in = text.View();
    std::string out;
    out.reserve(in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
        char const c = in[i];
        if (c == '%') {
            int const high = i + 1 < in.size() ? hexValue(in[i + 1]) : -1;
            int const low = i + 2 < in.size() ? hexValue(in[i + 2]) : -1;
            if (high < 0 || low < 0)
                Cordel::Exception::Throw(Exception::BadURLEncoding(String("Malformed percent escape at offset %1")
                                                                       .Arg(static_cast<unsigned int>(i)),
                                                                   text, static_cast<unsigned int>(i)),
                                         CORDEL_HERE);
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else
            out += c == '+' && mode == URLEncoding::Form ? ' ' : c;
    }
    return String(std::string_view(out));
}

String FormEncode(std::vector<std::pair<String, String>> const& fields)
{
    String out;
    for (auto const& [name, value] : fields) {
        if (!out.IsEmpty())
            out += '&';
        out += URLEncode(name, URLEncoding::Form) + "=" + URLEncode(value, URLEncoding::Form);
    }
    return out;
}

} // namespace Cordel::Network
