#pragma once
// A first-in-first-out byte queue counted in frames (a frame is itemBytes x itemsPerFrame bytes,
// for example one sample of every channel). The storage is one contiguous array that is
// compacted and doubled when the back is reached, so a steady stream settles at a fixed size.
// It has no lock: callers on different threads serialise access themselves.

#include <Cordel/common/Export.h>

#include <vector>

namespace Cordel::Util {

class CORDEL_API DataQueue {
public:
    // The frame size must be at least one byte (a zero frame size gives a queue that stays
    // empty) and the capacity at least one frame.
    DataQueue(unsigned int itemBytes, unsigned int itemsPerFrame, unsigned int capacityFrames);

    // Number of whole frames queued.
    unsigned int GetSize() const;
    // Empties the queue; the storage keeps its size.
    void Clear();
    // Appends `frames` frames; returns the number of BYTES appended.
    unsigned int Push(unsigned char const* data, unsigned int frames);
    // Takes up to `frames` frames from the front; returns the number of FRAMES taken.
    unsigned int Pop(unsigned char* dest, unsigned int frames);

private:
    unsigned int frameBytes() const { return itemBytes * itemsPerFrame; }
    void compact();
    void reserveFor(unsigned long long needed);

    unsigned int itemBytes;
    unsigned int itemsPerFrame;
    unsigned int readPos;
    unsigned int writePos;
    std::vector<unsigned char> storage;
};

} // namespace Cordel::Util
