#include <Cordel/Audio/Encode/WAV/Encoder.h>
#include <Cordel/Audio/detail/WaveConstants.h>

namespace Cordel::Audio::Encode::WAV {

using namespace Cordel::Audio::detail;

Encoder::Encoder(FilePath const& path, WaveFormat const& format) : PCMEncoder(path, format, false) {}

Encoder::~Encoder() = default;

bool Encoder::isFormatExtensible() const
{
    return format.numChannels > 2 || (format.bytesPerSample == 3 && format.isFloat) || format.bytesPerSample > 4;
}

void Encoder::Open()
{
    bool const extensible = isFormatExtensible();
    file.Open(4);
    writingData = false;
    finishedData = false;
    writeTag("RIFF");
    riffSizePosition = file.At().Get();
    write32(0);
    writeTag("WAVE");
    writeTag("fmt ");
    write32(extensible ? 40 : 16);
    write16(extensible ? WAVE_FORMATEXTENSIBLE_PCM_TAG : format.isFloat ? WAVE_FORMAT_FLOAT_TAG : WAVE_FORMAT_PCM_TAG);
    write16(format.numChannels);
    write32(format.sampleRate);
    write32((format.BytesPerFrame() & 0xFFFFu) * format.sampleRate);
    write16(format.BytesPerFrame());
    write16(format.bytesPerSample * 8);
    if (extensible) {
        WaveGuid const& guid = format.isFloat ? WAVE_FORMAT_IEEE_FLOAT_SUBTYPE : WAVE_FORMAT_PCM_SUBTYPE;
        write16(22);
        write16(format.bytesPerSample * 8);
        write32(format.channelMask);
        write32(guid.data1);
        write16(guid.data2);
        write16(guid.data3);
        file.WriteBlock(reinterpret_cast<char const*>(guid.data4), 8);
    }
}

void Encoder::writeDataHeader()
{
    writeTag("data");
    dataSizePosition = file.At().Get();
    write32(0);
}

void Encoder::WriteCueChunk(std::vector<unsigned int> const& cuePoints)
{
    endWritingData();
    if (cuePoints.empty())
        return;
    unsigned int const n = static_cast<unsigned int>(cuePoints.size());
    writeTag("cue ");
    write32(n * 24 + 4);
    write32(n);
    for (unsigned int i = 0; i < n; ++i) {
        write32(i);
        write32(cuePoints[i]);
        writeTag("data");
        write32(0);
        write32(0);
        write32(cuePoints[i]);
    }
}

void Encoder::WriteApplicationChunk(unsigned int id, std::vector<unsigned char> const& data)
{
    endWritingData();
    unsigned int const size = static_cast<unsigned int>(data.size());
    writeTag(id);
    write32(size);
    if (size)
        file.WriteBlock(reinterpret_cast<char const*>(data.data()), size);
    if (size & 1u)
        writeZeros(1);
}

void Encoder::Close()
{
    if (!file.IsOpen())
        return;
    if (writingData)
        endWritingData();
    if (riffSizePosition.IsSet()) {
        unsigned int size = flushedSize();
        if (size >= 8) {
            size += size & 1u;
            file.At(riffSizePosition.Get());
            write32(size - 8);
        }
    }
    if (dataSizePosition.IsSet() && framesCounted) {
        file.At(dataSizePosition.Get());
        write32(framesWritten * format.BytesPerFrame());
    }
    closeFile();
}

} // namespace Cordel::Audio::Encode::WAV
