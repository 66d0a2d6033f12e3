#pragma once

#include <Cordel/common/Export.h>

namespace Cordel {

// The library's version, "major.minor.patch", as it was built.
CORDEL_API char const* GetVersionString();

} // namespace Cordel
