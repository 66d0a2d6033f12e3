#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/PCMDecoder.h>
#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::Decode {

using namespace Cordel::Audio::detail;

// The reading side of a decoder: where the file stands, the stage and the conversion buffers.
//
// Converting reads take the file in pieces of about 64 KB and convert from there: a system call
// per piece instead of one per request, and the copy out of the page cache lands in memory the
// cache still holds when the conversion reads it. The stage holds frames [stageFirst, stageEnd),
// already in little-endian offset form; raw reads and Seek never touch it.
// Hidden, although nested in an exported class: nothing outside the library names it.
class __attribute__((visibility("hidden"))) PCMDecoder::Reading {
public:
    enum class Target { Float, Double, Int16 };

    explicit Reading(PCMDecoder& decoder) : d(decoder) {}

    // Forgets where the file stands and what is staged.
    void Reset()
    {
        filePosition = {};
        stageFirst = stageEnd = 0;
    }
    void KnowPosition(unsigned int position) { filePosition = position; }
    // Someone else moved the file.
    void ForgetPosition() { filePosition = {}; }
    // Reads count bytes at a position of the file, seeking only when it is elsewhere.
    void ReadAt(unsigned int position, unsigned char* out, unsigned int count);
    // Checks the synced state and the conversion, clamps the request and reads the raw bytes
    // (swapped to little-endian order, 8-bit ones in offset form). Returns the frames read and
    // points raw at their bytes.
    unsigned int ReadForConversion(unsigned int frames, Target target, char const* operation, unsigned char const*& raw);
    void RawToFloat(unsigned int samples, unsigned char const* raw, float* out);
    void RawToInt16(unsigned int samples, unsigned char const* raw, short* out);
    // A float buffer of at least n values, for conversions that pass through float.
    float* Floats(unsigned int n);

private:
    static constexpr std::size_t stageCapacity = 65536;

    bool canConvert(Target target) const;
    // Makes the staged frames cover the n frames from the read position; false when the request
    // is too large for the stage or the file did not give the bytes.
    bool stage(unsigned int n);
    void toLittleEndianOffsetForm(unsigned int samples, unsigned char* raw) const;

    PCMDecoder& d;
    // Where the file stands when that is known: after our own seeks and sample reads, not after
    // a chunk fetch, a failed read or a header parse.
    checked_value<unsigned int> filePosition;
    aligned_vector<unsigned char> rawBuffer;
    aligned_vector<unsigned char> convertBuffer;
    aligned_vector<unsigned char> stageBuffer;
    unsigned int stageFirst = 0;
    unsigned int stageEnd = 0;
};

namespace {

// The i-th of a run of little-endian doubles that need not be aligned.
double doubleAt(unsigned char const* raw, std::size_t i)
{
    double v;
    std::memcpy(&v, raw + 8 * i, 8);
    return v;
}

} // namespace

Stream::~Stream() = default;

PCMDecoder::PCMDecoder(FilePath const& path) : file(path), reading(std::make_unique<Reading>(*this)) {}

PCMDecoder::~PCMDecoder()
{
    if (file.IsOpen()) {
        try {
            file.Close();
        } catch (Cordel::Exception::Base const&) {
            // nothing useful can be done about a failed close in a destructor
        }
    }
}

WaveFormat PCMDecoder::FullSync()
{
    return Sync();
}

void PCMDecoder::fail(String const& message, Cordel::Exception::Site const& site) const
{
    Cordel::Exception::Throw(Exception::BadFormat(message, file.GetPath()), site);
}

void PCMDecoder::beginSync()
{
    samplePos = 0;
    numSampleFrames = 0;
    dataStart = 0;
    reading->Reset();
    format = WaveFormat();
    coding = SampleCoding();
    applicationChunks.clear();
    recovered = false;
    sizeFields = {};
    listedChunks = 0;
    unlistedAt = 0;
    unlistedCount = unlistedBytes = 0;
}

