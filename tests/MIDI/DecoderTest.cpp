#include "MidiFiles.h"
#include "TempFolder.h"

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/Util/DataStreamIOException.h>

#include <gtest/gtest.h>

using namespace Cordel;
using namespace CordelTest;
using MIDI::MIDIMessage;
using MIDI::Decode::Decoder;

namespace {

class DecoderTest : public TempFolder {
protected:
    // Writes the bytes to a file and parses it; returns Parse's result, error in lastError.
    bool Parse(Bytes const& bytes, Decoder::Options const& options = {})
    {
        WriteFile(PathOf("in.mid"), bytes);
        decoder = std::make_unique<Decoder>(FilePath(String(PathOf("in.mid").c_str())), options);
        lastError = String();
        return decoder->Parse(lastError);
    }
    std::string ErrorOf(Bytes const& bytes)
    {
        EXPECT_FALSE(Parse(bytes));
        return lastError.ToStdString();
    }
    std::vector<MIDIMessage> Events(unsigned track)
    {
        std::vector<MIDIMessage> out{MIDIMessage{}};
        decoder->GetTrackEvents(track, out);
        return out;
    }

    std::unique_ptr<Decoder> decoder;
    String lastError;
};

TEST_F(DecoderTest, DeliversChannelAndSystemMessagesWithAbsoluteTimes)
{
    Bytes const body = {
        0x00, 0x90, 0x3C, 0x64,                   // note on
        0x10, 0x3E, 0x00,                         // running status; velocity 0 stays a note on
        0x81, 0x00, 0x80, 0x3C, 0x40,             // delta 128
        0x00, 0xA1, 0x3C, 0x10,                   //
        0x00, 0xB2, 0x07, 0x7F,                   //
        0x05, 0xC3, 0x05,                         // one data byte
        0x00, 0xD4, 0x20,                         // one data byte
        0x00, 0xE5, 0x00, 0x40,                   //
        0x0A, 0xFF, 0x01, 0x03, 'a', 'b', 'c',    // text meta: skipped, its delta counts
        0x05, 0xF0, 0x03, 0x7E, 0x7F, 0xF7,       // sysex: skipped, its delta counts
        0x01, 0xF1, 0x23,                         //
        0x00, 0xF2, 0x10, 0x20,                   //
        0x00, 0xF6, 0x07,                         // tune request is given a data byte
        0x00, 0xF8, 0x00, 0xF9, 0x00, 0xFA, 0x00, 0xFB, 0x00, 0xFC, 0x00, 0xFD, 0x00, 0xFE,
        0x00, 0xFF, 0x2F, 0x00,
    };
    ASSERT_TRUE(Parse(Join({Header(), Track(body)}))) << lastError.c_str();
    std::vector<MIDIMessage> const expected = {
        Event(0, 0, 0x90, 0x3C, 0x64),   Event(16, 0, 0x90, 0x3E, 0x00),  Event(144, 0, 0x80, 0x3C, 0x40),
        Event(144, 1, 0xA0, 0x3C, 0x10), Event(144, 2, 0xB0, 0x07, 0x7F), Event(149, 3, 0xC0, 0x05),
        Event(149, 4, 0xD0, 0x20),       Event(149, 5, 0xE0, 0x00, 0x40), Event(165, 0, 0xF1, 0x23),
        Event(165, 0, 0xF2, 0x10, 0x20), Event(165, 0, 0xF6, 0x07),       Event(165, 0, 0xF8),
        Event(165, 0, 0xF9),             Event(165, 0, 0xFA),             Event(165, 0, 0xFB),
        Event(165, 0, 0xFC),             Event(165, 0, 0xFD),             Event(165, 0, 0xFE),
    };
    EXPECT_EQ(Events(0), expected);
    EXPECT_EQ(decoder->GetNumTracks(), 1u);
    EXPECT_EQ(decoder->GetDivision(), 480);
    EXPECT_TRUE(Events(1).empty());
}

TEST_F(DecoderTest, LongestDeltaIsAccepted)
{
    ASSERT_TRUE(Parse(Join({Header(), Track({0xFF, 0xFF, 0xFF, 0x7F, 0x90, 0x3C, 0x40, 0x81, 0x00, 0x3C, 0x00})})));
    EXPECT_EQ(Events(0), (std::vector<MIDIMessage>{Event(0x0FFFFFFF, 0, 0x90, 0x3C, 0x40),
                                                    Event(0x0FFFFFFF + 128, 0, 0x90, 0x3C, 0x00)}));
}

TEST_F(DecoderTest, RunningStatusEndsAtMetaSysexAndSystemMessages)
{
    Bytes const noteOn = {0x00, 0x90, 0x3C, 0x40};
    struct Case {
        Bytes between;
        char const* error;
        size_t kept;
    } const cases[] = {
        {{0x00, 0xFF, 0x01, 0x00}, "Need running status at byte 32", 1},
        {{0x00, 0xF0, 0x01, 0xF7}, "Need running status at byte 32", 1},
        {{0x00, 0xF8}, "Need running status at byte 30", 2},
        {{0x00, 0xF1, 0x00}, "Need running status at byte 31", 2},
        {{}, "", 2},
    };
    for (Case const& c : cases) {
        Bytes const body = Join({noteOn, c.between, {0x00, 0x3C, 0x00}});
        EXPECT_EQ(Parse(Join({Header(), Track(body)})), *c.error == 0);
        EXPECT_EQ(lastError.ToStdString(), c.error);
        EXPECT_EQ(Events(0).size(), c.kept) << "events decoded before a failure stay";
    }
    EXPECT_EQ(ErrorOf(Join({Header(), Track({0x00, 0x3C, 0x40})})), "Need running status at byte 24");
}

// The track's data starts at byte 22; positions are where the stream stood when the fault showed.
TEST_F(DecoderTest, TrackFaultsNameTheirBytePosition)
{
    struct Case {
        Bytes body;
        char const* error;
    } const cases[] = {
        {{0x00, 0x90, 0x3C, 0x40, 0x00}, "Unexpected end of MTrk chunk at byte 27"},
        {{0x00, 0x90, 0x3C}, "Not enough bytes for message at byte 24"},
        {{0x00, 0xC0}, "Not enough bytes for message at byte 24"},
        {{0x00, 0xF2, 0x01}, "Not enough bytes for message at byte 24"},
        {{0x00, 0xF1}, "Not enough bytes for message at byte 24"},
        {{0x00, 0xF0, 0x05, 0x01, 0x02}, "Not enough bytes for sysex message at byte 25"},
        {{0x00, 0xFF}, "Not enough bytes for meta-event type at byte 24"},
        {{0x00, 0xFF, 0x01, 0x05, 0x61}, "Not enough bytes for meta-event message at byte 26"},
        {{0x00, 0xFF, 0x01, 0x81}, "Variable-length quantity runs past end of chunk at byte 26"},
        {{0x80}, "Variable-length quantity runs past end of chunk at byte 23"},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x90, 0x3C, 0x40}, "Variable-length quantity has more than 4 bytes at byte 26"},
        {{0x00, 0xF0, 0x80, 0x80, 0x80, 0x80, 0x00}, "Variable-length quantity has more than 4 bytes at byte 28"},
    };
    for (Case const& c : cases)
        EXPECT_EQ(ErrorOf(Join({Header(), Track(c.body)})), c.error);
    // Positions count from the start of the file, also in a later track.
    Bytes const first = Track({0x00, 0x90, 0x3C, 0x40});
    EXPECT_EQ(ErrorOf(Join({Header(1, 2), first, Track({0x00, 0x90, 0x3C})})), "Not enough bytes for message at byte 36");
    EXPECT_EQ(decoder->GetNumDecodedTracks(), 2u);
    EXPECT_EQ(Events(0).size(), 1u);
}

