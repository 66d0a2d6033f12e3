#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Util/FileIOException.h>

#include "RiffBuilder.h"
#include "TempFolder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>

using namespace Cordel;
using namespace CordelTest;
using Audio::Decode::Exception::BadFormat;
using Audio::Decode::WAV::Decoder;

namespace {

class WavDecoder : public TempFolder {
protected:
    // Writes the bytes and returns a reader for them.
    Decoder& open(std::vector<unsigned char> const& bytes, char const* name = "t.wav")
    {
        writeFile(PathOf(name), bytes);
        decoder = std::make_unique<Decoder>(FilePath(String(PathOf(name).c_str())));
        return *decoder;
    }
    // The BadFormat message of Sync.
    String syncError(std::vector<unsigned char> const& bytes)
    {
        try {
            open(bytes).Sync();
        } catch (BadFormat const& e) {
            return e.GetMessage();
        }
        return "no error";
    }
    std::unique_ptr<Decoder> decoder;
};

std::vector<unsigned char> wav(unsigned tag, unsigned channels, unsigned bits, std::vector<unsigned char> const& samples)
{
    return riffWave(Bytes().chunk("fmt ", fmtBody(tag, channels, 44100, bits)).chunk("data", samples).data);
}

std::vector<unsigned char> extensible(unsigned bits, unsigned container, unsigned subtype, std::vector<unsigned char> const& samples)
{
    Bytes fmt;
    fmt.le16(0xFFFE).le16(1).le32(48000).le32(48000 * container).le16(container).le16(container * 8);
    fmt.le16(22).le16(bits).le32(4).le32(subtype).le16(0).le16(0x10);
    fmt.u8(0x80).u8(0).u8(0).u8(0xAA).u8(0).u8(0x38).u8(0x9B).u8(0x71);
    return riffWave(Bytes().chunk("fmt ", fmt.data).chunk("data", samples).data);
}

} // namespace

TEST_F(WavDecoder, HeaderFaultsAndTheirMessages)
{
    EXPECT_EQ(syncError({'R', 'I', 'F', 'F'}), "File size too small to contain a valid RIFF header: 4 bytes");
    EXPECT_EQ(syncError(Bytes().tag("RIFX").le32(4).tag("WAVE").data), "Invalid RIFF header");
    EXPECT_EQ(syncError(riffWave(Bytes().chunk("data", {1, 2}).data)), "Didn't find common chunk");
    EXPECT_EQ(syncError(riffWave(Bytes().chunk("fmt ", fmtBody(1, 1, 8000, 16)).data)), "Didn't find data chunk");
    EXPECT_EQ(syncError(riffWave(Bytes().chunk("fmt ", std::vector<unsigned char>(14)).chunk("data", {}).data)),
              "Format chunk is 14 bytes, expected at least 16 bytes");
    EXPECT_EQ(syncError(wav(1, 0, 16, {})), "Bad number of channels: 0");
    EXPECT_EQ(syncError(riffWave(Bytes().chunk("fmt ", fmtBody(1, 1, 0, 16)).chunk("data", {}).data)),
              "Bad sampling rate: 0");
    EXPECT_EQ(syncError(wav(2, 1, 16, {})), "Bad wave format tag: 2");
    EXPECT_EQ(syncError(wav(3, 1, 64, {})), "Unsupported bit depth / wave format combination: 3/64");
    EXPECT_EQ(syncError(wav(1, 1, 12, {})), "Unsupported bit depth / wave format combination: 1/12");
    EXPECT_EQ(syncError(wav(3, 1, 16, {})), "Unsupported bit depth / wave format combination: 3/16");
    EXPECT_EQ(syncError(extensible(16, 2, 7, {})), "Invalid wave format extensible subtype GUID 7/0/16/12800170056155113");

    // A data chunk that claims more than the file holds ends the walk: no data chunk.
    auto truncated = riffWave(Bytes().chunk("fmt ", fmtBody(1, 1, 8000, 16)).tag("data").le32(100).le16(0).data);
    EXPECT_EQ(syncError(truncated), "Didn't find data chunk");
}

