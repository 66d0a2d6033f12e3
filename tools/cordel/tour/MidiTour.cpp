// Tour stop: writing a MIDI file and reading it back.

#include "Tour.h"

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>
#include <Cordel/common/Path.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

void writeSong(FilePath const& path)
{
    MIDI::Encode::Encoder encoder(path, 96, MIDI::Encode::Encoder::Layout::Standard);
    encoder.OpenTrack();
    encoder.WriteTrackName("Conductor");
    encoder.WriteTempo(500000);
    encoder.WriteTimeSignature(4, 2, 24, 8);
    encoder.CloseTrack();

    encoder.OpenTrack();
    encoder.WriteTrackName("Melody");
    encoder.WriteMIDIEvent(0, 0xC0, 73, 0); // flute
    unsigned char const notes[] = {60, 64, 67, 72};
    unsigned int time = 0;
    for (unsigned char note : notes) {
        encoder.WriteMIDIEvent(time, 0x90, note, 100);
        encoder.WriteMIDIEvent(time + 90, 0x80, note, 0);
        time += 96;
    }
    encoder.CloseTrack();
    encoder.Close();
}

String describe(MIDI::MIDIMessage const& m)
{
    switch (m.type) {
    case 0x80:
        return String("note off %1").Arg(m.data1);
    case 0x90:
        return String("note on  %1, velocity %2").Arg(m.data1).Arg(m.data2);
    case 0xC0:
        return String("program  %1").Arg(m.data1);
    default:
        return String("status 0x%1").Arg(static_cast<unsigned>(m.type), 16);
    }
}

void midiTour()
{
    std::string folder = (std::filesystem::temp_directory_path() / "cordel-tour-XXXXXX").string();
    if (!::mkdtemp(folder.data())) {
        TourSay("No temporary folder to write in; skipping this stop.");
        return;
    }
    FilePath const path(String((folder + "/song.mid").c_str()));
    writeSong(path);
    TourSay(String("Wrote %1 (%2 bytes): a conductor track and a four-note melody.")
                .Arg(path.GetFilename())
                .Arg(static_cast<unsigned long long>(std::filesystem::file_size(path.ToString().c_str()))));

    MIDI::Decode::Decoder decoder(path);
    String error;
    if (!decoder.Parse(error)) {
        TourSay(String("Reading it back failed: %1").Arg(error));
    } else {
        TourSay(String("Read back: format %1, %2 tracks, %3 ticks per quarter note.")
                    .Arg(decoder.GetFormat())
                    .Arg(decoder.GetNumTracks())
                    .Arg(decoder.GetDivision()));
        TourSay("Names, tempo and time signature are meta events: checked, not delivered.");
        for (unsigned t = 0; t < decoder.GetNumTracks(); ++t) {
            std::vector<MIDI::MIDIMessage> events;
            decoder.GetTrackEvents(t, events);
            TourSay(String("Track %1: %2 events").Arg(t).Arg(static_cast<unsigned>(events.size())));
            for (MIDI::MIDIMessage const& m : events)
                TourSay(String("  tick %1  channel %2  %3").Arg(m.time).Arg(m.channel).Arg(describe(m)));
        }
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

} // namespace

CORDEL_TOUR_STOP(80, "MIDI files: write two tracks, read them back", midiTour);

} // namespace CordelTool
