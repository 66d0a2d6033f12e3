#pragma once
// The tool's commands. Each command lives in its own file and registers itself with a
// CORDEL_COMMAND line; main() finds it by name.

#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/common/String.h>

#include <utility>
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

// A failure about one file: "<path>: <reason>", reported as "cordel COMMAND: <path>: <reason>"
// with exit 1. It keeps the library's full account of the cause for --verbose.
class FileFailure : public Cordel::Exception::Base {
public:
    FileFailure(Cordel::String const& path, Cordel::String const& reason, Cordel::String cause)
        : Base(Cordel::String("%1: %2").Arg(path).Arg(reason)), cause(std::move(cause))
    {
    }
    // The cause's account; empty when the tool itself found the fault.
    Cordel::String ToString() const override { return cause; }

private:
    Cordel::String cause;
};

[[noreturn]] void FailFile(Cordel::String const& path, Cordel::String const& reason);

// Fails naming the file unless it opens for reading: the system's reason is the one a user needs,
// where the library would say only that the file did not open.
void CheckReadable(Cordel::String const& path);

// Whether two names reach the same file (through links, "..", or another spelling).
bool SameFile(Cordel::String const& a, Cordel::String const& b);

// Runs work and turns a library failure into one that names the file.
template <typename Work>
auto AboutFile(Cordel::String const& path, Work&& work) -> decltype(work())
{
    try {
        return work();
    } catch (Cordel::Util::CommandLine::Error const&) {
        throw;
    } catch (FileFailure const&) {
        throw;
    } catch (Cordel::Exception::Base const& e) {
        throw FileFailure(path, e.GetMessage(), e.ToString());
    }
}

} // namespace CordelTool

#define CORDEL_COMMAND_CAT2(a, b) a##b
#define CORDEL_COMMAND_CAT(a, b) CORDEL_COMMAND_CAT2(a, b)
#define CORDEL_COMMAND(name, summary, function) \
    static ::CordelTool::CommandRegistration CORDEL_COMMAND_CAT(commandRegistration, __LINE__)({name, summary, function})
