#include <Cordel/Util/ConfigFile.h>

#include <Cordel/Util/detail/AtomicFileStore.h>
#include <Cordel/Util/detail/Groups.h>
#include <Cordel/Util/detail/PreferenceDocument.h>
#include <Cordel/Util/detail/Utf8.h>
#include <Cordel/Util/detail/XdgFolders.h>

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

// The identifier names a file of its own inside the scope's folder.
bool validName(String const& name)
{
    std::string_view const n = name.View();
    return !n.empty() && name != "." && name != ".." && n.find('/') == std::string_view::npos &&
           detail::IsPrintableUtf8(n);
}

std::string folderOf(PreferenceDomain domain)
{
    return domain == CurrentUserDomain ? detail::UserConfigFolder() : detail::SystemConfigFolder();
}

// What one user keeps is for that user's eyes only.
std::optional<AtomicFileStore> storeOf(String const& name, PreferenceDomain domain)
{
    std::string const folder = folderOf(domain);
    if (folder.empty() || !validName(name))
        return std::nullopt;
    bool const user = domain == CurrentUserDomain;
    return AtomicFileStore(folder + "/" + name.ToStdString() + ".xml", user ? 0600 : 0644, user ? 0700 : 0755);
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
// is out of the way.
void modify(String const& name, PreferenceDomain domain, std::function<bool(PreferenceDocument&)> const& change)
{
    auto const store = storeOf(name, domain);
    if (!store)
        return;
    auto const lock = store->TakeLock();
    if (!lock)
        return;
    PreferenceDocument doc;
    Loaded const loaded = load(*store, doc);
    if (loaded == Loaded::Unreadable || (loaded == Loaded::Corrupt && !store->MoveAside()))
        return;
    if (change(doc))
        store->Replace(doc.Print());
}

// Sets the key's value through set, which always changes the file.
void setValue(String const& name, PreferenceDomain domain, String const& key,
              std::function<void(PreferenceDocument&)> const& set)
{
    if (!validKey(key))
        return;
    modify(name, domain, [&](PreferenceDocument& doc) {
        set(doc);
        return true;
    });
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
    if (detail::IsValidUtf8(value.View()))
        setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetText(key, value.View()); });
}

void ConfigFile::SetInt(String const& key, int value)
{
    setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetNumber(key, value); });
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
    setValue(name, writeDomain(), key, [&](PreferenceDocument& doc) { doc.SetData(key, value); });
}

void ConfigFile::SetFloat(String const& key, float value)
{
    Bytes block(8, 0);
    std::memcpy(block.data() + 4, &value, sizeof value);
    SetBinary(key, block);
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
    else
        out.clear();
}

bool ConfigFile::RemoveValue(String const& key)
{
    if (validKey(key))
        modify(name, writeDomain(), [&](PreferenceDocument& doc) { return doc.Remove(key); });
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
