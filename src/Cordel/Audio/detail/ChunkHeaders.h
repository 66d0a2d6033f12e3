#pragma once
// Internal: the 8-byte chunk headers of a RIFF or IFF chunk list, read through a window of the
// file. A walk over many small chunks then costs one read per window instead of a seek and a
// refilled stdio buffer per chunk, so that a file of millions of empty chunks is walked in
// linear time.

#include <Cordel/IPP/Memory.h>
#include <Cordel/Util/File.h>

namespace Cordel::Audio::detail {

class ChunkHeaders {
public:
    // bigEndianSizes: IFF (AIFF) sizes; RIFF sizes are little-endian. Identifiers are always
    // returned with their first character in the most significant byte.
    ChunkHeaders(Util::File& file, unsigned int fileSize, bool bigEndianSizes)
        : file(file), fileSize(fileSize), bigEndianSizes(bigEndianSizes)
    {
    }

    // The header at a file position; false when fewer than 8 bytes remain there. Moves the file
    // position when it refills the window.
    bool Read(unsigned long long at, unsigned int& id, unsigned int& size);
    // The big-endian 32-bit value at a file position (an AIFF application chunk's signature);
    // the caller has checked that the file holds it.
    unsigned int Word(unsigned long long at);

private:
    // Makes the window cover count bytes from at, which the file holds.
    unsigned char const* cover(unsigned long long at, unsigned int count);

    static constexpr unsigned int windowSize = 65536;

    Util::File& file;
    unsigned int fileSize;
    bool bigEndianSizes;
    aligned_vector<unsigned char> window;
    unsigned long long windowStart = 0;
};

} // namespace Cordel::Audio::detail
