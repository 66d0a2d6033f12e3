#include <Cordel/common/String.h>

#include <algorithm>
#include <cstring>

namespace Cordel {

namespace {

unsigned char fold(unsigned char c, bool caseSensitive)
{
    return caseSensitive ? c : Char::FoldAscii(c);
}

bool sameBytes(char const* a, char const* b, std::size_t n, bool caseSensitive)
{
    for (std::size_t i = 0; i < n; ++i)
        if (fold(static_cast<unsigned char>(a[i]), caseSensitive) != fold(static_cast<unsigned char>(b[i]), caseSensitive))
            return false;
    return true;
}

int compareBytes(std::string_view a, std::string_view b)
{
    std::size_t const n = std::min(a.size(), b.size());
    int const c = n ? std::memcmp(a.data(), b.data(), n) : 0; // memcmp compares as unsigned char
    if (c != 0)
        return c;
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

std::string_view viewOf(char const* s)
{
    return s ? std::string_view(s) : std::string_view();
}

} // namespace

String::String() = default;

String::String(char const* s)
{
    if (s && *s)
        replaceText(new std::string(s));
}

String::String(std::string_view s)
{
    if (!s.empty())
        replaceText(new std::string(s));
}

String::String(char const* s, unsigned int /*encoding*/) : String(s) {}

String& String::operator=(char const* s)
{
    replaceText(s && *s ? new std::string(s) : nullptr);
    return *this;
}

void String::Assign(std::string_view bytes)
{
    if (bytes.empty())
        replaceText(nullptr);
    else if (text && text.unique())
        text->assign(bytes);
    else
        replaceText(new std::string(bytes));
}

std::string& String::ownText()
{
    if (!text)
        replaceText(new std::string());
    else if (!text.unique())
        replaceText(new std::string(*text));
    return *text;
}

// ---- comparison ----

bool operator==(String const& a, String const& b) { return a.View() == b.View(); }
bool operator==(String const& a, char const* b) { return a.View() == viewOf(b); }
bool operator<(String const& a, String const& b) { return compareBytes(a.View(), b.View()) < 0; }
bool operator<(String const& a, char const* b) { return compareBytes(a.View(), viewOf(b)) < 0; }
bool operator<=(String const& a, String const& b) { return compareBytes(a.View(), b.View()) <= 0; }
bool operator<=(String const& a, char const* b) { return compareBytes(a.View(), viewOf(b)) <= 0; }

// ---- searching ----

checked_value<unsigned int> String::Find(char c, unsigned int from, bool caseSensitive) const
{
    unsigned int const n = Length();
    unsigned char const wanted = fold(static_cast<unsigned char>(c), caseSensitive);
    for (unsigned int i = from; i < n; ++i)
        if (fold(static_cast<unsigned char>((*text)[i]), caseSensitive) == wanted)
            return i;
    return {};
}

checked_value<unsigned int> String::Find(char const* s, unsigned int from, bool caseSensitive) const
{
    unsigned int const n = Length();
    std::size_t const m = s ? std::strlen(s) : 0;
    if (from >= n || m > n)
        return {};
    for (unsigned int i = from; i + m <= n; ++i)
        if (sameBytes(text->data() + i, s, m, caseSensitive))
            return i;
    return {};
}

checked_value<unsigned int> String::FindRev(char c, checked_value<unsigned int> const& from, bool caseSensitive) const
{
    unsigned int const n = Length();
    if (n == 0)
        return {};
    unsigned int i = from.IsSet() ? std::min(from.Get(), n - 1) : n - 1;
    unsigned char const wanted = fold(static_cast<unsigned char>(c), caseSensitive);
    for (;; --i) {
        if (fold(static_cast<unsigned char>((*text)[i]), caseSensitive) == wanted)
            return i;
        if (i == 0)
            return {};
    }
}

bool String::BeginsWith(String const& prefix, bool caseSensitive) const
{
    return prefix.Length() <= Length() && sameBytes(c_str(), prefix.c_str(), prefix.Length(), caseSensitive);
}

bool String::EndsWith(String const& suffix, bool caseSensitive) const
{
    return suffix.Length() <= Length()
        && sameBytes(c_str() + Length() - suffix.Length(), suffix.c_str(), suffix.Length(), caseSensitive);
}

// ---- substrings ----

String String::Left(unsigned int n) const
{
    return n >= Length() ? *this : String(View().substr(0, n));
}

String String::Right(unsigned int n) const
{
    return n >= Length() ? *this : String(View().substr(Length() - n));
}

String String::Mid(unsigned int pos, checked_value<unsigned int> const& count) const
{
    if (pos >= Length())
        return String();
    if (pos == 0 && (!count.IsSet() || count.Get() >= Length()))
        return *this;
    return String(View().substr(pos, count.IsSet() ? count.Get() : std::string_view::npos));
}

// ---- mutators ----

void String::Truncate(unsigned int n)
{
    if (n < Length())
        replaceText(n ? new std::string(View().substr(0, n)) : nullptr);
}

void String::Insert(unsigned int pos, String const& s)
{
    if (s.IsEmpty())
        return;
    std::string_view const v = View();
    pos = std::min(pos, Length());
    auto* fresh = new std::string();
    fresh->reserve(v.size() + s.Length());
    fresh->append(v.substr(0, pos)).append(s.View()).append(v.substr(pos));
    replaceText(fresh);
}

void String::Remove(unsigned int pos, checked_value<unsigned int> const& count)
{
    if (pos >= Length() || (count.IsSet() && count.Get() == 0))
        return;
    std::string_view const v = View();
    std::size_t const end = count.IsSet() ? std::min<std::size_t>(v.size(), std::size_t(pos) + count.Get()) : v.size();
    auto* fresh = new std::string(v.substr(0, pos));
    fresh->append(v.substr(end));
    replaceText(fresh->empty() ? (delete fresh, nullptr) : fresh);
}

// An unshared text is extended where it stands (same result, same count cell, no copy); a shared
// one is copied first, so the other owners keep what they had.
String& String::operator+=(String const& s)
{
    if (!s.IsEmpty())
        appendBytes(s.View());
    return *this;
}

String& String::operator+=(char const* s)
{
    if (s && *s)
        appendBytes(std::string_view(s));
    return *this;
}

String& String::operator+=(char c)
{
    appendBytes(std::string_view(&c, 1));
    return *this;
}

void String::appendBytes(std::string_view bytes)
{
    if (text && text.unique()) {
        text->append(bytes);
        return;
    }
    auto* fresh = new std::string();
    fresh->reserve(Length() + bytes.size());
    fresh->append(View()).append(bytes);
    replaceText(fresh);
}

String operator+(String const& a, String const& b)
{
    String r(a);
    return r += b;
}

String operator+(String const& a, char const* b)
{
    String r(a);
    return r += b;
}

String operator+(char const* a, String const& b)
{
    String r(a);
    return r += b;
}

char* String::detachAndExtend(unsigned int n)
{
    auto* fresh = new std::string(View());
    if (n >= fresh->size())
        fresh->resize(std::size_t(n) + 1, '\0');
    replaceText(fresh);
    return text->data();
}

// ---- derived texts ----

String String::Replace(String const& from, String const& to) const
{
    if (from.IsEmpty() || IsEmpty())
        return *this;
    std::string_view const v = View(), f = from.View(), t = to.View();
    std::string result;
    std::size_t pos = 0;
    for (std::size_t hit; (hit = v.find(f, pos)) != std::string_view::npos; pos = hit + f.size())
        result.append(v.substr(pos, hit - pos)).append(t);
    result.append(v.substr(pos));
    return String(std::string_view(result));
}

String String::ReplaceChar(Char const& from, Char const& to) const
{
    if (IsEmpty())
        return *this;
    std::string result(View());
    std::replace(result.begin(), result.end(), from.ToAscii(), to.ToAscii());
    return String(std::string_view(result));
}

String String::ToUpper() const
{
    std::string result(View());
    for (char& c : result)
        c = Char(c).ToUpper().ToAscii();
    return String(std::string_view(result));
}

String String::ToLower() const
{
    std::string result(View());
    for (char& c : result)
        c = Char(c).ToLower().ToAscii();
    return String(std::string_view(result));
}

String String::StripWhiteSpace() const
{
    std::string_view v = View();
    while (!v.empty() && Char::IsSpace(static_cast<unsigned char>(v.front())))
        v.remove_prefix(1);
    while (!v.empty() && Char::IsSpace(static_cast<unsigned char>(v.back())))
        v.remove_suffix(1);
    return v.size() == Length() ? *this : String(v);
}

String String::SimplifyWhiteSpace() const
{
    std::string result;
    bool pendingSpace = false;
    for (char c : View()) {
        if (Char::IsSpace(static_cast<unsigned char>(c))) {
            pendingSpace = !result.empty();
            continue;
        }
        if (pendingSpace)
            result.push_back(' ');
        pendingSpace = false;
        result.push_back(c);
    }
    return String(std::string_view(result));
}

void String::Split(char sep, std::vector<String>& out) const
{
    out.clear();
    if (IsEmpty())
        return;
    std::string_view const v = View();
    std::size_t pos = 0;
    for (std::size_t hit; (hit = v.find(sep, pos)) != std::string_view::npos; pos = hit + 1)
        out.emplace_back(v.substr(pos, hit - pos));
    out.emplace_back(v.substr(pos));
}

String String::Join(String const& sep, std::vector<String> const& parts)
{
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i)
            result.append(sep.View());
        result.append(parts[i].View());
    }
    return String(std::string_view(result));
}