TEST_F(DecoderTest, HeaderIsChecked)
{
    Bytes const track = Track({0x00, 0xFF, 0x2F, 0x00});
    Bytes reversedTag = Header();
    std::swap(reversedTag[0], reversedTag[3]);
    std::swap(reversedTag[1], reversedTag[2]);
    EXPECT_EQ(ErrorOf(Join({reversedTag, track})), "File does not begin with 'MThd'");
    EXPECT_EQ(ErrorOf(Join({Header(1, 1, 480, 8), {0, 0}, track})), "'MThd' chunk does not have a length of 6");
    EXPECT_EQ(ErrorOf(Join({Header(0), track})), "Invalid MIDI file format 0, we only support Type 1 files for now");
    EXPECT_EQ(ErrorOf(Join({Header(2), track})), "Invalid MIDI file format 2, we only support Type 1 files for now");
    EXPECT_EQ(ErrorOf(Join({Header(1, 0), track})), "Invalid MIDI track count 0");
    EXPECT_EQ(ErrorOf(Join({Header(1, 1, 0), track})), "Invalid PPQN 0");
    EXPECT_EQ(decoder->GetNumTracks(), 0u);
}

TEST_F(DecoderTest, FormatZeroOnlyWhenAskedAndWithOneTrack)
{
    Bytes const track = Track({0x00, 0x90, 60, 100, 0x10, 0x80, 60, 0});
    Decoder::Options const format0{.acceptFormat0 = true};
    ASSERT_TRUE(Parse(Join({Header(0, 1, 96), track}), format0)) << lastError.c_str();
    EXPECT_EQ(decoder->GetFormat(), 0u);
    EXPECT_EQ(decoder->GetNumTracks(), 1u);
    EXPECT_EQ(Events(0), (std::vector<MIDIMessage>{Event(0, 0, 0x90, 60, 100), Event(16, 0, 0x80, 60, 0)}));
    EXPECT_TRUE(Parse(Join({Header(1, 1), track}), format0)); // format 1 as before

    EXPECT_FALSE(Parse(Join({Header(0, 2), track, track}), format0));
    EXPECT_EQ(lastError, "Invalid MIDI track count 2 for a Type 0 file");
    EXPECT_FALSE(Parse(Join({Header(2, 1), track}), format0));
    EXPECT_EQ(lastError, "Invalid MIDI file format 2, we only support Type 0 and Type 1 files");
}

