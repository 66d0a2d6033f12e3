#pragma once
// Encoder: writes a format 1 MIDI file track by track.
//
// Open a track, write its meta events and its channel events with absolute tick times, close
// it, and close the file at the end. Every event is written with its status byte and two data
// bytes (no running status; with the native layout, a second data byte even for
// the messages that take one). The encoder
// patches each track's length when the track is closed and the header's track count in Close.
// Failures of the file surface as the file stream's Util::Exception::DataStreamIO.

#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <cstdint>
#include <memory>

namespace Cordel::Util {
class FileStream;
}

namespace Cordel::MIDI::Encode {

class CORDEL_API Encoder : noncopyable {
public:
    // What reaches the disk.
    enum class Layout {
        // The "MThd" and "MTrk" tags as 32-bit values in the host's byte order, which on a
        // little-endian host puts them on disk byte-reversed ("dhTM", "krTM"), and two data bytes
        // after every status byte, program change and channel pressure included. The default,
        // so that existing callers keep getting exactly the bytes they always got; no other
        // MIDI software reads such a file, nor does Decoder.
        Native,
        // A standard MIDI file that any MIDI software reads: the tag bytes "MThd" and "MTrk",
        // and each message with the data bytes its status takes (one for program change and
        // channel pressure, none for tune request and the real-time messages). Decoder reads
        // tune request with a data byte, so a tune request does not read back.
        Standard,
    };

    // Creates the file and writes the header with a track count of 0.
    Encoder(FilePath const& path, unsigned short ticksPerQuarter, Layout layout = Layout::Native);
    // Closes the file properly when Close was not called; failures are swallowed there.
    virtual ~Encoder();

    // Starts a track chunk, closing the open track first if there is one.
    void OpenTrack();
    // Meta events, written with a delta of 0.
    void WriteTempo(unsigned int microsecondsPerQuarter);
    void WriteTimeSignature(unsigned char numerator, unsigned char denominatorPower, unsigned char clocksPerClick,
                            unsigned char thirtySecondsPerQuarter);
    void WriteTrackName(String const& name);
    // A channel event at an absolute time in ticks. A time before the previous event's is taken
    // as the previous event's; deltas above 0x0FFFFFFF are clamped.
    void WriteMIDIEvent(unsigned int time, unsigned char status, unsigned char data1, unsigned char data2);
    // Ends the open track with an end-of-track event and patches its length; nothing when no
    // track is open.
    void CloseTrack();
    // Closes an open track, patches the track count and closes the file.
    void Close();

private:
    void writeTag(std::uint32_t tag);
    unsigned int dataBytes(unsigned char status) const;
    void writeBytes(unsigned char const* bytes, unsigned int count);

    std::unique_ptr<Util::FileStream> stream;
    std::uint32_t trackCount = 0;
    std::uint32_t lengthPosition = 0;
    // Bytes of the open track from its tag on; 0 when no track is open.
    std::uint32_t byteCount = 0;
    std::uint32_t lastTime = 0;
    Layout layout;
    bool closed = false;
};

} // namespace Cordel::MIDI::Encode
