// cordel midi: inspect MIDI files (info, dump) and write them from a text description (write).

#include "Command.h"
#include "Input.h"
#include "SafeOutput.h"

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>
#include <Cordel/Util/Exception.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

using namespace Cordel;

namespace CordelTool {

namespace {

using MIDI::MIDIMessage;

struct TypeName {
    std::uint8_t type;
    char const* name;
    unsigned dataBytes; // as the decoder delivers the message
};

TypeName const typeNames[] = {
    {0x80, "note-off", 2},       {0x90, "note-on", 2},          {0xA0, "key-pressure", 2},
    {0xB0, "control-change", 2}, {0xC0, "program-change", 1},   {0xD0, "channel-pressure", 1},
    {0xE0, "pitch-bend", 2},     {0xF1, "quarter-frame", 1},    {0xF2, "song-position", 2},
    {0xF6, "tune-request", 1},   {0xF8, "clock", 0},            {0xF9, "system-f9", 0},
    {0xFA, "start", 0},          {0xFB, "continue", 0},         {0xFC, "stop", 0},
    {0xFD, "system-fd", 0},      {0xFE, "active-sensing", 0},
};

TypeName const* findType(std::uint8_t type)
{
    for (TypeName const& t : typeNames)
        if (t.type == type)
            return &t;
    return nullptr;
}

TypeName const* findType(std::string const& name)
{
    for (TypeName const& t : typeNames)
        if (name == t.name)
            return &t;
    return nullptr;
}

// Parses the file or fails saying why it could not.
void parse(MIDI::Decode::Decoder& decoder, String const& path)
{
    CheckReadable(path);
    String error;
    if (!AboutFile(path, [&] { return decoder.Parse(error); }))
        FailFile(path, error);
}

int info(Args const& args)
{
    Util::CommandLine line("cordel midi info", "Shows the header and the tracks of a MIDI file.");
    Util::PathArg file("FILE", 0, "FILE", "the MIDI file");
    line.AddPositional(file);
    if (ParseOrHelp(line, args))
        return 0;
    MIDI::Decode::Decoder decoder{FilePath::Exact(file.Get()), {.acceptFormat0 = true}};
    parse(decoder, file.Get());
    Print(String("File:      %1\n").Arg(file.Get()));
    Print(String("Format:    %1\n").Arg(decoder.GetFormat()));
    Print(String("Tracks:    %1 declared, %2 decoded\n").Arg(decoder.GetDeclaredTrackCount()).Arg(decoder.GetNumDecodedTracks()));
    Print(String("Division:  %1 ticks per quarter note\n").Arg(decoder.GetDivision()));
    std::vector<MIDIMessage> events;
    for (unsigned t = 0; t < decoder.GetNumDecodedTracks(); ++t) {
        decoder.GetTrackEvents(t, events);
        String text = String("Track %1:  %2 events").Arg(t).Arg(static_cast<unsigned>(events.size()));
        if (!events.empty())
            text += String(", ticks %1 to %2").Arg(events.front().time).Arg(events.back().time);
        if (t >= decoder.GetNumTracks())
            text += " (beyond the declared count)";
        Print(text + "\n");
    }
    return 0;
}

String dumpLine(unsigned track, MIDIMessage const& m, bool json)
{
    TypeName const* type = findType(m.type);
    unsigned const dataBytes = type ? type->dataBytes : 2;
    String const name = type ? String(type->name) : String("status-%1").Arg(static_cast<unsigned>(m.type), 16);
    bool const system = m.type >= 0xF0;
    std::uint8_t const data[2] = {m.data1, m.data2};
    if (json) {
        String text = String("{\"track\":%1,\"tick\":%2,\"channel\":%3,\"type\":\"%4\",\"status\":%5,\"data\":[")
                          .Arg(track)
                          .Arg(m.time)
                          .Arg(system ? String("null") : String::Number(static_cast<unsigned>(m.channel)))
                          .Arg(name)
                          .Arg(static_cast<unsigned>(system ? m.type : m.type | m.channel));
        for (unsigned i = 0; i < dataBytes; ++i)
            text += String(i ? ",%1" : "%1").Arg(static_cast<unsigned>(data[i]));
        return text + "]}\n";
    }
    String text = String("%1 %2 %3 %4").Arg(track).Arg(m.time).Arg(system ? String("-") : String::Number(static_cast<unsigned>(m.channel))).Arg(name);
    for (unsigned i = 0; i < dataBytes; ++i)
        text += String(" %1").Arg(static_cast<unsigned>(data[i]));
    return text + "\n";
}

int dump(Args const& args)
{
    Util::CommandLine line("cordel midi dump", "Prints every event of a MIDI file, one per line.");
    Util::PathArg file("FILE", 0, "FILE", "the MIDI file");
    Util::FlagArg json("json", 0, "one JSON object per line instead of text");
    line.AddPositional(file);
    line.AddOption(json);
    line.SetEpilogue("Each line reads TRACK TICK CHANNEL TYPE DATA...: ticks count from the start of the\n"
                     "track, channels are 0 to 15 ('-' for system messages), and only the data bytes\n"
                     "the message has are shown. The output is valid input for 'cordel midi write'.\n"
                     "Meta events and sysex are not shown.\n");
    if (ParseOrHelp(line, args))
        return 0;
    MIDI::Decode::Decoder decoder{FilePath::Exact(file.Get()), {.acceptFormat0 = true}};
    parse(decoder, file.Get());
    std::vector<MIDIMessage> events;
    String out;
    for (unsigned t = 0; t < decoder.GetNumDecodedTracks(); ++t) {
        decoder.GetTrackEvents(t, events);
        for (MIDIMessage const& m : events) {
            out += dumpLine(t, m, json.Get());
            if (out.Length() > 65536) {
                Print(out);
                out = String();
            }
        }
    }
    Print(out);
    return 0;
}

// What 'midi write' reads, gathered per track before anything is written.
struct TrackText {
    String name;
    bool hasName = false;
    std::vector<unsigned> tempos;
    std::vector<std::vector<unsigned>> signatures;
    std::vector<MIDIMessage> events;
};

class WriteInput {
public:
    void Read(std::istream& in)
    {
        std::string text;
        while (std::getline(in, text)) {
            ++lineNumber;
            readLine(text);
        }
    }

