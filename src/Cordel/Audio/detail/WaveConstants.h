#pragma once
// The WAVE format tags and extensible subformat identifiers that the WAV reader and writer share.

namespace Cordel::Audio::detail {

constexpr unsigned short WAVE_FORMAT_PCM_TAG = 1;
constexpr unsigned short WAVE_FORMAT_FLOAT_TAG = 3;
constexpr unsigned short WAVE_FORMATEXTENSIBLE_PCM_TAG = 0xFFFE;

struct WaveGuid {
    unsigned int data1;
    unsigned short data2;
    unsigned short data3;
    unsigned char data4[8];
};

constexpr WaveGuid WAVE_FORMAT_PCM_SUBTYPE{1, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr WaveGuid WAVE_FORMAT_IEEE_FLOAT_SUBTYPE{3, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

} // namespace Cordel::Audio::detail