bool PCMDecoder::isInterrupted(unsigned int declared, unsigned int remaining, unsigned int containerSize,
                               unsigned int fileSize) const
{
    if (!readingOptions.recoverInterrupted)
        return false;
    if (declared == 0xFFFFFFFFu || declared > remaining)
        return true;
    // A container size that covers the whole file says the empty chunk is meant to be empty.
    bool const containerIsWhole = containerSize + 8ull == fileSize || containerSize + 9ull == fileSize;
    return declared == 0 && remaining >= format.BytesPerFrame() && format.BytesPerFrame() && !containerIsWhole;
}

void PCMDecoder::listChunk(std::vector<ApplicationChunkInfo>& list, ApplicationChunkInfo const& chunk, unsigned int headerAt)
{
    if (listedChunks < ChunkListLimit) {
        list.push_back(chunk);
        ++listedChunks;
        return;
    }
    if (unlistedCount++ == 0)
        unlistedAt = headerAt;
    unlistedBytes += chunk.size;
}

Stream::ChunkList PCMDecoder::GetChunkList() const
{
    return chunkList(applicationChunks, nullptr);
}

Stream::ChunkList PCMDecoder::chunkList(std::vector<ApplicationChunkInfo> const& plain,
                                        std::vector<ApplicationChunkInfo> const* application) const
{
    ChunkList out;
    out.listed.reserve(plain.size() + (application ? application->size() : 0));
    std::vector<std::pair<unsigned int, ChunkInfo>> byPosition;
    for (ApplicationChunkInfo const& c : plain)
        byPosition.push_back({c.position, {c.id, c.size, false}});
    if (application)
        for (ApplicationChunkInfo const& c : *application)
            byPosition.push_back({c.position, {c.id, c.size, true}});
    std::stable_sort(byPosition.begin(), byPosition.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
    for (auto const& entry : byPosition)
        out.listed.push_back(entry.second);
    out.unlistedCount = unlistedCount;
    out.unlistedBytes = unlistedBytes;
    return out;
}

WaveFormat PCMDecoder::finishSync(unsigned int start, unsigned int dataBytes)
{
    dataStart = start;
    file.At(dataStart);
    reading->KnowPosition(dataStart);
    numSampleFrames = format.BytesPerFrame() ? dataBytes / format.BytesPerFrame() : 0;
    synced = true;
    return format;
}

void PCMDecoder::requireSynced(char const* operation, unsigned int value) const
{
    if (!synced)
        fail(String("%1 %2 when not sync'd").Arg(operation).Arg(value), CORDEL_HERE);
}

void PCMDecoder::Seek(unsigned int frame)
{
    if (frame == samplePos)
        return;
    if (!synced)
        fail(String("Seek to %1 when not sync'd").Arg(frame), CORDEL_HERE);
    if (frame > numSampleFrames)
        fail(String("Seek to %1, total sample frames %2").Arg(frame).Arg(numSampleFrames), CORDEL_HERE);
    file.At(dataStart + frame * format.BytesPerFrame());
    reading->KnowPosition(dataStart + frame * format.BytesPerFrame());
    samplePos = frame;
}

void PCMDecoder::ReadRawInterleaved(unsigned int frames, unsigned char* out, unsigned int& framesRead)
{
    requireSynced("ReadRawInterleaved", frames);
    unsigned int const n = std::min(frames, numSampleFrames - samplePos);
    if (n)
        reading->ReadAt(dataStart + samplePos * format.BytesPerFrame(), out, n * format.BytesPerFrame());
    samplePos += n;
    framesRead = n;
}

void PCMDecoder::Reading::ReadAt(unsigned int position, unsigned char* out, unsigned int count)
{
    // Position first: fetching a chunk may have moved the file elsewhere. A seek costs a system
    // call and empties the stream's buffer, so it is skipped when the file is known to be where
    // the bytes are.
    if (!filePosition.IsSet() || filePosition.Get() != position)
        d.file.At(position);
    filePosition = {};
    d.file.ReadBlock(reinterpret_cast<char*>(out), count);
    filePosition = position + count;
}

bool PCMDecoder::Reading::canConvert(Target target) const
{
    unsigned int const bytes = d.format.bytesPerSample;
    if (d.format.isFloat)
        return bytes == 4 || (bytes == 8 && d.readingOptions.allSampleForms);
    if (target == Target::Int16)
        return bytes == 2 || bytes == 3;
    return bytes >= 1 && bytes <= 4;
}

unsigned int PCMDecoder::Reading::ReadForConversion(unsigned int frames, Target target, char const* operation, unsigned char const*& raw)
{
    d.requireSynced(operation, frames);
    if (!canConvert(target)) {
        char const* const name = target == Target::Int16 ? "ReadInt16Interleaved" : "ReadFloatInterleaved";
        d.fail(String("%1 %2 called, unsupported conversion").Arg(name).Arg(frames), CORDEL_HERE);
    }
    unsigned int const n = std::min(frames, d.numSampleFrames - d.samplePos);
    unsigned int const frameBytes = d.format.BytesPerFrame();
    if (n && stage(n)) {
        raw = stageBuffer.data() + std::size_t(d.samplePos - stageFirst) * frameBytes;
        d.samplePos += n;
        return n;
    }
    // A request too large for the stage, or one whose bytes the file did not give: read it as it
    // is, so that a failure is reported exactly as a raw read of those frames reports it.
    rawBuffer.resize(std::max<std::size_t>(rawBuffer.size(), std::size_t(n) * frameBytes));
    unsigned int read = 0;
    d.ReadRawInterleaved(n, rawBuffer.data(), read);
    toLittleEndianOffsetForm(read * d.format.numChannels, rawBuffer.data());
    raw = rawBuffer.data();
    return read;
}

bool PCMDecoder::Reading::stage(unsigned int n)
{
    unsigned int const pos = d.samplePos;
    if (pos >= stageFirst && pos + n <= stageEnd)
        return true;
    std::size_t const frameBytes = d.format.BytesPerFrame();
    unsigned int const capacity = static_cast<unsigned int>(stageCapacity / frameBytes);
    if (n > capacity / 2)
        return false; // the stage would save nothing
    // Keep the staged frames from the read position on, and read what follows them.
    unsigned int kept = 0;
    if (pos >= stageFirst && pos < stageEnd) {
        kept = stageEnd - pos;
        std::memmove(stageBuffer.data(), stageBuffer.data() + (pos - stageFirst) * frameBytes, kept * frameBytes);
    }
    unsigned int const first = pos + kept;
    unsigned int const count = std::min(capacity - kept, d.numSampleFrames - first);
    stageFirst = pos;
    stageEnd = pos + kept;
    stageBuffer.resize(stageCapacity);
    unsigned char* const dest = stageBuffer.data() + std::size_t(kept) * frameBytes;
    try {
        ReadAt(d.dataStart + first * static_cast<unsigned int>(frameBytes), dest, count * static_cast<unsigned int>(frameBytes));
    } catch (Util::Exception::FileIO const&) {
        stageFirst = stageEnd = 0;
        return false;
    }
    toLittleEndianOffsetForm(count * d.format.numChannels, dest);
    stageEnd += count;
    return true;
}

void PCMDecoder::Reading::toLittleEndianOffsetForm(unsigned int samples, unsigned char* raw) const
{
    if (d.coding.bigEndian && d.format.bytesPerSample > 1)
        swapSampleBytes(samples, d.format.bytesPerSample, raw);
    if (d.coding.signedBytes && d.format.bytesPerSample == 1)
        for (unsigned int i = 0; i < samples; ++i)
            raw[i] ^= 0x80; // signed to offset form: s + 128
}

void PCMDecoder::Reading::RawToFloat(unsigned int samples, unsigned char const* raw, float* out)
{
    if (!samples)
        return; // the buffers of an empty read may be null, which memcpy may not be handed
    if (d.format.isFloat && d.format.bytesPerSample == 8) {
        for (unsigned int i = 0; i < samples; ++i)
            out[i] = static_cast<float>(doubleAt(raw, i));
        return;
    }
    switch (d.format.isFloat ? 0 : d.format.bytesPerSample) {
    case 0: std::memcpy(out, raw, std::size_t(samples) * 4); break;
    case 1:
        IPP::Convert(samples, raw, out);
        IPP::Normalize(samples, out, out, 128.0f, 128.0f);
        break;
    case 2: IPP::Convert(samples, reinterpret_cast<short const*>(raw), out, 15); break;
    case 3: int24ToFloat(samples, raw, out); break;
    default:
        // The vector layer converts 32-bit integers without scaling them.
        IPP::Convert(samples, reinterpret_cast<int const*>(raw), out, 31);
        IPP::MulConstant_InPlace(samples, out, 4.656612873077392578125e-10f);
        break;
    }
}

void PCMDecoder::Reading::RawToInt16(unsigned int samples, unsigned char const* raw, short* out)
{
    if (!samples)
        return; // as in RawToFloat
    if (!d.format.isFloat && d.format.bytesPerSample == 2) {
        std::memcpy(out, raw, std::size_t(samples) * 2);
        return;
    }
    float* const floats = Floats(samples);
    RawToFloat(samples, raw, floats);
    IPP::Convert(samples, floats, out, -15, false);
}

float* PCMDecoder::Reading::Floats(unsigned int n)
{
    convertBuffer.resize(std::max<std::size_t>(convertBuffer.size(), std::size_t(n) * sizeof(float)));
    return reinterpret_cast<float*>(convertBuffer.data());
}

void PCMDecoder::ReadFloatInterleaved(unsigned int frames, float* out, unsigned int& framesRead)
{
    if (synced && format.isFloat && format.bytesPerSample == 4 && !coding.bigEndian) {
        // Already in the wanted form: straight into the caller's buffer.
        ReadRawInterleaved(frames, reinterpret_cast<unsigned char*>(out), framesRead);
        return;
    }
    unsigned char const* raw = nullptr;
    framesRead = reading->ReadForConversion(frames, Reading::Target::Float, "ReadFloatInterleaved", raw);
    reading->RawToFloat(framesRead * format.numChannels, raw, out);
}

void PCMDecoder::ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead)
{
    unsigned char const* raw = nullptr;
    framesRead = reading->ReadForConversion(frames, Reading::Target::Double, "ReadFloatInterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    if (format.isFloat && format.bytesPerSample == 8) {
        for (unsigned int i = 0; i < samples; ++i)
            out[i] = doubleAt(raw, i);
        return;
    }
    if (!format.isFloat && format.bytesPerSample == 4) {
        // x / 2^31 exactly; the float read rounds the integer to 24 bits first.
        for (unsigned int i = 0; i < samples; ++i) {
            std::int32_t v;
            std::memcpy(&v, raw + 4 * std::size_t(i), 4);
            out[i] = static_cast<double>(v) * (1.0 / 2147483648.0);
        }
        return;
    }
    float* const floats = reading->Floats(samples);
    reading->RawToFloat(samples, raw, floats);
    std::copy(floats, floats + samples, out);
}

