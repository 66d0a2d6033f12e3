#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/PCMDecoder.h>
#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::Decode {

using namespace Cordel::Audio::detail;

Stream::~Stream() = default;

PCMDecoder::PCMDecoder(FilePath const& path) : file(path) {}

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
    filePosition = {};
    stageFirst = stageEnd = 0;
    format = WaveFormat();
    coding = SampleCoding();
    applicationChunks.clear();
}

WaveFormat PCMDecoder::finishSync(unsigned int start, unsigned int dataBytes)
{
    dataStart = start;
    file.At(dataStart);
    filePosition = dataStart;
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
    filePosition = dataStart + frame * format.BytesPerFrame();
    samplePos = frame;
}

void PCMDecoder::ReadRawInterleaved(unsigned int frames, unsigned char* out, unsigned int& framesRead)
{
    requireSynced("ReadRawInterleaved", frames);
    unsigned int const n = std::min(frames, numSampleFrames - samplePos);
    if (n)
        readAt(dataStart + samplePos * format.BytesPerFrame(), out, n * format.BytesPerFrame());
    samplePos += n;
    framesRead = n;
}

void PCMDecoder::readAt(unsigned int position, unsigned char* out, unsigned int count)
{
    // Position first: fetching a chunk may have moved the file elsewhere. A seek costs a system
    // call and empties the stream's buffer, so it is skipped when the file is known to be where
    // the bytes are.
    if (!filePosition.IsSet() || filePosition.Get() != position)
        file.At(position);
    filePosition = {};
    file.ReadBlock(reinterpret_cast<char*>(out), count);
    filePosition = position + count;
}

bool PCMDecoder::canConvert(Target target) const
{
    unsigned int const bytes = format.bytesPerSample;
    if (format.isFloat)
        return bytes == 4;
    if (target == Target::Int16)
        return bytes == 2 || bytes == 3;
    return bytes >= 1 && bytes <= 4;
}

unsigned int PCMDecoder::readForConversion(unsigned int frames, Target target, char const* operation, unsigned char const*& raw)
{
    requireSynced(operation, frames);
    if (!canConvert(target)) {
        char const* const name = target == Target::Int16 ? "ReadInt16Interleaved" : "ReadFloatInterleaved";
        fail(String("%1 %2 called, unsupported conversion").Arg(name).Arg(frames), CORDEL_HERE);
    }
    unsigned int const n = std::min(frames, numSampleFrames - samplePos);
    unsigned int const frameBytes = format.BytesPerFrame();
    if (n && stage(n)) {
        raw = stageBuffer.data() + std::size_t(samplePos - stageFirst) * frameBytes;
        samplePos += n;
        return n;
    }
    // A request too large for the stage, or one whose bytes the file did not give: read it as it
    // is, so that a failure is reported exactly as a raw read of those frames reports it.
    rawBuffer.resize(std::max<std::size_t>(rawBuffer.size(), std::size_t(n) * frameBytes));
    unsigned int read = 0;
    ReadRawInterleaved(n, rawBuffer.data(), read);
    toLittleEndianOffsetForm(read * format.numChannels, rawBuffer.data());
    raw = rawBuffer.data();
    return read;
}

bool PCMDecoder::stage(unsigned int n)
{
    if (samplePos >= stageFirst && samplePos + n <= stageEnd)
        return true;
    std::size_t const frameBytes = format.BytesPerFrame();
    unsigned int const capacity = static_cast<unsigned int>(stageCapacity / frameBytes);
    if (n > capacity / 2)
        return false; // the stage would save nothing
    // Keep the staged frames from the read position on, and read what follows them.
    unsigned int kept = 0;
    if (samplePos >= stageFirst && samplePos < stageEnd) {
        kept = stageEnd - samplePos;
        std::memmove(stageBuffer.data(), stageBuffer.data() + (samplePos - stageFirst) * frameBytes, kept * frameBytes);
    }
    unsigned int const first = samplePos + kept;
    unsigned int const count = std::min(capacity - kept, numSampleFrames - first);
    stageFirst = samplePos;
    stageEnd = samplePos + kept;
    stageBuffer.resize(stageCapacity);
    unsigned char* const dest = stageBuffer.data() + std::size_t(kept) * frameBytes;
    try {
        readAt(dataStart + first * static_cast<unsigned int>(frameBytes), dest, count * static_cast<unsigned int>(frameBytes));
    } catch (Util::Exception::FileIO const&) {
        stageFirst = stageEnd = 0;
        return false;
    }
    toLittleEndianOffsetForm(count * format.numChannels, dest);
    stageEnd += count;
    return true;
}

void PCMDecoder::toLittleEndianOffsetForm(unsigned int samples, unsigned char* raw) const
{
    if (coding.bigEndian && format.bytesPerSample > 1)
        swapSampleBytes(samples, format.bytesPerSample, raw);
    if (coding.signedBytes && format.bytesPerSample == 1)
        for (unsigned int i = 0; i < samples; ++i)
            raw[i] ^= 0x80; // signed to offset form: s + 128
}

