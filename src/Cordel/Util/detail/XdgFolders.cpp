#include <Cordel/Util/detail/XdgFolders.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace Cordel::Util::detail {

namespace {

std::optional<std::string> firstAbsoluteEntry(char const* name)
{
    char const* value = std::getenv(name);
    std::string_view list = value ? value : "";
    while (!list.empty()) {
        std::size_t const colon = list.find(':');
        std::string_view const entry = list.substr(0, colon);
        if (!entry.empty() && entry.front() == '/')
            return std::string(entry);
        list = colon == std::string_view::npos ? std::string_view() : list.substr(colon + 1);
    }
    return std::nullopt;
}

// Settings are written, not only read: without "HOME" they still belong in the user's own home.
std::string homeFolder()
{
    if (char const* home = std::getenv("HOME"); home && *home)
        return home;
    if (passwd const* entry = ::getpwuid(::getuid()))
        return entry->pw_dir;
    return {};
}

} // namespace

std::optional<std::string> AbsolutePathVariable(char const* name)
{
    char const* value = std::getenv(name);
    if (!value || value[0] != '/')
        return std::nullopt;
    return value;
}

std::string UserConfigFolder()
{
    if (auto config = AbsolutePathVariable("XDG_CONFIG_HOME"))
        return *config;
    std::string const home = homeFolder();
    return home.empty() ? std::string() : home + "/.config";
}

std::string SystemConfigFolder()
{
    return firstAbsoluteEntry("XDG_CONFIG_DIRS").value_or("/etc/xdg");
}

std::string UserDataFolder()
{
    return AbsolutePathVariable("XDG_DATA_HOME").value_or("~/.local/share");
}

std::string SystemDataFolder()
{
    return firstAbsoluteEntry("XDG_DATA_DIRS").value_or("/usr/local/share/");
}

} // namespace Cordel::Util::detail
