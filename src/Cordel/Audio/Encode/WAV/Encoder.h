#pragma once
// The writer of RIFF/WAVE files.
//
// The header is plain (tag 1 for integers, 3 for float, a 16-byte format chunk) unless the
// format needs the extensible form: more than two channels, 3-byte float, or more than 4 bytes a
// sample; then the 40-byte format chunk carries the channel mask and the subformat. The data
// chunk begins with the first sample write; cue and application chunks end it and follow it.
// Close writes the RIFF size (counting pad bytes) and the data size (not counting its pad).

#include <Cordel/Audio/Encode/PCMEncoder.h>

namespace Cordel::Audio::Encode::WAV {

class CORDEL_API Encoder : public PCMEncoder {
public:
    Encoder(FilePath const& path, WaveFormat const& format);
    ~Encoder() override;

    FileType GetFileType() const override { return Stream::WAVFile; }
    void Open() override;
    // One "cue " chunk with a point per entry (identifier i, position and sample offset the frame).
    void WriteCueChunk(std::vector<unsigned int> const& cuePoints) override;
    void WriteChunk(unsigned int id, std::vector<unsigned char> const& data) override { WriteApplicationChunk(id, data); }
    void WriteApplicationChunk(unsigned int id, std::vector<unsigned char> const& data) override;
    void Close() override;

    bool isFormatExtensible() const;

private:
    void writeDataHeader() override;

    checked_value<unsigned int> riffSizePosition;
    checked_value<unsigned int> dataSizePosition;
};

} // namespace Cordel::Audio::Encode::WAV
