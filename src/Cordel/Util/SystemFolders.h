#pragma once
// The system's standard folders, a collision-free temporary file, and the folder of a loaded
// module.
//
// On Linux the folders follow the XDG base-directory conventions. An environment variable that is
// unset, empty or not an absolute path is ignored, as those conventions ask.

#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>

namespace Cordel::Util {

// "/usr/share/fonts/": the fonts the distribution installs.
CORDEL_API FolderPath GetSystemFontFolder();
// "/usr/local/share/fonts/": the fonts the machine's administrator adds.
CORDEL_API FolderPath GetAlternateSystemFontFolder();
// $XDG_DATA_HOME, else "~/.local/share/" (with "HOME" unset, "/.local/share/").
CORDEL_API FolderPath GetUserApplicationDataFolder();
// The first entry of $XDG_DATA_DIRS, else "/usr/local/share/", where software installed for every
// user of the machine keeps its data.
CORDEL_API FolderPath GetSystemApplicationDataFolder();
// $TMPDIR, else "/tmp/".
CORDEL_API FolderPath GetSystemTempFolder();

// Makes a new, empty temporary file and returns its path. The name is the pattern's base name, a
// "-", randomCharacters letters and digits (at least 6, at most 64) and the pattern's extension:
// "take.wav" gives "take-Xq3v9Ab2.wav". The file is created exclusively with permissions 0600, so
// no other thread or process can get the same name, and the caller owns it from then on. It goes
// into the pattern's folder, or into GetSystemTempFolder() when inSystemTempFolder is true or the
// pattern has no folder. An empty base name becomes "cordel". Throws FileIO "Can't create a
// temporary file" (open error, with errno) when the folder refuses it.
CORDEL_API FilePath GetTempFile(FilePath const& pattern, bool inSystemTempFolder = true,
                                unsigned int randomCharacters = 8);

// The folder of a shared object loaded in this process: the one that holds address when it is
// not null; otherwise the one named moduleName, either by its full path or by its file name with
// or without the version suffix ("libcordel.so" finds "libcordel.so.0"); with neither, the
// program's own folder. resolveLinks follows symbolic links to the real file first. Empty when
// nothing matches.
CORDEL_API FolderPath GetModuleDirectory(String const& moduleName, void* address = nullptr,
                                         bool resolveLinks = false);

} // namespace Cordel::Util
