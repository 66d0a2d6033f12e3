#include <Cordel/Audio/Encode/EncodeError.h>
#include <Cordel/Audio/Encode/PCMEncoder.h>
#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Cordel::Audio::Encode {

using namespace Cordel::Audio::detail;

Stream::~Stream() = default;

PCMEncoder::PCMEncoder(FilePath const& path, WaveFormat const& format, bool bigEndian)
    : path(path), format(format), file(path), bigEndian(bigEndian)
{
}

PCMEncoder::~PCMEncoder()
{
    if (file.IsOpen()) {
        try {
            file.Close();
        } catch (Cordel::Exception::Base const&) {
            // a destructor has no one to tell; Close reports the same failure
        }
    }
}

void PCMEncoder::fail(String const& message, Cordel::Exception::Site const& site) const
{
    Cordel::Exception::Throw(Exception::EncodeError(message), site);
}

void PCMEncoder::beginWritingData()
{
    if (finishedData)
        fail("Write called after we finished writing our data chunk", CORDEL_HERE);
    if (writingData)
        fail("beginWritingData() called when we're already writing data", CORDEL_HERE);
    writingData = true;
    writeDataHeader();
}

void PCMEncoder::endWritingData()
{
    if (writingData && (dataBytes() & 1u))
        writeZeros(1);
    writingData = false;
    finishedData = true;
}

void PCMEncoder::writeTag(char const (&tag)[5])
{
    file.WriteBlock(tag, 4);
}

void PCMEncoder::writeTag(unsigned int id)
{
    char const b[4] = {static_cast<char>(id >> 24), static_cast<char>(id >> 16), static_cast<char>(id >> 8),
                       static_cast<char>(id)};
    file.WriteBlock(b, 4);
}

void PCMEncoder::write16(unsigned int v)
{
    char const le[2] = {static_cast<char>(v), static_cast<char>(v >> 8)};
    char const be[2] = {le[1], le[0]};
    file.WriteBlock(bigEndian ? be : le, 2);
}

void PCMEncoder::write32(unsigned int v)
{
    char const le[4] = {static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16), static_cast<char>(v >> 24)};
    char const be[4] = {le[3], le[2], le[1], le[0]};
    file.WriteBlock(bigEndian ? be : le, 4);
}

void PCMEncoder::writeZeros(unsigned int count)
{
    static char const zeros[16] = {};
    for (; count; count -= std::min(count, 16u))
        file.WriteBlock(zeros, std::min(count, 16u));
}

unsigned int PCMEncoder::flushedSize()
{
    file.Flush();
    return file.Size();
}

void PCMEncoder::closeFile()
{
    file.Close();
}

void PCMEncoder::writeConverted(unsigned int frames, float const* samples)
{
    unsigned int const count = frames * format.numChannels;
    conversionBuffer.resize(std::max<std::size_t>(conversionBuffer.size(), std::size_t(frames) * format.BytesPerFrame()));
    if (!encodeFloatSamples(count, format.bytesPerSample, format.isFloat, samples, conversionBuffer.data()))
        fail(String("WriteFloatInterleaved %1 called with unsupported bytes per sample / floating-point: %2/%3")
                 .Arg(frames)
                 .Arg(format.bytesPerSample)
                 .Arg(format.isFloat ? 1 : 0),
             CORDEL_HERE);
    if (bigEndian && format.bytesPerSample > 1)
        swapSampleBytes(count, format.bytesPerSample, conversionBuffer.data());
    file.WriteBlock(reinterpret_cast<char const*>(conversionBuffer.data()), frames * format.BytesPerFrame());
    framesWritten += frames;
    framesCounted = true;
}

void PCMEncoder::WriteFloatInterleaved(unsigned int frames, float const* samples)
{
    if (!writingData)
        beginWritingData();
    if (frames)
        writeConverted(frames, samples);
}

void PCMEncoder::WriteFloatDeinterleaved(unsigned int frames, float const* const* channels)
{
    if (!writingData)
        beginWritingData();
    if (!frames)
        return;
    unsigned int const n = format.numChannels;
    interleaveBuffer.resize(std::max<std::size_t>(interleaveBuffer.size(), std::size_t(frames) * n));
    for (unsigned int c = 0; c < n; ++c)
        for (unsigned int j = 0; j < frames; ++j)
            interleaveBuffer[std::size_t(j) * n + c] = channels[c][j];
    writeConverted(frames, interleaveBuffer.data());
}

void PCMEncoder::WriteFloatInterleaved(unsigned int frames, double const* samples)
{
    if (!writingData)
        beginWritingData();
    if (!frames)
        return;
    std::size_t const count = std::size_t(frames) * format.numChannels;
    interleaveBuffer.resize(std::max(interleaveBuffer.size(), count));
    std::copy(samples, samples + count, interleaveBuffer.begin());
    writeConverted(frames, interleaveBuffer.data());
}

void PCMEncoder::WriteFloatDeinterleaved(unsigned int frames, double const* const* channels)
{
    if (!writingData)
        beginWritingData();
    if (!frames)
        return;
    unsigned int const n = format.numChannels;
    interleaveBuffer.resize(std::max<std::size_t>(interleaveBuffer.size(), std::size_t(frames) * n));
    for (unsigned int c = 0; c < n; ++c)
        for (unsigned int j = 0; j < frames; ++j)
            interleaveBuffer[std::size_t(j) * n + c] = static_cast<float>(channels[c][j]);
    writeConverted(frames, interleaveBuffer.data());
}

void PCMEncoder::WriteRawInterleaved(unsigned int frames, unsigned char const* bytes)
{
    if (!writingData)
        beginWritingData();
    if (!frames)
        return;
    file.WriteBlock(reinterpret_cast<char const*>(bytes), frames * format.BytesPerFrame());
    framesWritten += frames;
    framesCounted = true;
}

} // namespace Cordel::Audio::Encode