TEST_F(WavDecoder, ExceptionCarriesPathAndText)
{
    try {
        open({'x'}, "short.wav").Sync();
        FAIL();
    } catch (BadFormat const& e) {
        EXPECT_TRUE(e.GetPath().ToString().EndsWith("short.wav"));
        EXPECT_TRUE(e.ToString().EndsWith(String("\nBadFormat: '") + e.GetPath().ToString() + "'\n"));
        EXPECT_TRUE(e.GetFile().BeginsWith("../../src/Cordel/Audio/"));
        EXPECT_EQ(e.GetErrorCode(), 0);
    }
}

TEST_F(WavDecoder, ChunkWalkPadsAndFirstChunksWin)
{
    Bytes chunks;
    chunks.chunk("odd ", {1, 2, 3});                     // odd: followed by a pad byte
    chunks.chunk("fmt ", fmtBody(1, 1, 22050, 16));
    chunks.chunk("fmt ", fmtBody(1, 2, 48000, 24));      // ignored
    chunks.chunk("data", Bytes().le16(0x1234).le16(0xFFFF).le16(7).data);
    chunks.chunk("data", {9, 9});                         // ignored, not listed
    chunks.chunk("LIST", {4, 5});
    chunks.chunk("LIST", {6});
    Decoder& d = open(riffWave(chunks.data));
    Audio::WaveFormat const f = d.Sync();
    EXPECT_EQ(f.numChannels, 1u);
    EXPECT_EQ(f.sampleRate, 22050u);
    EXPECT_EQ(d.GetNumSampleFrames(), 3u);
    ASSERT_EQ(d.GetApplicationChunks().size(), 3u);
    EXPECT_FALSE(d.ContainsChunk(Audio::FourCC("data")));
    EXPECT_TRUE(d.ContainsChunk(Audio::FourCC("odd ")));
    std::vector<unsigned char> body{42};
    d.GetChunk(Audio::FourCC("odd "), body);
    EXPECT_EQ(body, (std::vector<unsigned char>{1, 2, 3}));
    d.GetChunk(Audio::FourCC("LIST"), body);
    EXPECT_EQ(body, (std::vector<unsigned char>{4, 5})); // the first of two
    d.GetChunk(Audio::FourCC("none"), body);
    EXPECT_TRUE(body.empty());

    // Reads after fetching a chunk still start at the right sample.
    short s[3];
    unsigned int n = 0;
    d.ReadInt16Interleaved(3, s, n);
    ASSERT_EQ(n, 3u);
    EXPECT_EQ(s[0], 0x1234);
    EXPECT_EQ(s[1], -1);
    EXPECT_EQ(s[2], 7);
}

TEST_F(WavDecoder, PartialFrameIsNeverDelivered)
{
    Decoder& d = open(wav(1, 2, 16, std::vector<unsigned char>(10, 0)));
    d.Sync();
    EXPECT_EQ(d.GetNumSampleFrames(), 2u);
    float out[8];
    unsigned int n = 99;
    d.ReadFloatInterleaved(5, out, n);
    EXPECT_EQ(n, 2u);
    d.ReadFloatInterleaved(5, out, n);
    EXPECT_EQ(n, 0u);
}

