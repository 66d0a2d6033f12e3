#include <Cordel/common/Path.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace Cordel {

namespace {

// Backslashes are taken for separators: paths typed or stored on other systems still work.
String convertSeparators(String const& text) { return text.ReplaceChar(Char('\\'), Char('/')); }

bool isRelative(String const& text)
{
    if (text.IsEmpty())
        return false;
    return convertSeparators(text)[0] != Char('/');
}

String workingDirectory()
{
    std::string buffer(256, '\0');
    for (;;) {
        if (::getcwd(buffer.data(), buffer.size()))
            return String(buffer.c_str());
        if (errno != ERANGE || buffer.size() > (1u << 20))
            return String();
        buffer.resize(buffer.size() * 2);
    }
}

String homeFolder()
{
    char const* home = std::getenv("HOME");
    return String(home ? home : "/");
}

String convertRelative(String const& text, bool resolveRelative)
{
    String const t = text == "~" ? String("~/") : text;
    if (t.BeginsWith("~/") || t.BeginsWith("~\\")) {
        // A home of "/" (or one given with a trailing separator) joins the rest with one
        // separator, so that the expansion never makes a leading "//" that cleaning would keep.
        String const home = homeFolder();
        return home.EndsWith("/") ? home + t.Mid(2) : home + t.Mid(1);
    }
    if (resolveRelative && isRelative(t)) {
        String const cwd = workingDirectory();
        // Without a working directory (it was removed under us) the text stays relative rather
        // than being pinned to a made-up folder.
        if (!cwd.IsEmpty())
            return cwd + "/" + t;
    }
    return t;
}

// Drops empty and "." components and lets ".." remove the component before it. A ".." with
// nothing before it is dropped in an absolute path (the root is its own parent) and kept in a
// relative one, where it still means something.
String cleanDirPath(String const& text)
{
    String const t = convertSeparators(text);
    unsigned int leading = 0;
    while (leading < t.Length() && t[leading] == Char('/'))
        ++leading;
    bool const absolute = leading > 0;

    std::vector<String> pieces;
    t.Mid(leading).Split('/', pieces);
    std::vector<String> out;
    for (String const& piece : pieces) {
        if (piece.IsEmpty() || piece == ".")
            continue;
        if (piece == "..") {
            if (!out.empty() && out.back() != "..")
                out.pop_back();
            else if (!absolute)
                out.push_back(piece);
            continue;
        }
        out.push_back(piece);
    }
    // The leading separators stay as they were given: a path that starts with exactly two may
    // name something else than the one with one.
    return t.Left(leading) + String::Join("/", out);
}

String canonicalize(String const& text)
{
    String t = cleanDirPath(text) + "/";
    while (t.Length() >= 2 && t.EndsWith("//"))
        t.Truncate(t.Length() - 1);
    return t;
}

// A hook for platforms with short path names; there are none here.
String convertToLongPath(String const& text) { return text; }

String getDirectory(String const& text)
{
    checked_value<unsigned int> const slash = text.FindRev('/');
    return slash.IsSet() ? text.Left(slash.Get() + 1) : String();
}

String getFile(String const& text)
{
    checked_value<unsigned int> const slash = text.FindRev('/');
    return slash.IsSet() ? text.Mid(slash.Get() + 1) : text;
}

String getFileExtension(String const& name)
{
    checked_value<unsigned int> const dot = name.FindRev('.');
    return dot.IsSet() ? name.Mid(dot.Get() + 1) : String();
}

String getFileBaseName(String const& name)
{
    checked_value<unsigned int> const dot = name.FindRev('.');
    return dot.IsSet() ? name.Left(dot.Get()) : name;
}

String normaliseFolder(String const& text, bool resolveRelative)
{
    String const simple = text.SimplifyWhiteSpace();
    if (simple.IsEmpty())
        return String();
    String t = convertToLongPath(canonicalize(convertRelative(simple, resolveRelative)));
    if (!t.EndsWith("/"))
        t += '/';
    return t;
}

// The folder text without its trailing separator.
String withoutTrailingSlash(String const& folder)
{
    return folder.EndsWith("/") ? folder.Left(folder.Length() - 1) : folder;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// FolderPath

FolderPath::FolderPath(String const& text, bool resolveRelative) : path(normaliseFolder(text, resolveRelative)) {}

FolderPath FolderPath::fromNormalised(String const& text)
{
    FolderPath folder;
    folder.path = text;
    return folder;
}

bool FolderPath::IsTopLevel() const { return !IsEmpty() && GetParent().IsEmpty(); }

FolderPath FolderPath::GetParent() const
{
    String const parent = getDirectory(withoutTrailingSlash(path));
    if (parent.IsEmpty())
        return FolderPath();
    return fromNormalised(parent);
}

String FolderPath::GetFolderName() const { return getFile(withoutTrailingSlash(path)); }

bool FolderPath::IsRelative(String const& text) { return isRelative(text); }

bool operator==(FolderPath const& a, FolderPath const& b) { return a.path == b.path; }
bool operator<(FolderPath const& a, FolderPath const& b) { return a.path < b.path; }
bool operator<=(FolderPath const& a, FolderPath const& b) { return a.path <= b.path; }

FolderPath operator+(FolderPath const& folder, String const& relative)
{
    if (folder.IsEmpty())
        return FolderPath(relative);
    return FolderPath(folder.GetInternal() + relative, false);
}

// ---------------------------------------------------------------------------------------------
// FilePath

FilePath::FilePath(String const& text, bool resolveRelative) { construct(text, resolveRelative); }

FilePath::FilePath(FolderPath const& folder, String const& name)
{
    if (folder.IsEmpty())
        construct(name, true);
    else
        construct(folder.GetInternal() + name, false);
}

FilePath FilePath::Exact(String const& name)
{
    FilePath file;
    if (name.IsEmpty() || name[0] == Char('/'))
        file.path = name;
    else {
        String const cwd = workingDirectory();
        file.path = cwd.IsEmpty() ? name : cwd + "/" + name; // as convertRelative does without a working folder
    }
    return file;
}

void FilePath::construct(String const& text, bool resolveRelative)
{
    String const simple = text.SimplifyWhiteSpace();
    if (simple.IsEmpty())
        return;
    // Cleaned as a whole first, so that a ".." in the last place climbs like any other.
    String const cleaned = cleanDirPath(convertRelative(simple, resolveRelative));
    String const folder = getDirectory(cleaned);
    path = convertToLongPath((folder.IsEmpty() ? String() : canonicalize(folder)) + getFile(cleaned));
}

FolderPath FilePath::GetFolder() const { return FolderPath::fromNormalised(getDirectory(path)); }

String FilePath::GetFilename() const { return getFile(path); }

String FilePath::GetBaseName() const { return getFileBaseName(GetFilename()); }

String FilePath::GetExtension() const { return getFileExtension(GetFilename()); }

bool FilePath::IsRelative(String const& text) { return isRelative(text); }

bool operator==(FilePath const& a, FilePath const& b) { return a.path == b.path; }
bool operator<(FilePath const& a, FilePath const& b) { return a.path < b.path; }
bool operator<=(FilePath const& a, FilePath const& b) { return a.path <= b.path; }

} // namespace Cordel
