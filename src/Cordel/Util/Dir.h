#pragma once
// Dir: the folder operations on one folder path: existence, creation (with the missing parents
// when asked), removal, times, and listing of file names through a simple wildcard filter.

#include <Cordel/Util/File.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>

#include <vector>

namespace Cordel::Util {

class CORDEL_API Dir {
public:
    Dir() = default;
    explicit Dir(FolderPath const& path);

    void SetPath(FolderPath const& path);
    FolderPath const& GetPath() const { return path; }

    // True only for a folder: a file at the path does not count. False for an empty path.
    bool Exists() const;
    // Does nothing when the folder exists. Folders are made with permissions 0755. A failure
    // throws FileIO "mkdir() failed with E/D": E the errno value, D how many components deep the
    // folder lies whose creation failed (2 for "/a/b/"); the path is that folder, the error code
    // errno. With recursive, every missing parent is created first.
    void Create(bool recursive);
    // Only an empty folder can be removed; otherwise FileIO "rmdir() failed" carrying errno.
    void Remove();

    // Failures throw FileIO "Error getting folder time" and "Error setting folder time".
    void GetTime(FileTime* time) const;
    void SetTime(FileTime const& time);

    // Appends the full paths of the regular files in the folder whose names match the filter,
    // without clearing names first. The filter is a prefix, optionally followed by "*" and a
    // suffix ("take*.wav", "*.WAV", "take"), matched without regard to case; "*" stands for any
    // run of characters, so "ab*ba" does not match "aba". An empty filter matches every file.
    // With recursive, subfolders are listed too, each folder once even when links lead back to
    // it. Names are listed in byte order within each folder. A missing folder adds nothing.
    void GetFilenames(std::vector<String>& names, String const& filter, bool recursive) const;

private:
    FolderPath path;
};

} // namespace Cordel::Util
