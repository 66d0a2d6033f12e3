// pkg: smf
// Reading and writing Standard MIDI Files: Cordel's decoder against libsmf on the same file, and
// Cordel's encoder on its own. The file is format 1 with 16 tracks and 200 000 channel events.

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>

#include <benchmark/benchmark.h>
#include <smf.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace Cordel;

namespace {

constexpr unsigned trackCount = 16;
constexpr unsigned eventsPerTrack = 12500;
constexpr std::int64_t totalEvents = std::int64_t(trackCount) * eventsPerTrack;

// A temporary folder for the whole run, removed at exit.
std::string const& folder()
{
    static std::string const path = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "cordel-midi-bench-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            std::abort();
        std::atexit([] { std::filesystem::remove_all(folder()); });
        return pattern;
    }();
    return path;
}

// Notes on and off, controllers, program changes and pitch bends, a few ticks apart.
void writeEvents(FilePath const& path)
{
    MIDI::Encode::Encoder encoder(path, 480, MIDI::Encode::Encoder::Layout::Standard);
    std::uint32_t seed = 1;
    auto next = [&seed] { return (seed = seed * 1664525u + 1013904223u) >> 16; };
    for (unsigned t = 0; t < trackCount; ++t) {
        encoder.OpenTrack();
        encoder.WriteTrackName("Track");
        encoder.WriteTempo(500000);
        std::uint32_t time = 0;
        unsigned char const channel = static_cast<unsigned char>(t);
        for (unsigned i = 0; i < eventsPerTrack; ++i) {
            time += next() % 60;
            unsigned const pick = next() % 10;
            unsigned char const status = pick < 4 ? 0x90 : pick < 8 ? 0x80 : pick == 8 ? 0xB0 : 0xC0;
            encoder.WriteMIDIEvent(time, status | channel, static_cast<unsigned char>(next() % 128),
                                   static_cast<unsigned char>(next() % 128));
        }
        encoder.CloseTrack();
    }
    encoder.Close();
}

std::string const& sampleFile()
{
    static std::string const path = [] {
        std::string p = folder() + "/sample.mid";
        writeEvents(FilePath(String(p.c_str())));
        return p;
    }();
    return path;
}

void parseCordel(benchmark::State& state)
{
    FilePath const path(String(sampleFile().c_str()));
    for (auto _ : state) {
        MIDI::Decode::Decoder decoder(path);
        String error;
        if (!decoder.Parse(error))
            state.SkipWithError(error.c_str());
        std::vector<MIDI::MIDIMessage> events;
        decoder.GetTrackEvents(trackCount - 1, events);
        benchmark::DoNotOptimize(events.data());
    }
    state.SetItemsProcessed(state.iterations() * totalEvents);
}

void parseLibsmf(benchmark::State& state)
{
    std::string const& path = sampleFile();
    for (auto _ : state) {
        smf_t* smf = smf_load(path.c_str());
        if (!smf) {
            state.SkipWithError("libsmf could not load the file");
            break;
        }
        benchmark::DoNotOptimize(smf->number_of_tracks);
        smf_delete(smf);
    }
    state.SetItemsProcessed(state.iterations() * totalEvents);
}

void writeCordel(benchmark::State& state)
{
    FilePath const path(String((folder() + "/written.mid").c_str()));
    for (auto _ : state)
        writeEvents(path);
    state.SetItemsProcessed(state.iterations() * totalEvents);
}

} // namespace

// Throughput is in events.
BENCHMARK(parseCordel)->Name("Parse200kEvents/Cordel")->Unit(benchmark::kMillisecond);
BENCHMARK(parseLibsmf)->Name("Parse200kEvents/libsmf smf_load")->Unit(benchmark::kMillisecond);
BENCHMARK(writeCordel)->Name("Write200kEvents/Cordel")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
