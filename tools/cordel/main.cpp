// cordel: inspect, convert, generate and analyse audio and MIDI files with the Cordel library.

#include "Command.h"

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Version.h>

#include <clocale>
#include <string_view>

using namespace Cordel;
using namespace CordelTool;

namespace {

String overview()
{
    String text = "Usage: cordel COMMAND [ARGUMENTS]\n"
                  "       cordel help COMMAND\n"
                  "       cordel --version\n\n"
                  "Audio and MIDI file work on the command line, built on the Cordel library.\n\n"
                  "Commands:\n";
    for (Command const& c : AllCommands()) {
        String line = String("  ") + c.name;
        while (line.Length() < 16)
            line += ' ';
        text += line + c.summary + "\n";
    }
    return text + "\nRun 'cordel help COMMAND' or 'cordel COMMAND --help' for a command's arguments.\n\n"
                  "Failures print one line, \"cordel COMMAND: FILE: reason\", and exit with 1; a wrong\n"
                  "command line exits with 2. --verbose, anywhere before \"--\", adds the library's full\n"
                  "account of a failure.\n\n"
                  "Output files are written whole or not at all: the new file is written beside OUT and\n"
                  "takes its place once complete, so a failure or Ctrl-C leaves an existing OUT as it was\n"
                  "and nothing behind. A symbolic link is followed; a FIFO, a device or '-' (standard\n"
                  "output) is written in place once the output is complete, and never removed.\n";
}

int usageError(String const& message)
{
    PrintError(String("cordel: %1\n").Arg(message));
    return 2;
}

// One line, whatever the library's message holds: its first line is the reason.
String firstLine(String const& message)
{
    std::string_view const text = message.View();
    return String(text.substr(0, text.find('\n')));
}

int run(Command const& command, Args const& args, bool verbose)
{
    String const name(command.name);
    try {
        return command.run(args);
    } catch (Util::CommandLine::Error const& e) {
        PrintError(String("cordel ") + name + ": " + firstLine(e.GetMessage()) + "\nTry 'cordel " + name + " --help'.\n");
        return 2;
    } catch (Exception::Base const& e) {
        PrintError(String("cordel %1: %2\n").Arg(name).Arg(firstLine(e.GetMessage())));
        if (verbose)
            PrintError(e.ToString());
        return 1;
    } catch (std::exception const& e) {
        PrintError(String("cordel %1: %2\n").Arg(name).Arg(firstLine(String(e.what()))));
        return 1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    // --verbose may stand anywhere before a "--"; it adds the library's full account to failures.
    Args args;
    bool verbose = false, options = true;
    for (int i = 1; i < argc; ++i) {
        String const arg(argv[i]);
        options = options && arg != "--";
        if (options && arg == "--verbose")
            verbose = true;
        else
            args.push_back(arg);
    }
    String const first = args.empty() ? String() : args.front();
    if (!args.empty())
        args.erase(args.begin());

    if (first.IsEmpty() || first == "--help" || first == "-h") {
        Print(overview());
        return first.IsEmpty() ? 2 : 0;
    }
    if (first == "--version") {
        Print(String("cordel %1\n").Arg(GetVersionString()));
        return 0;
    }
    if (first == "help") {
        if (args.empty()) {
            Print(overview());
            return 0;
        }
        Command const* command = FindCommand(args[0]);
        if (!command)
            return usageError(String("unknown command '%1'").Arg(args[0]));
        Args help(args.begin() + 1, args.end());
        help.emplace_back("--help");
        return run(*command, help, verbose);
    }
    Command const* command = FindCommand(first);
    if (!command)
        return usageError(String("unknown command '%1'; run 'cordel --help' for the list").Arg(first));
    return run(*command, args, verbose);
}