TEST_F(WavDecoder, IntegerConversionTables)
{
    {
        Decoder& d = open(wav(1, 1, 8, {0, 128, 255}));
        d.Sync();
        float f[3];
        unsigned int n;
        d.ReadFloatInterleaved(3, f, n);
        EXPECT_EQ(f[0], -1.0f);
        EXPECT_EQ(f[1], 0.0f);
        EXPECT_EQ(f[2], 127.0f / 128.0f);
        short s[3];
        d.Seek(0);
        EXPECT_THROW(d.ReadInt16Interleaved(3, s, n), BadFormat);
        EXPECT_EQ(d.GetSamplePos(), 0u); // a refused read consumes nothing
    }
    {
        // 24-bit: 0x7FFFFF, 0x800000, 0xFFFFFF, 0x000001
        Decoder& d = open(wav(1, 1, 24, {0xFF, 0xFF, 0x7F, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 1, 0, 0}));
        d.Sync();
        float f[4];
        unsigned int n;
        d.ReadFloatInterleaved(4, f, n);
        EXPECT_EQ(f[0], 8388607.0f / 8388608.0f);
        EXPECT_EQ(f[1], -1.0f);
        EXPECT_EQ(f[2], -1.0f / 8388608.0f);
        EXPECT_EQ(f[3], 1.0f / 8388608.0f);
        short s[4];
        d.Seek(0);
        d.ReadInt16Interleaved(4, s, n);
        EXPECT_EQ(s[0], 32767);
        EXPECT_EQ(s[1], -32768);
        EXPECT_EQ(s[2], 0); // truncated toward zero
        double dbl[4];
        d.Seek(0);
        d.ReadFloatInterleaved(4, dbl, n);
        EXPECT_EQ(dbl[1], -1.0);
        EXPECT_EQ(dbl[2], -1.0 / 8388608.0);
    }
    {
        Decoder& d = open(wav(1, 1, 32, Bytes().le32(0x80000000u).le32(0x40000000u).le32(0x7FFFFFFFu).data));
        d.Sync();
        float f[3];
        unsigned int n;
        d.ReadFloatInterleaved(3, f, n);
        EXPECT_EQ(f[0], -1.0f);
        EXPECT_EQ(f[1], 0.5f);
        EXPECT_EQ(f[2], 1.0f);
        double dbl[3];
        d.Seek(0);
        d.ReadFloatInterleaved(3, dbl, n);
        EXPECT_EQ(dbl[2], 2147483647.0 / 2147483648.0);
        short s[3];
        EXPECT_THROW(d.ReadInt16Interleaved(3, s, n), BadFormat);
    }
}

TEST_F(WavDecoder, FloatFilesAndExtensibleForms)
{
    float const values[3] = {0.25f, -2.0f, 1.0f};
    Bytes floatBytes;
    for (float v : values) {
        unsigned bits;
        std::memcpy(&bits, &v, 4);
        floatBytes.le32(bits);
    }
    {
        Decoder& d = open(wav(3, 1, 32, floatBytes.data));
        d.Sync();
        float f[3];
        short s[3];
        unsigned int n;
        d.ReadFloatInterleaved(3, f, n);
        EXPECT_EQ(f[1], -2.0f);
        d.Seek(0);
        d.ReadInt16Interleaved(3, s, n);
        EXPECT_EQ(s[0], 8192);
        EXPECT_EQ(s[1], -32768);
        EXPECT_EQ(s[2], 32767);
    }
    {
        // 20 valid bits in 3-byte containers read as 24-bit samples.
        Decoder& d = open(extensible(20, 3, 1, {0, 0, 0x40}));
        Audio::WaveFormat const f = d.Sync();
        EXPECT_EQ(f.bytesPerSample, 3u);
        EXPECT_EQ(f.channelMask, 4u);
        EXPECT_FALSE(f.isFloat);
        float v;
        unsigned int n;
        d.ReadFloatInterleaved(1, &v, n);
        EXPECT_EQ(v, 0.5f);
    }
    {
        // 64-bit float syncs through the extensible header, but no float read can convert it.
        Decoder& d = open(extensible(64, 8, 3, std::vector<unsigned char>(16)));
        EXPECT_TRUE(d.Sync().isFloat);
        float f[2];
        double dbl[2];
        unsigned int n;
        try {
            d.ReadFloatInterleaved(2, f, n);
            FAIL();
        } catch (BadFormat const& e) {
            EXPECT_EQ(e.GetMessage(), "ReadFloatInterleaved 2 called, unsupported conversion");
        }
        EXPECT_THROW(d.ReadFloatInterleaved(2, dbl, n), BadFormat);
        unsigned char raw[16];
        d.ReadRawInterleaved(2, raw, n);
        EXPECT_EQ(n, 2u);
    }
}

