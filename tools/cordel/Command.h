#pragma once
// The tool's commands. Each command lives in its own file and registers itself with a
// CORDEL_COMMAND line; main() finds it by name.

#include <Cordel/Util/CommandLine.h>
#include <Cordel/common/String.h>

#include <vector>

namespace CordelTool {

using Args = std::vector<Cordel::String>;

struct Command {
    char const* name;
    char const* summary;
    // Runs with the arguments after the command's name; returns the exit code. Usage faults throw
    // CommandLine::Error (exit 2), other failures Exception::Base (exit 1).
    int (*run)(Args const& args);
};

std::vector<Command> const& AllCommands();
Command const* FindCommand(Cordel::String const& name);

struct CommandRegistration {
    explicit CommandRegistration(Command const& command);
};

// Parses args into the command line; prints the help and returns true when it was asked for.
bool ParseOrHelp(Cordel::Util::CommandLine& line, Args const& args);

// Writes text to standard output / standard error.
void Print(Cordel::String const& text);
void PrintError(Cordel::String const& text);

} // namespace CordelTool

#define CORDEL_COMMAND_CAT2(a, b) a##b
#define CORDEL_COMMAND_CAT(a, b) CORDEL_COMMAND_CAT2(a, b)
#define CORDEL_COMMAND(name, summary, function) \
    static ::CordelTool::CommandRegistration CORDEL_COMMAND_CAT(commandRegistration, __LINE__)({name, summary, function})
