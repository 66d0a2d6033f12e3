#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/detail/ChunkHeaders.h>
#include <Cordel/Audio/detail/Extended.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Cordel::Audio::Decode::AIFF {

namespace {

bool hasTag(unsigned char const* p, char const* tag)
{
    return std::memcmp(p, tag, 4) == 0;
}

unsigned int bigEndian32(unsigned char const* p)
{
    return (static_cast<unsigned int>(p[0]) << 24) | (static_cast<unsigned int>(p[1]) << 16)
        | (static_cast<unsigned int>(p[2]) << 8) | p[3];
}

} // namespace

Decoder::Decoder(FilePath const& path) : PCMDecoder(path) {}

Decoder::~Decoder() = default;

bool Decoder::IsFile(std::vector<unsigned char> const& head)
{
    return head.size() >= 12 && hasTag(head.data(), "FORM") && hasTag(head.data() + 8, "AIFF");
}

unsigned int Decoder::readUInt32()
{
    unsigned char b[4];
    file.ReadBlock(reinterpret_cast<char*>(b), 4);
    return bigEndian32(b);
}

void Decoder::ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead)
{
    if (readingOptions.allSampleForms)
        PCMDecoder::ReadFloatInterleaved(frames, out, framesRead);
}

WaveFormat Decoder::Sync()
{
    if (synced)
        return format;
    beginSync();
    chunks.clear();
    commonFrames = 0;
    file.Open(3);
    unsigned int const available = file.Remaining().GetOr(0);
    if (available < 12)
        fail(String("File size too small to contain a valid AIFF header: %1 bytes").Arg(available), CORDEL_HERE);
    unsigned char header[12];
    file.ReadBlock(reinterpret_cast<char*>(header), 12);
    bool const compressed = hasTag(header + 8, "AIFC");
    if (!hasTag(header, "FORM") || !(compressed || hasTag(header + 8, "AIFF")))
        fail("Invalid AIFF header", CORDEL_HERE);

    unsigned int const fileSize = file.Size();
    detail::ChunkHeaders headers(file, fileSize, true);
    bool haveCommon = false, haveData = false;
    unsigned int dataStart = 0, dataSize = 0, commonAt = 0;
    unsigned int id = 0, size = 0;
    for (unsigned long long at = 12; headers.Read(at, id, size);) {
        unsigned int const body = static_cast<unsigned int>(at + 8);
        unsigned int const remaining = fileSize - body;
        if (id == FourCC("SSND") && !haveData && haveCommon && remaining >= 8
            && isInterrupted(size, remaining, bigEndian32(header + 4), fileSize)) {
            file.At(body);
            unsigned int const offset = readUInt32();
            if (offset <= remaining - 8) {
                // The samples run to the end of the file: nothing after them is a chunk.
                haveData = true;
                dataStart = body + 8 + offset;
                dataSize = remaining - 8 - offset;
                recoverData({body - 4, commonAt + 2, true});
            }
            break;
        }
        if (size > remaining)
            break; // a chunk that runs past the end ends the walk
        if (id == FourCC("COMM")) {
            if (!haveCommon) {
                file.At(body);
                parseCommonChunk(size, compressed);
                commonAt = body;
            }
            haveCommon = true;
        } else if (id == FourCC("SSND")) {
            if (!haveData && size >= 8) {
                file.At(body);
                unsigned int const offset = readUInt32();
                readUInt32(); // block size
                if (offset <= size - 8) {
                    haveData = true;
                    dataStart = body + 8 + offset;
                    dataSize = size - 8 - offset;
                }
            }
        } else if (id == FourCC("APPL") && size >= 4) {
            listChunk(applicationChunks, {headers.Word(body), body + 4, size - 4}, static_cast<unsigned int>(at));
        } else {
            listChunk(chunks, {id, body, size}, static_cast<unsigned int>(at));
        }
        at = 0ull + body + size + (size & 1u);
    }
    if (!haveCommon)
        fail("Didn't find common chunk", CORDEL_HERE);
    if (!haveData)
        fail("Didn't find sound data chunk", CORDEL_HERE);
    unsigned int const frameBytes = format.BytesPerFrame();
    if (recoveredData())
        return finishSync(dataStart, dataSize); // the frame count of an interrupted header is not to be trusted
    return finishSync(dataStart, std::min<unsigned long long>(dataSize, 1ull * commonFrames * frameBytes));
}

