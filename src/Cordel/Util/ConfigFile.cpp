#include <Cordel/Util/ConfigFile.h>

#include <Cordel/Util/Base64.h>

#include <tinyxml2.h>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

// A preference file is small; anything far bigger is not one of ours and is not read into memory.
constexpr off_t maxFileSize = off_t(64) << 20;
char const rootName[] = "preferences";
char const stringKind[] = "string";
char const integerKind[] = "integer";
char const dataKind[] = "data";

bool validUtf8(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size()) {
        unsigned char const c = static_cast<unsigned char>(text[i]);
        int const extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (extra < 0 || text.size() - i <= std::size_t(extra))
            return false;
        unsigned int code = extra == 0 ? c : c & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k) {
            unsigned char const next = static_cast<unsigned char>(text[i + std::size_t(k)]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (next & 0x3F);
        }
        unsigned int const least[] = {0, 0x80, 0x800, 0x10000};
        if (code < least[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += std::size_t(extra) + 1;
    }
    return true;
}

bool hasControl(std::string_view text, bool allowTabAndNewline)
{
    for (char c : text)
        if (static_cast<unsigned char>(c) < 0x20 && !(allowTabAndNewline && (c == '\t' || c == '\n')))
            return true;
    return false;
}

// Keys become XML attributes, which cannot hold control characters faithfully.
bool validKey(String const& key)
{
    return validUtf8(key.View()) && !hasControl(key.View(), false);
}

// The identifier names a file of its own inside the scope's folder.
bool validName(String const& name)
{
    std::string_view const n = name.View();
    return !n.empty() && name != "." && name != ".." && n.find('/') == std::string_view::npos && validUtf8(n) &&
           !hasControl(n, false);
}

std::string homeFolder()
{
    if (char const* home = std::getenv("HOME"); home && *home)
        return home;
    if (passwd const* entry = ::getpwuid(::getuid()))
        return entry->pw_dir;
    return {};
}

// Relative entries in the XDG variables are to be ignored.
std::string folderOf(PreferenceDomain domain)
{
    if (domain == CurrentUserDomain) {
        if (char const* config = std::getenv("XDG_CONFIG_HOME"); config && config[0] == '/')
            return config;
        std::string const home = homeFolder();
        return home.empty() ? std::string() : home + "/.config";
    }
    if (char const* dirs = std::getenv("XDG_CONFIG_DIRS")) {
        std::string_view list(dirs);
        while (!list.empty()) {
            std::size_t const colon = list.find(':');
            std::string_view const entry = list.substr(0, colon);
            if (!entry.empty() && entry.front() == '/')
                return std::string(entry);
            list = colon == std::string_view::npos ? std::string_view() : list.substr(colon + 1);
        }
    }
    return "/etc/xdg";
}

std::optional<std::string> fileOf(String const& name, PreferenceDomain domain)
{
    std::string const folder = folderOf(domain);
    if (folder.empty() || !validName(name))
        return std::nullopt;
    return folder + "/" + name.ToStdString() + ".xml";
}

mode_t fileMode(PreferenceDomain domain)
{
    return domain == CurrentUserDomain ? 0600 : 0644;
}

class Descriptor {
public:
    explicit Descriptor(int fd) : fd(fd) {}
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
    int Get() const { return fd; }
    bool IsOpen() const { return fd >= 0; }
    // Closes now and tells whether the close succeeded (a write error may only show here).
    bool Close()
    {
        int const closing = fd;
        fd = -1;
        return ::close(closing) == 0;
    }

private:
    int fd;
};

enum class Loaded { Missing, Parsed, Corrupt, Unreadable };

bool readAll(int fd, std::string& text)
{
    char buffer[65536];
    for (;;) {
        ssize_t const n = ::read(fd, buffer, sizeof buffer);
        if (n == 0)
            return true;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 || text.size() + std::size_t(n) > std::size_t(maxFileSize))
            return false;
        text.append(buffer, std::size_t(n));
    }
}

Loaded loadDocument(std::string const& path, XMLDocument& doc)
{
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen())
        return errno == ENOENT ? Loaded::Missing : Loaded::Unreadable;
    struct stat status{};
    if (::fstat(file.Get(), &status) != 0)
        return Loaded::Unreadable;
    if (!S_ISREG(status.st_mode) || status.st_size > maxFileSize)
        return Loaded::Corrupt;
    std::string text;
    if (!readAll(file.Get(), text))
        return status.st_size > maxFileSize ? Loaded::Corrupt : Loaded::Unreadable;
    if (doc.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS)
        return Loaded::Corrupt;
    XMLElement const* root = doc.RootElement();
    return root && std::strcmp(root->Name(), rootName) == 0 ? Loaded::Parsed : Loaded::Corrupt;
}

