#pragma once
// Runs the built cordel tool as a user does, inside a test's own folder. Arguments reach the tool
// as they are, with no shell in between, so names with blanks, backslashes or quotes arrive intact.
// The build hands the tool's path in as CORDEL_TOOL_PATH; a test fails when it is not there.

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace CordelTest {

struct ToolOutcome {
    int status; // the exit code, or 128 + the signal that ended the tool
    std::string out;
    std::string err;
};

inline std::string ToolPath()
{
    return CORDEL_TOOL_PATH;
}

// One run of the tool. Standard input, output and error are anonymous memory files, so that a
// run leaves nothing in the folder but what the tool itself wrote.
class ToolProcess {
public:
    ToolProcess(std::filesystem::path const& folder, std::vector<std::string> const& args, std::string const& input,
                std::map<std::string, std::string> const& environment)
        : in(memoryFile(input)), out(memoryFile({})), err(memoryFile({}))
    {
        std::string const tool = ToolPath();
        std::vector<std::string> env;
        for (char** e = environ; *e; ++e) {
            std::string const entry = *e;
            if (!environment.count(entry.substr(0, entry.find('='))))
                env.push_back(entry);
        }
        for (auto const& [name, value] : environment)
            if (value != unset)
                env.push_back(name + "=" + value);
        std::vector<char*> argv{const_cast<char*>(tool.c_str())}, envp;
        for (std::string const& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        for (std::string& e : env)
            envp.push_back(e.data());
        envp.push_back(nullptr);
        pid = ::fork();
        if (pid == 0) {
            if (::chdir(folder.c_str()) != 0 || ::dup2(in, 0) < 0 || ::dup2(out, 1) < 0 || ::dup2(err, 2) < 0)
                ::_exit(127);
            ::execve(tool.c_str(), argv.data(), envp.data());
            ::_exit(127);
        }
    }
    ~ToolProcess()
    {
        if (pid > 0 && !reaped) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        for (int fd : {in, out, err})
            ::close(fd);
    }
    ToolProcess(ToolProcess const&) = delete;
    ToolProcess& operator=(ToolProcess const&) = delete;

    pid_t Pid() const { return pid; }

    ToolOutcome Wait()
    {
        int raw = 0;
        ::waitpid(pid, &raw, 0);
        reaped = true;
        int const status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
        return {status, contents(out), contents(err)};
    }

    // The value that removes a variable from the tool's environment.
    static inline std::string const unset = std::string(1, '\0');

private:
    static int memoryFile(std::string const& text)
    {
        int const fd = ::memfd_create("cordel-test", 0);
        if (!text.empty() && ::write(fd, text.data(), text.size()) != ssize_t(text.size()))
            ADD_FAILURE() << "could not prepare standard input";
        ::lseek(fd, 0, SEEK_SET);
        return fd;
    }
    static std::string contents(int fd)
    {
        std::string text;
        char block[4096];
        ssize_t got;
        for (off_t at = 0; (got = ::pread(fd, block, sizeof block, at)) > 0; at += got)
            text.append(block, std::size_t(got));
        return text;
    }

    int in, out, err;
    pid_t pid = -1;
    bool reaped = false;
};

// A fresh folder per test to run the tool in.
class ToolFolder : public TempFolder {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(ToolPath().empty()) << "the cordel tool is not part of this build (CORDEL_BUILD_TOOLS is off)";
        ASSERT_TRUE(std::filesystem::is_regular_file(ToolPath())) << "the cordel tool is missing: " << ToolPath();
        TempFolder::SetUp();
    }

    // Runs the tool with these arguments, exactly.
    ToolOutcome Run(std::vector<std::string> const& args, std::string const& input = {})
    {
        return ToolProcess(folder, args, input, environment).Wait();
    }

    // Runs the tool with arguments split at blanks, for the common case of plain words.
    ToolOutcome cordel(std::string const& words, std::string const& input = {})
    {
        std::istringstream split(words);
        std::vector<std::string> args;
        for (std::string word; split >> word;)
            args.push_back(word);
        return Run(args, input);
    }

    bool exists(std::string const& name) const { return std::filesystem::exists(std::filesystem::symlink_status(folder / name)); }

    // Variables set for (or, as ToolProcess::unset, removed from) the tool's environment.
    std::map<std::string, std::string> environment;
};

} // namespace CordelTest
