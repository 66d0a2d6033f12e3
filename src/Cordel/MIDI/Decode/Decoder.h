#pragma once
// Decoder: reads a Standard MIDI File of format 1 (and, when asked, format 0) and turns each track chunk into a list of
// channel and system messages with absolute tick times.
//
// The reader validates as it goes: a structural fault makes Parse return false with a message
// that names the byte position where it was found, and the events decoded before the fault stay
// in their tracks. Meta events and system-exclusive messages are checked for length and skipped,
// not delivered. Times stay in ticks; there is no tempo conversion. Failures of the file itself
// (a missing file, a chunk cut short by the end of the file) are thrown by the file stream as
// Util::Exception::DataStreamIO.

#include <Cordel/MIDI/MIDIMessage.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <memory>
#include <vector>

namespace Cordel::Util {
class FileStream;
}

namespace Cordel::MIDI::Decode {

class CORDEL_API Decoder : noncopyable {
public:
    // What the decoder takes beyond format 1 files, when asked.
    struct Options {
        // Format 0 files, a single track: the most common kind. The header must then declare
        // one track.
        bool acceptFormat0 = false;
    };

    // Stores the path; nothing is read before Parse.
    explicit Decoder(FilePath const& path);
    Decoder(FilePath const& path, Options const& options);
    virtual ~Decoder();

    // Discards the result of an earlier call, then opens and decodes the file. On failure returns
    // false with the reason in error.
    bool Parse(String& error);

    // The number of track chunks decoded, but never more than the header declares: surplus track
    // chunks are decoded and can still be fetched with GetTrackEvents.
    unsigned GetNumTracks() const;
    // Copies the events of a track (0-based, in file order); out is emptied when there is no
    // such track chunk.
    void GetTrackEvents(unsigned track, std::vector<MIDIMessage>& out) const;

    // The header of the last file parsed (0 before its header was read): the file format, the
    // track count it declares, and ticks per quarter note.
    unsigned short GetFormat() const { return format; }
    unsigned short GetDeclaredTrackCount() const { return declaredTracks; }
    unsigned short GetDivision() const { return division; }
    // Every track chunk decoded, those beyond the declared count included.
    unsigned GetNumDecodedTracks() const { return static_cast<unsigned>(tracks.size()); }

private:
    bool parseHeader(String& error);
    bool parseChunks(String& error);

    FilePath path;
    Options options;
    std::unique_ptr<Util::FileStream> stream;
    unsigned short format = 0;
    unsigned short declaredTracks = 0;
    unsigned short division = 0;
    std::vector<std::vector<MIDIMessage>> tracks;
};

} // namespace Cordel::MIDI::Decode
