// cordel open: opens a URL with the desktop's default handler.

#include "Command.h"

#include <Cordel/Util/LaunchURL.h>

using namespace Cordel;

namespace CordelTool {

namespace {

int open(Args const& args)
{
    Util::CommandLine line("cordel open", "Opens a URL with the desktop's default handler (xdg-open).");
    Util::TextArg url("URL", 0, "URL", "what to open, as https://example.org/ or file:///tmp/a.wav");
    line.AddPositional(url);
    line.SetEpilogue("\nThe URL goes to xdg-open as one argument, never through a shell; cordel does not wait\n"
                     "for it. Empty URLs, URLs that are not ASCII and URLs that begin with \"-\" are refused.\n");
    if (ParseOrHelp(line, args))
        return 0;
    String const& text = url.Get();
    if (text.IsEmpty() || text.BeginsWith("-")) {
        PrintError(String("cordel open: refused \"%1\"\n").Arg(text));
        return 1;
    }
    Util::LaunchURL(text);
    return 0;
}

} // namespace

CORDEL_COMMAND("open", "open a URL with the desktop's default handler", open);

} // namespace CordelTool
