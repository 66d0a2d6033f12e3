#pragma once
// TinyXML-2, offered to applications as part of Cordel: parse a file or text into a node tree,
// walk and edit its elements and attributes, print and save it. Linking Cordel::Cordel (or the
// cordel pkg-config module) brings the library in too.

#include <tinyxml2.h>

namespace Cordel {

namespace TinyXML = ::tinyxml2;

} // namespace Cordel