void PCMDecoder::rawToFloat(unsigned int samples, unsigned char const* raw, float* out)
{
    if (!samples)
        return; // the buffers of an empty read may be null, which memcpy may not be handed
    switch (format.isFloat ? 0 : format.bytesPerSample) {
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

void PCMDecoder::rawToInt16(unsigned int samples, unsigned char const* raw, short* out)
{
    if (!samples)
        return; // as in rawToFloat
    if (!format.isFloat && format.bytesPerSample == 2) {
        std::memcpy(out, raw, std::size_t(samples) * 2);
        return;
    }
    convertBuffer.resize(std::max<std::size_t>(convertBuffer.size(), std::size_t(samples) * sizeof(float)));
    float* const floats = reinterpret_cast<float*>(convertBuffer.data());
    rawToFloat(samples, raw, floats);
    IPP::Convert(samples, floats, out, -15, false);
}

void PCMDecoder::ReadFloatInterleaved(unsigned int frames, float* out, unsigned int& framesRead)
{
    if (synced && format.isFloat && format.bytesPerSample == 4 && !coding.bigEndian) {
        // Already in the wanted form: straight into the caller's buffer.
        ReadRawInterleaved(frames, reinterpret_cast<unsigned char*>(out), framesRead);
        return;
    }
    unsigned char const* raw = nullptr;
    framesRead = readForConversion(frames, Target::Float, "ReadFloatInterleaved", raw);
    rawToFloat(framesRead * format.numChannels, raw, out);
}

void PCMDecoder::ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead)
{
    unsigned char const* raw = nullptr;
    framesRead = readForConversion(frames, Target::Double, "ReadFloatInterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    if (!format.isFloat && format.bytesPerSample == 4) {
        // x / 2^31 exactly; the float read rounds the integer to 24 bits first.
        for (unsigned int i = 0; i < samples; ++i) {
            std::int32_t v;
            std::memcpy(&v, raw + 4 * std::size_t(i), 4);
            out[i] = static_cast<double>(v) * (1.0 / 2147483648.0);
        }
        return;
    }
    convertBuffer.resize(std::max<std::size_t>(convertBuffer.size(), std::size_t(samples) * sizeof(float)));
    float* const floats = reinterpret_cast<float*>(convertBuffer.data());
    rawToFloat(samples, raw, floats);
    std::copy(floats, floats + samples, out);
}

void PCMDecoder::ReadInt16Interleaved(unsigned int frames, short* out, unsigned int& framesRead)
{
    if (synced && !format.isFloat && format.bytesPerSample == 2 && !coding.bigEndian) {
        ReadRawInterleaved(frames, reinterpret_cast<unsigned char*>(out), framesRead); // as for float files
        return;
    }
    unsigned char const* raw = nullptr;
    framesRead = readForConversion(frames, Target::Int16, "ReadInt16Interleaved", raw);
    rawToInt16(framesRead * format.numChannels, raw, out);
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
    framesRead = readForConversion(frames, Target::Float, "ReadFloatDeinterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    aligned_vector<float> interleaved(samples);
    rawToFloat(samples, raw, interleaved.data());
    splitChannels(framesRead, format.numChannels, interleaved.data(), channels);
}

void PCMDecoder::ReadInt16Deinterleaved(unsigned int frames, short* const* channels, unsigned int& framesRead)
{
    unsigned char const* raw = nullptr;
    framesRead = readForConversion(frames, Target::Int16, "ReadInt16Deinterleaved", raw);
    unsigned int const samples = framesRead * format.numChannels;
    aligned_vector<short> interleaved(samples);
    rawToInt16(samples, raw, interleaved.data());
    splitChannels(framesRead, format.numChannels, interleaved.data(), channels);
}

bool PCMDecoder::isListed(std::vector<ApplicationChunkInfo> const& list, unsigned int id)
{
    return std::any_of(list.begin(), list.end(), [id](ApplicationChunkInfo const& c) { return c.id == id; });
}

void PCMDecoder::fetchChunk(std::vector<ApplicationChunkInfo> const& list, unsigned int id, std::vector<unsigned char>& data)
{
    data.clear();
    auto it = std::find_if(list.begin(), list.end(), [id](ApplicationChunkInfo const& c) { return c.id == id; });
    if (it == list.end() || !file.IsOpen())
        return;
    data.resize(it->size); // the size was checked against the file when the chunk was listed
    filePosition = {};
    file.At(it->position);
    if (it->size)
        file.ReadBlock(data);
}

bool PCMDecoder::ContainsApplicationChunk(unsigned int id) const
{
    return isListed(applicationChunks, id);
}

void PCMDecoder::GetApplicationChunk(unsigned int id, std::vector<unsigned char>& data)
{
    fetchChunk(applicationChunks, id, data);
}

void PCMDecoder::Close()
{
    synced = false;
    filePosition = {};
    stageFirst = stageEnd = 0;
    if (file.IsOpen())
        file.Close();
}

} // namespace Cordel::Audio::Decode
