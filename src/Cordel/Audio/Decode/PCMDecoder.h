#pragma once
// The machinery that the WAV and AIFF readers share: the open file, the synced state, the
// position, the list of chunks, and reads that convert the file's samples.
//
// A concrete reader's Sync parses its header, fills in the format, the sample coding and the
// chunk list, and calls finishSync. Everything after that is common.
//
// Chunks: GetApplicationChunk of an identifier that is not listed empties the vector; of one
// listed twice it returns the first. Fetching a chunk moves the file position, which does not
// matter: every sample read positions the file itself before reading.
// A read whose conversion the file's samples do not support throws before it consumes anything.

#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/File.h>
#include <Cordel/common/Types.h>

#include <memory>
#include <vector>

namespace Cordel::Audio::Decode {

class CORDEL_API PCMDecoder : public Stream, private noncopyable {
public:
    struct ApplicationChunkInfo {
        unsigned int id;       // first character in the most significant byte
        unsigned int position; // file position of the body
        unsigned int size;     // body size in bytes
    };

    ~PCMDecoder() override;

    WaveFormat FullSync() override;
    WaveFormat GetWaveFormat() const override { return format; }
    unsigned int GetNumSampleFrames() const override { return numSampleFrames; }
    unsigned int GetSamplePos() const override { return samplePos; }
    unsigned int GetRemainingSampleFrames() const override { return synced ? numSampleFrames - samplePos : 0; }
    void Seek(unsigned int frame) override;
    void ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead) override;
    void ReadFloatDeinterleaved(unsigned int frames, float* const* channels, unsigned int& framesRead) override;
    void ReadFloatInterleaved(unsigned int frames, float* out, unsigned int& framesRead) override;
    void ReadInt16Deinterleaved(unsigned int frames, short* const* channels, unsigned int& framesRead) override;
    void ReadInt16Interleaved(unsigned int frames, short* out, unsigned int& framesRead) override;
    void ReadRawInterleaved(unsigned int frames, unsigned char* out, unsigned int& framesRead) override;
    bool ContainsApplicationChunk(unsigned int id) const override;
    void GetApplicationChunk(unsigned int id, std::vector<unsigned char>& data) override;
    void Close() override;

    FilePath GetPath() const { return file.GetPath(); }
    std::vector<ApplicationChunkInfo> const& GetApplicationChunks() const { return applicationChunks; }

    // How integer samples lie in the file; floats are always IEEE.
    struct SampleCoding {
        bool bigEndian = false;
        bool signedBytes = false; // 8-bit samples are signed (else offset by 128)
    };
    // What a caller of ReadRawInterleaved needs to make sense of the bytes.
    SampleCoding GetSampleCoding() const { return coding; }

protected:
    explicit PCMDecoder(FilePath const& path);

    // Resets the state before a new parse.
    void beginSync();
    // Records where the samples are, seeks there and marks the reader synced.
    WaveFormat finishSync(unsigned int dataStart, unsigned int dataBytes);
    [[noreturn]] void fail(String const& message, Cordel::Exception::Site const& site) const;
    static bool isListed(std::vector<ApplicationChunkInfo> const& list, unsigned int id);
    // The body of the first chunk in the list with that identifier; empty when there is none.
    void fetchChunk(std::vector<ApplicationChunkInfo> const& list, unsigned int id, std::vector<unsigned char>& data);

    Util::File file;
    bool synced = false;
    WaveFormat format;
    SampleCoding coding;
    std::vector<ApplicationChunkInfo> applicationChunks;

private:
    // How converting reads take their bytes from the file (PCMDecoder.cpp).
    class Reading;

    void requireSynced(char const* operation, unsigned int value) const;

    unsigned int samplePos = 0;
    unsigned int numSampleFrames = 0;
    unsigned int dataStart = 0;
    std::unique_ptr<Reading> reading;
};

} // namespace Cordel::Audio::Decode
