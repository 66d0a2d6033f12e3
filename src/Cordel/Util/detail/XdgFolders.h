#pragma once
// Internal: the XDG base-directory folders. A variable that is unset, empty or not an absolute
// path is ignored, as the conventions ask, and a list variable gives its first absolute entry.

#include <optional>
#include <string>

namespace Cordel::Util::detail {

// The variable's value when it is an absolute path.
std::optional<std::string> AbsolutePathVariable(char const* name);

// $XDG_CONFIG_HOME, else ".config" in the home folder ("HOME", else the user database); empty
// when there is no home folder either.
std::string UserConfigFolder();
// The first entry of $XDG_CONFIG_DIRS, else "/etc/xdg".
std::string SystemConfigFolder();
// $XDG_DATA_HOME, else "~/.local/share", whose "~" the path rules expand.
std::string UserDataFolder();
// The first entry of $XDG_DATA_DIRS, else "/usr/local/share/".
std::string SystemDataFolder();

} // namespace Cordel::Util::detail
