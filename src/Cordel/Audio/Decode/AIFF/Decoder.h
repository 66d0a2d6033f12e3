#pragma once
// The reader of AIFF and AIFF-C files.
//
// FORM/AIFF, and FORM/AIFC with the compression types "NONE" and "twos" (big-endian integers),
// "sowt" (little-endian integers), "fl32"/"FL32" (big-endian float) and "fl64"/"FL64"
// (big-endian double, raw reads only unless ReadingOptions::allSampleForms). Integer samples are signed at every width, so 8-bit
// samples read as x / 128; wider ones follow the WAV reader's rules. COMM gives the format, SSND
// the samples after its offset field; the frame count is COMM's, limited to what SSND holds.
// Every other chunk is listed for ContainsChunk/GetChunk by its identifier; "APPL" chunks are
// listed for ContainsApplicationChunk/GetApplicationChunk by their signature, with the body
// after the signature. The double read does nothing, as for every non-WAV reader, unless
// ReadingOptions::allSampleForms asks for doubles.
// Content tests recognise only FORM/AIFF; an AIFF-C file reaches this reader by its extension.

#include <Cordel/Audio/Decode/PCMDecoder.h>

namespace Cordel::Audio::Decode::AIFF {

class CORDEL_API Decoder : public PCMDecoder {
public:
    explicit Decoder(FilePath const& path);
    ~Decoder() override;

    FileType GetFileType() const override { return Stream::AIFFFile; }
    WaveFormat Sync() override;
    void ReadFloatInterleaved(unsigned int frames, double* out, unsigned int& framesRead) override;
    using PCMDecoder::ReadFloatInterleaved;
    bool ContainsChunk(unsigned int id) const override { return isListed(chunks, id, false); }
    void GetChunk(unsigned int id, std::vector<unsigned char>& data) override { fetchChunk(chunks, id, false, data); }
    ChunkList GetChunkList() const override { return chunkList(chunks, &applicationChunks); }

    // The top-level chunks other than COMM and SSND, as listed by the last Sync.
    std::vector<ApplicationChunkInfo> const& GetChunks() const { return chunks; }

    // At least 12 bytes, "FORM" at 0 and "AIFF" at 8.
    static bool IsFile(std::vector<unsigned char> const& head);

private:
    bool findUnlisted(unsigned int id, bool application, unsigned int from, ApplicationChunkInfo& found) const override;
    void parseCommonChunk(unsigned int size, bool compressed);
    unsigned int readUInt32();

    std::vector<ApplicationChunkInfo> chunks;
    unsigned int commonFrames = 0;
};

} // namespace Cordel::Audio::Decode::AIFF
