#include "Command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace CordelTool {

namespace {

std::vector<Command>& registry()
{
    static std::vector<Command> commands;
    return commands;
}

} // namespace

CommandRegistration::CommandRegistration(Command const& command)
{
    auto& all = registry();
    all.insert(std::upper_bound(all.begin(), all.end(), command,
                                [](Command const& a, Command const& b) { return Cordel::String(a.name) < b.name; }),
               command);
}

std::vector<Command> const& AllCommands()
{
    return registry();
}

Command const* FindCommand(Cordel::String const& name)
{
    for (Command const& c : registry())
        if (name == c.name)
            return &c;
    return nullptr;
}

bool ParseOrHelp(Cordel::Util::CommandLine& line, Args const& args)
{
    line.Parse(args);
    if (line.HelpRequested())
        Print(line.GetHelp());
    return line.HelpRequested();
}

void FailFile(Cordel::String const& path, Cordel::String const& reason)
{
    throw FileFailure(path, reason, Cordel::String());
}

bool SameFile(Cordel::String const& a, Cordel::String const& b)
{
    std::error_code ignored;
    return std::filesystem::equivalent(a.c_str(), b.c_str(), ignored);
}

void CheckReadable(Cordel::String const& path)
{
    int const file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        FailFile(path, std::strerror(errno));
    struct stat status{};
    bool const folder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    ::close(file);
    if (folder)
        FailFile(path, "is a folder");
}

void Print(Cordel::String const& text)
{
    std::fwrite(text.c_str(), 1, text.Length(), stdout);
}

void PrintError(Cordel::String const& text)
{
    std::fflush(stdout);
    std::fwrite(text.c_str(), 1, text.Length(), stderr);
}

} // namespace CordelTool