bool Decoder::findUnlisted(unsigned int id, bool application, unsigned int from, ApplicationChunkInfo& found) const
{
    Util::File walking(file.GetPath());
    walking.Open(2);
    unsigned int const fileSize = walking.Size();
    detail::ChunkHeaders headers(walking, fileSize, true);
    unsigned int chunkId = 0, size = 0;
    for (unsigned long long at = from; headers.Read(at, chunkId, size); at += 8ull + size + (size & 1u)) {
        unsigned int const body = static_cast<unsigned int>(at + 8);
        if (size > fileSize - body || (recoveredData() && chunkId == FourCC("SSND")))
            return false; // where Sync's walk ended
        if (chunkId == FourCC("COMM") || chunkId == FourCC("SSND"))
            continue;
        bool const isApplication = chunkId == FourCC("APPL") && size >= 4;
        if (isApplication != application)
            continue;
        if (!application && chunkId == id) {
            found = {id, body, size};
            return true;
        }
        if (application && headers.Word(body) == id) {
            found = {id, body + 4, size - 4};
            return true;
        }
    }
    return false;
}

void Decoder::parseCommonChunk(unsigned int size, bool compressed)
{
    if (size < 18 || (compressed && size < 22))
        fail(String("Common chunk is %1 bytes, expected at least %2 bytes").Arg(size).Arg(compressed ? 22 : 18), CORDEL_HERE);
    unsigned char c[22];
    file.ReadBlock(reinterpret_cast<char*>(c), compressed ? 22 : 18);
    unsigned int const channels = (c[0] << 8) | c[1];
    commonFrames = bigEndian32(c + 2);
    unsigned int const bits = (c[6] << 8) | c[7];
    double const rate = detail::extendedToDouble(c + 8);
    if (channels == 0)
        fail(String("Bad number of channels: %1").Arg(channels), CORDEL_HERE);
    // The bound keeps the rounded rate inside 32 bits.
    if (!(rate >= 1.0 && rate < 4294967295.5))
        fail(String("Bad sampling rate: %1").Arg(rate, 0), CORDEL_HERE);
    format.numChannels = channels;
    format.sampleRate = static_cast<unsigned int>(std::lround(rate));
    coding.bigEndian = true;
    coding.signedBytes = true;

    unsigned int const type = compressed ? bigEndian32(c + 18) : FourCC("NONE");
    if (type == FourCC("NONE") || type == FourCC("twos") || type == FourCC("sowt")) {
        if (bits == 0 || bits > 32)
            fail(String("Unsupported AIFF sample size: %1").Arg(bits), CORDEL_HERE);
        format.bytesPerSample = (bits + 7) / 8;
        coding.bigEndian = type != FourCC("sowt");
    } else if (type == FourCC("fl32") || type == FourCC("FL32")) {
        format.isFloat = true;
        format.bytesPerSample = 4;
    } else if (type == FourCC("fl64") || type == FourCC("FL64")) {
        format.isFloat = true;
        format.bytesPerSample = 8;
    } else {
        char const text[5] = {static_cast<char>(c[18]), static_cast<char>(c[19]), static_cast<char>(c[20]),
                              static_cast<char>(c[21]), 0};
        fail(String("Unsupported AIFF-C compression type %1").Arg(text), CORDEL_HERE);
    }
}

} // namespace Cordel::Audio::Decode::AIFF
