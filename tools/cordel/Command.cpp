#include "Command.h"

#include <algorithm>
#include <cstdio>

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
