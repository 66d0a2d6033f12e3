#include <Cordel/Util/detail/Process.h>

#include <Cordel/Util/detail/Descriptor.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

extern char** environ;

namespace Cordel::Util::detail {

namespace {

// The argument vector exec wants: name, arguments, null.
std::vector<char*> argv(std::string const& name, std::vector<std::string> const& args)
{
    std::vector<char*> v;
    v.push_back(const_cast<char*>(name.c_str()));
    for (std::string const& a : args)
        v.push_back(const_cast<char*>(a.c_str()));
    v.push_back(nullptr);
    return v;
}

class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
    FileActions(FileActions const&) = delete;
    FileActions& operator=(FileActions const&) = delete;
    posix_spawn_file_actions_t* Get() { return &actions; }

private:
    posix_spawn_file_actions_t actions;
};

// A stream socket pair rather than a pipe, so that writing to a program that has gone away
// fails with EPIPE instead of raising SIGPIPE in the caller.
bool socketPair(Descriptor& ours, Descriptor& theirs)
{
    int fds[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0)
        return false;
    ours = Descriptor(fds[0]);
    theirs = Descriptor(fds[1]);
    return true;
}

int waitExit(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline)
{
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? int(left) : 0;
}

// Feeds input and drains output at the same time, so that neither side blocks on a full buffer.
// False when the deadline passed or the output went over the limit first.
bool exchange(int in, int out, std::vector<unsigned char> const& input, std::size_t maxOutput, Clock::time_point deadline,
              ProcessResult& result)
{
    std::size_t written = 0;
    bool inOpen = true;
    if (input.empty()) {
        ::shutdown(in, SHUT_WR);
        inOpen = false;
    }
    for (;;) {
        pollfd fds[2] = {{out, POLLIN, 0}, {inOpen ? in : -1, POLLOUT, 0}};
        int const left = remainingMs(deadline);
        if (left == 0)
            return false;
        if (::poll(fds, 2, left) < 0 && errno != EINTR)
            return false;
        if (inOpen && (fds[1].revents & (POLLOUT | POLLERR | POLLHUP))) {
            ssize_t const n = ::send(in, input.data() + written, input.size() - written, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (n > 0)
                written += std::size_t(n);
            if ((n < 0 && errno != EAGAIN && errno != EINTR) || written == input.size()) {
                ::shutdown(in, SHUT_WR);
                inOpen = false;
            }
        }
        if (fds[0].revents & (POLLIN | POLLHUP | POLLERR)) {
            unsigned char buffer[65536];
            ssize_t const n = ::recv(out, buffer, sizeof buffer, MSG_DONTWAIT);
            if (n == 0)
                return true;
            if (n < 0 && errno != EAGAIN && errno != EINTR)
                return true;
            if (n > 0) {
                if (result.output.size() + std::size_t(n) > maxOutput) {
                    result.outputOverLimit = true;
                    return false;
                }
                result.output.insert(result.output.end(), buffer, buffer + n);
            }
        }
    }
}

} // namespace

ProcessResult RunProcess(std::string const& program, std::vector<std::string> const& args,
                         std::vector<unsigned char> const& input, std::size_t maxOutput, int timeoutMs)
{
    ProcessResult result;
    Descriptor inOurs, inTheirs, outOurs, outTheirs;
    if (!socketPair(inOurs, inTheirs) || !socketPair(outOurs, outTheirs))
        return result;
    FileActions actions;
    ::posix_spawn_file_actions_adddup2(actions.Get(), inTheirs.Get(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(actions.Get(), outTheirs.Get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(actions.Get(), STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(actions.Get(), STDERR_FILENO + 1);

    auto const v = argv(program, args);
    pid_t pid = 0;
    if (::posix_spawn(&pid, program.c_str(), actions.Get(), nullptr, v.data(), environ) != 0)
        return result;
    inTheirs.Close();
    outTheirs.Close();

    auto const deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    bool const complete = exchange(inOurs.Get(), outOurs.Get(), input, maxOutput, deadline, result);
    if (!complete)
        ::kill(pid, SIGKILL);
    result.exitCode = waitExit(pid);
    result.finished = complete && result.exitCode >= 0;
    return result;
}

bool SpawnDetached(char const* file, std::vector<std::string> const& args)
{
    FileActions actions;
    ::posix_spawn_file_actions_addopen(actions.Get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(actions.Get(), STDERR_FILENO + 1);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    // Its own session: a terminal's Ctrl-C to the caller does not reach the launched program.
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    std::string const name = file;
    auto const v = argv(name, args);

    // An intermediate process starts the program and exits at once; the program is then the
    // child of init (or of a subreaper), which reaps it, and we wait only for the intermediate.
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) {
        ::posix_spawnattr_destroy(&attributes);
        return false;
    }
    Descriptor readEnd(ready[0]), writeEnd(ready[1]);
    pid_t const intermediate = ::fork();
    if (intermediate == 0) {
        pid_t pid = 0;
        char const started = ::posix_spawnp(&pid, file, actions.Get(), &attributes, v.data(), environ) == 0;
        WriteAll(writeEnd.Get(), &started, 1);
        ::_exit(0);
    }
    writeEnd.Close();
    // The answer is one byte, and the pipe ends when the intermediate does.
    std::string answer;
    if (intermediate > 0) {
        ReadAll(readEnd.Get(), answer, 1);
        waitExit(intermediate);
    }
    ::posix_spawnattr_destroy(&attributes);
    return answer.size() == 1 && answer[0] != 0;
}

} // namespace Cordel::Util::detail
