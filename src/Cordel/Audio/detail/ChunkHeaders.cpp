#include <Cordel/Audio/detail/ChunkHeaders.h>

#include <algorithm>

namespace Cordel::Audio::detail {

bool ChunkHeaders::Read(unsigned long long at, unsigned int& id, unsigned int& size)
{
    if (at > fileSize || fileSize - at < 8)
        return false;
    if (at < windowStart || at + 8 > windowStart + window.size()) {
        window.resize(static_cast<std::size_t>(std::min<unsigned long long>(windowSize, fileSize - at)));
        windowStart = at;
        file.At(static_cast<unsigned int>(at));
        file.ReadBlock(reinterpret_cast<char*>(window.data()), static_cast<unsigned int>(window.size()));
    }
    unsigned char const* p = window.data() + (at - windowStart);
    auto const be = [](unsigned char const* q) {
        return (static_cast<unsigned int>(q[0]) << 24) | (static_cast<unsigned int>(q[1]) << 16)
            | (static_cast<unsigned int>(q[2]) << 8) | q[3];
    };
    id = be(p);
    size = bigEndianSizes ? be(p + 4)
                          : static_cast<unsigned int>(p[4]) | (static_cast<unsigned int>(p[5]) << 8)
            | (static_cast<unsigned int>(p[6]) << 16) | (static_cast<unsigned int>(p[7]) << 24);
    return true;
}

} // namespace Cordel::Audio::detail