    void Write(String const& path) const
    {
        SafeOutput output(path);
        MIDI::Encode::Encoder encoder(output.WriterPath(), division, MIDI::Encode::Encoder::Layout::Standard);
        for (TrackText const& track : tracks) {
            encoder.OpenTrack();
            if (track.hasName)
                encoder.WriteTrackName(track.name);
            for (unsigned tempo : track.tempos)
                encoder.WriteTempo(tempo);
            for (auto const& s : track.signatures)
                encoder.WriteTimeSignature(std::uint8_t(s[0]), std::uint8_t(s[1]), std::uint8_t(s[2]), std::uint8_t(s[3]));
            std::vector<MIDIMessage> events = track.events;
            std::stable_sort(events.begin(), events.end(), [](MIDIMessage const& a, MIDIMessage const& b) { return a.time < b.time; });
            for (MIDIMessage const& m : events)
                encoder.WriteMIDIEvent(m.time, m.type | m.channel, m.data1, m.data2);
            encoder.CloseTrack();
        }
        encoder.Close();
        output.Commit();
    }

    unsigned TrackCount() const { return static_cast<unsigned>(tracks.size()); }

private:
    [[noreturn]] void fail(String const& what) const
    {
        throw Exception::Base(String("line %1: %2").Arg(lineNumber).Arg(what));
    }

    unsigned number(std::string const& word, unsigned long long maximum, char const* what) const
    {
        bool ok = false;
        unsigned long long const value = String(word).ToUInt64(&ok);
        if (!ok || value > maximum)
            fail(String("%1 must be a number from 0 to %2, not '%3'").Arg(what).Arg(maximum).Arg(word.c_str()));
        return static_cast<unsigned>(value);
    }

    void readLine(std::string const& text)
    {
        std::istringstream words(text);
        std::vector<std::string> w;
        for (std::string word; words >> word;)
            w.push_back(word);
        if (w.empty() || w[0][0] == '#')
            return;
        if (w[0] == "division") {
            if (w.size() != 2)
                fail("division takes one number");
            division = static_cast<unsigned short>(number(w[1], 0x7FFF, "the division"));
            if (division == 0)
                fail("the division must not be 0");
            return;
        }
        TrackText& track = trackAt(number(w[0], 0xFFFF - 1, "the track number"));
        if (w.size() < 2)
            fail("a track number alone says nothing");
        if (w[1] == "name") {
            std::size_t const at = text.find("name") + 4;
            track.name = String(text.substr(at)).StripWhiteSpace();
            track.hasName = true;
        } else if (w[1] == "tempo") {
            if (w.size() != 3)
                fail("tempo takes microseconds per quarter note");
            track.tempos.push_back(number(w[2], 0xFFFFFF, "the tempo"));
        } else if (w[1] == "timesig") {
            if (w.size() != 6)
                fail("timesig takes four numbers: numerator, power of two of the denominator, clocks per click, 32nds per quarter");
            std::vector<unsigned> s;
            for (int i = 2; i < 6; ++i)
                s.push_back(number(w[i], 255, "a time signature field"));
            track.signatures.push_back(s);
        } else {
            track.events.push_back(event(w));
        }
    }

