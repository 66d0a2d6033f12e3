// Numbers to text and text to numbers, and the Arg forms that format a number.

#include <Cordel/common/String.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace Cordel {

namespace {

constexpr char digitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// Room for 64 binary digits and a sign.
struct NumberText {
    char buffer[72];
    char* begin;
    std::string_view View() const { return std::string_view(begin, buffer + sizeof buffer - begin); }
};

// Digits from the least significant end by repeated division; bases outside 2..36 mean 10.
NumberText formatUnsigned(unsigned long long magnitude, unsigned int base, bool negative)
{
    if (base < 2 || base > 36)
        base = 10;
    NumberText t;
    char* p = t.buffer + sizeof t.buffer;
    do {
        *--p = digitAlphabet[magnitude % base];
        magnitude /= base;
    } while (magnitude != 0);
    if (negative)
        *--p = '-';
    t.begin = p;
    return t;
}

NumberText formatSigned(long long v, unsigned int base)
{
    // The magnitude of the most negative value is computed in unsigned arithmetic, without overflow.
    unsigned long long const magnitude = v < 0 ? 0ull - static_cast<unsigned long long>(v) : static_cast<unsigned long long>(v);
    return formatUnsigned(magnitude, base, v < 0);
}

// The 64-bit forms know two bases: 16 as "%llX" (the bit pattern, also of negative values) and
// decimal for every other base.
NumberText format64(unsigned long long pattern, bool isSigned, unsigned int base)
{
    if (base == 16)
        return formatUnsigned(pattern, 16, false);
    if (isSigned)
        return formatSigned(static_cast<long long>(pattern), 10);
    return formatUnsigned(pattern, 10, false);
}

// Arg(int|long, 16) formats the 32-bit two's-complement pattern. A long outside the 32-bit range
// keeps its full 64-bit pattern rather than losing its upper half.
NumberText formatHexPattern(long long v)
{
    bool const fits32 = v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max();
    unsigned long long const pattern = fits32 ? static_cast<unsigned int>(v) : static_cast<unsigned long long>(v);
    return formatUnsigned(pattern, 16, false);
}

struct FloatText {
    char buffer[1024];
    int length;
    std::string_view View() const
    {
        return std::string_view(buffer, length < 0 ? 0 : std::min<int>(length, sizeof buffer - 1));
    }
};

FloatText formatFloating(double v, unsigned int precision, char format)
{
    switch (format) {
    case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': break;
    default: format = 'f';
    }
    char pattern[8];
    if (precision == String::NoPrecision)
        std::snprintf(pattern, sizeof pattern, "%%%c", format);
    else
        std::snprintf(pattern, sizeof pattern, "%%.%u%c", precision > 99 ? 99u : precision, format);
    FloatText t;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    t.length = std::snprintf(t.buffer, sizeof t.buffer, pattern, v);
#pragma GCC diagnostic pop
    return t;
}

template <typename Text>
String toString(Text const& t)
{
    return String(t.View());
}

} // namespace

// ---- Number ----

String String::Number(int v, unsigned int base) { return toString(formatSigned(v, base)); }
String String::Number(unsigned int v, unsigned int base) { return toString(formatUnsigned(v, base, false)); }
String String::Number(long v, unsigned int base) { return toString(formatSigned(v, base)); }
String String::Number(unsigned long v, unsigned int base) { return toString(formatUnsigned(v, base, false)); }
String String::Number(long long v, unsigned int base) { return toString(format64(static_cast<unsigned long long>(v), true, base)); }
String String::Number(unsigned long long v, unsigned int base) { return toString(format64(v, false, base)); }
String String::Number(float v, unsigned int precision, char format) { return toString(formatFloating(v, precision, format)); }
String String::Number(double v, unsigned int precision, char format) { return toString(formatFloating(v, precision, format)); }

// ---- Arg with numbers: formatted on the stack, then spliced into the result ----

#define CORDEL_ARG_PAIR(Type, Params, Expr)                                              \
    String String::Arg(Type v, Params) const& { return argView((Expr).View()); }      \
    String String::Arg(Type v, Params) && { return argViewInPlace((Expr).View()); }

CORDEL_ARG_PAIR(short, unsigned int base, formatSigned(v, base))
CORDEL_ARG_PAIR(unsigned short, unsigned int base, formatUnsigned(v, base, false))
CORDEL_ARG_PAIR(int, unsigned int base, base == 16 ? formatHexPattern(v) : formatSigned(v, base))
CORDEL_ARG_PAIR(unsigned int, unsigned int base, formatUnsigned(v, base, false))
CORDEL_ARG_PAIR(long, unsigned int base, base == 16 ? formatHexPattern(v) : formatSigned(v, base))
CORDEL_ARG_PAIR(unsigned long, unsigned int base, formatUnsigned(v, base, false))
CORDEL_ARG_PAIR(long long, unsigned int base, format64(static_cast<unsigned long long>(v), true, base))
CORDEL_ARG_PAIR(unsigned long long, unsigned int base, format64(v, false, base))
#define CORDEL_FLOAT_PARAMS unsigned int precision, char format
CORDEL_ARG_PAIR(float, CORDEL_FLOAT_PARAMS, formatFloating(v, precision, format))
CORDEL_ARG_PAIR(double, CORDEL_FLOAT_PARAMS, formatFloating(v, precision, format))
#undef CORDEL_FLOAT_PARAMS
#undef CORDEL_ARG_PAIR

