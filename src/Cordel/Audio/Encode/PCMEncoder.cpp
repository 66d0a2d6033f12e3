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
            writePending();
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
    auto const at = file.At();
    pendingOffset = at.IsSet() ? at.Get() : 0;
}

void PCMEncoder::endWritingData()
{
    writePending();
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
    if (!encodesFloat(format.bytesPerSample, format.isFloat))
        fail(String("WriteFloatInterleaved %1 called with unsupported bytes per sample / floating-point: %2/%3")
                 .Arg(frames)
                 .Arg(format.bytesPerSample)
                 .Arg(format.isFloat ? 1 : 0),
             CORDEL_HERE);
    // Converted samples gather in a buffer small enough to stay in the cache and large enough that
    // the system call and the page-cache work per call are paid rarely. The pieces end on 64 KB
    // boundaries of the file, whatever the header's size: the page cache then takes each piece
    // in whole large pages instead of splitting the pages that two writes share, which costs the
    // kernel about a third more. A frame that straddles a boundary waits for the next piece.
    std::size_t const frameBytes = format.BytesPerFrame();
    if (conversionBuffer.size() < pendingCapacity + frameBytes)
        conversionBuffer.resize(pendingCapacity + frameBytes);
    auto const pieceLeft = [this] { return pendingCapacity - pendingOffset % pendingCapacity; };
    for (unsigned int done = 0; done < frames;) {
        // Enough frames to complete the piece; less than a frame of them is left over.
        std::size_t const wanted = (pieceLeft() - pendingBytes + frameBytes - 1) / frameBytes;
        unsigned int const n = static_cast<unsigned int>(std::min<std::size_t>(frames - done, wanted));
        unsigned char* const dst = conversionBuffer.data() + pendingBytes;
        std::size_t const count = std::size_t(n) * format.numChannels;
        encodeFloatSamples(count, format.bytesPerSample, format.isFloat, samples + std::size_t(done) * format.numChannels, dst);
        if (bigEndian && format.bytesPerSample > 1)
            swapSampleBytes(count, format.bytesPerSample, dst);
        pendingBytes += n * frameBytes;
        done += n;
        while (pendingBytes >= pieceLeft())
            writePending(pieceLeft());
    }
    framesWritten += frames;
    framesCounted = true;
}

void PCMEncoder::writePending()
{
    writePending(pendingBytes);
}

void PCMEncoder::writePending(std::size_t bytes)
{
    // What was handed over is dropped even when the write fails, so that it is not written twice.
    std::size_t const rest = pendingBytes - bytes;
    pendingBytes = 0;
    pendingOffset += bytes;
    file.WriteBlock(reinterpret_cast<char const*>(conversionBuffer.data()), static_cast<unsigned int>(bytes));
    if (rest)
        std::memmove(conversionBuffer.data(), conversionBuffer.data() + bytes, rest);
    pendingBytes = rest;
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
    writePending();
    pendingOffset += std::size_t(frames) * format.BytesPerFrame();
    file.WriteBlock(reinterpret_cast<char const*>(bytes), frames * format.BytesPerFrame());
    framesWritten += frames;
    framesCounted = true;
}

} // namespace Cordel::Audio::Encode
