#pragma once
// FolderPath and FilePath: path texts normalised once, at construction, so that every file-system
// call of the library can trust them.
//
// Normalisation: surrounding white space goes and inner runs of it become one blank; every "\"
// becomes "/"; "~" and a leading "~/" expand to $HOME ("/" when it is not set); a relative text is
// resolved against the working directory when the constructor's flag is true; empty and "."
// components are dropped and ".." removes the component before it (at the top of an absolute
// path there is nothing to remove and it is dropped). A folder path ends with exactly one "/".

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

namespace Cordel {

class CORDEL_API FolderPath {
public:
    FolderPath() = default;
    FolderPath(FolderPath const&) = default;
    FolderPath& operator=(FolderPath const&) = default;
    // resolveRelative: resolve a relative text against the working directory. When false a
    // relative text stays relative ("a/../b" gives "b/").
    explicit FolderPath(String const& text, bool resolveRelative = true);

    bool IsEmpty() const { return path.IsEmpty(); }
    // True for a folder without a parent: the root, or a single relative component.
    bool IsTopLevel() const;
    // The folder with its last component removed; empty for a top-level or empty folder.
    FolderPath GetParent() const;
    // The last component without separators; empty for the root and for the empty path.
    String GetFolderName() const;
    String ToString() const { return path; }
    String const& GetInternal() const { return path; }

    // Whether a text names a relative path: not empty and not starting with a separator.
    static bool IsRelative(String const& text);

    friend CORDEL_API bool operator==(FolderPath const& a, FolderPath const& b);
    friend CORDEL_API bool operator<(FolderPath const& a, FolderPath const& b);
    friend CORDEL_API bool operator<=(FolderPath const& a, FolderPath const& b);

private:
    friend class FilePath;
    // Wraps a text that is normalised already.
    static FolderPath fromNormalised(String const& text);

    String path; // empty, or normalised and ending with exactly one "/"
};

inline bool operator!=(FolderPath const& a, FolderPath const& b) { return !(a == b); }

// The folder with a relative part appended, normalised again ("/a/b/" + "../c" gives "/a/c/").
// Appended to an empty folder, the part is resolved as a folder path of its own.
CORDEL_API FolderPath operator+(FolderPath const& folder, String const& relative);

class CORDEL_API FilePath {
public:
    FilePath() = default;
    FilePath(FilePath const&) = default;
    FilePath& operator=(FilePath const&) = default;
    // resolveRelative as for FolderPath.
    explicit FilePath(String const& text, bool resolveRelative = true);
    // The file with the given name in a folder.
    FilePath(FolderPath const& folder, String const& name);
    // The file exactly as the operating system names it, for names that users and other programs
    // hand over: the text is kept byte for byte (white space, backslashes, "~", "." and ".."
    // components alike) and only a relative text is put after the working folder and "/". The
    // folder part of such a path is not normalised either.
    static FilePath Exact(String const& name);

    bool IsEmpty() const { return path.IsEmpty(); }
    // The folder part: the text up to and including the last separator.
    FolderPath GetFolder() const;
    // The name with its extension: the text after the last separator.
    String GetFilename() const;
    // The name without its last "." and extension ("archive.tar" for "archive.tar.gz").
    String GetBaseName() const;
    // The text after the name's last "." without the dot; empty when the name has none.
    String GetExtension() const;
    String ToString() const { return path; }
    String const& GetInternal() const { return path; }

    static bool IsRelative(String const& text);

    friend CORDEL_API bool operator==(FilePath const& a, FilePath const& b);
    friend CORDEL_API bool operator<(FilePath const& a, FilePath const& b);
    friend CORDEL_API bool operator<=(FilePath const& a, FilePath const& b);

private:
    void construct(String const& text, bool resolveRelative);

    String path; // empty, or a normalised folder part followed by the file name
};

inline bool operator!=(FilePath const& a, FilePath const& b) { return !(a == b); }

} // namespace Cordel