// A stored value as read: its kind and its content, or unusable when the content does not parse.
struct Value {
    enum Kind { Unusable, Text, Number, Data } kind = Unusable;
    std::string text;
    int number = 0;
    Bytes data;
};

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

Value readEntry(XMLElement const& entry)
{
    Value value;
    char const* content = entry.GetText();
    std::string_view const text = content ? content : "";
    if (std::strcmp(entry.Name(), stringKind) == 0) {
        char const* encoding = entry.Attribute("encoding");
        if (!encoding) {
            value.kind = Value::Text;
            value.text = text;
        } else if (std::strcmp(encoding, "base64") == 0) {
            Bytes bytes;
            Base64Decode(String(text), bytes);
            value.kind = Value::Text;
            value.text.assign(bytes.begin(), bytes.end());
        }
    } else if (std::strcmp(entry.Name(), integerKind) == 0) {
        if (auto number = parseInt32(text)) {
            value.kind = Value::Number;
            value.number = *number;
        }
    } else if (std::strcmp(entry.Name(), dataKind) == 0) {
        value.kind = Value::Data;
        Base64Decode(String(text), value.data);
    }
    return value;
}

template <typename Visit>
void forEachEntry(XMLElement* root, Visit visit)
{
    for (XMLElement* entry = root->FirstChildElement(); entry;) {
        XMLElement* next = entry->NextSiblingElement();
        if (char const* key = entry->Attribute("key"))
            visit(entry, key);
        entry = next;
    }
}

std::optional<Value> lookupIn(String const& name, PreferenceDomain domain, String const& key)
{
    auto const path = fileOf(name, domain);
    XMLDocument doc;
    if (!path || loadDocument(*path, doc) != Loaded::Parsed)
        return std::nullopt;
    std::optional<Value> found;
    forEachEntry(doc.RootElement(), [&](XMLElement* entry, char const* k) {
        if (!found && key == k)
            found = readEntry(*entry);
    });
    return found;
}

// The current user's value hides all users' value of the same name, whatever its kind.
std::optional<Value> lookup(String const& name, String const& key)
{
    if (!validKey(key))
        return std::nullopt;
    if (auto value = lookupIn(name, CurrentUserDomain, key))
        return value;
    return lookupIn(name, AnyUserDomain, key);
}

void makeFolders(std::string const& folder, mode_t mode)
{
    for (std::size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
        ::mkdir(folder.substr(0, slash).c_str(), mode);
        if (slash == std::string::npos)
            return;
    }
}

bool writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t const n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        bytes.remove_prefix(std::size_t(n));
    }
    return true;
}

// Replaces path with text whole: readers see the old file or the new one, never a mixture.
bool replaceFile(std::string const& path, std::string_view text, mode_t mode)
{
    std::string temporary = path + ".XXXXXX";
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.IsOpen())
        return false;
    bool const written = ::fchmod(file.Get(), mode) == 0 && writeAll(file.Get(), text) && ::fsync(file.Get()) == 0 &&
                         file.Close() && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!written)
        ::unlink(temporary.c_str());
    return written;
}

// A file that does not parse may still hold something its owner wants back: it is renamed, not
// overwritten.
bool keepAside(std::string const& path)
{
    std::string aside = path + ".corrupt-XXXXXX";
    Descriptor placeholder(::mkostemp(aside.data(), O_CLOEXEC));
    return placeholder.IsOpen() && ::rename(path.c_str(), aside.c_str()) == 0;
}

