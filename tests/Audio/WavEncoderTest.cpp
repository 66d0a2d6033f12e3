#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Audio/Encode/EncodeError.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>

#include "RiffBuilder.h"
#include "TempFolder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

using namespace Cordel;
using namespace CordelTest;
using Audio::WaveFormat;
using Audio::Encode::Exception::EncodeError;
using Audio::Encode::WAV::Encoder;

namespace {

class WavEncoder : public TempFolder {
protected:
    FilePath path() const { return FilePath(String(PathOf("out.wav").c_str())); }
    std::vector<unsigned char> bytes() const { return readFile(PathOf("out.wav")); }
};

unsigned le32(std::vector<unsigned char> const& b, std::size_t at)
{
    return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (unsigned(b[at + 3]) << 24);
}

unsigned le16(std::vector<unsigned char> const& b, std::size_t at)
{
    return b[at] | (b[at + 1] << 8);
}

} // namespace

TEST_F(WavEncoder, PlainHeaderForStereo24BitIntegers)
{
    Encoder e(path(), WaveFormat{2, 3, 48000, false, 0});
    EXPECT_FALSE(e.isFormatExtensible());
    e.Open();
    float const frames[4] = {1.0f, -1.0f, 0.5f, 0.0f};
    e.WriteFloatInterleaved(2, frames);
    e.Close();
    auto const b = bytes();
    ASSERT_EQ(b.size(), 44u + 12u);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 4), "RIFF");
    EXPECT_EQ(le32(b, 4), b.size() - 8);
    EXPECT_EQ(std::string(b.begin() + 8, b.begin() + 16), "WAVEfmt ");
    EXPECT_EQ(le32(b, 16), 16u);
    EXPECT_EQ(le16(b, 20), 1u);
    EXPECT_EQ(le16(b, 22), 2u);
    EXPECT_EQ(le32(b, 24), 48000u);
    EXPECT_EQ(le32(b, 28), 48000u * 6);
    EXPECT_EQ(le16(b, 32), 6u);
    EXPECT_EQ(le16(b, 34), 24u);
    EXPECT_EQ(std::string(b.begin() + 36, b.begin() + 40), "data");
    EXPECT_EQ(le32(b, 40), 12u);
    // 1.0 -> 8388607 and -1.0 -> -8388607 (the factor is 2^23 - 1); 0.5 rounds half away from zero.
    EXPECT_EQ(std::vector<unsigned char>(b.begin() + 44, b.begin() + 50),
              (std::vector<unsigned char>{0xFF, 0xFF, 0x7F, 0x01, 0x00, 0x80}));
    EXPECT_EQ(std::vector<unsigned char>(b.begin() + 50, b.begin() + 53), (std::vector<unsigned char>{0x00, 0x00, 0x40}));
}

TEST_F(WavEncoder, ExtensibleHeaders)
{
    Encoder e(path(), WaveFormat{6, 2, 44100, false, 0x3F});
    EXPECT_TRUE(e.isFormatExtensible());
    e.Open();
    e.Close();
    auto const b = bytes();
    ASSERT_EQ(b.size(), 60u);
    EXPECT_EQ(le32(b, 16), 40u);
    EXPECT_EQ(le16(b, 20), 0xFFFEu);
    EXPECT_EQ(le16(b, 36), 22u);
    EXPECT_EQ(le16(b, 38), 16u);
    EXPECT_EQ(le32(b, 40), 0x3Fu);
    EXPECT_EQ(le32(b, 44), 1u);
    EXPECT_EQ(std::vector<unsigned char>(b.begin() + 48, b.end()),
              (std::vector<unsigned char>{0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}));

    EXPECT_TRUE(Encoder(path(), WaveFormat{2, 3, 44100, true, 0}).isFormatExtensible());
    EXPECT_TRUE(Encoder(path(), WaveFormat{1, 8, 44100, true, 0}).isFormatExtensible());
    EXPECT_FALSE(Encoder(path(), WaveFormat{2, 4, 44100, true, 0}).isFormatExtensible());
    EXPECT_FALSE(Encoder(path(), WaveFormat{1, 1, 44100, false, 0}).isFormatExtensible());
}

TEST_F(WavEncoder, OddDataIsPaddedButNotCounted)
{
    Encoder e(path(), WaveFormat{1, 3, 8000, false, 0});
    e.Open();
    float const one = 0.0f;
    e.WriteFloatInterleaved(1, &one);
    e.WriteApplicationChunk(Audio::FourCC("abcd"), {7});
    e.Close();
    auto const b = bytes();
    ASSERT_EQ(b.size(), 36u + 8u + 4u + 8u + 2u);
    EXPECT_EQ(le32(b, 40), 3u);      // data size without the pad
    EXPECT_EQ(b[47], 0u);            // the pad byte
    EXPECT_EQ(std::string(b.begin() + 48, b.begin() + 52), "abcd");
    EXPECT_EQ(le32(b, 52), 1u);      // application size without its pad
    EXPECT_EQ(le32(b, 4), b.size() - 8);
}

