#pragma once
// Internal: group membership from the system's group database.

namespace Cordel::Util::detail {

// Whether the user (a login name) belongs to the group of that name. False when the user has more
// groups than are looked at (511) or the database cannot say.
bool IsInGroup(char const* user, char const* group);

} // namespace Cordel::Util::detail
