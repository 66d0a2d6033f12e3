#pragma once
// The writer of AIFF files: integer formats as FORM/AIFF, float formats as FORM/AIFC with the
// compression type "fl32" ("fl64" for 8-byte floats, written raw). The sound data chunk begins
// with the first sample write; WriteChunk adds a top-level chunk after it, WriteApplicationChunk
// an "APPL" chunk whose signature is the identifier; there are no cue chunks. Close patches the
// frame count and the chunk sizes; odd-sized chunks get their pad byte.

#include <Cordel/Audio/Encode/PCMEncoder.h>

namespace Cordel::Audio::Encode::AIFF {

class CORDEL_API Encoder : public PCMEncoder {
public:
    Encoder(FilePath const& path, WaveFormat const& format);
    ~Encoder() override;

    FileType GetFileType() const override { return Stream::AIFFFile; }
    void Open() override;
    void WriteCueChunk(std::vector<unsigned int> const& cuePoints) override;
    void WriteChunk(unsigned int id, std::vector<unsigned char> const& data) override;
    void WriteApplicationChunk(unsigned int id, std::vector<unsigned char> const& data) override;
    void Close() override;

private:
    void writeDataHeader() override;
    void writeChunk(unsigned int id, checked_value<unsigned int> signature, std::vector<unsigned char> const& data);

    checked_value<unsigned int> formSizePosition;
    checked_value<unsigned int> framesPosition;
    checked_value<unsigned int> soundSizePosition;
};

} // namespace Cordel::Audio::Encode::AIFF
