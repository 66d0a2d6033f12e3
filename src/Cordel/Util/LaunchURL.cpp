#include <Cordel/Util/LaunchURL.h>

#include <Cordel/Util/detail/Process.h>

namespace Cordel::Util {

namespace {

bool launchable(std::string_view url)
{
    if (url.empty() || url.front() == '-')
        return false;
    for (char c : url)
        if (c == 0 || static_cast<unsigned char>(c) > 0x7F)
            return false;
    return true;
}

} // namespace

void LaunchURL(String const& url)
{
    if (launchable(url.View()))
        detail::SpawnDetached("xdg-open", {url.ToStdString()});
}

} // namespace Cordel::Util
