#pragma once
// Signature text helpers shared by the meta-objects and the connection logic.

#include <string>

namespace Cordel::Util::detail {

// Canonical form of a signature: white space (' ', '\t') goes at both ends, next to ',', '(' and
// ')' and before '*' and '&'; any other run of it becomes one space, so that "const  String &"
// and "const String&" name the same type.
std::string normalizeSignature(char const* signature);

} // namespace Cordel::Util::detail