TEST_F(DecoderTest, ChunkLoopSkipsUnknownChunksAndHidesSurplusTracks)
{
    Bytes const file = Join({
        Header(1, 2),
        Track({0x00, 0x90, 0x01, 0x01}),
        Chunk("XFIH", {1, 2, 3, 4, 5}),
        Track({0x00, 0x90, 0x02, 0x02}),
        Track({0x00, 0x90, 0x03, 0x03}),
        Chunk("XFKM", {1, 2}, 100), // claims more than the file holds: the end
    });
    ASSERT_TRUE(Parse(file)) << lastError.c_str();
    EXPECT_EQ(decoder->GetNumTracks(), 2u);
    EXPECT_EQ(decoder->GetNumDecodedTracks(), 3u);
    EXPECT_EQ(decoder->GetDeclaredTrackCount(), 2);
    for (unsigned t = 0; t < 3; ++t)
        EXPECT_EQ(Events(t), std::vector<MIDIMessage>{Event(0, 0, 0x90, t + 1, t + 1)});
    EXPECT_TRUE(Events(3).empty());

    // Fewer than 8 bytes after the last chunk end the file; a declared count above the chunks
    // present is not an error.
    ASSERT_TRUE(Parse(Join({Header(1, 5), Track({0x00, 0x90, 0x01, 0x01}), {'M', 'T', 'r', 'k', 0, 0, 0}})));
    EXPECT_EQ(decoder->GetNumTracks(), 1u);
}

TEST_F(DecoderTest, UndefinedStatusSkipsToTheEndOfItsChunkOnly)
{
    for (std::uint8_t status : {0xF3, 0xF4, 0xF5, 0xF7}) {
        Bytes const file = Join({Header(1, 2), Track({0x00, 0x90, 0x3C, 0x40, 0x00, status, 0x05, 0x00, 0x90, 0x3E, 0x40}),
                                 Track({0x00, 0x91, 0x3C, 0x40})});
        ASSERT_TRUE(Parse(file)) << lastError.c_str();
        EXPECT_EQ(Events(0), std::vector<MIDIMessage>{Event(0, 0, 0x90, 0x3C, 0x40)});
        EXPECT_EQ(Events(1), std::vector<MIDIMessage>{Event(0, 1, 0x90, 0x3C, 0x40)});
    }
}

TEST_F(DecoderTest, FileFailuresAreThrownByTheStream)
{
    // The chunk claims 10 bytes and the file ends after 4 of them.
    EXPECT_THROW(Parse(Join({Header(), Track({0x00, 0x90, 0x3C, 0x40}, 10)})), Util::Exception::DataStreamIO);
    EXPECT_EQ(Events(0).size(), 1u);
    EXPECT_THROW(Parse(Bytes{'M', 'T', 'h', 'd', 0, 0}), Util::Exception::DataStreamIO);
    Decoder missing(FilePath(String(PathOf("missing.mid").c_str())));
    String error;
    EXPECT_THROW(missing.Parse(error), Util::Exception::DataStreamIO);
}

TEST_F(DecoderTest, ParseAgainReplacesTheEarlierResult)
{
    ASSERT_TRUE(Parse(Join({Header(1, 2), Track({0x00, 0x90, 0x3C, 0x40}), Track({0x00, 0x90, 0x3C, 0x40})})));
    WriteFile(PathOf("in.mid"), Join({Header(1, 1), Track({0x00, 0x80, 0x3C, 0x40})}));
    String error;
    ASSERT_TRUE(decoder->Parse(error));
    EXPECT_EQ(decoder->GetNumDecodedTracks(), 1u);
    EXPECT_EQ(Events(0), std::vector<MIDIMessage>{Event(0, 0, 0x80, 0x3C, 0x40)});
}

} // namespace