// Reads, changes and replaces one scope's file under its lock file. change returns whether it
// changed anything; nothing is written when it did not.
void modify(String const& name, PreferenceDomain domain, std::function<bool(XMLDocument&)> const& change)
{
    auto const path = fileOf(name, domain);
    if (!path)
        return;
    mode_t const mode = fileMode(domain);
    makeFolders(path->substr(0, path->rfind('/')), domain == CurrentUserDomain ? 0700 : 0755);
    Descriptor lock(::open((*path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, mode));
    if (!lock.IsOpen())
        return;
    while (::flock(lock.Get(), LOCK_EX) != 0)
        if (errno != EINTR)
            return;

    XMLDocument doc;
    Loaded const loaded = loadDocument(*path, doc);
    if (loaded == Loaded::Unreadable || (loaded == Loaded::Corrupt && !keepAside(*path)))
        return;
    if (loaded != Loaded::Parsed) {
        doc.Clear();
        doc.InsertEndChild(doc.NewDeclaration());
        doc.InsertEndChild(doc.NewElement(rootName));
    }
    if (!change(doc))
        return;
    tinyxml2::XMLPrinter printer;
    doc.Print(&printer);
    replaceFile(*path, std::string_view(printer.CStr(), std::size_t(printer.CStrSize() - 1)), mode);
}

// Removes every entry of the key; true when there was one.
bool removeEntries(XMLDocument& doc, String const& key)
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

// Replaces the key's entry with a new one of the given kind and text.
void setEntry(String const& name, PreferenceDomain domain, String const& key, char const* kind, std::string const& text,
              char const* encoding = nullptr)
{
    if (!validKey(key))
        return;
    modify(name, domain, [&](XMLDocument& doc) {
        removeEntries(doc, key);
        XMLElement* entry = doc.NewElement(kind);
        entry->SetAttribute("key", key.c_str());
        if (encoding)
            entry->SetAttribute("encoding", encoding);
        if (!text.empty())
            entry->SetText(text.c_str());
        doc.RootElement()->InsertEndChild(entry);
        return true;
    });
}

void collectKeys(String const& name, PreferenceDomain domain, std::set<std::string>& keys)
{
    auto const path = fileOf(name, domain);
    XMLDocument doc;
    if (path && loadDocument(*path, doc) == Loaded::Parsed)
        forEachEntry(doc.RootElement(), [&](XMLElement*, char const* key) { keys.insert(key); });
}

void syncFolder(PreferenceDomain domain)
{
    Descriptor folder(::open(folderOf(domain).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.IsOpen())
        ::fsync(folder.Get());
}

bool isAdministrator()
{
    char const* user = std::getenv("USER");
    if (!user)
        return false;
    gid_t groups[512];
    int count = 512;
    if (::getgrouplist(user, 0, groups, &count) < 0 || count < 1 || count > 511)
        return false;
    std::vector<char> buffer(16384);
    for (int i = 0; i < count; ++i) {
        group entry{};
        group* found = nullptr;
        if (::getgrgid_r(groups[i], &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
            std::strcmp(found->gr_name, "admin") == 0)
            return true;
    }
    return false;
}

} // namespace

ConfigFile::ConfigFile(String const& name) : name(name), admin(isAdministrator()) {}

ConfigFile::ConfigFile(String const& name, bool admin) : name(name), admin(admin) {}

void ConfigFile::SetString(String const& key, String const& value)
{
    std::string_view const text = value.View();
    if (!validUtf8(text))
        return;
    // Text that XML would not give back as it was (carriage returns, control characters, white
    // space alone) is kept in Base64.
    bool const blank = !text.empty() && text.find_first_not_of(" \t\n") == std::string_view::npos;
    if (blank || hasControl(text, true))
        setEntry(name, writeDomain(), key, stringKind, Base64Encode(Bytes(text.begin(), text.end())).ToStdString(), "base64");
    else
        setEntry(name, writeDomain(), key, stringKind, std::string(text));
}

void ConfigFile::SetInt(String const& key, int value)
{
    setEntry(name, writeDomain(), key, integerKind, std::to_string(value));
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
    setEntry(name, writeDomain(), key, dataKind, Base64Encode(value).ToStdString());
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
    return value && value->kind == Value::Text ? String(std::string_view(value->text)) : fallback;
}

int ConfigFile::GetInt(String const& key, int fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == Value::Number ? value->number : fallback;
}

unsigned int ConfigFile::GetUInt(String const& key, unsigned int fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == Value::Number ? static_cast<unsigned int>(value->number) : fallback;
}

bool ConfigFile::GetBool(String const& key, bool fallback) const
{
    auto const value = lookup(name, key);
    return value && value->kind == Value::Number ? value->number != 0 : fallback;
}

float ConfigFile::GetFloat(String const& key, float fallback) const
{
    auto const value = lookup(name, key);
    if (!value || value->kind != Value::Data)
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
    if (value && value->kind == Value::Data)
        out = std::move(value->data);
    else
        out.clear();
}

bool ConfigFile::RemoveValue(String const& key)
{
    if (validKey(key))
        modify(name, writeDomain(), [&](XMLDocument& doc) { return removeEntries(doc, key); });
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
    syncFolder(CurrentUserDomain);
    syncFolder(AnyUserDomain);
}

} // namespace Cordel::Util
