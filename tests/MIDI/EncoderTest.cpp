#include "MidiFiles.h"
#include "TempFolder.h"

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Cordel;
using namespace CordelTest;
using MIDI::MIDIMessage;
using MIDI::Encode::Encoder;

namespace {

class EncoderTest : public TempFolder {
protected:
    FilePath Out() const { return FilePath(String(PathOf("out.mid").c_str())); }
    Bytes Written() const { return ReadFile(PathOf("out.mid")); }
};

TEST_F(EncoderTest, EmptyTrackInTheNativeLayout)
{
    Encoder encoder(Out(), 480);
    encoder.OpenTrack();
    encoder.Close();
    // The tags are 32-bit values in host order: byte-reversed on a little-endian disk.
    Bytes const expected = {'d', 'h', 'T', 'M', 0, 0, 0, 6, 0, 1, 0, 1, 0x01, 0xE0,
                            'k', 'r', 'T', 'M', 0, 0, 0, 4, 0x00, 0xFF, 0x2F, 0x00};
    EXPECT_EQ(Written(), expected);
}

TEST_F(EncoderTest, EmptyTrackInTheStandardLayout)
{
    Encoder encoder(Out(), 96, Encoder::Layout::Standard);
    encoder.OpenTrack();
    encoder.Close();
    EXPECT_EQ(Written(), Join({Header(1, 1, 96), Track({0x00, 0xFF, 0x2F, 0x00})}));
}

TEST_F(EncoderTest, EventsMetaEventsAndDeltasByteForByte)
{
    Encoder encoder(Out(), 480);
    encoder.OpenTrack();
    encoder.WriteTempo(500000);
    encoder.WriteTimeSignature(6, 3, 24, 8);
    encoder.WriteTrackName(String(std::string(200, 'n')));
    encoder.WriteMIDIEvent(10, 0x90, 60, 100);
    encoder.WriteMIDIEvent(5, 0x80, 60, 0);   // earlier than the last: delta 0, taken at 10
    encoder.WriteMIDIEvent(138, 0xC1, 7, 0);  // delta 128; two data bytes all the same
    encoder.WriteMIDIEvent(138 + 0x0FFFFFFF, 0xB0, 1, 2);
    encoder.WriteMIDIEvent(0xFFFFFFFF, 0xB0, 3, 4); // delta above the largest: clamped
    encoder.CloseTrack();
    encoder.CloseTrack();
    encoder.OpenTrack();
    encoder.WriteMIDIEvent(1, 0xE0, 0, 64); // a new track starts at time 0
    encoder.OpenTrack();                    // closes the open one
    encoder.Close();

    Bytes const name(200, 'n');
    Bytes const events = Join({
        {0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20},
        {0x00, 0xFF, 0x58, 0x04, 6, 3, 24, 8},
        {0x00, 0xFF, 0x03, 0x81, 0x48},
        name,
        {0x0A, 0x90, 60, 100},
        {0x00, 0x80, 60, 0},
        {0x81, 0x00, 0xC1, 7, 0},
        {0xFF, 0xFF, 0xFF, 0x7F, 0xB0, 1, 2},
        {0xFF, 0xFF, 0xFF, 0x7F, 0xB0, 3, 4},
        {0x00, 0xFF, 0x2F, 0x00}, // once
    });
    Bytes const endOfTrack = {0x00, 0xFF, 0x2F, 0x00};
    Bytes expected = Join({Header(1, 3), Track(events), Track(Join({{0x01, 0xE0, 0, 64}, endOfTrack})), Track(endOfTrack)});
    for (size_t at : {size_t(0), size_t(14), 22 + events.size(), 22 + events.size() + 16})
        std::reverse(expected.begin() + at, expected.begin() + at + 4);
    EXPECT_EQ(Written(), expected);
}

TEST_F(EncoderTest, StandardLayoutReadsBackEventForEvent)
{
    std::vector<std::vector<MIDIMessage>> tracks(3);
    std::uint32_t seed = 7;
    auto next = [&seed] { return (seed = seed * 1103515245u + 12345u) >> 16; };
    for (auto& track : tracks) {
        std::uint32_t time = 0;
        for (int i = 0; i < 500; ++i) {
            time += next() % 3 == 0 ? next() % 20000 : 0;
            std::uint8_t const type = std::uint8_t(0x80 + 0x10 * (next() % 7));
            bool const single = type == 0xC0 || type == 0xD0;
            track.push_back(Event(time, next() % 16, type, next() % 128, single ? 0 : next() % 128));
        }
    }
    {
        Encoder encoder(Out(), 960, Encoder::Layout::Standard);
        for (auto const& track : tracks) {
            encoder.OpenTrack();
            encoder.WriteTrackName("name");
            encoder.WriteTempo(400000);
            for (MIDIMessage const& m : track)
                encoder.WriteMIDIEvent(m.time, m.type | m.channel, m.data1, m.data2);
        }
        // Left to the destructor: it finishes the file.
    }
    MIDI::Decode::Decoder decoder(Out());
    String error;
    ASSERT_TRUE(decoder.Parse(error)) << error.c_str();
    ASSERT_EQ(decoder.GetNumTracks(), 3u);
    EXPECT_EQ(decoder.GetDivision(), 960);
    for (unsigned t = 0; t < 3; ++t) {
        std::vector<MIDIMessage> read;
        decoder.GetTrackEvents(t, read);
        EXPECT_EQ(read, tracks[t]);
    }
}

TEST_F(EncoderTest, EventsOutsideATrackLeaveTheHeaderAlone)
{
    Encoder encoder(Out(), 480, Encoder::Layout::Standard);
    encoder.WriteMIDIEvent(0, 0xF8, 0, 0);
    encoder.CloseTrack();
    encoder.OpenTrack();
    encoder.Close();
    encoder.Close();
    EXPECT_EQ(Written(), Join({Header(1, 1), {0x00, 0xF8}, Track({0x00, 0xFF, 0x2F, 0x00})}));
}

} // namespace