TEST_F(WavEncoder, MisuseAndUnsupportedFormats)
{
    {
        Encoder e(path(), WaveFormat{1, 1, 8000, false, 0});
        e.Open();
        float const f[3] = {};
        try {
            e.WriteFloatInterleaved(3, f);
            FAIL();
        } catch (EncodeError const& err) {
            EXPECT_EQ(err.GetMessage(), "WriteFloatInterleaved 3 called with unsupported bytes per sample / floating-point: 1/0");
            EXPECT_TRUE(err.ToString().EndsWith("\nEncodeError: 4294967295\n"));
        }
    }
    Encoder e(path(), WaveFormat{1, 2, 8000, false, 0});
    e.Open();
    float const f = 0.5f;
    e.WriteFloatInterleaved(1, &f);
    e.WriteCueChunk({});
    try {
        e.WriteFloatInterleaved(1, &f);
        FAIL();
    } catch (EncodeError const& err) {
        EXPECT_EQ(err.GetMessage(), "Write called after we finished writing our data chunk");
    }
    e.Close();
}

TEST_F(WavEncoder, CueChunkLayout)
{
    Encoder e(path(), WaveFormat{1, 2, 8000, false, 0});
    e.Open();
    short const s[2] = {1, 2};
    e.WriteRawInterleaved(2, reinterpret_cast<unsigned char const*>(s));
    e.WriteCueChunk({5, 70000});
    e.Close();
    auto const b = bytes();
    std::size_t const cue = 44 + 4;
    EXPECT_EQ(std::string(b.begin() + cue, b.begin() + cue + 4), "cue ");
    EXPECT_EQ(le32(b, cue + 4), 2u * 24 + 4);
    EXPECT_EQ(le32(b, cue + 8), 2u);
    std::size_t const second = cue + 12 + 24;
    EXPECT_EQ(le32(b, second), 1u);
    EXPECT_EQ(le32(b, second + 4), 70000u);
    EXPECT_EQ(std::string(b.begin() + second + 8, b.begin() + second + 12), "data");
    EXPECT_EQ(le32(b, second + 20), 70000u);
}

TEST_F(WavEncoder, RoundTripsThroughTheDecoder)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
    std::vector<float> samples(2 * 1000);
    for (float& s : samples)
        s = uniform(random);
    for (WaveFormat format : {WaveFormat{2, 2, 44100, false, 0}, WaveFormat{2, 3, 44100, false, 0},
                              WaveFormat{2, 4, 44100, false, 0}, WaveFormat{2, 4, 96000, true, 0}}) {
        {
            Encoder e(path(), format);
            e.Open();
            e.WriteFloatInterleaved(600, samples.data());
            std::vector<double> rest(samples.begin() + 1200, samples.end());
            e.WriteFloatInterleaved(400, rest.data());
            e.Close();
        }
        Audio::Decode::WAV::Decoder d(path());
        EXPECT_EQ(d.Sync(), format);
        ASSERT_EQ(d.GetNumSampleFrames(), 1000u);
        std::vector<float> back(samples.size());
        unsigned int n = 0;
        d.ReadFloatInterleaved(1000, back.data(), n);
        ASSERT_EQ(n, 1000u);
        float const step = format.isFloat ? 0.0f : std::ldexp(1.0f, -int(format.bytesPerSample * 8 - 1));
        for (std::size_t i = 0; i < samples.size(); ++i)
            ASSERT_NEAR(back[i], samples[i], step) << "sample " << i << " of " << format.bytesPerSample << " bytes";
    }
}

