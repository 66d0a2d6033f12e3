#include <Cordel/Audio/detail/ChunkHeaders.h>

#include <algorithm>

namespace Cordel::Audio::detail {

namespace {

unsigned int be(unsigned char const* q)
{
    return (static_cast<unsigned int>(q[0]) << 24) | (static_cast<unsigned int>(q[1]) << 16)
        | (static_cast<unsigned int>(q[2]) << 8) | q[3];
}

} // namespace

unsigned char const* ChunkHeaders::cover(unsigned long long at, unsigned int count)
{
    if (at < windowStart || at + count > windowStart + window.size()) {
        window.resize(static_cast<std::size_t>(std::min<unsigned long long>(windowSize, fileSize - at)));
        windowStart = at;
        file.At(static_cast<unsigned int>(at));
        file.ReadBlock(reinterpret_cast<char*>(window.data()), static_cast<unsigned int>(window.size()));
    }
    return window.data() + (at - windowStart);
}

unsigned int ChunkHeaders::Word(unsigned long long at)
{
    return be(cover(at, 4));
}

bool ChunkHeaders::Read(unsigned long long at, unsigned int& id, unsigned int& size)
{
    if (at > fileSize || fileSize - at < 8)
        return false;
    unsigned char const* p = cover(at, 8);
    id = be(p);
    size = bigEndianSizes ? be(p + 4)
                          : static_cast<unsigned int>(p[4]) | (static_cast<unsigned int>(p[5]) << 8)
            | (static_cast<unsigned int>(p[6]) << 16) | (static_cast<unsigned int>(p[7]) << 24);
    return true;
}

} // namespace Cordel::Audio::detail
