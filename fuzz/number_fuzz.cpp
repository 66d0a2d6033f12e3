// String::ToInt, ToDouble and Arg on arbitrary text.

#include <Cordel/common/String.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using Cordel::String;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0)
        return 0;
    unsigned int const base = data[0] % 40;
    String const text(std::string_view(reinterpret_cast<char const*>(data + 1), size - 1));

    bool ok = true;
    int const i = text.ToInt(&ok, base);
    if (!ok && i != 0)
        std::abort();
    // What parses in base 10 prints back as a number that parses to the same value.
    if (ok && base == 10 && String::Number(i).ToInt() != i)
        std::abort();
    (void)text.ToUInt64(&ok, base);
    (void)text.ToShort(&ok, base);
    (void)text.ToDouble(&ok);
    (void)text.ToFloat(&ok);

    // The text as a template and as an argument.
    String const filled = text.Arg("x").Arg(static_cast<int>(size)).Arg(1.5, base, 'g');
    // Each call replaces at most one two-byte placeholder.
    if (filled.Length() + 6 < text.Length())
        std::abort();
    (void)String("%1 %2 %1").Arg(text).Arg(text);
    return 0;
}
