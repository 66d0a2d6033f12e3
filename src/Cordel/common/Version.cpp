#include <Cordel/common/Version.h>

namespace Cordel {

char const* GetVersionString()
{
    return CORDEL_VERSION;
}

} // namespace Cordel
