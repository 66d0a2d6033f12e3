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
#include <Cordel/IPP/Memory.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/File.h>
#include <Cordel/common/Types.h>

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
    enum class Target { Float, Double, Int16 };
    bool canConvert(Target target) const;
    // Checks the synced state and the conversion, clamps the request and reads the raw bytes
    // (swapped to little-endian order, 8-bit ones in offset form). Returns the frames read and
    // points raw at their bytes.
    unsigned int readForConversion(unsigned int frames, Target target, char const* operation, unsigned char const*& raw);
    // Makes the staged frames cover the n frames from the read position; false when the request
    // is too large for the stage or the file did not give the bytes.
    bool stage(unsigned int n);
    // Reads count bytes at a position of the file, seeking only when it is elsewhere.
    void readAt(unsigned int position, unsigned char* out, unsigned int count);
    void toLittleEndianOffsetForm(unsigned int samples, unsigned char* raw) const;
    void rawToFloat(unsigned int samples, unsigned char const* raw, float* out);
    void rawToInt16(unsigned int samples, unsigned char const* raw, short* out);
    void requireSynced(char const* operation, unsigned int value) const;

    unsigned int samplePos = 0;
    unsigned int numSampleFrames = 0;
    unsigned int dataStart = 0;
    // Where the file stands when that is known: after our own seeks and sample reads, not after
    // a chunk fetch, a failed read or a header parse.
    checked_value<unsigned int> filePosition;
    aligned_vector<unsigned char> rawBuffer;
    aligned_vector<unsigned char> convertBuffer;
    // Converting reads take the file in pieces of about 64 KB and convert from there: a system
    // call per piece instead of one per request, and the copy out of the page cache lands in
    // memory the cache still holds when the conversion reads it. Frames [stageFirst, stageEnd),
    // already in little-endian offset form; raw reads and Seek never touch the stage.
    static constexpr std::size_t stageCapacity = 65536;
    aligned_vector<unsigned char> stageBuffer;
    unsigned int stageFirst = 0;
    unsigned int stageEnd = 0;
};

} // namespace Cordel::Audio::Decode
