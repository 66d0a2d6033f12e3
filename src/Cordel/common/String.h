#pragma once
// String: the library's one text type. 8-bit text without interpretation, shared copy-on-write.
//
// The only member is a handle to an owned std::string; a null object means the empty text.
// Copies share the text and bump the count. A mutator builds the new text first and then
// replaces the handle: when it held the last reference the old text is freed and the count cell
// is reused; otherwise the other owners keep the old text and this string gets a fresh cell.
// Members that return a new String never change this one.
//
// Messages are filled in with Arg: each call replaces the lowest-numbered placeholder "%0" to
// "%9" (its leftmost occurrence) and appends the argument when there is none.

#include <Cordel/common/Char.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/Types.h>

#include <string>
#include <string_view>
#include <vector>

namespace Cordel {

class CORDEL_API String {
public:
    // Encoding selectors for the converting constructors and Unicode().
    enum Encoding : unsigned int {
        MacRoman = 0,
        UTF8 = 1,
        Application = 2, // the current locale's codeset
    };
    static constexpr unsigned int NoPrecision = 0xFFFFFFFFu;

    String();
    String(char const* text);
    explicit String(std::string_view text);
    // 8-bit text in the given encoding. The stored text is bytes without interpretation, so the
    // bytes are kept as they are whatever the selector.
    String(char const* text, unsigned int encoding);
    // NUL-terminated UTF-16 converted to 8-bit text in the given encoding. Empty when the input is
    // null or empty, holds 100000 units or more without a terminator, or does not convert.
    String(unsigned short const* utf16, unsigned int encoding);
    String(String const& other) = default;
    String(String&& other) noexcept = default;
    String& operator=(String const& other) = default;
    String& operator=(String&& other) noexcept = default;
    String& operator=(char const* text);
    ~String() = default;

    // The text as UTF-16 with a 0 unit after it, converted from the given encoding; null when the
    // text is empty, longer than 100000 bytes before its first NUL, or does not convert.
    shared_ptr<unsigned short[]> Unicode(unsigned int encoding) const;

    unsigned int Length() const { return text ? static_cast<unsigned int>(text->size()) : 0; }
    bool IsEmpty() const { return Length() == 0; }
    // The bytes, NUL-terminated; never null.
    char const* c_str() const { return text ? text->c_str() : ""; }
    std::string_view View() const { return text ? std::string_view(*text) : std::string_view(); }
    std::string ToStdString() const { return std::string(View()); }
    Char operator[](unsigned int i) const { return Char((*text)[i]); }

    // Searches. Results are unset when nothing matches, the text is empty or from is past the end.
    // Without case sensitivity both sides are folded with ASCII rules only.
    checked_value<unsigned int> Find(char c, unsigned int from = 0, bool caseSensitive = true) const;
    checked_value<unsigned int> Find(char const* s, unsigned int from = 0, bool caseSensitive = true) const;
    checked_value<unsigned int> Find(String const& s, unsigned int from = 0, bool caseSensitive = true) const
    {
        return Find(s.c_str(), from, caseSensitive);
    }
    // The last occurrence at or before from; an unset from means the end.
    checked_value<unsigned int> FindRev(char c, checked_value<unsigned int> const& from = {},
                                        bool caseSensitive = true) const;
    bool BeginsWith(String const& prefix, bool caseSensitive = true) const;
    bool EndsWith(String const& suffix, bool caseSensitive = true) const;

    String Left(unsigned int n) const;
    String Right(unsigned int n) const;
    String Mid(unsigned int pos, checked_value<unsigned int> const& count = {}) const;

    // Mutators. Positions past the end are clamped to the end.
    void Truncate(unsigned int n);
    void Insert(unsigned int pos, String const& s);
    void Remove(unsigned int pos, checked_value<unsigned int> const& count = {});
    String& operator+=(String const& s);
    String& operator+=(char const* s);
    String& operator+=(char c);

    String Replace(String const& from, String const& to) const;
    String ReplaceChar(Char const& from, Char const& to) const;
    String ToUpper() const;
    String ToLower() const;
    String StripWhiteSpace() const;
    String SimplifyWhiteSpace() const;

    // Cuts at every sep. out is cleared first. An empty text gives no pieces; any other text gives
    // one piece more than it holds separators.
    void Split(char sep, std::vector<String>& out) const;
    static String Join(String const& sep, std::vector<String> const& parts);

    // Makes the text unshared and at least n + 1 bytes long, new bytes zero, and returns its bytes:
    // the way to get a writable buffer of n bytes and a terminator.
    char* detachAndExtend(unsigned int n);

