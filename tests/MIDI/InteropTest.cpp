// labels: interop
// Cordel's MIDI reader and writer against mido, run with Debian's interpreter so that it finds
// Debian's python3-mido whatever else comes first on PATH.
#include "MidiFiles.h"
#include "TempFolder.h"

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

using namespace Cordel;
using namespace CordelTest;
using MIDI::MIDIMessage;

namespace {

std::string const scripts = CORDEL_TEST_SOURCE_DIR "/MIDI/";

// Runs a script with Debian's python3 and returns its standard output.
std::string runPython(std::string const& script, std::string const& argument, std::string const& more = "")
{
    std::string const command = "/usr/bin/python3 '" + scripts + script + "' '" + argument + "' " + more;
    FILE* pipe = ::popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    if (!pipe)
        return {};
    std::string out;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return out;
}

// The decoder's view of a file in the lines mido_read.py prints.
std::string describe(FilePath const& path, MIDI::Decode::Decoder::Options const& options = {})
{
    MIDI::Decode::Decoder decoder(path, options);
    String error;
    EXPECT_TRUE(decoder.Parse(error)) << error.c_str();
    std::ostringstream out;
    out << "format " << decoder.GetFormat() << " division " << decoder.GetDivision() << " tracks "
        << decoder.GetNumTracks() << "\n";
    for (unsigned t = 0; t < decoder.GetNumTracks(); ++t) {
        std::vector<MIDIMessage> events;
        decoder.GetTrackEvents(t, events);
        for (MIDIMessage const& m : events)
            out << t << " " << m.time << " " << int(m.channel) << " " << int(m.type) << " " << int(m.data1) << " "
                << int(m.data2) << "\n";
    }
    return out.str();
}

class MidoInterop : public TempFolder {};

TEST_F(MidoInterop, DecoderReadsWhatMidoWrites)
{
    std::string const path = PathOf("mido.mid");
    runPython("mido_write.py", path);
    std::string const expected = runPython("mido_read.py", path);
    ASSERT_GT(std::count(expected.begin(), expected.end(), '\n'), 2000);
    EXPECT_EQ(describe(FilePath(String(path.c_str()))), expected);
}

TEST_F(MidoInterop, DecoderReadsMidoFormatZeroFilesWhenAsked)
{
    std::string const path = PathOf("mido0.mid");
    runPython("mido_write.py", path, "0");
    std::string const expected = runPython("mido_read.py", path);
    ASSERT_EQ(expected.rfind("format 0 division 960 tracks 1\n", 0), 0u);
    EXPECT_EQ(describe(FilePath(String(path.c_str())), {.acceptFormat0 = true}), expected);
}

TEST_F(MidoInterop, MidoReadsWhatTheEncoderWrites)
{
    std::string const path = PathOf("cordel.mid");
    std::ostringstream expected;
    expected << "format 1 division 384 tracks 4\n";
    {
        MIDI::Encode::Encoder encoder(FilePath(String(path.c_str())), 384, MIDI::Encode::Encoder::Layout::Standard);
        std::uint32_t seed = 11;
        auto next = [&seed] { return (seed = seed * 1664525u + 1013904223u) >> 12; };
        for (unsigned t = 0; t < 4; ++t) {
            encoder.OpenTrack();
            encoder.WriteTrackName(String("Track %1").Arg(t));
            encoder.WriteTempo(600000);
            encoder.WriteTimeSignature(7, 3, 24, 8);
            std::uint32_t time = 0;
            for (int i = 0; i < 1000; ++i) {
                std::uint32_t const step = next() % 10;
                time += step < 5 ? 0 : step < 9 ? next() % 500 : next() % 0x0FFFFFF;
                unsigned const type = 0x80 + 0x10 * (next() % 7);
                unsigned const channel = next() % 16;
                unsigned const d1 = next() % 128;
                unsigned const d2 = type == 0xC0 || type == 0xD0 ? 0 : next() % 128;
                encoder.WriteMIDIEvent(time, std::uint8_t(type | channel), std::uint8_t(d1), std::uint8_t(d2));
                expected << t << " " << time << " " << channel << " " << type << " " << d1 << " " << d2 << "\n";
            }
            encoder.CloseTrack();
        }
        encoder.Close();
    }
    EXPECT_EQ(runPython("mido_read.py", path), expected.str());
    EXPECT_EQ(describe(FilePath(String(path.c_str()))), expected.str());
}

} // namespace