// ---- text to number ----

namespace {

// Maps full-width digits, full stops and minus signs to ASCII; applied only to text holding bytes
// of 0x80 and above.
String normalizeWideCharacters(String const& s)
{
    shared_ptr<unsigned short[]> units = s.Unicode(String::UTF8);
    if (!units)
        return s;
    for (unsigned short* u = units.get(); *u; ++u) {
        if (*u >= 0xFF10 && *u <= 0xFF19)
            *u = static_cast<unsigned short>('0' + (*u - 0xFF10));
        else if (*u == 0xFF0E || *u == 0x3002)
            *u = '.';
        else if (*u == 0xFF0D || *u == 0x2212)
            *u = '-';
    }
    return String(units.get(), String::UTF8);
}

String normalizeNumberString(String const& s)
{
    if (s.IsEmpty())
        return s;
    String result = s;
    char const* point = std::localeconv()->decimal_point;
    char const separator = (point && *point) ? *point : '.';
    if (separator != '.') {
        // strtod follows the locale: let a "." written by the user mean the locale's separator,
        // and a "," too unless that is the separator itself.
        result = result.StripWhiteSpace().ReplaceChar('.', separator);
        if (separator != ',')
            result = result.ReplaceChar(',', separator);
    }
    for (char c : result.View())
        if (static_cast<unsigned char>(c) >= 0x80)
            return normalizeWideCharacters(result);
    return result;
}

int digitValue(unsigned char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 10;
    return 99;
}

// Parses an optionally signed integer of the given unsigned width: digits of the base, with only
// white space around them. Returns false on any fault, overflow included.
bool scanUInt(String const& text, unsigned int base, bool allowMinus, unsigned long long maximum,
              unsigned long long& magnitude, bool& negative)
{
    std::string_view const v = text.View();
    std::size_t i = 0;
    while (i < v.size() && Char::IsSpace(static_cast<unsigned char>(v[i])))
        ++i;
    negative = false;
    if (i < v.size() && (v[i] == '+' || (allowMinus && v[i] == '-')))
        negative = v[i++] == '-';
    if (base < 2 || base > 36 || i >= v.size() || digitValue(static_cast<unsigned char>(v[i])) >= int(base))
        return false;
    unsigned long long value = 0;
    for (int d; i < v.size() && (d = digitValue(static_cast<unsigned char>(v[i]))) < int(base); ++i) {
        if (value > maximum / base || (value == maximum / base && unsigned(d) > maximum % base))
            return false;
        value = value * base + unsigned(d);
    }
    for (; i < v.size(); ++i)
        if (!Char::IsSpace(static_cast<unsigned char>(v[i])))
            return false;
    magnitude = value;
    return true;
}

template <typename T>
T toInteger(String const& s, bool* ok, unsigned int base)
{
    using U = std::make_unsigned_t<T>;
    if (ok)
        *ok = false;
    unsigned long long magnitude = 0;
    bool negative = false;
    if (!scanUInt(normalizeNumberString(s), base, std::is_signed_v<T>, std::numeric_limits<U>::max(), magnitude, negative))
        return 0;
    T result;
    if constexpr (std::is_signed_v<T>) {
        unsigned long long const limit = static_cast<unsigned long long>(std::numeric_limits<T>::max());
        if (negative ? magnitude > limit + 1 : magnitude > limit)
            return 0;
        result = negative ? static_cast<T>(0ull - magnitude) : static_cast<T>(magnitude);
    } else {
        result = static_cast<T>(magnitude);
    }
    if (ok)
        *ok = true;
    return result;
}

} // namespace

short String::ToShort(bool* ok, unsigned int base) const { return toInteger<short>(*this, ok, base); }
unsigned short String::ToUShort(bool* ok, unsigned int base) const { return toInteger<unsigned short>(*this, ok, base); }
int String::ToInt(bool* ok, unsigned int base) const { return toInteger<int>(*this, ok, base); }
unsigned int String::ToUInt(bool* ok, unsigned int base) const { return toInteger<unsigned int>(*this, ok, base); }
long long String::ToInt64(bool* ok, unsigned int base) const { return toInteger<long long>(*this, ok, base); }
unsigned long long String::ToUInt64(bool* ok, unsigned int base) const { return toInteger<unsigned long long>(*this, ok, base); }

double String::ToDouble(bool* ok) const
{
    if (ok)
        *ok = false;
    if (IsEmpty())
        return 0;
    String const normalized = normalizeNumberString(*this);
    char* end = nullptr;
    double const value = std::strtod(normalized.c_str(), &end);
    if (ok && end == normalized.c_str() + normalized.Length() && normalized.Length() > 0)
        *ok = true;
    return value;
}

float String::ToFloat(bool* ok) const
{
    return static_cast<float>(ToDouble(ok));
}

} // namespace Cordel
