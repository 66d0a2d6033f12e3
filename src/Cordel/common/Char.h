#pragma once
// Char: one 8-bit code unit, and CHAR_CATEGORIES, the classification of the 256 byte values.

#include <Cordel/common/Export.h>

namespace Cordel {

// For each byte value, the Unicode general category of the Latin-1 code point with that value.
// The codes follow the enumeration: 0 none, 1 non-spacing mark, 2 spacing combining mark,
// 3 enclosing mark, 4 decimal digit, 5 letter number, 6 other number, 7 space separator,
// 8 line separator, 9 paragraph separator, 10 control, 11 format, 12 surrogate, 13 private use,
// 14 unassigned, 15 upper-case letter, 16 lower-case letter, 17 title-case letter,
// 18 modifier letter, 19 other letter, 20 connector punctuation, 21 dash, 22 open, 23 close,
// 24 initial quote, 25 final quote, 26 other punctuation, 27 math symbol, 28 currency symbol,
// 29 modifier symbol, 30 other symbol.
extern CORDEL_API unsigned char const CHAR_CATEGORIES[256];

class Char {
public:
    enum Category : unsigned char {
        DecimalDigit = 4,
        OtherNumber = 6,
        SpaceSeparator = 7,
        LineSeparator = 8,
        ParagraphSeparator = 9,
        Control = 10,
        UpperCaseLetter = 15,
        LowerCaseLetter = 16,
    };

    constexpr Char() : unit(0) {}
    constexpr Char(char c) : unit(static_cast<unsigned char>(c)) {}

    constexpr char ToAscii() const { return static_cast<char>(unit); }
    constexpr unsigned char Cell() const { return unit; }
    unsigned char GetCategory() const { return CHAR_CATEGORIES[unit]; }

    // White space: 0x20, 0x09 to 0x0D, or any space, line or paragraph separator (so 0xA0 too).
    static bool IsSpace(unsigned char c)
    {
        unsigned char const category = CHAR_CATEGORIES[c];
        return c == 0x20 || (c >= 0x09 && c <= 0x0D) || (category >= SpaceSeparator && category <= ParagraphSeparator);
    }
    static bool IsDigit(unsigned char c) { return CHAR_CATEGORIES[c] == DecimalDigit; }
    bool IsSpace() const { return IsSpace(unit); }
    bool IsDigit() const { return IsDigit(unit); }
    bool IsLetter() const { return GetCategory() == UpperCaseLetter || GetCategory() == LowerCaseLetter; }

    // ASCII case mapping only; bytes above 0x7F are left as they are.
    static constexpr unsigned char FoldAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + 32 : c; }
    constexpr Char ToLower() const { return Char(static_cast<char>(FoldAscii(unit))); }
    constexpr Char ToUpper() const { return Char(static_cast<char>((unit >= 'a' && unit <= 'z') ? unit - 32 : unit)); }

    friend constexpr bool operator==(Char a, Char b) { return a.unit == b.unit; }
    friend constexpr bool operator<(Char a, Char b) { return a.unit < b.unit; }

private:
    unsigned char unit;
};

} // namespace Cordel
