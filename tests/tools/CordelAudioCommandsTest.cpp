// labels: interop
// The cordel tool's audio commands, run as a user runs them: generate, inspect and convert files,
// with the files checked by our reader and accepted by sox, and the exit codes of failures.

#include <Cordel/Audio/Decode/Stream.h>

#include "CordelTool.h"
#include "RiffBuilder.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

using namespace Cordel;

namespace {

class CordelAudioCommands : public CordelTest::ToolFolder {
protected:
    struct Decoded {
        Audio::WaveFormat format;
        std::vector<float> samples;
    };

    Decoded decode(std::string const& name)
    {
        shared_ptr<Audio::Decode::Stream> reader = Audio::Decode::Stream::Instantiate(FilePath(String(PathOf(name).c_str())));
        Decoded d{reader->Sync(), {}};
        d.samples.resize(std::size_t(reader->GetNumSampleFrames()) * d.format.numChannels);
        unsigned int n = 0;
        reader->ReadFloatInterleaved(reader->GetNumSampleFrames(), d.samples.data(), n);
        return d;
    }
};

TEST_F(CordelAudioCommands, GeneratedToneHasTheAskedFormatAndSignal)
{
    CordelTest::ToolOutcome const made = cordel("generate tone tone.wav --freq 1000 --seconds 0.5 --rate 48000 --channels 2 --bits 24 --level-db -6");
    ASSERT_EQ(made.status, 0) << made.err;
    CordelTest::ToolOutcome const info = cordel("info --json tone.wav");
    ASSERT_EQ(info.status, 0) << info.err;
    for (char const* field : {"\"type\": \"WAV\"", "\"channels\": 2", "\"sampleRate\": 48000", "\"bits\": 24", "\"float\": false",
                              "\"frames\": 24000", "\"duration\": 0.500000"})
        EXPECT_NE(info.out.find(field), std::string::npos) << field << " in " << info.out;

    Decoded const d = decode("tone.wav");
    ASSERT_EQ(d.samples.size(), 48000u);
    double const peak = std::pow(10.0, -6.0 / 20.0);
    for (std::size_t k = 0; k < 24000; k += 7) {
        double const expected = peak * std::sin(2 * std::numbers::pi * 1000.0 * double(k) / 48000.0);
        ASSERT_NEAR(d.samples[2 * k], expected, 2e-7) << "frame " << k;
        ASSERT_EQ(d.samples[2 * k], d.samples[2 * k + 1]) << "frame " << k;
    }
    EXPECT_EQ(std::system(("sox --i " + PathOf("tone.wav") + " >/dev/null 2>&1").c_str()), 0);
}

TEST_F(CordelAudioCommands, RampSpansFullScaleAndNoiseRepeats)
{
    ASSERT_EQ(cordel("generate ramp ramp.aiff --level-db 0 --rate 8000 --seconds 0.25").status, 0);
    Decoded const ramp = decode("ramp.aiff");
    ASSERT_EQ(ramp.samples.size(), 2000u);
    EXPECT_EQ(ramp.samples.front(), -1.0f);
    EXPECT_EQ(ramp.samples.back(), 32767.0f / 32768.0f); // +1 saturates to the largest 16-bit value
    for (std::size_t i = 1; i < ramp.samples.size(); ++i)
        ASSERT_LE(ramp.samples[i - 1], ramp.samples[i]) << i;

    ASSERT_EQ(cordel("generate noise a.wav --float --channels 2 --seconds 0.1 --level-db -3").status, 0);
    ASSERT_EQ(cordel("generate noise b.wav --float --channels 2 --seconds 0.1 --level-db -3").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("a.wav")), CordelTest::readFile(PathOf("b.wav")));
    Decoded const noise = decode("a.wav");
    float const peak = float(std::pow(10.0, -3.0 / 20.0));
    float high = 0;
    for (float v : noise.samples)
        high = std::max(high, std::fabs(v));
    EXPECT_LE(high, peak);
    EXPECT_GT(high, 0.95f * peak);
    EXPECT_NE(noise.samples[0], noise.samples[1]); // channels are independent
}

