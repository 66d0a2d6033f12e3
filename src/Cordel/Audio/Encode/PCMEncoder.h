#pragma once
// The machinery that the WAV and AIFF writers share: the file, the life of the sample-data chunk
// (begun by the first sample write, ended by a chunk write or by Close), the frame count and the
// sample conversions.
//
// Float samples are written as: 16-bit x * 32768 and 32-bit x * 2^31, both saturated and
// truncated; 24-bit x * (2^23 - 1) rounded half away from zero, without clipping (beyond +-1 the
// value wraps); 32-bit float as it is. 8-bit and 64-bit files cannot be written from floats.
// The double variants narrow to float first and follow the same rules.
//
// Converted samples reach the file in pieces of up to 64 KB. A failure to write them is reported
// by the sample write that completes a piece, or else by the raw sample write, chunk write or
// Close that follows.

#include <Cordel/Audio/Encode/Stream.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/File.h>
#include <Cordel/common/Types.h>

namespace Cordel::Audio::Encode {

class CORDEL_API PCMEncoder : public Stream, private noncopyable {
public:
    ~PCMEncoder() override;

    FilePath GetFilePath() const override { return path; }
    WaveFormat GetWaveFormat() const override { return format; }
    void WriteFloatDeinterleaved(unsigned int frames, float const* const* channels) override;
    void WriteFloatInterleaved(unsigned int frames, float const* samples) override;
    void WriteRawInterleaved(unsigned int frames, unsigned char const* bytes) override;
    void WriteFloatInterleaved(unsigned int frames, double const* samples);
    void WriteFloatDeinterleaved(unsigned int frames, double const* const* channels);

    // Frames written to the sample data so far.
    unsigned int GetFramesWritten() const { return framesWritten; }

protected:
    PCMEncoder(FilePath const& path, WaveFormat const& format, bool bigEndian);

    // Writes the sample-data chunk's header; called by the first sample write.
    virtual void writeDataHeader() = 0;
    void beginWritingData();
    // Ends the sample data, with a pad byte when its size is odd; from then on sample writes throw.
    void endWritingData();
    [[noreturn]] void fail(String const& message, Cordel::Exception::Site const& site) const;

    void writeTag(char const (&tag)[5]);
    void writeTag(unsigned int id); // first character first
    void write16(unsigned int v);
    void write32(unsigned int v);
    void writeZeros(unsigned int count);
    // The file's size after flushing what is buffered.
    unsigned int flushedSize();
    // Ends the data chunk and closes the file (after the subclass has patched its sizes).
    void closeFile();

    FilePath path;
    WaveFormat format;
    Util::File file;
    bool writingData = false;
    bool finishedData = false;
    bool framesCounted = false;
    unsigned int framesWritten = 0;

private:
    void writeConverted(unsigned int frames, float const* samples);
    // Hands the converted samples that are waiting to the file: all of them, or the first bytes.
    void writePending();
    void writePending(std::size_t bytes);
    unsigned int dataBytes() const { return framesWritten * format.BytesPerFrame(); }

    static constexpr std::size_t pendingCapacity = 65536;

    bool bigEndian;
    aligned_vector<unsigned char> conversionBuffer;
    std::size_t pendingBytes = 0; // converted samples at the start of conversionBuffer, not yet written
    std::size_t pendingOffset = 0; // where in the file they go
    aligned_vector<float> interleaveBuffer;
};

} // namespace Cordel::Audio::Encode
