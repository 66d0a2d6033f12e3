// The MIDI decoder on arbitrary bytes: any result is fine except a crash, a read out of bounds or
// a decoded event the bytes cannot account for.

#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/Util/Exception.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Cordel;

namespace {

// In memory when the system offers a memory file system: rewriting one file on a disk file
// system at every run costs a flush each time.
std::string const& inputPath()
{
    static std::string const path = [] {
        std::string folder = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        return folder + "/cordel-midi-fuzz-" + std::to_string(::getpid()) + ".mid";
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FILE* f = std::fopen(inputPath().c_str(), "wb");
    if (!f)
        std::abort();
    if (size > 0 && std::fwrite(data, 1, size, f) != size)
        std::abort();
    std::fclose(f);

    MIDI::Decode::Decoder decoder(FilePath(String(inputPath().c_str())));
    String error;
    try {
        decoder.Parse(error);
    } catch (Exception::Base const&) {
        // A chunk that runs past the end of the file is reported by the stream.
    }
    // Every delivered event took two bytes of the file at least: its delta and a status or data byte.
    std::size_t events = 0;
    std::vector<MIDI::MIDIMessage> track;
    for (unsigned t = 0; t < decoder.GetNumDecodedTracks(); ++t) {
        decoder.GetTrackEvents(t, track);
        events += track.size();
    }
    std::remove(inputPath().c_str());
    if (events * 2 > size)
        std::abort();
    return 0;
}
