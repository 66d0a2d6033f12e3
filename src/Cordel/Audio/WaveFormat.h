#pragma once
// WaveFormat: what every audio reader and writer says about PCM audio.

#include <Cordel/common/Export.h>

namespace Cordel::Audio {

struct CORDEL_API WaveFormat {
    unsigned int numChannels = 0;    // channels per sample frame
    unsigned int bytesPerSample = 0; // bytes of one sample of one channel; bits are always this x 8
    unsigned int sampleRate = 0;     // sample frames per second
    bool isFloat = false;            // IEEE floating point rather than integer samples
    unsigned int channelMask = 0;    // speaker positions of a multichannel WAV file; 0 when unspecified

    unsigned int BytesPerFrame() const { return numChannels * bytesPerSample; }

    friend bool operator==(WaveFormat const&, WaveFormat const&) = default;
};

CORDEL_API extern WaveFormat const WAVEFORMAT_MONO_16_44KHZ;
CORDEL_API extern WaveFormat const WAVEFORMAT_STEREO_16_44KHZ;
CORDEL_API extern WaveFormat const WAVEFORMAT_CD_QUALITY;

// A four-character identifier as the library stores it: the first character in the most
// significant byte ("fmt " is 0x666D7420).
constexpr unsigned int FourCC(char const (&text)[5])
{
    return (static_cast<unsigned int>(static_cast<unsigned char>(text[0])) << 24)
        | (static_cast<unsigned int>(static_cast<unsigned char>(text[1])) << 16)
        | (static_cast<unsigned int>(static_cast<unsigned char>(text[2])) << 8)
        | static_cast<unsigned int>(static_cast<unsigned char>(text[3]));
}

} // namespace Cordel::Audio
