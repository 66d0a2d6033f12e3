#include <Cordel/Util/detail/PreferenceDocument.h>

#include <Cordel/Util/Base64.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace Cordel::Util::detail {

namespace {

using Bytes = std::vector<unsigned char>;
using tinyxml2::XMLElement;

char const rootName[] = "preferences";
char const stringKind[] = "string";
char const integerKind[] = "integer";
char const dataKind[] = "data";
char const realKind[] = "real";

std::optional<int> parseInt32(std::string_view text)
{
    bool const negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);
    if (text.empty() || text.size() > 10)
        return std::nullopt;
    long long value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    value = negative ? -value : value;
    if (value < -2147483648LL || value > 2147483647LL)
        return std::nullopt;
    return static_cast<int>(value);
}

PreferenceValue readEntry(XMLElement const& entry)
{
    PreferenceValue value;
    char const* content = entry.GetText();
    std::string_view const text = content ? content : "";
    if (std::strcmp(entry.Name(), stringKind) == 0) {
        char const* encoding = entry.Attribute("encoding");
        if (!encoding) {
            value.kind = PreferenceValue::Text;
            value.text = text;
        } else if (std::strcmp(encoding, "base64") == 0) {
            Bytes bytes;
            Base64Decode(String(text), bytes);
            value.kind = PreferenceValue::Text;
            value.text.assign(bytes.begin(), bytes.end());
        }
    } else if (std::strcmp(entry.Name(), integerKind) == 0) {
        if (auto number = parseInt32(text)) {
            value.kind = PreferenceValue::Number;
            value.number = *number;
        }
    } else if (std::strcmp(entry.Name(), dataKind) == 0) {
        value.kind = PreferenceValue::Data;
        Base64Decode(String(text), value.data);
    } else if (std::strcmp(entry.Name(), realKind) == 0) {
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value.real);
        if (error == std::errc() && end == text.data() + text.size() && !text.empty())
            value.kind = PreferenceValue::Real;
    }
    return value;
}

// Visits the entries that have a key; visit may delete the one it is given.
template <typename Element, typename Visit>
void forEachEntry(Element* root, Visit visit)
{
    for (Element* entry = root->FirstChildElement(); entry;) {
        Element* next = entry->NextSiblingElement();
        if (char const* key = entry->Attribute("key"))
            visit(entry, key);
        entry = next;
    }
}

// XML gives back neither carriage returns nor other control characters, nor white space alone,
// as they were.
bool survivesXml(std::string_view text)
{
    bool const blank = !text.empty() && text.find_first_not_of(" \t\n") == std::string_view::npos;
    return !blank && std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
    });
}

} // namespace

PreferenceDocument::PreferenceDocument()
{
    clear();
}

bool PreferenceDocument::Parse(std::string_view text)
{
    XMLElement const* root = nullptr;
    if (doc.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS)
        root = doc.RootElement();
    if (root && std::strcmp(root->Name(), rootName) == 0)
        return true;
    clear();
    return false;
}

std::string PreferenceDocument::Print() const
{
    tinyxml2::XMLPrinter printer;
    doc.Print(&printer);
    return std::string(printer.CStr(), std::size_t(printer.CStrSize() - 1));
}

std::optional<PreferenceValue> PreferenceDocument::Find(String const& key) const
{
    std::optional<PreferenceValue> found;
    forEachEntry(doc.RootElement(), [&](XMLElement const* entry, char const* k) {
        if (!found && key == k)
            found = readEntry(*entry);
    });
    return found;
}

void PreferenceDocument::CollectKeys(std::set<std::string>& keys) const
{
    forEachEntry(doc.RootElement(), [&](XMLElement const*, char const* key) { keys.insert(key); });
}

void PreferenceDocument::SetText(String const& key, std::string_view text)
{
    if (survivesXml(text))
        set(key, stringKind, std::string(text));
    else
        set(key, stringKind, Base64Encode(Bytes(text.begin(), text.end())).ToStdString(), "base64");
}

void PreferenceDocument::SetNumber(String const& key, int number)
{
    set(key, integerKind, std::to_string(number));
}

void PreferenceDocument::SetData(String const& key, std::vector<unsigned char> const& data)
{
    set(key, dataKind, Base64Encode(data).ToStdString());
}

void PreferenceDocument::SetReal(String const& key, float real)
{
    char text[64];
    auto const end = std::to_chars(text, text + sizeof text, real).ptr;
    set(key, realKind, std::string(text, end));
}

bool PreferenceDocument::Remove(String const& key)
{
    bool removed = false;
    forEachEntry(doc.RootElement(), [&](XMLElement* entry, char const* k) {
        if (key == k) {
            doc.RootElement()->DeleteChild(entry);
            removed = true;
        }
    });
    return removed;
}

void PreferenceDocument::clear()
{
    doc.Clear();
    doc.InsertEndChild(doc.NewDeclaration());
    doc.InsertEndChild(doc.NewElement(rootName));
}

void PreferenceDocument::set(String const& key, char const* kind, std::string const& text, char const* encoding)
{
    Remove(key);
    XMLElement* entry = doc.NewElement(kind);
    entry->SetAttribute("key", key.c_str());
    if (encoding)
        entry->SetAttribute("encoding", encoding);
    if (!text.empty())
        entry->SetText(text.c_str());
    doc.RootElement()->InsertEndChild(entry);
}

} // namespace Cordel::Util::detail
