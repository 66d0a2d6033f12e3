#pragma once
// Internal: the site of a throw in the library's own sources. The build maps the source folder to
// "../../", so __FILE__ reads "../../src/Cordel/...". Sites whose file and line callers rely on
// spell them out as constants instead.

#include <Cordel/Util/Exception.h>

#define CORDEL_HERE (::Cordel::Exception::Site{__FILE__, __LINE__})
