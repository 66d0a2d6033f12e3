#include "SafeOutput.h"

#include "Command.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

// The signals a user or a session's end sends to stop the tool.
constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// The temporary file a stop signal must remove, as plain bytes a signal handler can use.
char pendingTemporary[PATH_MAX];
struct sigaction previousActions[std::size(stopSignals)];

extern "C" void removeTemporaryAndStop(int signal)
{
    if (pendingTemporary[0])
        ::unlink(pendingTemporary);
    // Dies of the same signal, so the caller sees how the tool ended.
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void watchStopSignals(std::string const& temporary)
{
    std::strncpy(pendingTemporary, temporary.c_str(), sizeof pendingTemporary - 1);
    struct sigaction action{};
    action.sa_handler = removeTemporaryAndStop;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(stopSignals); ++i)
        ::sigaction(stopSignals[i], &action, &previousActions[i]);
}

void unwatchStopSignals()
{
    pendingTemporary[0] = '\0';
    for (std::size_t i = 0; i < std::size(stopSignals); ++i)
        ::sigaction(stopSignals[i], &previousActions[i], nullptr);
}

// Holds the stop signals back while the temporary file becomes OUT, so that a stop either
// removes the temporary file or comes after it has become OUT.
class StopSignalsHeld {
public:
    StopSignalsHeld()
    {
        sigset_t held;
        sigemptyset(&held);
        for (int s : stopSignals)
            sigaddset(&held, s);
        ::sigprocmask(SIG_BLOCK, &held, &previous);
    }
    ~StopSignalsHeld() { ::sigprocmask(SIG_SETMASK, &previous, nullptr); }
    StopSignalsHeld(StopSignalsHeld const&) = delete;
    StopSignalsHeld& operator=(StopSignalsHeld const&) = delete;

private:
    sigset_t previous;
};

[[noreturn]] void failWithErrno(String const& path)
{
    FailFile(path, std::strerror(errno));
}

std::string folderOf(std::string const& path)
{
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : slash == 0 ? std::string("/") : path.substr(0, slash);
}

// The path with its symbolic links followed as far as they lead, also to a name not yet taken.
std::string followLinks(String const& shown, std::string path)
{
    for (int hops = 0;; ++hops) {
        struct stat status{};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
            return path;
        if (hops == 40) {
            errno = ELOOP;
            failWithErrno(shown);
        }
        std::vector<char> link(std::size_t(status.st_size) + 1 > PATH_MAX ? std::size_t(status.st_size) + 1 : PATH_MAX);
        ssize_t const length = ::readlink(path.c_str(), link.data(), link.size());
        if (length < 0)
            failWithErrno(shown);
        std::string const next(link.data(), std::size_t(length));
        path = next.front() == '/' ? next : folderOf(path) + "/" + next;
    }
}

mode_t modeForNewFiles()
{
    mode_t const mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

SafeOutput::SafeOutput(String const& path) : shown(path)
{
    if (path == "-") {
        inPlace = true;
    } else {
        target = followLinks(path, path.ToStdString());
        struct stat status{};
        mode_t mode = modeForNewFiles();
        if (::stat(target.c_str(), &status) == 0) {
            if (S_ISDIR(status.st_mode))
                FailFile(path, "is a folder");
            if (::access(target.c_str(), W_OK) != 0)
                failWithErrno(path);
            inPlace = !S_ISREG(status.st_mode);
            mode = status.st_mode & 07777;
        } else if (errno != ENOENT) {
            failWithErrno(path);
        }
        if (!inPlace) {
            std::string const folder = folderOf(target);
            std::string const name = target.substr(target.rfind('/') + 1);
            temporary = folder + "/." + name + ".cordel-XXXXXX";
            StopSignalsHeld held;
            file = ::mkostemp(temporary.data(), O_CLOEXEC);
            if (file < 0) {
                temporary.clear();
                failWithErrno(path);
            }
            watchStopSignals(temporary);
            ::fchmod(file, mode);
            return;
        }
    }
    char const* folder = std::getenv("TMPDIR");
    std::string unnamed = std::string(folder && *folder ? folder : "/tmp") + "/cordel-output-XXXXXX";
    file = ::mkostemp(unnamed.data(), O_CLOEXEC);
    if (file < 0)
        FailFile(path, String("can't make a temporary file in %1: %2").Arg(String(folderOf(unnamed))).Arg(std::strerror(errno)));
    ::unlink(unnamed.c_str());
}

SafeOutput::~SafeOutput()
{
    if (!temporary.empty() && !committed) {
        ::unlink(temporary.c_str());
        unwatchStopSignals();
    }
    ::close(file);
}

FilePath SafeOutput::WriterPath() const
{
    return FilePath(String("/proc/self/fd/%1").Arg(file));
}

void SafeOutput::Commit()
{
    if (inPlace) {
        copyInPlace();
    } else {
        StopSignalsHeld held;
        if (::rename(temporary.c_str(), target.c_str()) != 0)
            failWithErrno(shown);
        unwatchStopSignals();
    }
    committed = true;
}

void SafeOutput::copyInPlace()
{
    int const out = shown == "-" ? STDOUT_FILENO : ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
    if (out < 0)
        failWithErrno(shown);
    std::vector<char> block(1 << 20);
    int error = 0;
    for (off_t at = 0; !error;) {
        ssize_t const got = ::pread(file, block.data(), block.size(), at);
        if (got <= 0) {
            error = got < 0 ? errno : 0;
            break;
        }
        at += got;
        for (ssize_t put = 0; !error && put < got;) {
            ssize_t const n = ::write(out, block.data() + put, std::size_t(got - put));
            if (n >= 0)
                put += n;
            else if (errno != EINTR)
                error = errno;
        }
    }
    if (out != STDOUT_FILENO && ::close(out) != 0 && !error)
        error = errno;
    if (error) {
        errno = error;
        failWithErrno(shown == "-" ? String("standard output") : shown);
    }
}

} // namespace CordelTool
