#pragma once
// The machinery that the WAV and AIFF readers share: the open file, the synced state, the
// position, the list of chunks, and reads that convert the file's samples.
//
// A concrete reader's Sync parses its header, fills in the format, the sample coding and the
// chunk list, and calls finishSync. Everything after that is common.
//
// Chunks: GetApplicationChunk of an identifier the file does not hold empties the vector; of one
// held twice it returns the first. Only the first ChunkListLimit chunks are kept in the lists;
// one past them is found by walking the file again from there, so that a file of millions of
// chunks costs no more memory than a normal one and every chunk can still be fetched. Fetching
// a chunk moves the file position, which does not matter: every sample read positions the file
// itself before reading.
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

    // Additions beside each format's own rules, off unless asked for (Open asks for them).
    struct ReadingOptions {
        // 64-bit float samples are read as float, double and 16-bit samples, and every reader
        // delivers doubles.
        bool allSampleForms = false;
        // Sample data declared with size 0, 0xFFFFFFFF or past the end of the file, as a crashed
        // recorder or a writer into a pipe leaves them, are read to the end of the file, whole
        // frames only. Size 0 counts only when bytes follow and the container's own size does
        // not account for them.
        bool recoverInterrupted = false;
    };
    // Takes effect at the next Sync.
    void SetReadingOptions(ReadingOptions const& options) { readingOptions = options; }

    SampleCoding GetSampleCoding() const override { return coding; }
    ChunkList GetChunkList() const override;
    bool IsRecovered() const override { return synced && recovered; }

    // Writes to out a copy of the recovered file whose header declares what it holds: the bytes
    // up to the end of the last whole frame, a pad byte where the container needs one, and the
    // sizes (and AIFF's frame count) rewritten. Writes front to back, never seeking, so that out
    // may be a pipe. Returns the frames kept. Only for a synced reader that IsRecovered.
    unsigned int WriteRepaired(FilePath const& out);

protected:
    explicit PCMDecoder(FilePath const& path);

    // Resets the state before a new parse.
    void beginSync();
    // Records where the samples are, seeks there and marks the reader synced.
    WaveFormat finishSync(unsigned int dataStart, unsigned int dataBytes);
    // Where an interrupted header declares its sizes, for WriteRepaired: the container size at 4,
    // the sample chunk's size field, and (AIFF) the frame count; all in the header's byte order.
    struct SizeFields {
        unsigned int dataSizeAt = 0;
        unsigned int frameCountAt = 0; // 0: the file has none (AIFF: COMM; WAV: a fact chunk)
        bool bigEndian = false;
    };
    // Whether a declared sample chunk size is that of an interrupted recording: 0 with bytes
    // after it that the container size does not cover, 0xFFFFFFFF, or more than remain.
    bool isInterrupted(unsigned int declared, unsigned int remaining, unsigned int containerSize, unsigned int fileSize) const;
    // Marks the sample data as recovered: they run from their start to the end of the file.
    void recoverData(SizeFields const& fields)
    {
        recovered = true;
        sizeFields = fields;
    }
    // Lists a chunk that Sync found: the first ChunkListLimit chunks of all lists together are
    // kept, later ones only counted (and found again by findUnlisted).
    void listChunk(std::vector<ApplicationChunkInfo>& list, ApplicationChunkInfo const& chunk, unsigned int headerAt);
    // Looks for a chunk that Sync counted but did not list, walking the file again from the
    // header of the first unlisted chunk. application: one for GetApplicationChunk.
    virtual bool findUnlisted(unsigned int id, bool application, unsigned int from, ApplicationChunkInfo& found) const = 0;
    [[noreturn]] void fail(String const& message, Cordel::Exception::Site const& site) const;
    // application: the list is the one of GetApplicationChunk (for findUnlisted).
    bool isListed(std::vector<ApplicationChunkInfo> const& list, unsigned int id, bool application) const;
    // The body of the first chunk in the list with that identifier; empty when there is none.
    void fetchChunk(std::vector<ApplicationChunkInfo> const& list, unsigned int id, bool application,
                    std::vector<unsigned char>& data);
    // The chunk list of GetChunkList, in file order, from the list of GetChunk and, where it is a
    // list of its own, the one of GetApplicationChunk.
    ChunkList chunkList(std::vector<ApplicationChunkInfo> const& plain, std::vector<ApplicationChunkInfo> const* application) const;
    bool recoveredData() const { return recovered; }

    Util::File file;
    bool synced = false;
    WaveFormat format;
    SampleCoding coding;
    ReadingOptions readingOptions;
    std::vector<ApplicationChunkInfo> applicationChunks;

private:
    // How converting reads take their bytes from the file (PCMDecoder.cpp).
    class Reading;

    void requireSynced(char const* operation, unsigned int value) const;

    unsigned int samplePos = 0;
    unsigned int numSampleFrames = 0;
    unsigned int dataStart = 0;
    bool recovered = false;
    SizeFields sizeFields;
    unsigned int listedChunks = 0;
    unsigned int unlistedAt = 0; // the header of the first chunk not listed
    unsigned long long unlistedCount = 0;
    unsigned long long unlistedBytes = 0;
    std::unique_ptr<Reading> reading;
};

} // namespace Cordel::Audio::Decode
