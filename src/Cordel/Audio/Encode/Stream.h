#pragma once
// Audio::Encode::Stream: the writer every audio file format implements. Constructing a writer
// touches no disk; Open creates the file and writes the header, sample writes fill the sample
// data, chunk writes follow them, and Close patches the sizes.

#include <Cordel/Audio/WaveFormat.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>

#include <vector>

namespace Cordel::Audio::Encode {

class CORDEL_API Stream {
public:
    enum FileType : unsigned int {
        WAVFile = 0,
        AIFFFile = 1,
    };

    virtual FileType GetFileType() const = 0;
    virtual FilePath GetFilePath() const = 0;
    virtual WaveFormat GetWaveFormat() const = 0;
    virtual void Open() = 0;
    virtual void WriteFloatDeinterleaved(unsigned int frames, float const* const* channels) = 0;
    virtual void WriteFloatInterleaved(unsigned int frames, float const* samples) = 0;
    // Bytes already in the file's sample format.
    virtual void WriteRawInterleaved(unsigned int frames, unsigned char const* bytes) = 0;
    // Cue points as sample frames.
    virtual void WriteCueChunk(std::vector<unsigned int> const& cuePoints) = 0;
    virtual void WriteChunk(unsigned int id, std::vector<unsigned char> const& data) = 0;
    virtual void WriteApplicationChunk(unsigned int id, std::vector<unsigned char> const& data) = 0;
    virtual void Close() = 0;
    virtual ~Stream();
};

} // namespace Cordel::Audio::Encode
