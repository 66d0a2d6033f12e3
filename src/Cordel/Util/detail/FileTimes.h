#pragma once
// Internal: reading and setting the times of a file or folder, shared by File and Dir.

#include <Cordel/Util/File.h>
#include <Cordel/common/String.h>

namespace Cordel::Util::detail {

// False when the path cannot be examined; the time is filled only when not null.
bool GetPathTime(String const& path, FileTime* time);
// False when the path is missing or its times cannot be set. An unset field is left alone.
bool SetPathTime(String const& path, FileTime const& time);

} // namespace Cordel::Util::detail
