#pragma once
// Audio::Decode::Stream: the reader every audio file format implements, with the content probe
// and the factory that picks a reader for a file.
//
// Reads deliver at most the frames that remain, report how many they delivered and advance the
// position; reading at the end delivers 0 frames. Reads and seeks before Sync throw BadFormat.

#include <Cordel/Audio/WaveFormat.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/SharedPtr.h>

#include <vector>

namespace Cordel::Audio::Decode {

class CORDEL_API Stream {
public:
    enum FileType : unsigned int {
        UnknownFile = 0,
        WAVFile = 2,
        AIFFFile = 3,
        MP3File = 4,
    };

    virtual FileType GetFileType() const = 0;
    // Opens the file and reads the header; a synced reader returns its format and does nothing.
    virtual WaveFormat Sync() = 0;
    // Sync plus whatever exact seeking and counting need (the same as Sync for WAV and AIFF).
    virtual WaveFormat FullSync() = 0;
    virtual WaveFormat GetWaveFormat() const = 0;
    virtual unsigned int GetNumSampleFrames() const = 0;
    virtual unsigned int GetSamplePos() const = 0;
    // Total minus position when synced, 0 when not.
    virtual unsigned int GetRemainingSampleFrames() const = 0;
    virtual void Seek(unsigned int frame) = 0;
    // Interleaved double samples; a reader without it leaves buffer and count untouched.
    virtual void ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead) = 0;
    virtual void ReadFloatDeinterleaved(unsigned int frames, float* const* channels, unsigned int& framesRead) = 0;
    virtual void ReadFloatInterleaved(unsigned int frames, float* out, unsigned int& framesRead) = 0;
    virtual void ReadInt16Deinterleaved(unsigned int frames, short* const* channels, unsigned int& framesRead) = 0;
    virtual void ReadInt16Interleaved(unsigned int frames, short* out, unsigned int& framesRead) = 0;
    // The file's own sample bytes, unconverted.
    virtual void ReadRawInterleaved(unsigned int frames, unsigned char* out, unsigned int& framesRead) = 0;
    virtual bool ContainsChunk(unsigned int id) const = 0;
    virtual void GetChunk(unsigned int id, std::vector<unsigned char>& data) = 0;
    virtual bool ContainsApplicationChunk(unsigned int id) const = 0;
    virtual void GetApplicationChunk(unsigned int id, std::vector<unsigned char>& data) = 0;
    virtual void Close() = 0;
    virtual ~Stream();

    // What a caller needs to know about a reader beyond its samples. A reader that does not say
    // otherwise has native-order samples, no chunks and nothing recovered.

    // How integer samples lie in the file, to make sense of ReadRawInterleaved's bytes; float
    // samples are IEEE in the same byte order.
    struct SampleCoding {
        bool bigEndian = false;
        bool signedBytes = false; // 8-bit samples are signed (else offset by 128)
    };
    virtual SampleCoding GetSampleCoding() const;

    // The chunks the last Sync found besides the format and the sample data, in file order. Only
    // the first ChunkListLimit are listed; the rest are counted, so that a hostile file of
    // millions of empty chunks costs no more memory than a normal one.
    struct ChunkInfo {
        unsigned int id;   // first character in the most significant byte
        unsigned int size; // body size in bytes
        bool application;  // fetched with GetApplicationChunk (by its signature) rather than GetChunk
    };
    struct ChunkList {
        std::vector<ChunkInfo> listed;
        unsigned long long unlistedCount = 0;
        unsigned long long unlistedBytes = 0; // their bodies
    };
    static constexpr unsigned int ChunkListLimit = 10000;
    virtual ChunkList GetChunkList() const;

    // True when the sample data were found by recovering an interrupted recording (see Open.h).
    virtual bool IsRecovered() const;

    // The content probe: true with type 2 (WAV) or 3 (AIFF) when the first bytes say so; false
    // for anything else, for a file shorter than 12 bytes and for one that cannot be opened.
    // flag is always set to false.
    static bool GetFileFormat(FilePath const& path, bool& flag, FileType& type);
    // A reader for the file, constructed but not synced: by content, else by extension ("mp3"
    // gives none, "aif"/"aiff" an AIFF reader, anything else a WAV reader).
    static shared_ptr<Stream> Instantiate(FilePath const& path);
};

} // namespace Cordel::Audio::Decode
