#pragma once
// Lets GoogleTest print the library's value types in failure messages.

#include <Cordel/common/String.h>

#include <ostream>

namespace Cordel {

inline void PrintTo(String const& s, std::ostream* os)
{
    *os << '"' << s.View() << '"';
}

} // namespace Cordel
