#include <Cordel/Util/Clipboard.h>

#include <Cordel/Util/detail/Process.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace Cordel::Util {

namespace {

using Bytes = std::vector<unsigned char>;

// The helper's exit codes (see detail/ClipboardHelper.cpp).
enum HelperExit { Done = 0, NotOnOffer = 1, NoDisplay = 2, TooLarge = 3 };
// Long enough for a slow clipboard owner, short enough that a hung one does not freeze the caller.
constexpr int helperTimeoutMs = 5000;

char const* const textTargets[] = {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"};

std::vector<std::string> targetsOf(unsigned int format)
{
    if (format == Clipboard::TextFormat)
        return {std::begin(textTargets), std::end(textTargets)};
    char name[64];
    std::snprintf(name, sizeof name, "application/x-cordel-format-%08X", format);
    return {name};
}

// Where the helper is: named by the environment, else in cordel/ beside this library.
std::string helperPath()
{
    if (char const* named = std::getenv("CORDEL_CLIPBOARD_HELPER"); named && *named)
        return named;
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<void*>(&Clipboard::RegisterFormat), &info) || !info.dli_fname)
        return {};
    std::string library = info.dli_fname;
    std::size_t const slash = library.rfind('/');
    std::string const folder = slash == std::string::npos ? "." : library.substr(0, slash);
    return folder + "/cordel/cordel-clipboard";
}

// The helper to reach the desktop's clipboard through, or nothing when there is no desktop.
std::optional<std::string> desktopHelper()
{
    char const* display = std::getenv("DISPLAY");
    if (!display || !*display)
        return std::nullopt;
    std::string path = helperPath();
    if (path.empty() || ::access(path.c_str(), X_OK) != 0)
        return std::nullopt;
    return path;
}

// The clipboard of a process without a desktop.
struct LocalClipboard {
    std::mutex lock;
    std::map<unsigned int, Bytes> flavours;
};

LocalClipboard& local()
{
    static LocalClipboard clipboard;
    return clipboard;
}

// What lies on the clipboard under one format, as the getters see it.
struct Found {
    enum { Absent, Over, Present } state = Absent;
    Bytes bytes;
};

void appendField(Bytes& out, std::string_view field)
{
    std::uint32_t const length = static_cast<std::uint32_t>(field.size());
    auto const* l = reinterpret_cast<unsigned char const*>(&length);
    out.insert(out.end(), l, l + sizeof length);
    out.insert(out.end(), field.begin(), field.end());
}

// The helper's entries: each target name with its bytes. Text goes without its zero byte.
Bytes serveInput(std::map<unsigned int, Bytes> const& flavours)
{
    Bytes input;
    for (auto const& [format, bytes] : flavours) {
        std::string_view data(reinterpret_cast<char const*>(bytes.data()), bytes.size());
        if (format == Clipboard::TextFormat && !data.empty() && data.back() == 0)
            data.remove_suffix(1);
        for (std::string const& target : targetsOf(format)) {
            appendField(input, target);
            appendField(input, data);
        }
    }
    return input;
}

// Places the flavours on the desktop's clipboard; false when there turned out to be no display.
bool serveOnDesktop(std::string const& helper, std::map<unsigned int, Bytes> const& flavours)
{
    auto const result = detail::RunProcess(helper, {"serve"}, serveInput(flavours), 16, helperTimeoutMs);
    return !(result.finished && result.exitCode == NoDisplay);
}

// Reads one format from the desktop's clipboard; nothing when there turned out to be no display.
std::optional<Found> fetchFromDesktop(std::string const& helper, unsigned int format, unsigned int maxSize)
{
    // Text from other programs has no zero byte; ours gets one, and it counts in the size.
    bool const text = format == Clipboard::TextFormat;
    Found found;
    if (text && maxSize == 0)
        return found;
    std::size_t const limit = text ? maxSize - 1 : maxSize;
    std::vector<std::string> args{"get", std::to_string(limit)};
    for (std::string const& target : targetsOf(format))
        args.push_back(target);
    auto result = detail::RunProcess(helper, args, {}, limit, helperTimeoutMs);
    if (result.finished && result.exitCode == NoDisplay)
        return std::nullopt;
    if (result.outputOverLimit || (result.finished && result.exitCode == TooLarge))
        found.state = Found::Over;
    else if (result.finished && result.exitCode == Done && (text || !result.output.empty()))
        found.state = Found::Present;
    if (found.state == Found::Present) {
        found.bytes = std::move(result.output);
        if (text)
            found.bytes.push_back(0);
    }
    return found;
}

std::optional<bool> desktopOffers(std::string const& helper, unsigned int format)
{
    auto const result = detail::RunProcess(helper, {"targets"}, {}, 1 << 20, helperTimeoutMs);
    if (result.finished && result.exitCode == NoDisplay)
        return std::nullopt;
    if (!result.finished || result.exitCode != Done)
        return false;
    std::string const listed(result.output.begin(), result.output.end());
    for (std::string const& target : targetsOf(format))
        if (("\n" + listed).find("\n" + target + "\n") != std::string::npos)
            return true;
    return false;
}

Found fetch(unsigned int format, unsigned int maxSize)
{
    if (auto const helper = desktopHelper())
        if (auto found = fetchFromDesktop(*helper, format, maxSize))
            return *found;
    LocalClipboard& clipboard = local();
    std::lock_guard<std::mutex> hold(clipboard.lock);
    Found found;
    auto const it = clipboard.flavours.find(format);
    if (it != clipboard.flavours.end()) {
        found.state = it->second.size() > maxSize ? Found::Over : Found::Present;
        if (found.state == Found::Present)
            found.bytes = it->second;
    }
    return found;
}

} // namespace

unsigned int Clipboard::RegisterFormat(String const&, unsigned int format)
{
    return format;
}

bool Clipboard::IsFormatAvailable(unsigned int format)
{
    if (auto const helper = desktopHelper())
        if (auto const offered = desktopOffers(*helper, format))
            return *offered;
    LocalClipboard& clipboard = local();
    std::lock_guard<std::mutex> hold(clipboard.lock);
    return clipboard.flavours.count(format) != 0;
}

void Clipboard::SetContent(void*, checked_value<unsigned int> const& format, std::vector<unsigned char> const& data,
                           String const& text)
{
    std::map<unsigned int, Bytes> flavours;
    if (format.IsSet() && !data.empty())
        flavours[format.Get()] = data;
    if (!text.IsEmpty() && !flavours.count(TextFormat)) {
        Bytes& bytes = flavours[TextFormat];
        bytes.assign(text.c_str(), text.c_str() + text.Length() + 1);
    }
    if (auto const helper = desktopHelper())
        if (serveOnDesktop(*helper, flavours))
            return;
    LocalClipboard& clipboard = local();
    std::lock_guard<std::mutex> hold(clipboard.lock);
    clipboard.flavours = std::move(flavours);
}

void Clipboard::GetContent(void*, unsigned int format, std::vector<unsigned char>& data, unsigned int maxSize)
{
    Found found = fetch(format, maxSize);
    if (found.state == Found::Present && !found.bytes.empty())
        data = std::move(found.bytes);
}

String Clipboard::GetString(void*, unsigned int maxLength)
{
    Found const found = fetch(TextFormat, maxLength);
    if (found.state != Found::Present || found.bytes.empty())
        return String();
    // Up to the first zero byte: the terminator, or an embedded one another program put there.
    std::string_view const bytes(reinterpret_cast<char const*>(found.bytes.data()), found.bytes.size());
    return String(bytes.substr(0, bytes.find('\0')));
}

} // namespace Cordel::Util
