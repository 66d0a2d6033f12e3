#include <Cordel/Util/SystemFolders.h>

#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/detail/Throw.h>
#include <Cordel/Util/detail/XdgFolders.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

namespace Cordel::Util {

namespace {

// The file name part of a path text.
std::string_view fileNameOf(std::string_view path)
{
    std::size_t const slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool namesModule(std::string_view path, std::string_view wanted)
{
    if (path == wanted)
        return true;
    std::string_view const name = fileNameOf(path);
    return name.starts_with(wanted) && (name.size() == wanted.size() || name[wanted.size()] == '.');
}

String programPath()
{
    char buffer[PATH_MAX];
    ssize_t const length = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return length > 0 ? String(std::string_view(buffer, static_cast<std::size_t>(length))) : String();
}

// The path of the loaded object that holds the address; the program itself has no name in the
// loader's list.
String moduleHolding(void* address)
{
    Dl_info info;
    link_map* map = nullptr;
    if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || !map)
        return {};
    return map->l_name && map->l_name[0] ? String(map->l_name) : programPath();
}

String moduleNamed(String const& wanted)
{
    struct Search {
        std::string_view wanted;
        String found;
    } search{wanted.View(), {}};
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto* s = static_cast<Search*>(data);
            if (!info->dlpi_name || !info->dlpi_name[0] || !namesModule(info->dlpi_name, s->wanted))
                return 0;
            s->found = info->dlpi_name;
            return 1;
        },
        &search);
    return search.found;
}

String randomName(unsigned int length)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    unsigned char bytes[64];
    std::size_t got = 0;
    while (got < length) {
        ssize_t const n = ::getrandom(bytes + got, length - got, 0);
        if (n > 0)
            got += static_cast<std::size_t>(n);
    }
    std::string name(length, '\0');
    // 62 letters: the slight bias of the modulo costs nothing here, collisions are caught anyway.
    for (unsigned int i = 0; i < length; ++i)
        name[i] = alphabet[bytes[i] % (sizeof alphabet - 1)];
    return String(std::string_view(name));
}

} // namespace

FolderPath GetSystemFontFolder()
{
    return FolderPath("/usr/share/fonts/");
}

FolderPath GetAlternateSystemFontFolder()
{
    return FolderPath("/usr/local/share/fonts/");
}

FolderPath GetUserApplicationDataFolder()
{
    return FolderPath(String(detail::UserDataFolder()));
}

FolderPath GetSystemApplicationDataFolder()
{
    return FolderPath(String(detail::SystemDataFolder()));
}

FolderPath GetSystemTempFolder()
{
    return FolderPath(String(detail::AbsolutePathVariable("TMPDIR").value_or("/tmp")));
}

FilePath GetTempFile(FilePath const& pattern, bool inSystemTempFolder, unsigned int randomCharacters)
{
    FolderPath const folder =
        inSystemTempFolder || pattern.IsEmpty() ? GetSystemTempFolder() : pattern.GetFolder();
    String const base = pattern.GetBaseName().IsEmpty() ? String("cordel") : pattern.GetBaseName();
    String const extension = pattern.GetExtension().IsEmpty() ? String() : "." + pattern.GetExtension();
    unsigned int const length = std::clamp(randomCharacters, 6u, 64u);
    // Every try is a fresh random name; running out of tries means the folder is all but full of
    // our names, which only a broken random source could bring about.
    constexpr int tries = 100;
    int error = EEXIST;
    for (int i = 0; i < tries && error == EEXIST; ++i) {
        FilePath const candidate(folder, base + "-" + randomName(length) + extension);
        int const fd = ::open(candidate.GetInternal().c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        if (fd >= 0) {
            ::close(fd);
            return candidate;
        }
        error = errno;
    }
    Cordel::Exception::Throw(Exception::FileIO("Can't create a temporary file", FilePath(folder, base + extension),
                                               Exception::FileIO::OpenError),
                             CORDEL_HERE, error);
}

FolderPath GetModuleDirectory(String const& moduleName, void* address, bool resolveLinks)
{
    String path = address ? moduleHolding(address) : moduleName.IsEmpty() ? programPath() : moduleNamed(moduleName);
    if (path.IsEmpty())
        return {};
    if (resolveLinks) {
        char resolved[PATH_MAX];
        if (::realpath(path.c_str(), resolved))
            path = resolved;
    }
    return FilePath(path).GetFolder();
}

} // namespace Cordel::Util
