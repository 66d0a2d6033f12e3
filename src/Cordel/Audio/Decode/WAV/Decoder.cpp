#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Audio/detail/ChunkHeaders.h>
#include <Cordel/Audio/detail/WaveConstants.h>
#include <Cordel/Util/detail/Throw.h>

#include <cstring>

namespace Cordel::Audio::Decode::WAV {

using namespace Cordel::Audio::detail;

namespace {

bool hasTag(unsigned char const* p, char const* tag)
{
    return std::memcmp(p, tag, 4) == 0;
}

} // namespace

Decoder::Decoder(FilePath const& path) : PCMDecoder(path) {}

Decoder::~Decoder() = default;

bool Decoder::IsFile(std::vector<unsigned char> const& head)
{
    return head.size() >= 12 && hasTag(head.data(), "RIFF") && hasTag(head.data() + 8, "WAVE");
}

unsigned short Decoder::readUInt16()
{
    unsigned char b[2];
    file.ReadBlock(reinterpret_cast<char*>(b), 2);
    return static_cast<unsigned short>(b[0] | (b[1] << 8));
}

unsigned int Decoder::readUInt32()
{
    unsigned char b[4];
    file.ReadBlock(reinterpret_cast<char*>(b), 4);
    return static_cast<unsigned int>(b[0]) | (static_cast<unsigned int>(b[1]) << 8) | (static_cast<unsigned int>(b[2]) << 16)
        | (static_cast<unsigned int>(b[3]) << 24);
}

WaveFormat Decoder::Sync()
{
    if (synced)
        return format;
    beginSync();
    file.Open(3);
    unsigned int const available = file.Remaining().GetOr(0);
    if (available < 12)
        fail(String("File size too small to contain a valid RIFF header: %1 bytes").Arg(available), CORDEL_HERE);
    unsigned char header[12];
    file.ReadBlock(reinterpret_cast<char*>(header), 12);
    if (!hasTag(header, "RIFF") || !hasTag(header + 8, "WAVE"))
        fail("Invalid RIFF header", CORDEL_HERE);

    unsigned int const fileSize = file.Size();
    unsigned int const riffSize = static_cast<unsigned int>(header[4]) | (static_cast<unsigned int>(header[5]) << 8)
        | (static_cast<unsigned int>(header[6]) << 16) | (static_cast<unsigned int>(header[7]) << 24);
    ChunkHeaders headers(file, fileSize, false);
    bool haveFormat = false, haveData = false;
    unsigned int dataStart = 0, dataSize = 0;
    unsigned int factAt = 0; // the frame count of a fact chunk before the samples, which a repair rewrites
    unsigned int id = 0, size = 0;
    for (unsigned long long at = 12; headers.Read(at, id, size); ) {
        unsigned int const body = static_cast<unsigned int>(at + 8);
        unsigned int const remaining = fileSize - body;
        if (id == FourCC("data") && !haveData && isInterrupted(size, remaining, riffSize, fileSize)) {
            // The samples run to the end of the file: nothing after them is a chunk.
            haveData = true;
            dataStart = body;
            dataSize = remaining;
            recoverData({body - 4, factAt, false});
            break;
        }
        if (size > remaining)
            break;
        if (id == FourCC("fact") && size >= 4 && !haveData && !factAt)
            factAt = body;
        if (id == FourCC("data")) {
            if (!haveData) {
                haveData = true;
                dataStart = body;
                dataSize = size;
            }
        } else if (id == FourCC("fmt ")) {
            if (!haveFormat) {
                file.At(body);
                parseFormatChunk(size);
                haveFormat = true;
            }
        } else {
            listChunk(applicationChunks, {id, body, size}, static_cast<unsigned int>(at));
        }
        // The pad byte after an odd-sized body belongs to no chunk.
        at = 0ull + body + size + (size & 1u);
    }
    if (!haveFormat)
        fail("Didn't find common chunk", CORDEL_HERE);
    if (!haveData)
        fail("Didn't find data chunk", CORDEL_HERE);
    return finishSync(dataStart, dataSize);
}

bool Decoder::findUnlisted(unsigned int id, bool application, unsigned int from, ApplicationChunkInfo& found) const
{
    (void)application; // one list serves GetChunk and GetApplicationChunk alike
    Util::File walking(file.GetPath());
    walking.Open(2);
    unsigned int const fileSize = walking.Size();
    ChunkHeaders headers(walking, fileSize, false);
    unsigned int chunkId = 0, size = 0;
    for (unsigned long long at = from; headers.Read(at, chunkId, size); at += 8ull + size + (size & 1u)) {
        unsigned int const body = static_cast<unsigned int>(at + 8);
        if (size > fileSize - body || (recoveredData() && chunkId == FourCC("data")))
            return false; // where Sync's walk ended
        if (chunkId == id && id != FourCC("data") && id != FourCC("fmt ")) {
            found = {id, body, size};
            return true;
        }
    }
    return false;
}

void Decoder::parseFormatChunk(unsigned int size)
{
    if (size < 16)
        fail(String("Format chunk is %1 bytes, expected at least %2 bytes").Arg(size).Arg(16), CORDEL_HERE);
    unsigned short const tag = readUInt16();
    unsigned short const channels = readUInt16();
    unsigned int const rate = readUInt32();
    readUInt32(); // average bytes per second
    readUInt16(); // block align
    unsigned short const bits = readUInt16();
    if (channels == 0)
        fail(String("Bad number of channels: %1").Arg(channels), CORDEL_HERE);
    format.numChannels = channels;
    if (rate == 0)
        fail(String("Bad sampling rate: %1").Arg(rate), CORDEL_HERE);
    format.sampleRate = rate;

    if (tag == WAVE_FORMATEXTENSIBLE_PCM_TAG) {
        // The extension lies inside the declared chunk, which the walk checked against the file.
        unsigned short const extra = size >= 18 ? readUInt16() : 0;
        if (extra < 22 || size < 40)
            fail(String("Expected wave format extensible chunk, only %1 extra bytes").Arg(extra), CORDEL_HERE);
        readUInt16(); // valid bits per sample
        unsigned int const mask = readUInt32();
        WaveGuid guid;
        guid.data1 = readUInt32();
        guid.data2 = readUInt16();
        guid.data3 = readUInt16();
        file.ReadBlock(reinterpret_cast<char*>(guid.data4), 8);
        WaveGuid const& pcm = WAVE_FORMAT_PCM_SUBTYPE;
        bool const known = (guid.data1 == 1 || guid.data1 == 3) && guid.data2 == pcm.data2 && guid.data3 == pcm.data3
            && std::memcmp(guid.data4, pcm.data4, 8) == 0;
        if (!known) {
            String text = String("%1/%2/%3/%4%4%4%4%4%4%4%4").Arg(guid.data1).Arg(guid.data2).Arg(guid.data3);
            for (unsigned char b : guid.data4)
                text = text.Arg(static_cast<unsigned int>(b));
            fail(String("Invalid wave format extensible subtype GUID %1").Arg(text), CORDEL_HERE);
        }
        format.isFloat = guid.data1 == 3;
        format.bytesPerSample = (bits + 7u) / 8u;
        format.channelMask = mask;
        return;
    }
    if (tag != WAVE_FORMAT_PCM_TAG && tag != WAVE_FORMAT_FLOAT_TAG)
        fail(String("Bad wave format tag: %1").Arg(tag), CORDEL_HERE);
    format.isFloat = tag == WAVE_FORMAT_FLOAT_TAG;
    if (tag == WAVE_FORMAT_PCM_TAG && (bits == 8 || bits == 16 || bits == 24))
        format.bytesPerSample = bits / 8u;
    else if (bits == 32)
        format.bytesPerSample = 4;
    else if (tag == WAVE_FORMAT_FLOAT_TAG && bits == 64 && readingOptions.allSampleForms)
        format.bytesPerSample = 8;
    else
        fail(String("Unsupported bit depth / wave format combination: %1/%2").Arg(tag).Arg(bits), CORDEL_HERE);
}

} // namespace Cordel::Audio::Decode::WAV