// ---- placeholders ----

std::size_t String::findPlaceholder() const
{
    std::string_view const v = View();
    std::size_t best = std::string_view::npos;
    char bestDigit = 0;
    for (std::size_t i = v.find('%'); i != std::string_view::npos && i + 1 < v.size(); i = v.find('%', i + 1)) {
        char const d = v[i + 1];
        if (d >= '0' && d <= '9' && (best == std::string_view::npos || d < bestDigit)) {
            best = i;
            bestDigit = d;
            if (d == '0')
                break; // nothing can beat the leftmost "%0"
        }
    }
    return best;
}

String String::argView(std::string_view a) const
{
    std::string_view const v = View();
    std::size_t const p = findPlaceholder();
    auto* fresh = new std::string();
    fresh->reserve(v.size() + a.size());
    if (p == std::string_view::npos)
        fresh->append(v).append(a);
    else
        fresh->append(v.substr(0, p)).append(a).append(v.substr(p + 2));
    String r;
    r.replaceText(fresh);
    return r;
}

String String::argViewInPlace(std::string_view a)
{
    std::size_t const p = findPlaceholder();
    std::string& t = ownText();
    if (t.capacity() < t.size() + a.size())
        t.reserve(t.size() + a.size() + 32); // room for the arguments still to come
    if (p == std::string::npos)
        t.append(a);
    else
        t.replace(p, 2, a);
    return std::move(*this);
}

String String::Arg(String const& a) const& { return argView(a.View()); }
String String::Arg(String const& a) && { return argViewInPlace(a.View()); }
String String::Arg(char const* a) const& { return argView(viewOf(a)); }
String String::Arg(char const* a) && { return argViewInPlace(viewOf(a)); }
String String::Arg(char c) const& { return argView(std::string_view(&c, 1)); }
String String::Arg(char c) && { return argViewInPlace(std::string_view(&c, 1)); }

} // namespace Cordel
