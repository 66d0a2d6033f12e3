// cordel: inspect, convert, generate and analyse audio and MIDI files with the Cordel library.

#include "Command.h"

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Version.h>

#include <clocale>

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
    return text + "\nRun 'cordel help COMMAND' or 'cordel COMMAND --help' for a command's arguments.\n";
}

int usageError(String const& message)
{
    PrintError(String("cordel: %1\n").Arg(message));
    return 2;
}

int run(Command const& command, Args const& args)
{
    try {
        return command.run(args);
    } catch (Util::CommandLine::Error const& e) {
        String const name(command.name);
        PrintError(String("cordel ") + name + ": " + e.GetMessage() + "\nTry 'cordel " + name + " --help'.\n");
        return 2;
    } catch (Exception::Base const& e) {
        PrintError(String("cordel %1: %2\n").Arg(command.name).Arg(e.GetMessage()));
        return 1;
    } catch (std::exception const& e) {
        PrintError(String("cordel %1: %2\n").Arg(command.name).Arg(e.what()));
        return 1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    Args args;
    for (int i = 2; i < argc; ++i)
        args.emplace_back(argv[i]);
    String const first = argc > 1 ? String(argv[1]) : String();

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
        return run(*command, help);
    }
    Command const* command = FindCommand(first);
    if (!command)
        return usageError(String("unknown command '%1'; run 'cordel --help' for the list").Arg(first));
    return run(*command, args);
}
