#include <Cordel/MIDI/Decode/Decoder.h>

#include <Cordel/Util/FileStream.h>

#include <algorithm>
#include <cstdint>

namespace Cordel::MIDI::Decode {

namespace {

constexpr unsigned int headerTag = 0x4D546864; // "MThd"
constexpr unsigned int trackTag = 0x4D54726B;  // "MTrk"


// Decodes one track chunk. The bytes the file holds of it were read in one block; the chunk's
// declared length still rules every check, so a chunk cut short by the end of the file decodes
// like one read byte by byte: up to the first byte that is not there, which the stream itself
// then fails to read.
class TrackParser {
public:
    TrackParser(Util::DataStream& stream, std::vector<unsigned char> const& bytes, unsigned int start, unsigned int length,
                std::vector<MIDIMessage>& events)
        : stream(stream), bytes(bytes), start(start), length(length), events(events)
    {
    }

    bool Run(String& error)
    {
        std::uint32_t time = 0;
        unsigned char runningStatus = 0; // 0: none
        while (offset < length) {
            std::uint32_t delta = 0;
            if (!readQuantity(delta, error))
                return false;
            time += delta;
            if (offset >= length)
                return fail("Unexpected end of MTrk chunk at byte %1", error);
            unsigned char status = next();
            if (status < 0x80) {
                if (runningStatus == 0)
                    return fail("Need running status at byte %1", error);
                --offset;
                status = runningStatus;
            } else {
                runningStatus = status < 0xF0 ? status : 0;
            }
            if (!message(time, status, error))
                return false;
        }
        return true;
    }

private:
    bool message(std::uint32_t time, unsigned char status, String& error)
    {
        if (status < 0xF0) {
            unsigned char const kind = status & 0xF0;
            bool const twoBytes = kind != 0xC0 && kind != 0xD0;
            return deliver(time, status & 0x0F, kind, twoBytes ? 2 : 1, error);
        }
        switch (status) {
        case 0xF0:
            return skipData("Not enough bytes for sysex message at byte %1", error);
        case 0xF1:
        case 0xF6:
            // Tune request is read with a data byte and song select (0xF3) is not: files that
            // older versions read this way must keep reading the same.
            return deliver(time, 0, status, 1, error);
        case 0xF2:
            return deliver(time, 0, status, 2, error);
        case 0xFF:
            if (offset >= length)
                return fail("Not enough bytes for meta-event type at byte %1", error);
            next();
            return skipData("Not enough bytes for meta-event message at byte %1", error);
        case 0xF3:
        case 0xF4:
        case 0xF5:
        case 0xF7:
            // Undefined here, so the length of what follows is unknown: the rest of the chunk
            // cannot be trusted and is passed over.
            offset = length;
            return true;
        default: // 0xF8 .. 0xFE: real-time, no data
            return deliver(time, 0, status, 0, error);
        }
    }

    bool deliver(std::uint32_t time, unsigned char channel, unsigned char type, unsigned dataBytes, String& error)
    {
        if (length - offset < dataBytes)
            return fail("Not enough bytes for message at byte %1", error);
        MIDIMessage& m = events.emplace_back();
        m.time = time;
        m.channel = channel;
        m.type = type;
        if (dataBytes > 0)
            m.data1 = next();
        if (dataBytes > 1)
            m.data2 = next();
        return true;
    }

    // A length followed by that many bytes, which are passed over.
    bool skipData(char const* cutShort, String& error)
    {
        std::uint32_t size = 0;
        if (!readQuantity(size, error))
            return false;
        if (length - offset < size)
            return fail(cutShort, error);
        offset += size;
        return true;
    }

    // At most four bytes, seven bits each, most significant first, never past the chunk.
    bool readQuantity(std::uint32_t& value, String& error)
    {
        value = 0;
        for (int i = 0; i < 4; ++i) {
            if (offset >= length)
                return fail("Variable-length quantity runs past end of chunk at byte %1", error);
            unsigned char const b = next();
            value = (value << 7) | (b & 0x7F);
            if ((b & 0x80) == 0)
                return true;
        }
        return fail("Variable-length quantity has more than 4 bytes at byte %1", error);
    }

