#pragma once
// Opening a URL with the desktop's default handler.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

namespace Cordel::Util {

// Hands url to xdg-open, as one argument and never through a shell, and returns without waiting
// for it (a browser may keep xdg-open running until it exits). Does nothing for an empty URL,
// for one that is not plain ASCII, and for one that begins with "-", which xdg-open would take
// for an option. Nothing is reported either way.
CORDEL_API void LaunchURL(String const& url);

} // namespace Cordel::Util
