#include <Cordel/Util/ConfigFile.h>

#include <Cordel/Util/Exception.h>
#include <Cordel/Util/detail/AtomicFileStore.h>
#include <Cordel/Util/detail/Groups.h>
#include <Cordel/Util/detail/PreferenceDocument.h>
#include <Cordel/Util/detail/Utf8.h>
#include <Cordel/Util/detail/XdgFolders.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace Cordel::Util {

namespace {

using Bytes = std::vector<unsigned char>;
using detail::AtomicFileStore;
using detail::PreferenceDocument;
using detail::PreferenceValue;

// A preference file is small; anything far bigger is not one of ours and is not read into memory.
constexpr std::size_t maxFileSize = std::size_t(64) << 20;

// Keys become XML attributes, which cannot hold control characters faithfully.
bool validKey(String const& key)
{
    return detail::IsPrintableUtf8(key.View());
}

// Room in a file name for the longest name made from the identifier: "<name>.xml.corrupt-XXXXXX".
constexpr std::size_t maxNameBytes = NAME_MAX - std::char_traits<char>::length(".xml.corrupt-XXXXXX");

// Why the identifier cannot name a file of its own inside the scope's folder; null when it can.
char const* nameFault(String const& name)
{
    std::string_view const n = name.View();
    if (n.empty())
        return "is empty";
    if (n == "." || n == "..")
        return "is \".\" or \"..\"";
    if (n.find('/') != std::string_view::npos)
        return "holds \"/\"";
    if (!detail::IsPrintableUtf8(n))
        return "holds a control character or bytes that are not UTF-8";
    if (n.size() > maxNameBytes)
        return "is longer than a file name may be";
    return nullptr;
}

std::string folderOf(PreferenceDomain domain)
{
    return domain == CurrentUserDomain ? detail::UserConfigFolder() : detail::SystemConfigFolder();
}

// What one user keeps is for that user's eyes only.
std::optional<AtomicFileStore> storeOf(String const& name, PreferenceDomain domain)
{
    std::string const folder = folderOf(domain);
    if (folder.empty() || nameFault(name))
        return std::nullopt;
    bool const user = domain == CurrentUserDomain;
    return AtomicFileStore(folder + "/" + name.ToStdString() + ".xml", user ? 0600 : 0644, user ? 0700 : 0755);
}

String systemFault(char const* what, std::string const& path)
{
    return String("can't %1 %2: %3").Arg(what).Arg(String(path)).Arg(std::strerror(errno));
}

enum class Loaded { Missing, Parsed, Corrupt, Unreadable };

// Unless the file parses, doc is left empty.
Loaded load(AtomicFileStore const& store, PreferenceDocument& doc)
{
    AtomicFileStore::Contents const contents = store.Read(maxFileSize);
    switch (contents.state) {
    case AtomicFileStore::State::Missing: return Loaded::Missing;
    case AtomicFileStore::State::Unusable: return Loaded::Corrupt;
    case AtomicFileStore::State::Unreadable: return Loaded::Unreadable;
    case AtomicFileStore::State::Read: break;
    }
    return doc.Parse(contents.text) ? Loaded::Parsed : Loaded::Corrupt;
}

std::optional<PreferenceValue> lookupIn(String const& name, PreferenceDomain domain, String const& key)
{
    auto const store = storeOf(name, domain);
    PreferenceDocument doc;
    if (!store || load(*store, doc) != Loaded::Parsed)
        return std::nullopt;
    return doc.Find(key);
}

// The current user's value hides all users' value of the same name, whatever its kind.
std::optional<PreferenceValue> lookup(String const& name, String const& key)
{
    if (!validKey(key))
        return std::nullopt;
    if (auto value = lookupIn(name, CurrentUserDomain, key))
        return value;
    return lookupIn(name, AnyUserDomain, key);
}

// Reads, changes and replaces one scope's file under its lock. change returns whether it changed
// anything; nothing is written when it did not. A file that does not parse starts afresh once it
// is out of the way. Returns why nothing could be written, or an empty text.
String modify(String const& name, PreferenceDomain domain, std::function<bool(PreferenceDocument&)> const& change)
{
    if (char const* fault = nameFault(name))
        return String("the application name %1").Arg(fault);
    auto const store = storeOf(name, domain);
    if (!store)
        return "there is no folder for preferences";
    auto const lock = store->TakeLock();
    if (!lock)
        return systemFault("lock", store->GetPath() + ".lock");
    PreferenceDocument doc;
    Loaded const loaded = load(*store, doc);
    if (loaded == Loaded::Unreadable)
        return systemFault("read", store->GetPath());
    if (loaded == Loaded::Corrupt && !store->MoveAside())
        return systemFault("move aside the unusable", store->GetPath());
    if (change(doc) && !store->Replace(doc.Print()))
        return systemFault("write", store->GetPath());
    return String();
}

// Sets the key's value through set, which always changes the file.
String setValue(String const& name, PreferenceDomain domain, String const& key,
                std::function<void(PreferenceDocument&)> const& set)
{
    if (!validKey(key))
        return "the key holds a control character or bytes that are not UTF-8";
    return modify(name, domain, [&](PreferenceDocument& doc) {
        set(doc);
        return true;
    });
}

// The 8-byte block the specified float form has: four zero bytes, then the float's own.
Bytes floatBlock(float value)
{
    Bytes block(8, 0);
    std::memcpy(block.data() + 4, &value, sizeof value);
    return block;
}

void collectKeys(String const& name, PreferenceDomain domain, std::set<std::string>& keys)
{
    auto const store = storeOf(name, domain);
    PreferenceDocument doc;
    if (store && load(*store, doc) == Loaded::Parsed)
        doc.CollectKeys(keys);
}

bool isAdministrator()
{
    char const* user = std::getenv("USER");
    return user && detail::IsInGroup(user, "admin");
}

} // namespace

