#include <Cordel/Util/detail/Groups.h>

#include <grp.h>

#include <cstring>
#include <vector>

namespace Cordel::Util::detail {

bool IsInGroup(char const* user, char const* group)
{
    gid_t groups[512];
    int count = 512;
    if (::getgrouplist(user, 0, groups, &count) < 0 || count < 1 || count > 511)
        return false;
    std::vector<char> buffer(16384);
    for (int i = 0; i < count; ++i) {
        struct group entry{};
        struct group* found = nullptr;
        if (::getgrgid_r(groups[i], &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
            std::strcmp(found->gr_name, group) == 0)
            return true;
    }
    return false;
}

} // namespace Cordel::Util::detail
