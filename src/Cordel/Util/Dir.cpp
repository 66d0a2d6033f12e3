#include <Cordel/Util/Dir.h>

#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/detail/FileTimes.h>
#include <Cordel/Util/detail/Throw.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <string>
#include <utility>

namespace Cordel::Util {

namespace {

using Exception::FileIO;

constexpr mode_t folderPermissions = 0755;

// Whether the text names a folder (a file does not count); fills info when given.
bool isFolder(String const& text, struct stat* info = nullptr)
{
    if (text.IsEmpty() || ::access(text.c_str(), F_OK) != 0)
        return false;
    String bare = text;
    if (bare.Length() > 1 && bare.EndsWith("/"))
        bare.Truncate(bare.Length() - 1);
    struct stat local;
    struct stat& st = info ? *info : local;
    return ::stat(bare.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// How many components deep a folder text lies: "/" is 0, "/a/b/" is 2, "a/" is 1.
unsigned int depthOf(String const& text)
{
    std::string_view const view = text.View();
    auto const separators = static_cast<unsigned int>(std::count(view.begin(), view.end(), '/'));
    return view.starts_with('/') ? separators - 1 : separators;
}

// Makes one folder; another process making the same folder at the same moment is no failure.
void makeFolder(String const& text)
{
    if (::mkdir(text.c_str(), folderPermissions) == 0)
        return;
    int const error = errno;
    if (error == EEXIST && isFolder(text))
        return;
    Cordel::Exception::Throw(FileIO(String("mkdir() failed with %1/%2").Arg(error).Arg(depthOf(text)),
                                    FolderPath(text), FileIO::UnexpectedError),
                             CORDEL_HERE, error);
}

// The filter split at its first "*", both halves in lower case.
struct NameFilter {
    explicit NameFilter(String const& filter)
    {
        String const lower = filter.ToLower();
        checked_value<unsigned int> const star = lower.Find('*');
        prefix = star.IsSet() ? lower.Left(star.Get()) : lower;
        suffix = star.IsSet() ? lower.Mid(star.Get() + 1) : String();
    }
    bool Matches(String const& name) const
    {
        String const lower = name.ToLower();
        return lower.Length() >= prefix.Length() + suffix.Length() && lower.BeginsWith(prefix) &&
               lower.EndsWith(suffix);
    }
    String prefix;
    String suffix;
};

using FolderId = std::pair<dev_t, ino_t>;

std::vector<std::string> entriesOf(String const& folder)
{
    std::vector<std::string> entries;
    DIR* const dir = ::opendir(folder.c_str());
    if (!dir)
        return entries;
    while (dirent const* entry = ::readdir(dir)) {
        std::string_view const name(entry->d_name);
        if (name.compare(".") != 0 && name.compare("..") != 0)
            entries.emplace_back(name);
    }
    ::closedir(dir);
    std::sort(entries.begin(), entries.end());
    return entries;
}

void listFolder(String const& folder, NameFilter const& filter, bool recursive, std::set<FolderId>& visited,
                std::vector<String>& names)
{
    for (std::string const& entry : entriesOf(folder)) {
        String const name(entry);
        String const full = folder + name;
        struct stat info;
        if (::stat(full.c_str(), &info) != 0)
            continue;
        if (S_ISREG(info.st_mode)) {
            if (filter.Matches(name))
                names.push_back(full);
        } else if (recursive && S_ISDIR(info.st_mode) && visited.insert({info.st_dev, info.st_ino}).second) {
            listFolder(full + "/", filter, recursive, visited, names);
        }
    }
}

} // namespace

Dir::Dir(FolderPath const& p) : path(p) {}

void Dir::SetPath(FolderPath const& p)
{
    path = p;
}

bool Dir::Exists() const
{
    return isFolder(path.GetInternal());
}

void Dir::Create(bool recursive)
{
    if (Exists())
        return;
    String const& text = path.GetInternal();
    if (!recursive) {
        makeFolder(text);
        return;
    }
    // Every prefix that ends at a separator is a folder on the way down; the last is this one.
    for (unsigned int i = 1; i < text.Length(); ++i) {
        if (text[i] != '/')
            continue;
        String const step = text.Left(i + 1);
        if (!isFolder(step))
            makeFolder(step);
    }
}

void Dir::Remove()
{
    if (::rmdir(path.GetInternal().c_str()) != 0)
        Cordel::Exception::Throw(FileIO("rmdir() failed", path, FileIO::RemoveError), CORDEL_HERE, errno);
}

void Dir::GetTime(FileTime* time) const
{
    if (!detail::GetPathTime(path.GetInternal(), time))
        Cordel::Exception::Throw(FileIO("Error getting folder time", path, FileIO::UnexpectedError), CORDEL_HERE,
                                 errno);
}

void Dir::SetTime(FileTime const& time)
{
    if (!detail::SetPathTime(path.GetInternal(), time))
        Cordel::Exception::Throw(FileIO("Error setting folder time", path, FileIO::UnexpectedError), CORDEL_HERE,
                                 errno);
}

void Dir::GetFilenames(std::vector<String>& names, String const& filter, bool recursive) const
{
    struct stat info;
    if (!isFolder(path.GetInternal(), &info))
        return;
    std::set<FolderId> visited{{info.st_dev, info.st_ino}};
    listFolder(path.GetInternal(), NameFilter(filter), recursive, visited, names);
}

} // namespace Cordel::Util