TEST_F(WavDecoder, StateRulesBeforeAndAfterSync)
{
    Decoder& d = open(wav(1, 2, 16, Bytes().le16(1).le16(2).le16(3).le16(4).data));
    EXPECT_EQ(d.GetRemainingSampleFrames(), 0u);
    d.Seek(0); // the current position: quiet even when not synced
    short s[4];
    unsigned int n;
    auto message = [&](auto call) {
        try {
            call();
        } catch (BadFormat const& e) {
            return e.GetMessage();
        }
        return String("no error");
    };
    EXPECT_EQ(message([&] { d.Seek(1); }), "Seek to 1 when not sync'd");
    EXPECT_EQ(message([&] { d.ReadInt16Interleaved(7, s, n); }), "ReadInt16Interleaved 7 when not sync'd");
    EXPECT_EQ(message([&] { d.ReadRawInterleaved(2, nullptr, n); }), "ReadRawInterleaved 2 when not sync'd");
    short* channels[2] = {s, s + 2};
    EXPECT_EQ(message([&] { d.ReadInt16Deinterleaved(3, channels, n); }), "ReadInt16Deinterleaved 3 when not sync'd");

    d.Sync();
    EXPECT_EQ(d.GetRemainingSampleFrames(), 2u);
    d.Seek(2); // the end is a valid position
    EXPECT_EQ(d.GetRemainingSampleFrames(), 0u);
    EXPECT_EQ(message([&] { d.Seek(3); }), "Seek to 3, total sample frames 2");
    d.Seek(1);
    d.ReadInt16Deinterleaved(4, channels, n);
    EXPECT_EQ(n, 1u);
    EXPECT_EQ(s[0], 3);
    EXPECT_EQ(s[2], 4);

    d.Close();
    EXPECT_EQ(d.GetRemainingSampleFrames(), 0u);
    EXPECT_THROW(d.ReadInt16Interleaved(1, s, n), BadFormat);
    d.Sync(); // a closed reader syncs again from the start
    EXPECT_EQ(d.GetSamplePos(), 0u);
}

