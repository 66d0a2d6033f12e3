#include <Cordel/Audio/Encode/AIFF/Encoder.h>
#include <Cordel/Audio/detail/Extended.h>

namespace Cordel::Audio::Encode::AIFF {

namespace {

// The version stamp every AIFF-C file carries.
constexpr unsigned int aifcVersion1 = 0xA2805140;

} // namespace

Encoder::Encoder(FilePath const& path, WaveFormat const& format) : PCMEncoder(path, format, true) {}

Encoder::~Encoder() = default;

void Encoder::Open()
{
    file.Open(4);
    writingData = false;
    finishedData = false;
    writeTag("FORM");
    formSizePosition = file.At().Get();
    write32(0);
    if (format.isFloat) {
        writeTag("AIFC");
        writeTag("FVER");
        write32(4);
        write32(aifcVersion1);
    } else {
        writeTag("AIFF");
    }
    // COMM: channels, frames (patched at Close), bits, rate; AIFF-C adds the compression type
    // and its name as a Pascal string padded to an even length.
    static char const floatName[] = "\x0eIEEE float 32"; // 1 + 14 bytes, padded to 16
    static char const doubleName[] = "\x0eIEEE float 64";
    writeTag("COMM");
    write32(format.isFloat ? 18 + 4 + 16 : 18);
    write16(format.numChannels);
    framesPosition = file.At().Get();
    write32(0);
    write16(format.bytesPerSample * 8);
    unsigned char rate[10];
    detail::doubleToExtended(format.sampleRate, rate);
    file.WriteBlock(reinterpret_cast<char const*>(rate), 10);
    if (format.isFloat) {
        bool const doubles = format.bytesPerSample == 8;
        writeTag(doubles ? "fl64" : "fl32");
        file.WriteBlock(doubles ? doubleName : floatName, 15);
        writeZeros(1);
    }
}

void Encoder::writeDataHeader()
{
    writeTag("SSND");
    soundSizePosition = file.At().Get();
    write32(0);
    write32(0); // offset
    write32(0); // block size
}

void Encoder::WriteCueChunk(std::vector<unsigned int> const&) {}

void Encoder::WriteChunk(unsigned int id, std::vector<unsigned char> const& data)
{
    writeChunk(id, {}, data);
}

void Encoder::WriteApplicationChunk(unsigned int id, std::vector<unsigned char> const& data)
{
    writeChunk(FourCC("APPL"), id, data);
}

void Encoder::writeChunk(unsigned int id, checked_value<unsigned int> signature, std::vector<unsigned char> const& data)
{
    endWritingData();
    unsigned int const size = static_cast<unsigned int>(data.size()) + (signature.IsSet() ? 4 : 0);
    writeTag(id);
    write32(size);
    if (signature.IsSet())
        writeTag(signature.Get());
    if (!data.empty())
        file.WriteBlock(reinterpret_cast<char const*>(data.data()), static_cast<unsigned int>(data.size()));
    if (size & 1u)
        writeZeros(1);
}

void Encoder::Close()
{
    if (!file.IsOpen())
        return;
    if (writingData)
        endWritingData();
    unsigned int size = flushedSize();
    if (formSizePosition.IsSet() && size >= 8) {
        size += size & 1u;
        file.At(formSizePosition.Get());
        write32(size - 8);
    }
    if (framesPosition.IsSet()) {
        file.At(framesPosition.Get());
        write32(framesWritten);
    }
    if (soundSizePosition.IsSet()) {
        file.At(soundSizePosition.Get());
        write32(8 + framesWritten * format.BytesPerFrame());
    }
    closeFile();
}

} // namespace Cordel::Audio::Encode::AIFF
