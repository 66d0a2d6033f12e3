// Conversions between the 8-bit text and UTF-16, through iconv.

#include <Cordel/common/String.h>

#include <iconv.h>
#include <langinfo.h>

#include <cstring>
#include <memory>

namespace Cordel {

namespace {

// Texts longer than this are not converted.
constexpr std::size_t conversionLimit = 100000;

char const* codesetOf(unsigned int encoding)
{
    switch (encoding) {
    case String::UTF8: return "UTF-8";
    case String::Application: return nl_langinfo(CODESET);
    default: return "MACINTOSH";
    }
}

// Converts the whole input; false when the converter cannot be made or any byte fails.
bool convert(char const* to, char const* from, char const* in, std::size_t inBytes, char* out, std::size_t outBytes,
             std::size_t& produced)
{
    iconv_t const cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return false;
    char* inPtr = const_cast<char*>(in);
    char* outPtr = out;
    std::size_t inLeft = inBytes, outLeft = outBytes;
    bool ok = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<std::size_t>(-1) && inLeft == 0;
    ok = ok && iconv(cd, nullptr, nullptr, &outPtr, &outLeft) != static_cast<std::size_t>(-1);
    iconv_close(cd);
    produced = outBytes - outLeft;
    return ok;
}

} // namespace

String::String(unsigned short const* utf16, unsigned int encoding)
{
    if (!utf16 || !*utf16)
        return;
    std::size_t units = 0;
    while (utf16[units] != 0)
        if (++units >= conversionLimit)
            return;
    std::size_t const capacity = units * 5;
    std::unique_ptr<char[]> out(new char[capacity + 1]);
    std::size_t produced = 0;
    if (!convert(codesetOf(encoding), "UTF-16LE", reinterpret_cast<char const*>(utf16), units * 2, out.get(), capacity,
                 produced))
        return;
    if (produced)
        replaceText(new std::string(out.get(), produced));
}

shared_ptr<unsigned short[]> String::Unicode(unsigned int encoding) const
{
    std::size_t const bytes = ::strnlen(c_str(), Length());
    if (bytes == 0 || bytes >= conversionLimit)
        return shared_ptr<unsigned short[]>(nullptr);
    // UTF-16 never needs more units than there are input bytes, and one more for the terminator.
    std::unique_ptr<unsigned short[]> out(new unsigned short[bytes + 1]);
    std::size_t produced = 0;
    if (!convert("UTF-16LE", codesetOf(encoding), c_str(), bytes, reinterpret_cast<char*>(out.get()), bytes * 2,
                 produced))
        return shared_ptr<unsigned short[]>(nullptr);
    out[produced / 2] = 0;
    return shared_ptr<unsigned short[]>(out.release());
}

} // namespace Cordel
