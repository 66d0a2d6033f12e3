#include <Cordel/Util/detail/AtomicFileStore.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace Cordel::Util::detail {

namespace {

// Folders that exist already, or cannot be made, are passed over: opening the file tells.
void makeFolders(std::string const& folder, mode_t mode)
{
    for (std::size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
        ::mkdir(folder.substr(0, slash).c_str(), mode);
        if (slash == std::string::npos)
            return;
    }
}

} // namespace

AtomicFileStore::AtomicFileStore(std::string path, mode_t fileMode, mode_t folderMode)
    : path(std::move(path)), fileMode(fileMode), folderMode(folderMode)
{
}

AtomicFileStore::Contents AtomicFileStore::Read(std::size_t maxSize) const
{
    Contents contents;
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) {
        contents.state = errno == ENOENT ? State::Missing : State::Unreadable;
        return contents;
    }
    struct stat status{};
    if (::fstat(file.Get(), &status) != 0)
        contents.state = State::Unreadable;
    else if (!S_ISREG(status.st_mode) || std::size_t(status.st_size) > maxSize)
        contents.state = State::Unusable;
    else if (!ReadAll(file.Get(), contents.text, maxSize))
        contents.state = State::Unreadable;
    else
        contents.state = State::Read;
    return contents;
}

std::optional<AtomicFileStore::Lock> AtomicFileStore::TakeLock() const
{
    makeFolders(path.substr(0, path.rfind('/')), folderMode);
    Descriptor lock(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode));
    if (!lock.IsOpen())
        return std::nullopt;
    while (::flock(lock.Get(), LOCK_EX) != 0)
        if (errno != EINTR)
            return std::nullopt;
    removeStaleTemporaries();
    return Lock(std::move(lock));
}

// The temporary files Replace makes: "<name>.XXXXXX", six letters or digits.
void AtomicFileStore::removeStaleTemporaries() const
{
    std::size_t const slash = path.rfind('/');
    std::string const folder = path.substr(0, slash), prefix = path.substr(slash + 1) + ".";
    DIR* entries = ::opendir(folder.c_str());
    if (!entries)
        return;
    while (dirent const* entry = ::readdir(entries)) {
        std::string_view const name = entry->d_name;
        if (name.size() == prefix.size() + 6 && name.substr(0, prefix.size()) == prefix &&
            std::all_of(name.end() - 6, name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)); }))
            ::unlinkat(::dirfd(entries), entry->d_name, 0);
    }
    ::closedir(entries);
}

bool AtomicFileStore::Replace(std::string_view text) const
{
    std::string temporary = path + ".XXXXXX";
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.IsOpen())
        return false;
    bool const written = ::fchmod(file.Get(), fileMode) == 0 &&
                         WriteAll(file.Get(), text.data(), text.size()) == text.size() && ::fsync(file.Get()) == 0 &&
                         file.Close() && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!written)
        ::unlink(temporary.c_str());
    return written;
}

bool AtomicFileStore::MoveAside() const
{
    // The placeholder reserves a name that nothing else takes; the file then renames over it.
    std::string aside = path + ".corrupt-XXXXXX";
    Descriptor placeholder(::mkostemp(aside.data(), O_CLOEXEC));
    if (!placeholder.IsOpen())
        return false;
    if (::rename(path.c_str(), aside.c_str()) == 0)
        return true;
    ::unlink(aside.c_str());
    return false;
}

void SyncFolder(std::string const& folder)
{
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen())
        ::fsync(opened.Get());
}

} // namespace Cordel::Util::detail
