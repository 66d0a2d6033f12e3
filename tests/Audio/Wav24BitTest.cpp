// 24-bit samples go through loops of their own for each instruction set; every one must write and
// read the same bits as the portable rule, at every length and alignment of a request.

#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>

#include "InstructionSets.h"
#include "RiffBuilder.h"
#include "TempFolder.h"

#include <cmath>

using namespace Cordel;
using namespace CordelTest;
using Audio::WaveFormat;

namespace {

class Wav24Bit : public OnEveryInstructionSet<TempFolder> {
protected:
    FilePath path() const { return FilePath(String(PathOf("t.wav").c_str())); }
};

// Request lengths around the vector steps and their margins, so that each request starts at a
// different alignment in the input and in the output.
constexpr unsigned int blocks[] = {1, 2, 7, 8, 9, 10, 11, 15, 16, 17, 21, 22, 23, 31, 32, 33, 37, 38, 39, 64, 65, 1000};

TEST_P(Wav24Bit, WritesFollowTheRoundingAndWrapRule)
{
    std::vector<float> samples;
    for (unsigned int b : blocks)
        samples.resize(samples.size() + b);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::sin(float(i) * 0.37f) * 1.01f;
    // Halves that decide the rounding, both zeros, the extremes, and values far outside.
    float const awkward[] = {0.5f / 8388607.0f, -0.5f / 8388607.0f, 1.5f / 8388607.0f, -0.0f, 0.0f, 1.0f, -1.0f,
                             2.0f, -2.5f, 300.0f, 1e10f, -1e30f, INFINITY, -INFINITY, NAN};
    for (std::size_t k = 0; k < std::size(awkward); ++k)
        samples[(97 * k + 13) % samples.size()] = awkward[k];

    Audio::Encode::WAV::Encoder e(path(), WaveFormat{1, 3, 48000, false, 0});
    e.Open();
    std::size_t at = 0;
    for (unsigned int b : blocks) {
        e.WriteFloatInterleaved(b, samples.data() + at);
        at += b;
    }
    e.Close();

    auto const bytes = readFile(PathOf("t.wav"));
    ASSERT_EQ(bytes.size(), 44 + 3 * samples.size() + (samples.size() & 1));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double const x = samples[i];
        double const scaled = x * 8388607.0 + (x < 0 ? -0.5 : 0.5);
        long long const v = std::isfinite(scaled) && std::fabs(scaled) < 9.2e18 ? static_cast<long long>(scaled) : 0;
        unsigned char const* p = bytes.data() + 44 + 3 * i;
        ASSERT_EQ(p[0] | (p[1] << 8) | (p[2] << 16), int(v & 0xFFFFFF)) << "sample " << i << " = " << x;
    }
}

TEST_P(Wav24Bit, ReadsAreExactAtEveryLength)
{
    std::size_t total = 0;
    for (unsigned int b : blocks)
        total += b;
    std::vector<int> values(total);
    unsigned int noise = 11;
    for (std::size_t i = 0; i < total; ++i) {
        noise = noise * 1664525u + 1013904223u;
        values[i] = static_cast<int>(noise >> 8) - (1 << 23);
    }
    int const extremes[] = {-8388608, 8388607, -1, 0, 1, 0x7F0000, -0x10000};
    for (std::size_t k = 0; k < std::size(extremes); ++k)
        values[53 * k + 5] = extremes[k];
    Bytes body;
    for (int v : values)
        body.u8(v & 0xFF).u8((v >> 8) & 0xFF).u8((v >> 16) & 0xFF);
    if (total & 1)
        body.u8(0); // the pad byte
    Bytes chunks;
    chunks.chunk("fmt ", fmtBody(1, 1, 48000, 24)).tag("data").le32(unsigned(3 * total)).raw(body.data);
    writeFile(PathOf("t.wav"), riffWave(chunks.data));

    Audio::Decode::WAV::Decoder d(path());
    d.Sync();
    std::vector<float> got(total);
    std::size_t at = 0;
    for (unsigned int b : blocks) {
        unsigned int n = 0;
        d.ReadFloatInterleaved(b, got.data() + at, n);
        ASSERT_EQ(n, b);
        at += b;
    }
    for (std::size_t i = 0; i < total; ++i)
        ASSERT_EQ(got[i], std::ldexp(float(values[i]), -23)) << "sample " << i << " = " << values[i];
}

CORDEL_ON_EVERY_INSTRUCTION_SET(Wav24Bit);

} // namespace
