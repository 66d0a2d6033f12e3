// cordel open: opens a URL with the desktop's default handler.

#include "Command.h"

#include <Cordel/Util/LaunchURL.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>

using namespace Cordel;

namespace CordelTool {

namespace {

bool onPath(char const* program)
{
    char const* path = std::getenv("PATH");
    std::string_view folders = path ? path : "";
    while (!folders.empty()) {
        std::size_t const colon = std::min(folders.find(':'), folders.size());
        std::string const candidate = std::string(folders.substr(0, colon)) + "/" + program;
        if (colon > 0 && ::access(candidate.c_str(), X_OK) == 0)
            return true;
        folders.remove_prefix(std::min(colon + 1, folders.size()));
    }
    return false;
}

int open(Args const& args)
{
    Util::CommandLine line("cordel open", "Opens a URL with the desktop's default handler (xdg-open).");
    Util::TextArg url("URL", 0, "URL", "what to open, as https://example.org/ or file:///tmp/a.wav");
    line.AddPositional(url);
    line.SetEpilogue("\nThe URL goes to xdg-open as one argument, never through a shell; cordel does not wait\n"
                     "for it. Empty URLs, URLs that are not printable ASCII and URLs that begin with \"-\" are\n"
                     "refused, and a missing xdg-open is a failure (exit 1).\n");
    if (ParseOrHelp(line, args))
        return 0;
    String const& text = url.Get();
    std::string_view const view = text.View();
    if (text.IsEmpty() || text.BeginsWith("-") ||
        std::any_of(view.begin(), view.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7E || static_cast<unsigned char>(c) < 0x20; }))
        throw Exception::Base(String("refused \"%1\": a URL is printable ASCII and does not begin with \"-\"").Arg(text));
    if (!onPath("xdg-open"))
        throw Exception::Base("xdg-open is not on PATH: nothing to open the URL with");
    Util::LaunchURL(text);
    return 0;
}

} // namespace

CORDEL_COMMAND("open", "open a URL with the desktop's default handler", open);

} // namespace CordelTool
