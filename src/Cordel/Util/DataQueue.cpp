#include <Cordel/IPP/Memory.h>
#include <Cordel/Util/DataQueue.h>

#include <new>

namespace Cordel::Util {

namespace {

// Positions are 32-bit byte offsets; a queue that would need more is refused, not wrapped.
constexpr unsigned long long maxBytes = 0xFFFFFFFFull;

} // namespace

DataQueue::DataQueue(unsigned int itemBytes, unsigned int itemsPerFrame, unsigned int capacityFrames)
    : itemBytes(itemBytes), itemsPerFrame(itemsPerFrame), readPos(0), writePos(0)
{
    unsigned long long const bytes = 1ull * capacityFrames * itemsPerFrame * itemBytes;
    if (bytes > maxBytes)
        throw std::bad_alloc();
    storage.resize(bytes);
}

unsigned int DataQueue::GetSize() const
{
    unsigned int const f = frameBytes();
    return f ? (writePos - readPos) / f : 0;
}

void DataQueue::Clear()
{
    readPos = 0;
    writePos = 0;
}

unsigned int DataQueue::Push(unsigned char const* data, unsigned int frames)
{
    unsigned int const f = frameBytes();
    if (f == 0)
        return 0;
    unsigned long long const bytes = 1ull * frames * f;
    // One byte of slack is always kept: an append ending exactly at the end takes the slow path.
    if (writePos + bytes >= storage.size()) {
        compact();
        reserveFor(1ull * (writePos / f + frames) * f);
    }
    IPP::Copy(static_cast<unsigned int>(bytes), data, storage.data() + writePos);
    writePos += static_cast<unsigned int>(bytes);
    return static_cast<unsigned int>(bytes);
}

unsigned int DataQueue::Pop(unsigned char* dest, unsigned int frames)
{
    unsigned int const available = GetSize();
    unsigned int const n = frames < available ? frames : available;
    unsigned int const bytes = n * frameBytes();
    if (n > 0)
        IPP::Copy(bytes, storage.data() + readPos, dest);
    readPos += bytes;
    return n;
}

// Moves the queued whole frames to the front; a partial trailing frame is dropped.
void DataQueue::compact()
{
    unsigned int const f = frameBytes();
    unsigned int const bytes = (writePos - readPos) / f * f;
    if (bytes > 0)
        IPP::Move(bytes, storage.data() + readPos, storage.data());
    writePos = bytes;
    readPos = 0;
}

void DataQueue::reserveFor(unsigned long long needed)
{
    unsigned long long length = storage.size();
    if (needed < length)
        return;
    // An empty storage starts from one byte, so that doubling always gets somewhere.
    length = length ? 2 * length : 1;
    while (length <= needed)
        length *= 2;
    if (length > maxBytes)
        throw std::bad_alloc();
    storage.resize(length);
}

} // namespace Cordel::Util