TEST_F(CordelAudioCommands, ConvertingWithoutChangingSamplesIsExact)
{
    // 24-bit through AIFF and back, and 8-bit, whose signedness differs between the two.
    ASSERT_EQ(cordel("generate noise n24.wav --bits 24 --channels 3 --seconds 0.2 --level-db 0").status, 0);
    ASSERT_EQ(cordel("convert n24.wav n24.aif").status, 0);
    ASSERT_EQ(cordel("convert n24.aif back.wav").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("n24.wav")), CordelTest::readFile(PathOf("back.wav")));
    EXPECT_EQ(std::system(("sox --i " + PathOf("n24.aif") + " >/dev/null 2>&1").c_str()), 0);

    std::vector<unsigned char> bytes;
    for (unsigned v = 0; v < 256; ++v)
        bytes.push_back(static_cast<unsigned char>(v));
    CordelTest::writeFile(PathOf("u8.wav"), CordelTest::riffWave(CordelTest::Bytes()
                                                                     .chunk("fmt ", CordelTest::fmtBody(1, 1, 8000, 8))
                                                                     .chunk("data", bytes)
                                                                     .data));
    ASSERT_EQ(cordel("convert u8.wav s8.aiff").status, 0);
    ASSERT_EQ(cordel("convert s8.aiff u8-back.wav").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("u8.wav")), CordelTest::readFile(PathOf("u8-back.wav")));
    EXPECT_EQ(decode("s8.aiff").samples, decode("u8.wav").samples);
}

TEST_F(CordelAudioCommands, ConvertingSampleFormatsFollowsTheLibrarysRules)
{
    ASSERT_EQ(cordel("generate tone t16.wav --channels 2 --seconds 0.1").status, 0);
    ASSERT_EQ(cordel("convert t16.wav tf.aiff --float").status, 0);
    ASSERT_EQ(cordel("convert tf.aiff t16-back.wav --bits 16").status, 0);
    // 16-bit samples survive float exactly.
    EXPECT_EQ(CordelTest::readFile(PathOf("t16.wav")), CordelTest::readFile(PathOf("t16-back.wav")));

    CordelTest::ToolOutcome const info = cordel("info tf.aiff");
    EXPECT_NE(info.out.find("type           AIFF"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("bits           32 (float)"), std::string::npos) << info.out;

    ASSERT_EQ(cordel("convert t16.wav out.data --format aiff --bits 32").status, 0);
    Decoded const wide = decode("out.data");
    EXPECT_EQ(wide.format.bytesPerSample, 4u);
    EXPECT_EQ(wide.samples, decode("t16.wav").samples);
}

TEST_F(CordelAudioCommands, FailuresNameTheFileAndExitWithTheirCode)
{
    CordelTest::ToolOutcome missing = cordel("info nothere.wav");
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("nothere.wav: No such file or directory"), std::string::npos) << missing.err;

    // No data chunk at all (one that claims more than the file holds is read as an interrupted
    // recording).
    CordelTest::writeFile(PathOf("short.wav"),
                          CordelTest::riffWave(CordelTest::Bytes()
                                                   .chunk("fmt ", CordelTest::fmtBody(1, 2, 44100, 16))
                                                   .chunk("LIST", std::vector<unsigned char>(100))
                                                   .data));
    ASSERT_EQ(cordel("generate tone good.wav --seconds 0.01").status, 0);
    CordelTest::ToolOutcome const mixed = cordel("info good.wav short.wav");
    EXPECT_EQ(mixed.status, 1);
    EXPECT_NE(mixed.out.find("good.wav"), std::string::npos);
    EXPECT_NE(mixed.err.find("short.wav: Didn't find data chunk"), std::string::npos) << mixed.err;

    CordelTest::ToolOutcome const convert = cordel("convert short.wav out.wav");
    EXPECT_EQ(convert.status, 1);
    EXPECT_NE(convert.err.find("short.wav: Didn't find data chunk"), std::string::npos) << convert.err;
    EXPECT_FALSE(exists("out.wav"));
    EXPECT_EQ(cordel("convert good.wav no/such/folder/out.wav").status, 1);

    EXPECT_EQ(cordel("convert good.wav good.wav").status, 2);
    EXPECT_EQ(cordel("convert good.wav out.mp3").status, 2);
    EXPECT_EQ(cordel("convert good.wav out.wav --bits 12").status, 2);
    EXPECT_EQ(cordel("convert good.wav out.wav --bits 24 --float").status, 2);
    EXPECT_EQ(cordel("generate chirp out.wav").status, 2);
    EXPECT_EQ(cordel("generate tone out.wav --level-db 3").status, 2);
    EXPECT_EQ(cordel("generate tone out.wav --freq 30000").status, 2);
    EXPECT_FALSE(exists("out.wav"));
}

} // namespace
