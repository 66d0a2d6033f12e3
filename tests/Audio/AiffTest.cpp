#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Encode/AIFF/Encoder.h>

#include "RiffBuilder.h"
#include "TempFolder.h"

using namespace Cordel;
using namespace CordelTest;
using Audio::WaveFormat;
using Audio::Decode::Exception::BadFormat;

namespace {

class Aiff : public TempFolder {
protected:
    FilePath path(char const* name = "t.aif") const { return FilePath(String(PathOf(name).c_str())); }
};

// 44100 as an 80-bit extended number.
std::vector<unsigned char> rate44100()
{
    return {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
}

std::vector<unsigned char> aifc(char const* compression, unsigned bits, std::vector<unsigned char> const& samples)
{
    Bytes comm;
    comm.be16(1).be32(static_cast<unsigned>(samples.size() * 8 / bits)).be16(bits).raw(rate44100()).tag(compression).u8(0).u8(0);
    Bytes ssnd;
    ssnd.be32(0).be32(0).raw(samples);
    Bytes body;
    body.tag("AIFC").tag("COMM").be32(static_cast<unsigned>(comm.data.size())).raw(comm.data);
    body.tag("SSND").be32(static_cast<unsigned>(ssnd.data.size())).raw(ssnd.data);
    return Bytes().tag("FORM").be32(static_cast<unsigned>(body.data.size())).raw(body.data).data;
}

} // namespace

TEST_F(Aiff, RoundTripWithChunks)
{
    float const samples[6] = {0.5f, -0.5f, 0.25f, -1.0f, 0.0f, 0.75f};
    for (WaveFormat format : {WaveFormat{2, 2, 44100, false, 0}, WaveFormat{2, 3, 22050, false, 0},
                              WaveFormat{2, 4, 96000, true, 0}}) {
        Audio::Encode::AIFF::Encoder e(path(), format);
        e.Open();
        e.WriteFloatInterleaved(3, samples);
        e.WriteChunk(Audio::FourCC("basc"), {1, 2, 3});
        e.WriteApplicationChunk(Audio::FourCC("Cdl1"), {9});
        e.WriteCueChunk({1, 2}); // no cue chunks in AIFF
        e.Close();

        Audio::Decode::AIFF::Decoder d(path());
        EXPECT_EQ(d.Sync(), format);
        EXPECT_EQ(d.GetNumSampleFrames(), 3u);
        float back[6];
        unsigned int n = 0;
        d.ReadFloatInterleaved(3, back, n);
        ASSERT_EQ(n, 3u);
        // 24-bit samples are written with the factor 2^23 - 1 and read back with 2^23.
        float const tolerance = format.bytesPerSample == 3 ? 1.0f / 4194304.0f : 0.0f;
        for (int i = 0; i < 6; ++i)
            EXPECT_NEAR(back[i], samples[i], tolerance) << i;
        std::vector<unsigned char> body;
        EXPECT_TRUE(d.ContainsChunk(Audio::FourCC("basc")));
        d.GetChunk(Audio::FourCC("basc"), body);
        EXPECT_EQ(body, (std::vector<unsigned char>{1, 2, 3}));
        EXPECT_FALSE(d.ContainsChunk(Audio::FourCC("APPL")));
        EXPECT_TRUE(d.ContainsApplicationChunk(Audio::FourCC("Cdl1")));
        d.GetApplicationChunk(Audio::FourCC("Cdl1"), body);
        EXPECT_EQ(body, std::vector<unsigned char>{9});

        double untouched[2] = {7, 7};
        unsigned int count = 42;
        d.Seek(0);
        d.ReadFloatInterleaved(1, untouched, count);
        EXPECT_EQ(untouched[0], 7);
        EXPECT_EQ(count, 42u);
    }
}

TEST_F(Aiff, CompressionTypesAndSignedBytes)
{
    {
        writeFile(PathOf("le.aifc"), aifc("sowt", 16, {0x00, 0x40, 0x00, 0xC0}));
        Audio::Decode::AIFF::Decoder d(path("le.aifc"));
        d.Sync();
        short s[2];
        unsigned int n;
        d.ReadInt16Interleaved(2, s, n);
        EXPECT_EQ(s[0], 0x4000);
        EXPECT_EQ(s[1], -0x4000);
        unsigned char raw[4];
        d.Seek(0);
        d.ReadRawInterleaved(2, raw, n);
        EXPECT_EQ(raw[1], 0x40); // raw reads keep the file's byte order
    }
    {
        writeFile(PathOf("s8.aifc"), aifc("twos", 8, {0x80, 0x40, 0xFF}));
        Audio::Decode::AIFF::Decoder d(path("s8.aifc"));
        d.Sync();
        float f[3];
        unsigned int n;
        d.ReadFloatInterleaved(3, f, n);
        EXPECT_EQ(f[0], -1.0f);
        EXPECT_EQ(f[1], 0.5f);
        EXPECT_EQ(f[2], -1.0f / 128.0f);
    }
    {
        writeFile(PathOf("x.aifc"), aifc("ulaw", 8, {0}));
        Audio::Decode::AIFF::Decoder d(path("x.aifc"));
        try {
            d.Sync();
            FAIL();
        } catch (BadFormat const& e) {
            EXPECT_EQ(e.GetMessage(), "Unsupported AIFF-C compression type ulaw");
        }
    }
    {
        writeFile(PathOf("nossnd.aif"), Bytes().tag("FORM").be32(4 + 26).tag("AIFF").tag("COMM").be32(18).be16(1).be32(0).be16(16).raw(rate44100()).data);
        Audio::Decode::AIFF::Decoder d(path("nossnd.aif"));
        try {
            d.Sync();
            FAIL();
        } catch (BadFormat const& e) {
            EXPECT_EQ(e.GetMessage(), "Didn't find sound data chunk");
        }
    }
}

TEST_F(Aiff, LongReadsInSmallBlocksTurnEachSampleOnce)
{
    // Big-endian and signed samples are turned into our form as they are read ahead; reads that
    // straddle the pieces read ahead, and seeks back into them, must turn no byte twice.
    std::vector<unsigned char> bytes(150001);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * 13 + (i >> 11));
    for (auto [compression, bits] : {std::pair{"twos", 8u}, std::pair{"twos", 16u}, std::pair{"sowt", 16u}}) {
        std::vector<unsigned char> samples(bytes.begin(), bytes.end() - (bits == 16 ? 1 : 0));
        writeFile(PathOf("long.aifc"), aifc(compression, bits, samples));
        Audio::Decode::AIFF::Decoder d(path("long.aifc"));
        d.Sync();
        unsigned int const frames = d.GetNumSampleFrames();
        auto expected = [&](unsigned int i) {
            if (bits == 8)
                return float(static_cast<signed char>(samples[i])) / 128.0f;
            unsigned char const hi = samples[2 * i + (compression[0] == 's' ? 1 : 0)];
            unsigned char const lo = samples[2 * i + (compression[0] == 's' ? 0 : 1)];
            return float(short(lo | (hi << 8))) / 32768.0f;
        };
        std::vector<float> got(3001);
        for (unsigned int round = 0; round < 2; ++round) {
            d.Seek(round ? frames - 10000 : 0); // the second round starts inside what was read ahead last
            while (d.GetRemainingSampleFrames()) {
                unsigned int const at = d.GetSamplePos();
                unsigned int n = 0;
                d.ReadFloatInterleaved(unsigned(got.size()), got.data(), n);
                ASSERT_EQ(n, std::min(unsigned(got.size()), frames - at));
                for (unsigned int j = 0; j < n; ++j)
                    ASSERT_EQ(got[j], expected(at + j)) << compression << " " << bits << " bits, frame " << at + j;
            }
        }
    }
}