void PCMDecoder::ReadInt16Interleaved(unsigned int frames, short* out, unsigned int& framesRead)
{
    if (synced && !format.isFloat && format.bytesPerSample == 2 && !coding.bigEndian) {
        ReadRawInterleaved(frames, reinterpret_cast<unsigned char*>(out), framesRead); // as for float files
        return;
    }
    unsigned char const* raw = nullptr;
    framesRead = reading->ReadForConversion(frames, Reading::Target::Int16, "ReadInt16Interleaved", raw);
    reading->RawToInt16(framesRead * format.numChannels, raw, out);
}

namespace {

template <typename T>
void splitChannels(unsigned int frames, unsigned int channels, T const* interleaved, T* const* out)
{
    for (unsigned int c = 0; c < channels; ++c) {
        T* const dst = out[c];
        for (unsigned int j = 0; j < frames; ++j)
            dst[j] = interleaved[std::size_t(j) * channels + c];
    }
}

} // namespace

void PCMDecoder::ReadFloatDeinterleaved(unsigned int frames, float* const* channels, unsigned int& framesRead)
{
    unsigned char const* raw = nullptr;
    framesRead = reading->ReadForConversion(frames, Reading::Target::Float, "ReadFloatDeinterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    aligned_vector<float> interleaved(samples);
    reading->RawToFloat(samples, raw, interleaved.data());
    splitChannels(framesRead, format.numChannels, interleaved.data(), channels);
}

void PCMDecoder::ReadInt16Deinterleaved(unsigned int frames, short* const* channels, unsigned int& framesRead)
{
    unsigned char const* raw = nullptr;
    framesRead = reading->ReadForConversion(frames, Reading::Target::Int16, "ReadInt16Deinterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    aligned_vector<short> interleaved(samples);
    reading->RawToInt16(samples, raw, interleaved.data());
    splitChannels(framesRead, format.numChannels, interleaved.data(), channels);
}

bool PCMDecoder::isListed(std::vector<ApplicationChunkInfo> const& list, unsigned int id, bool application) const
{
    if (std::any_of(list.begin(), list.end(), [id](ApplicationChunkInfo const& c) { return c.id == id; }))
        return true;
    ApplicationChunkInfo found{};
    return unlistedCount && findUnlisted(id, application, unlistedAt, found);
}

void PCMDecoder::fetchChunk(std::vector<ApplicationChunkInfo> const& list, unsigned int id, bool application,
                            std::vector<unsigned char>& data)
{
    data.clear();
    if (!file.IsOpen())
        return;
    ApplicationChunkInfo found{};
    auto it = std::find_if(list.begin(), list.end(), [id](ApplicationChunkInfo const& c) { return c.id == id; });
    if (it != list.end())
        found = *it;
    else if (!unlistedCount || !findUnlisted(id, application, unlistedAt, found))
        return;
    data.resize(found.size); // the size was checked against the file when the chunk was found
    reading->ForgetPosition();
    file.At(found.position);
    if (found.size)
        file.ReadBlock(data);
}

bool PCMDecoder::ContainsApplicationChunk(unsigned int id) const
{
    return isListed(applicationChunks, id, true);
}

void PCMDecoder::GetApplicationChunk(unsigned int id, std::vector<unsigned char>& data)
{
    fetchChunk(applicationChunks, id, true, data);
}

unsigned int PCMDecoder::WriteRepaired(FilePath const& outPath)
{
    if (!synced || !recovered)
        fail("WriteRepaired called on a file that was not recovered", CORDEL_HERE);
    unsigned int const dataBytes = numSampleFrames * format.BytesPerFrame();
    unsigned int const pad = dataBytes & 1u;
    unsigned int const length = dataStart + dataBytes + pad;
    std::vector<unsigned char> header(dataStart);
    reading->ForgetPosition();
    file.At(0);
    file.ReadBlock(header);
    auto const put = [&](unsigned int at, unsigned int value) {
        for (unsigned int i = 0; i < 4; ++i)
            header[at + i] = static_cast<unsigned char>(value >> (sizeFields.bigEndian ? 24 - 8 * i : 8 * i));
    };
    put(4, length - 8);
    put(sizeFields.dataSizeAt, dataStart - sizeFields.dataSizeAt - 4 + dataBytes);
    if (sizeFields.frameCountAt)
        put(sizeFields.frameCountAt, numSampleFrames);

    Util::File out(outPath);
    out.Open(Util::File::ModeWrite);
    out.WriteBlock(reinterpret_cast<char const*>(header.data()), static_cast<unsigned int>(header.size()));
    aligned_vector<unsigned char> block(std::min<std::size_t>(65536, dataBytes + 1u));
    for (unsigned int done = 0; done < dataBytes;) {
        unsigned int const n = std::min<unsigned int>(static_cast<unsigned int>(block.size()), dataBytes - done);
        reading->ReadAt(dataStart + done, block.data(), n);
        out.WriteBlock(reinterpret_cast<char const*>(block.data()), n);
        done += n;
    }
    if (pad)
        out.WriteBlock("", 1);
    out.Close();
    return numSampleFrames;
}

void PCMDecoder::Close()
{
    synced = false;
    reading->Reset();
    if (file.IsOpen())
        file.Close();
}

} // namespace Cordel::Audio::Decode