    MIDIMessage event(std::vector<std::string> const& w) const
    {
        if (w.size() < 4)
            fail("an event reads TRACK TICK CHANNEL TYPE DATA...");
        MIDIMessage m;
        m.time = number(w[1], 0xFFFFFFFF, "the tick");
        TypeName const* type = findType(w[3]);
        if (!type)
            fail(String("unknown event type '%1'").Arg(w[3].c_str()));
        if (type->type == 0xF6)
            fail("tune-request cannot be written: other MIDI software reads it without a data byte");
        m.type = type->type;
        if (type->type < 0xF0)
            m.channel = static_cast<std::uint8_t>(number(w[2], 15, "the channel"));
        else if (w[2] != "-")
            fail("system messages take '-' for their channel");
        if (w.size() != 4 + type->dataBytes)
            fail(String("%1 takes %2 data bytes").Arg(type->name).Arg(type->dataBytes));
        if (type->dataBytes > 0)
            m.data1 = static_cast<std::uint8_t>(number(w[4], 127, "a data byte"));
        if (type->dataBytes > 1)
            m.data2 = static_cast<std::uint8_t>(number(w[5], 127, "a data byte"));
        return m;
    }

    TrackText& trackAt(unsigned index)
    {
        if (index >= tracks.size())
            tracks.resize(index + 1);
        return tracks[index];
    }

    unsigned lineNumber = 0;
    unsigned short division = 480;
    std::vector<TrackText> tracks;
};

int write(Args const& args)
{
    Util::CommandLine line("cordel midi write", "Writes a MIDI file from a text description of its tracks and events.");
    Util::PathArg out("OUT", 0, "OUT", "the MIDI file to write");
    Util::PathArg input("INPUT", 0, "INPUT", "the description; standard input when absent or '-'");
    line.AddPositional(out);
    line.AddPositional(input, false);
    line.SetEpilogue(
        "The description has one statement per line; blank lines and lines starting with '#'\n"
        "are ignored, tracks are numbered from 0 and a track without statements is written empty:\n"
        "\n"
        "  division N                 ticks per quarter note, 1 to 32767 (480 when absent)\n"
        "  TRACK name TEXT            the track's name (the rest of the line)\n"
        "  TRACK tempo USEC           a tempo in microseconds per quarter note\n"
        "  TRACK timesig N D C B      a time signature: numerator, power of two of the\n"
        "                             denominator, MIDI clocks per click, 32nds per quarter\n"
        "  TRACK TICK CHANNEL TYPE DATA...\n"
        "                             an event at an absolute tick, channel 0 to 15 ('-' for\n"
        "                             system messages), data bytes 0 to 127\n"
        "\n"
        "Types and their data bytes: note-off, note-on, key-pressure, control-change and\n"
        "pitch-bend (2: note or controller, then value; pitch-bend least significant first),\n"
        "program-change and channel-pressure (1), quarter-frame (1), song-position (2), and\n"
        "clock, start, continue, stop, active-sensing (0). Name, tempo and time signatures\n"
        "open their track; events are written in tick order. The file is format 1 with\n"
        "standard chunk tags. 'cordel midi dump' prints this event form.\n"
        "\n"
        "Example:\n"
        "  division 96\n"
        "  0 name Piano\n"
        "  0 tempo 500000\n"
        "  0 0 0 note-on 60 100\n"
        "  0 96 0 note-off 60 0\n");
    if (ParseOrHelp(line, args))
        return 0;
    Input source(input.Get());
    std::string text;
    unsigned char block[65536];
    for (std::size_t n; (n = source.Read(block, sizeof block)) > 0;)
        text.append(reinterpret_cast<char const*>(block), n);
    std::istringstream lines(text);
    WriteInput description;
    String const inputName = input.Get().IsEmpty() || input.Get() == "-" ? String("standard input") : input.Get();
    AboutFile(inputName, [&] { description.Read(lines); });
    AboutFile(out.Get(), [&] { description.Write(out.Get()); });
    if (description.TrackCount() == 0)
        PrintError("cordel midi write: the description has no tracks; the file has none\n");
    return 0;
}

int midi(Args const& args)
{
    static String const help = "Usage: cordel midi info FILE\n"
                               "       cordel midi dump [--json] FILE\n"
                               "       cordel midi write OUT [INPUT]\n\n"
                               "Standard MIDI Files (format 1): show the header and tracks, print the events,\n"
                               "or write a file from a text description. 'cordel midi SUBCOMMAND --help' for more.\n";
    if (args.empty())
        throw Util::CommandLine::Error("a subcommand is needed: info, dump or write");
    if (args[0] == "--help" || args[0] == "-h") {
        Print(help);
        return 0;
    }
    Args const rest(args.begin() + 1, args.end());
    if (args[0] == "info")
        return info(rest);
    if (args[0] == "dump")
        return dump(rest);
    if (args[0] == "write")
        return write(rest);
    throw Util::CommandLine::Error(String("unknown subcommand '%1': info, dump or write").Arg(args[0]));
}

} // namespace

CORDEL_COMMAND("midi", "MIDI files: info, dump, write", midi);

} // namespace CordelTool