    // Placeholder substitution. The rvalue forms fill an unshared temporary in place, which gives
    // the same result without copying the text at every step of a chain.
    String Arg(String const& a) const&;
    String Arg(String const& a) &&;
    String Arg(char const* a) const&;
    String Arg(char const* a) &&;
    String Arg(char c) const&;
    String Arg(char c) &&;
    String Arg(Char const& c) const& { return Arg(c.ToAscii()); }
    String Arg(Char const& c) && { return std::move(*this).Arg(c.ToAscii()); }
    String Arg(short v, unsigned int base = 10) const&;
    String Arg(short v, unsigned int base = 10) &&;
    String Arg(unsigned short v, unsigned int base = 10) const&;
    String Arg(unsigned short v, unsigned int base = 10) &&;
    String Arg(int v, unsigned int base = 10) const&;
    String Arg(int v, unsigned int base = 10) &&;
    String Arg(unsigned int v, unsigned int base = 10) const&;
    String Arg(unsigned int v, unsigned int base = 10) &&;
    String Arg(long v, unsigned int base = 10) const&;
    String Arg(long v, unsigned int base = 10) &&;
    String Arg(unsigned long v, unsigned int base = 10) const&;
    String Arg(unsigned long v, unsigned int base = 10) &&;
    String Arg(long long v, unsigned int base = 10) const&;
    String Arg(long long v, unsigned int base = 10) &&;
    String Arg(unsigned long long v, unsigned int base = 10) const&;
    String Arg(unsigned long long v, unsigned int base = 10) &&;
    String Arg(float v, unsigned int precision = NoPrecision, char format = 'f') const&;
    String Arg(float v, unsigned int precision = NoPrecision, char format = 'f') &&;
    String Arg(double v, unsigned int precision = NoPrecision, char format = 'f') const&;
    String Arg(double v, unsigned int precision = NoPrecision, char format = 'f') &&;

    // Number formatting. 32-bit forms accept bases 2 to 36 (others mean 10); the 64-bit forms know
    // only 16 ("%llX") and decimal. Floating point: format f F e E g G (others mean f), precision
    // clamped to 99, NoPrecision for the C library's default.
    static String Number(int v, unsigned int base = 10);
    static String Number(unsigned int v, unsigned int base = 10);
    static String Number(long v, unsigned int base = 10);
    static String Number(unsigned long v, unsigned int base = 10);
    static String Number(long long v, unsigned int base = 10);
    static String Number(unsigned long long v, unsigned int base = 10);
    static String Number(float v, unsigned int precision = NoPrecision, char format = 'f');
    static String Number(double v, unsigned int precision = NoPrecision, char format = 'f');

    // Text to number. ok, when given, is set false first and true only on success; a failed
    // integer conversion returns 0, a failed floating-point one what strtod made of the text.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;
    float ToFloat(bool* ok = nullptr) const;
    double ToDouble(bool* ok = nullptr) const;

    // The handle itself, for callers that need to observe sharing.
    shared_ptr<std::string> const& GetHandle() const { return text; }

    // Makes this string hold the given bytes, as assigning String(bytes) would, but overwrites
    // an unshared text in place: a reader that refills one String value after another keeps its
    // storage and spares an allocation and a free per value.
    void Assign(std::string_view bytes);

private:
    void replaceText(std::string* fresh) { text.reset(fresh); }
    void appendBytes(std::string_view bytes);
    // The unshared text of an rvalue, ready to be edited in place (made unique first).
    std::string& ownText();
    // Position of the placeholder Arg replaces, or npos.
    std::size_t findPlaceholder() const;
    String argView(std::string_view a) const;
    String argViewInPlace(std::string_view a);

    shared_ptr<std::string> text;
};

CORDEL_API bool operator==(String const& a, String const& b);
CORDEL_API bool operator==(String const& a, char const* b);
CORDEL_API bool operator<(String const& a, String const& b);
CORDEL_API bool operator<(String const& a, char const* b);
CORDEL_API bool operator<=(String const& a, String const& b);
CORDEL_API bool operator<=(String const& a, char const* b);
inline bool operator!=(String const& a, String const& b) { return !(a == b); }
inline bool operator!=(String const& a, char const* b) { return !(a == b); }
inline bool operator>(String const& a, String const& b) { return b < a; }
inline bool operator>=(String const& a, String const& b) { return b <= a; }

CORDEL_API String operator+(String const& a, String const& b);
CORDEL_API String operator+(String const& a, char const* b);
CORDEL_API String operator+(char const* a, String const& b);

} // namespace Cordel