ConfigFile::ConfigFile(String const& name) : name(name), admin(isAdministrator()) {}

ConfigFile::ConfigFile(String const& name, bool admin) : name(name), admin(admin) {}

void ConfigFile::SetString(String const& key, String const& value)
{
    writeFailure = detail::IsValidUtf8(value.View())
                       ? setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetText(key, value.View()); })
                       : String("the text holds bytes that are not UTF-8");
}

void ConfigFile::SetInt(String const& key, int value)
{
    writeFailure = setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetNumber(key, value); });
}

void ConfigFile::SetUInt(String const& key, unsigned int value)
{
    SetInt(key, static_cast<int>(value));
}

void ConfigFile::SetBool(String const& key, bool value)
{
    SetInt(key, value ? 1 : 0);
}

void ConfigFile::SetBinary(String const& key, std::vector<unsigned char> const& value)
{
    writeFailure = setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetData(key, value); });
}

void ConfigFile::SetFloat(String const& key, float value)
{
    writeFailure = setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetReal(key, value); });
}

String ConfigFile::GetString(String const& key, String const& fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == PreferenceValue::Text ? String(std::string_view(value->text)) : fallback;
}

int ConfigFile::GetInt(String const& key, int fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == PreferenceValue::Number ? value->number : fallback;
}

unsigned int ConfigFile::GetUInt(String const& key, unsigned int fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == PreferenceValue::Number ? static_cast<unsigned int>(value->number) : fallback;
}

bool ConfigFile::GetBool(String const& key, bool fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == PreferenceValue::Number ? value->number != 0 : fallback;
}

float ConfigFile::GetFloat(String const& key, float fallback) const
{
    auto const value = lookup(name, key);
    if (value && value->kind == PreferenceValue::Real)
        return value->real;
    if (!value || value->kind != PreferenceValue::Data)
        return fallback;
    Bytes const& block = value->data;
    float result = fallback;
    if (block.size() == 8 && block[0] == 0 && block[1] == 0 && block[2] == 0 && block[3] == 0) {
        std::memcpy(&result, block.data() + 4, sizeof result);
    } else if (block.size() == 4) {
        std::uint32_t const bits = std::uint32_t(block[0]) << 24 | std::uint32_t(block[1]) << 16 |
                                   std::uint32_t(block[2]) << 8 | std::uint32_t(block[3]);
        std::memcpy(&result, &bits, sizeof result);
    }
    return result;
}

void ConfigFile::GetBinary(String const& key, std::vector<unsigned char>& out) const
{
    auto value = lookup(name, key);
    if (value && value->kind == PreferenceValue::Data)
        out = std::move(value->data);
    else if (value && value->kind == PreferenceValue::Real)
        out = floatBlock(value->real);
    else
        out.clear();
}

bool ConfigFile::RemoveValue(String const& key)
{
    writeFailure = validKey(key) ? modify(name, writeDomain(), [&](PreferenceDocument& doc) { return doc.Remove(key); })
                                 : String("the key holds a control character or bytes that are not UTF-8");
    return true;
}

void ConfigFile::GetValueNames(std::vector<String>& names, String const&) const
{
    std::set<std::string> keys;
    collectKeys(name, CurrentUserDomain, keys);
    collectKeys(name, AnyUserDomain, keys);
    names.clear();
    for (std::string const& key : keys)
        names.emplace_back(std::string_view(key));
}

ConfigFile::ValueKind ConfigFile::GetValueKind(String const& key) const
{
    auto const value = lookup(name, key);
    if (!value)
        return ValueKind::Missing;
    switch (value->kind) {
    case PreferenceValue::Text: return ValueKind::String;
    case PreferenceValue::Number: return ValueKind::Integer;
    case PreferenceValue::Data: return ValueKind::Binary;
    case PreferenceValue::Real: return ValueKind::Float;
    case PreferenceValue::Unusable: break;
    }
    return ValueKind::Unusable;
}

void ConfigFile::CheckName(String const& name)
{
    if (char const* fault = nameFault(name))
        throw Exception::Base(String("the application name \"%1\" %2").Arg(name).Arg(fault));
}

void ConfigFile::GetKeyNames(std::vector<String>& names, String const&) const
{
    names.clear();
}

void ConfigFile::Synchronize()
{
    detail::SyncFolder(folderOf(CurrentUserDomain));
    detail::SyncFolder(folderOf(AnyUserDomain));
}

} // namespace Cordel::Util