TEST_F(WavDecoder, SpecialFloatValuesReadAsInt16)
{
    // Long enough for the vectorised loops, with the awkward values scattered through it.
    std::vector<float> values(1000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sin(float(i)) * 1.2f;
    float const awkward[] = {NAN, -NAN, INFINITY, -INFINITY, 0.0f, -0.0f, 1.0f, -1.0f, 0.99999994f, -1.0000001f,
                             1e-45f, -1e-45f, -0.99998474f, 3e38f};
    for (std::size_t k = 0; k < std::size(awkward); ++k)
        values[67 * k + 3] = awkward[k];
    Bytes body;
    for (float v : values) {
        unsigned bits;
        std::memcpy(&bits, &v, 4);
        body.le32(bits);
    }
    Decoder& d = open(wav(3, 1, 32, body.data));
    d.Sync();
    std::vector<short> s(values.size());
    unsigned int n;
    d.ReadInt16Interleaved(unsigned(s.size()), s.data(), n);
    ASSERT_EQ(n, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        double const x = values[i];
        double const expected = std::isnan(x) ? 0 : std::trunc(std::clamp(x * 32768.0, -32768.0, 32767.0));
        ASSERT_EQ(s[i], short(expected)) << "sample " << i << " = " << x;
    }
}

TEST_F(WavDecoder, ConvertingReadsAgreeWithRawReadsInAnyOrder)
{
    // Long enough for several of the pieces in which converting reads take the file. Requests of
    // every size, seeks back and forth, raw reads and chunk fetches in between must all give
    // the frames at the read position.
    unsigned int const frames = 60001;
    std::vector<unsigned char> body(std::size_t(frames) * 4);
    for (std::size_t i = 0; i < body.size(); ++i)
        body[i] = static_cast<unsigned char>(i * 7 + (i >> 9));
    auto const file = riffWave(Bytes().chunk("fmt ", fmtBody(1, 2, 44100, 16)).chunk("data", body).chunk("note", {1, 2, 3}).data);
    Decoder& d = open(file);
    d.Sync();
    auto expected = [&](unsigned int frame, unsigned int channel) {
        std::size_t const at = (std::size_t(frame) * 2 + channel) * 2;
        return float(short(body[at] | (body[at + 1] << 8))) / 32768.0f;
    };
    struct Step {
        int seek; // -1: none
        unsigned int frames;
        char kind; // 'f' float, 's' 16-bit, 'd' double, 'r' raw, 'c' chunk fetch first
    };
    Step const steps[] = {{-1, 1, 'f'},   {-1, 4095, 'f'}, {-1, 4096, 's'}, {-1, 9000, 'f'}, {100, 3000, 'd'},
                          {-1, 10000, 'r'}, {-1, 5000, 'f'}, {-1, 5000, 'c'}, {16000, 20000, 'f'}, {-1, 7, 's'},
                          {59990, 100, 'f'}, {5, 8000, 'f'}};
    for (Step const& step : steps) {
        if (step.seek >= 0)
            d.Seek(unsigned(step.seek));
        unsigned int const at = d.GetSamplePos();
        unsigned int const want = std::min(step.frames, frames - at);
        std::vector<float> got(std::size_t(want) * 2);
        unsigned int n = 0;
        if (step.kind == 'c') {
            std::vector<unsigned char> chunk;
            d.GetApplicationChunk(Audio::FourCC("note"), chunk);
            ASSERT_EQ(chunk.size(), 3u);
        }
        if (step.kind == 'f' || step.kind == 'c') {
            d.ReadFloatInterleaved(step.frames, got.data(), n);
        } else if (step.kind == 's') {
            std::vector<short> s(got.size());
            d.ReadInt16Interleaved(step.frames, s.data(), n);
            std::transform(s.begin(), s.end(), got.begin(), [](short v) { return float(v) / 32768.0f; });
        } else if (step.kind == 'd') {
            std::vector<double> v(got.size());
            d.ReadFloatInterleaved(step.frames, v.data(), n);
            std::copy(v.begin(), v.end(), got.begin());
        } else {
            std::vector<unsigned char> r(got.size() * 2);
            d.ReadRawInterleaved(step.frames, r.data(), n);
            for (std::size_t i = 0; i < got.size(); ++i)
                got[i] = float(short(r[2 * i] | (r[2 * i + 1] << 8))) / 32768.0f;
        }
        ASSERT_EQ(n, want);
        ASSERT_EQ(d.GetSamplePos(), at + want);
        for (unsigned int j = 0; j < want; ++j)
            for (unsigned int c = 0; c < 2; ++c)
                ASSERT_EQ(got[2 * j + c], expected(at + j, c)) << "frame " << at + j << " after seeking to " << step.seek;
    }
}

TEST_F(WavDecoder, AFileCutShortAfterSyncFailsAtTheFirstReadThatNeedsTheMissingBytes)
{
    // Reading ahead must neither report the loss early nor change what the failing read reports.
    std::vector<unsigned char> body(40000 * 2);
    Decoder& d = open(wav(1, 1, 16, body));
    d.Sync();
    std::filesystem::resize_file(PathOf("t.wav"), 44 + 30000 * 2);
    std::vector<float> out(4000);
    unsigned int n = 0;
    for (int block = 0; block < 7; ++block) {
        d.ReadFloatInterleaved(4000, out.data(), n);
        ASSERT_EQ(n, 4000u);
    }
    d.ReadFloatInterleaved(1000, out.data(), n);
    try {
        d.ReadFloatInterleaved(4000, out.data(), n);
        FAIL() << "no error";
    } catch (Util::Exception::FileIO const& e) {
        EXPECT_EQ(e.GetMessage(), "Attempt to read 8000 bytes, only read 2000 bytes");
    }
    EXPECT_EQ(d.GetSamplePos(), 29000u);
}
