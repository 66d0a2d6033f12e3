#pragma once
// One MIDI event as a track delivers it: a channel or system message stamped with its absolute
// tick time.

#include <cstdint>

namespace Cordel::MIDI {

struct MIDIMessage {
    // Ticks from the start of the track: the sum of every delta before the event, those of the
    // meta events and sysex messages that are not delivered included.
    std::uint32_t time = 0;
    // The low four bits of a channel status byte; 0 for system messages.
    std::uint8_t channel = 0;
    // Channel messages: the status with its channel bits cleared (0x80 note off ... 0xE0 pitch
    // bend). System messages: the whole status byte (0xF1, 0xF2, 0xF6, 0xF8 .. 0xFE).
    std::uint8_t type = 0;
    // The data bytes; 0 where the message has fewer.
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;

    friend bool operator==(MIDIMessage const&, MIDIMessage const&) = default;
};

} // namespace Cordel::MIDI
