#include <Cordel/MIDI/Encode/Encoder.h>

#include <Cordel/Util/Exception.h>
#include <Cordel/Util/FileStream.h>

#include <algorithm>

namespace Cordel::MIDI::Encode {

namespace {

constexpr std::uint32_t headerTag = 0x4D546864; // "MThd"
constexpr std::uint32_t trackTag = 0x4D54726B;  // "MTrk"
constexpr unsigned int trackCountPosition = 10;
constexpr std::uint32_t largestQuantity = 0x0FFFFFFF;

// Seven bits a byte, most significant first, the top bit set on every byte but the last; values
// above what four bytes hold are clamped. Returns the number of bytes (1 to 4).
unsigned int encodeQuantity(std::uint32_t value, unsigned char* out)
{
    value = std::min(value, largestQuantity);
    unsigned int count = 1;
    while (count < 4 && (value >> (7 * count)) != 0)
        ++count;
    for (unsigned int i = 0; i < count; ++i) {
        unsigned int const shift = 7 * (count - 1 - i);
        out[i] = static_cast<unsigned char>(((value >> shift) & 0x7F) | (i + 1 < count ? 0x80 : 0));
    }
    return count;
}

void putBigEndian32(std::uint32_t value, unsigned char* out)
{
    out[0] = static_cast<unsigned char>(value >> 24);
    out[1] = static_cast<unsigned char>(value >> 16);
    out[2] = static_cast<unsigned char>(value >> 8);
    out[3] = static_cast<unsigned char>(value);
}

} // namespace

Encoder::Encoder(FilePath const& path, unsigned short ticksPerQuarter, Layout layout)
    : stream(std::make_unique<Util::FileStream>(path, Util::File::ModeWrite)), layout(layout)
{
    writeTag(headerTag);
    unsigned char const header[10] = {0, 0, 0, 6, 0, 1, 0, 0, static_cast<unsigned char>(ticksPerQuarter >> 8),
                                      static_cast<unsigned char>(ticksPerQuarter)};
    writeBytes(header, sizeof header);
}

Encoder::~Encoder()
{
    try {
        Close();
    } catch (Exception::Base const&) {
        // A destructor cannot report; callers who care call Close themselves.
    }
}

void Encoder::OpenTrack()
{
    // A track left open would otherwise keep a length of 0 and hide every track after it.
    CloseTrack();
    ++trackCount;
    byteCount = 0;
    lastTime = 0;
    writeTag(trackTag);
    byteCount = 4;
    lengthPosition = stream->GetPosition();
    unsigned char const placeholder[4] = {};
    writeBytes(placeholder, sizeof placeholder);
}

void Encoder::WriteTempo(unsigned int microsecondsPerQuarter)
{
    unsigned char const bytes[7] = {0x00, 0xFF, 0x51, 0x03, static_cast<unsigned char>(microsecondsPerQuarter >> 16),
                                    static_cast<unsigned char>(microsecondsPerQuarter >> 8),
                                    static_cast<unsigned char>(microsecondsPerQuarter)};
    writeBytes(bytes, sizeof bytes);
}

void Encoder::WriteTimeSignature(unsigned char numerator, unsigned char denominatorPower, unsigned char clocksPerClick,
                                 unsigned char thirtySecondsPerQuarter)
{
    unsigned char const bytes[8] = {0x00, 0xFF, 0x58, 0x04, numerator, denominatorPower, clocksPerClick, thirtySecondsPerQuarter};
    writeBytes(bytes, sizeof bytes);
}

void Encoder::WriteTrackName(String const& name)
{
    unsigned char bytes[7] = {0x00, 0xFF, 0x03};
    unsigned int const count = 3 + encodeQuantity(name.Length(), bytes + 3);
    writeBytes(bytes, count);
    writeBytes(reinterpret_cast<unsigned char const*>(name.c_str()), name.Length());
}

void Encoder::WriteMIDIEvent(unsigned int time, unsigned char status, unsigned char data1, unsigned char data2)
{
    time = std::max(time, lastTime);
    unsigned char bytes[7];
    unsigned int count = encodeQuantity(time - lastTime, bytes);
    bytes[count++] = status;
    unsigned int const data = dataBytes(status);
    if (data > 0)
        bytes[count++] = data1;
    if (data > 1)
        bytes[count++] = data2;
    writeBytes(bytes, count);
    lastTime = time;
}

void Encoder::CloseTrack()
{
    if (byteCount == 0)
        return;
    unsigned char const endOfTrack[4] = {0x00, 0xFF, 0x2F, 0x00};
    writeBytes(endOfTrack, sizeof endOfTrack);
    unsigned int const end = stream->GetPosition();
    unsigned char length[4];
    putBigEndian32(byteCount - 8, length);
    stream->SetPosition(lengthPosition);
    stream->Write(sizeof length, length);
    stream->SetPosition(end);
    lengthPosition = 0;
    byteCount = 0;
    lastTime = 0;
}

void Encoder::Close()
{
    if (closed)
        return;
    closed = true;
    CloseTrack();
    unsigned char const count[2] = {static_cast<unsigned char>(trackCount >> 8), static_cast<unsigned char>(trackCount)};
    stream->SetPosition(trackCountPosition);
    stream->Write(sizeof count, count);
    stream->Close();
}

unsigned int Encoder::dataBytes(unsigned char status) const
{
    if (layout == Layout::Native)
        return 2;
    if (status < 0xF0) {
        unsigned char const kind = status & 0xF0;
        return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
    }
    switch (status) {
    case 0xF1:
    case 0xF3:
        return 1;
    case 0xF6:
    case 0xF8:
    case 0xF9:
    case 0xFA:
    case 0xFB:
    case 0xFC:
    case 0xFD:
    case 0xFE:
        return 0;
    default:
        return 2;
    }
}

// Tags are written before a track's count starts; OpenTrack counts its tag itself.
void Encoder::writeTag(std::uint32_t tag)
{
    if (layout == Layout::Standard) {
        unsigned char bytes[4];
        putBigEndian32(tag, bytes);
        writeBytes(bytes, sizeof bytes);
        return;
    }
    *stream << static_cast<unsigned int>(tag);
}

// Counts only inside a track: events written with no track open still reach the file, but must
// not make CloseTrack patch a length field that does not exist.
void Encoder::writeBytes(unsigned char const* bytes, unsigned int count)
{
    stream->Write(count, bytes);
    if (byteCount != 0)
        byteCount += count;
}

} // namespace Cordel::MIDI::Encode