TEST_F(WavEncoder, OutOfRangeSamplesWrapAt24BitsAndSaturateAt16And32)
{
    // Long enough for the vectorised loops, with the awkward values scattered through it: far
    // beyond +-1 (past 32 bits once scaled), infinities and NaN.
    std::vector<float> samples(1000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::sin(float(i)) * 1.5f;
    float const awkward[] = {300.0f, -300.0f, 1e10f, -1e10f, 1e30f, INFINITY, -INFINITY, NAN, 1.0f, -1.0f, 256.0f};
    for (std::size_t k = 0; k < std::size(awkward); ++k)
        samples[37 * k + 5] = awkward[k];

    auto written = [&](unsigned int bytesPerSample) {
        Encoder e(path(), WaveFormat{1, bytesPerSample, 8000, false, 0});
        e.Open();
        e.WriteFloatInterleaved(unsigned(samples.size()), samples.data());
        e.Close();
        auto const b = bytes();
        return std::vector<unsigned char>(b.begin() + 44, b.begin() + 44 + samples.size() * bytesPerSample);
    };
    auto const b24 = written(3), b16 = written(2), b32 = written(4);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double const x = samples[i];
        double const scaled = x * 8388607.0 + (x < 0 ? -0.5 : 0.5);
        long long const v24 = std::isfinite(scaled) && std::fabs(scaled) < 9.2e18 ? static_cast<long long>(scaled) : 0;
        ASSERT_EQ(b24[3 * i] | (b24[3 * i + 1] << 8) | (b24[3 * i + 2] << 16), int(v24 & 0xFFFFFF)) << "sample " << i << " = " << x;

        double const s16 = std::isnan(x) ? 0 : std::trunc(std::clamp(x * 32768.0, -32768.0, 32767.0));
        ASSERT_EQ(short(b16[2 * i] | (b16[2 * i + 1] << 8)), short(s16)) << "sample " << i << " = " << x;

        double const s32 = std::isnan(x) ? 0 : std::trunc(std::clamp(double(float(x * 2147483648.0)), -2147483648.0, 2147483647.0));
        ASSERT_EQ(int(le32(b32, 4 * i)), int(s32)) << "sample " << i << " = " << x;
    }
}

TEST_F(WavEncoder, UnevenBlocksAndRawWritesKeepTheirOrder)
{
    // Stereo 24-bit frames do not divide the writer's internal buffer, and the blocks below cross
    // its boundary at every offset; a raw write in the middle and a chunk at the end must land
    // after everything converted before them.
    std::vector<float> samples(2 * 40000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::sin(0.01f * float(i)) * 0.9f;
    unsigned char const raw[6] = {1, 2, 3, 4, 5, 6};
    Encoder e(path(), WaveFormat{2, 3, 44100, false, 0});
    e.Open();
    unsigned int at = 0;
    for (unsigned int block : {1u, 4095u, 10923u, 7u, 20000u}) {
        e.WriteFloatInterleaved(block, samples.data() + 2 * at);
        at += block;
    }
    e.WriteRawInterleaved(1, raw);
    e.WriteFloatInterleaved(40000 - at, samples.data() + 2 * at);
    std::vector<unsigned char> const body = {'a', 'b', 'c'};
    e.WriteApplicationChunk(0x74657374, body); // "test"
    e.Close();

    auto const b = bytes();
    ASSERT_EQ(le32(b, 40), 40001u * 6);
    auto sample = [&](std::size_t i) { return b[44 + 3 * i] | (b[45 + 3 * i] << 8) | (b[46 + 3 * i] << 16); };
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::size_t const pos = i < 2 * std::size_t(at) ? i : i + 2; // the raw frame sits at frame `at`
        double const x = samples[i];
        long long const v = static_cast<long long>(x * 8388607.0 + (x < 0 ? -0.5 : 0.5));
        ASSERT_EQ(sample(pos), int(v & 0xFFFFFF)) << "sample " << i;
    }
    EXPECT_TRUE(std::equal(raw, raw + 6, b.begin() + 44 + 6 * std::ptrdiff_t(at)));
    std::size_t const chunk = 44 + 40001 * 6;
    EXPECT_EQ(std::string(b.begin() + chunk, b.begin() + chunk + 4), "test");
    EXPECT_EQ(std::string(b.begin() + chunk + 8, b.end() - 1), "abc");
}

TEST_F(WavEncoder, FramesWiderThanTheWritersBufferArriveWhole)
{
    // One frame of 20000 float channels is larger than the pieces in which the writer hands
    // samples to the file; every sample must still land once, in order.
    unsigned int const channels = 20000, frames = 5;
    std::vector<float> samples(std::size_t(channels) * frames);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = float(i) * 1e-6f;
    Encoder e(path(), WaveFormat{channels, 4, 8000, true, 0});
    e.Open();
    e.WriteFloatInterleaved(2, samples.data());
    e.WriteFloatInterleaved(3, samples.data() + 2 * channels);
    e.Close();
    auto const b = bytes();
    std::size_t const data = b.size() - samples.size() * 4;
    ASSERT_EQ(std::string(b.begin() + std::ptrdiff_t(data) - 8, b.begin() + std::ptrdiff_t(data) - 4), "data");
    EXPECT_EQ(std::memcmp(b.data() + data, samples.data(), samples.size() * 4), 0);
}