    unsigned char next()
    {
        if (offset < bytes.size())
            return bytes[offset++];
        return readPastEndOfFile();
    }

    // Beyond the bytes the file holds: let the stream report the missing byte as it reports any.
    unsigned char readPastEndOfFile()
    {
        stream.SetPosition(static_cast<unsigned int>(position()));
        unsigned char b = 0;
        stream >> b;
        ++offset;
        return b;
    }

    std::uint64_t position() const { return std::uint64_t(start) + offset; }

    bool fail(char const* text, String& error) const
    {
        error = String(text).Arg(static_cast<unsigned long long>(position()));
        return false;
    }

    Util::DataStream& stream;
    std::vector<unsigned char> const& bytes;
    unsigned int const start;
    std::uint32_t const length;
    std::uint32_t offset = 0;
    std::vector<MIDIMessage>& events;
};

} // namespace

Decoder::Decoder(FilePath const& path) : path(path) {}

Decoder::Decoder(FilePath const& path, Options const& options) : path(path), options(options) {}

Decoder::~Decoder() = default;

bool Decoder::Parse(String& error)
{
    tracks.clear();
    format = declaredTracks = division = 0;
    stream.reset();
    stream = std::make_unique<Util::FileStream>(path, Util::File::ModeRead);
    stream->SetEndianType(Util::DataStream::EndianBig);
    return parseHeader(error) && parseChunks(error);
}

bool Decoder::parseHeader(String& error)
{
    unsigned int tag = 0, length = 0;
    *stream >> tag;
    if (tag != headerTag) {
        error = "File does not begin with 'MThd'";
        return false;
    }
    *stream >> length;
    if (length != 6) {
        error = "'MThd' chunk does not have a length of 6";
        return false;
    }
    *stream >> format;
    bool const single = format == 0 && options.acceptFormat0;
    if (format != 1 && !single) {
        error = options.acceptFormat0
            ? String("Invalid MIDI file format %1, we only support Type 0 and Type 1 files").Arg(format)
            : String("Invalid MIDI file format %1, we only support Type 1 files for now").Arg(format);
        return false;
    }
    *stream >> declaredTracks;
    if (declaredTracks == 0 || (single && declaredTracks != 1)) {
        error = single ? String("Invalid MIDI track count %1 for a Type 0 file").Arg(declaredTracks)
                       : String("Invalid MIDI track count %1").Arg(declaredTracks);
        return false;
    }
    *stream >> division;
    if (division == 0) {
        error = String("Invalid PPQN %1").Arg(division);
        return false;
    }
    return true;
}

bool Decoder::parseChunks(String& error)
{
    unsigned int const size = stream->GetSize();
    auto remaining = [&] {
        unsigned int const at = stream->GetPosition();
        return at < size ? size - at : 0u;
    };
    std::vector<unsigned char> bytes;
    while (remaining() >= 8) {
        unsigned int tag = 0, length = 0;
        *stream >> tag >> length;
        unsigned int const start = stream->GetPosition();
        if (tag != trackTag) {
            if (length > remaining())
                return true;
            stream->SetPosition(start + length);
            continue;
        }
        // Never more than the file holds, whatever the chunk claims.
        bytes.resize(std::min(length, remaining()));
        stream->Read(static_cast<unsigned int>(bytes.size()), bytes.data());
        std::vector<MIDIMessage>& events = tracks.emplace_back();
        // Three bytes per event is typical of a track that uses running status.
        events.reserve(bytes.size() / 3);
        if (!TrackParser(*stream, bytes, start, length, events).Run(error))
            return false;
        if (std::uint64_t(start) + length >= size)
            return true;
        stream->SetPosition(start + length);
    }
    return true;
}

unsigned Decoder::GetNumTracks() const
{
    return std::min<unsigned>(static_cast<unsigned>(tracks.size()), declaredTracks);
}

void Decoder::GetTrackEvents(unsigned track, std::vector<MIDIMessage>& out) const
{
    if (track < tracks.size())
        out = tracks[track];
    else
        out.clear();
}

} // namespace Cordel::MIDI::Decode
