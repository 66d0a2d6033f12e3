// cordel clip: copies standard input to the clipboard, or pastes the clipboard to standard output.

#include "Command.h"

#include <Cordel/Util/Clipboard.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>

using namespace Cordel;

namespace CordelTool {

namespace {

// Clipboard data the tool handles at most.
constexpr unsigned int maxBytes = 256u << 20;

// A format as four characters ("TEXT") or as a number ("0x54455854", "7").
unsigned int parseFormat(String const& text)
{
    if (text.Length() == 4 && !text.BeginsWith("0x")) {
        unsigned int code = 0;
        for (unsigned int i = 0; i < 4; ++i)
            code = code << 8 | static_cast<unsigned char>(text.c_str()[i]);
        return code;
    }
    bool ok = false;
    unsigned int const code = text.BeginsWith("0x") ? text.Mid(2).ToUInt(&ok, 16) : text.ToUInt(&ok);
    if (!ok)
        throw Util::CommandLine::Error(String("a format is four characters or a number, not \"%1\"").Arg(text));
    return code;
}

std::vector<unsigned char> readInput()
{
    std::vector<unsigned char> data;
    unsigned char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, stdin)) > 0) {
        data.insert(data.end(), buffer, buffer + n);
        if (data.size() > maxBytes)
            throw Exception::Base(String("more than %1 bytes on standard input").Arg(maxBytes));
    }
    return data;
}

// Fails unless DISPLAY names a display; one on this machine must have its socket.
void checkDisplay()
{
    char const* display = std::getenv("DISPLAY");
    if (!display || !*display)
        throw Exception::Base("no clipboard: DISPLAY is not set");
    std::string_view const name = display;
    if (name.front() != ':' && name.rfind("unix:", 0) != 0)
        return;
    std::string_view number = name.substr(name.find(':') + 1);
    number = number.substr(0, number.find('.'));
    std::string const socket = "/tmp/.X11-unix/X" + std::string(number);
    if (::access(socket.c_str(), F_OK) != 0)
        throw Exception::Base(String("no clipboard: display %1 is not running").Arg(display));
}

int clip(Args const& args)
{
    Util::CommandLine line("cordel clip", "Copies standard input to the clipboard, or pastes the clipboard to standard output.");
    Util::TextArg action("ACTION", 0, "ACTION", "copy or paste");
    Util::TextArg format("format", 'f', "CODE", "the format: four characters or a number", "TEXT");
    line.AddPositional(action);
    line.AddOption(format);
    line.SetEpilogue("\nOn X11 the text goes out as UTF8_STRING, text/plain;charset=utf-8 and STRING, any\n"
                     "other format as application/x-cordel-format-XXXXXXXX (its code in hex).\n");
    if (ParseOrHelp(line, args))
        return 0;
    unsigned int const code = parseFormat(format.IsSet() ? format.Get() : String("TEXT"));
    bool const text = code == Util::Clipboard::TextFormat;

    // Without a display the library keeps the data inside this process, which ends at once.
    checkDisplay();
    if (action.Get() == "copy") {
        auto const data = readInput();
        if (text && std::find(data.begin(), data.end(), 0) != data.end())
            throw Exception::Base("standard input holds a NUL byte, where text ends; copy it under another --format");
        if (text)
            Util::Clipboard::SetContent(nullptr, {}, {}, String(std::string_view(reinterpret_cast<char const*>(data.data()), data.size())));
        else
            Util::Clipboard::SetContent(nullptr, code, data, String());
        return 0;
    }
    if (action.Get() != "paste")
        throw Util::CommandLine::Error(String("unknown action \"%1\"").Arg(action.Get()));
    if (text) {
        if (!Util::Clipboard::IsFormatAvailable(code)) {
            PrintError("cordel clip: the clipboard holds no text\n");
            return 1;
        }
        Print(Util::Clipboard::GetString(nullptr, maxBytes));
        return 0;
    }
    std::vector<unsigned char> data;
    Util::Clipboard::GetContent(nullptr, code, data, maxBytes);
    if (data.empty()) {
        PrintError(String("cordel clip: the clipboard holds nothing under format %1\n").Arg(code, 16));
        return 1;
    }
    std::fwrite(data.data(), 1, data.size(), stdout);
    return 0;
}

} // namespace

CORDEL_COMMAND("clip", "copy to and paste from the clipboard", clip);

} // namespace CordelTool
