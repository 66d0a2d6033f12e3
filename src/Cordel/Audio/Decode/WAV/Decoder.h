#pragma once
// The reader of RIFF/WAVE files: integer PCM of 8, 16, 24 and 32 bits, 32-bit IEEE float, and the
// extensible header with a PCM or float subformat.
//
// Sync walks the chunk list: the first "fmt " and the first "data" chunk are used, later ones are
// skipped (a second "data" chunk is not listed anywhere); every other chunk is listed for
// ContainsChunk/GetChunk, which are the same as the application-chunk calls here. A chunk whose
// declared size runs past the end of the file ends the walk.
//
// Samples as float: 8-bit (x - 128) / 128, 16-bit x / 32768, 24-bit x / 2^23, 32-bit x / 2^31,
// float as they are. As 16-bit integers: 16-bit as they are, 24-bit and float x * 32768
// saturated; 8- and 32-bit integer files are refused. Doubles follow the float rules (32-bit
// integers are scaled in double precision). With ReadingOptions::allSampleForms a plain 64-bit
// float file is accepted as well, and 64-bit float samples are read like 32-bit ones.

#include <Cordel/Audio/Decode/PCMDecoder.h>

namespace Cordel::Audio::Decode::WAV {

class CORDEL_API Decoder : public PCMDecoder {
public:
    explicit Decoder(FilePath const& path);
    ~Decoder() override;

    FileType GetFileType() const override { return Stream::WAVFile; }
    WaveFormat Sync() override;
    bool ContainsChunk(unsigned int id) const override { return ContainsApplicationChunk(id); }
    void GetChunk(unsigned int id, std::vector<unsigned char>& data) override { GetApplicationChunk(id, data); }

    // At least 12 bytes, "RIFF" at 0 and "WAVE" at 8.
    static bool IsFile(std::vector<unsigned char> const& head);

private:
    bool findUnlisted(unsigned int id, bool application, unsigned int from, ApplicationChunkInfo& found) const override;
    void parseFormatChunk(unsigned int size);
    unsigned short readUInt16();
    unsigned int readUInt32();
};

} // namespace Cordel::Audio::Decode::WAV
