#pragma once
// Hand-made MIDI file bytes for the tests.

#include <Cordel/MIDI/MIDIMessage.h>

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace CordelTest {

using Bytes = std::vector<std::uint8_t>;

inline Bytes Header(unsigned format = 1, unsigned tracks = 1, unsigned division = 480, std::uint32_t length = 6)
{
    return {'M', 'T', 'h', 'd', std::uint8_t(length >> 24), std::uint8_t(length >> 16), std::uint8_t(length >> 8),
            std::uint8_t(length), std::uint8_t(format >> 8), std::uint8_t(format), std::uint8_t(tracks >> 8),
            std::uint8_t(tracks), std::uint8_t(division >> 8), std::uint8_t(division)};
}

// A chunk with the given tag whose length field says declared (the body's size by default).
inline Bytes Chunk(char const* tag, Bytes const& body, std::int64_t declared = -1)
{
    std::uint32_t const length = declared < 0 ? std::uint32_t(body.size()) : std::uint32_t(declared);
    Bytes out(tag, tag + 4);
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(std::uint8_t(length >> shift));
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

inline Bytes Track(Bytes const& body, std::int64_t declared = -1) { return Chunk("MTrk", body, declared); }

inline Bytes Join(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (Bytes const& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

inline void WriteFile(std::string const& path, Bytes const& bytes)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<char const*>(bytes.data()), std::streamsize(bytes.size()));
}

inline Bytes ReadFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline Cordel::MIDI::MIDIMessage Event(std::uint32_t time, std::uint8_t channel, std::uint8_t type, std::uint8_t d1 = 0,
                                       std::uint8_t d2 = 0)
{
    return {time, channel, type, d1, d2};
}

} // namespace CordelTest

namespace Cordel::MIDI {
// Lets GoogleTest print events in failure messages.
inline void PrintTo(MIDIMessage const& m, std::ostream* os)
{
    *os << "{t=" << m.time << " ch=" << int(m.channel) << " type=0x" << std::hex << int(m.type) << std::dec << " "
        << int(m.data1) << " " << int(m.data2) << "}";
}
} // namespace Cordel::MIDI
