// labels: interop
// pkg: sndfile
// Files written by independent tools are read as libsndfile reads them, and files we write are
// read by libsndfile with the same samples and accepted by sox.

#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Encode/AIFF/Encoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>

#include "TempFolder.h"

#include <sndfile.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

using namespace Cordel;
using Audio::WaveFormat;

namespace {

class AudioInterop : public CordelTest::TempFolder {
protected:
    // Runs a shell command of the test's own making; fails the test when it fails.
    void run(std::string const& command)
    {
        ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
    }

    struct SndfileData {
        SF_INFO info{};
        std::vector<float> floats;
        std::vector<int> ints; // left-justified 32-bit
    };

    SndfileData readWithSndfile(std::string const& file)
    {
        SndfileData d;
        SNDFILE* f = sf_open(file.c_str(), SFM_READ, &d.info);
        EXPECT_NE(f, nullptr) << sf_strerror(nullptr);
        if (!f)
            return d;
        std::size_t const n = std::size_t(d.info.frames) * d.info.channels;
        d.floats.resize(n);
        d.ints.resize(n);
        sf_readf_float(f, d.floats.data(), d.info.frames);
        sf_seek(f, 0, SEEK_SET);
        sf_readf_int(f, d.ints.data(), d.info.frames);
        sf_close(f);
        return d;
    }

    // Decodes the file with Cordel and compares with libsndfile: raw integers exactly, floats
    // within the conversion's rounding.
    void expectSameAsSndfile(std::string const& file)
    {
        try {
            compareWithSndfile(file);
        } catch (Cordel::Exception::Base const& e) {
            ADD_FAILURE() << file << ": " << e.ToString().View();
        }
    }

    void compareWithSndfile(std::string const& file)
    {
        SCOPED_TRACE(file);
        SndfileData const ref = readWithSndfile(file);
        shared_ptr<Audio::Decode::Stream> reader = Audio::Decode::Stream::Instantiate(FilePath(String(file.c_str())));
        ASSERT_TRUE(reader);
        WaveFormat const format = reader->Sync();
        ASSERT_EQ(int(format.numChannels), ref.info.channels);
        ASSERT_EQ(int(format.sampleRate), ref.info.samplerate);
        ASSERT_EQ(sf_count_t(reader->GetNumSampleFrames()), ref.info.frames);
        std::vector<float> floats(ref.floats.size());
        unsigned int n = 0;
        reader->ReadFloatInterleaved(reader->GetNumSampleFrames(), floats.data(), n);
        ASSERT_EQ(sf_count_t(n), ref.info.frames);
        for (std::size_t i = 0; i < floats.size(); ++i)
            ASSERT_NEAR(floats[i], ref.floats[i], 1e-7f) << "sample " << i;
        if (!format.isFloat) {
            std::vector<unsigned char> raw(std::size_t(n) * format.BytesPerFrame());
            reader->Seek(0);
            reader->ReadRawInterleaved(n, raw.data(), n);
            bool const bigEndian = reader->GetFileType() == Audio::Decode::Stream::AIFFFile
                && (ref.info.format & SF_FORMAT_ENDMASK) != SF_ENDIAN_LITTLE && !sowt(file);
            for (std::size_t i = 0; i < ref.ints.size(); ++i) {
                std::uint32_t v = 0;
                for (unsigned b = 0; b < format.bytesPerSample; ++b) {
                    unsigned const at = bigEndian ? b : format.bytesPerSample - 1 - b;
                    v = (v << 8) | raw[i * format.bytesPerSample + at];
                }
                v <<= 32 - 8 * format.bytesPerSample;
                if (format.bytesPerSample == 1 && reader->GetFileType() == Audio::Decode::Stream::WAVFile)
                    v ^= 0x80000000u; // WAV bytes are offset by 128
                ASSERT_EQ(static_cast<int>(v), ref.ints[i]) << "sample " << i;
            }
        }
    }

    static bool sowt(std::string const& file) { return file.find("sowt") != std::string::npos; }
};

} // namespace

TEST_F(AudioInterop, FilesFromSoxAndFfmpegReadAsLibsndfileReadsThem)
{
    std::string const tone = " synth 0.05 sine 440 gain -1 ";
    std::vector<std::string> files;
    for (char const* bits : {"8", "16", "24", "32"}) {
        std::string const f = PathOf(std::string("sox") + bits + ".wav");
        run("sox -n -r 44100 -c 2 -b " + std::string(bits) + (bits[0] == '8' ? " -e unsigned " : " -e signed ") + f + tone);
        files.push_back(f);
    }
    files.push_back(PathOf("float.wav"));
    run("sox -n -r 48000 -c 1 -b 32 -e floating-point " + files.back() + tone);
    files.push_back(PathOf("six.wav"));
    run("sox -n -r 48000 -c 6 -b 16 " + files.back() + tone);
    files.push_back(PathOf("ff24.wav"));
    run("ffmpeg -y -f lavfi -i sine=frequency=1000:duration=0.05 -metadata title=odd -c:a pcm_s24le " + files.back());
    files.push_back(PathOf("cue.wav"));
    run("sndfile-convert " + files[1] + " " + files.back()); // libsndfile's own writer
    files.push_back(PathOf("sox16.aiff"));
    run("sox -n -r 44100 -c 2 -b 16 " + files.back() + tone);
    files.push_back(PathOf("sox24.aif"));
    run("sox -n -r 44100 -c 1 -b 24 " + files.back() + tone);
    files.push_back(PathOf("float-c.aif"));
    run("sox -n -r 44100 -c 2 -b 32 -e floating-point " + files.back() + tone);
    files.push_back(PathOf("sowt-c.aif"));
    run("ffmpeg -y -f lavfi -i sine=frequency=500:duration=0.05 -c:a pcm_s16le -f aiff " + files.back());

    for (std::string const& f : files)
        expectSameAsSndfile(f);

    // An extensible header keeps its channel mask.
    shared_ptr<Audio::Decode::Stream> six = Audio::Decode::Stream::Instantiate(FilePath(String(files[5].c_str())));
    EXPECT_NE(six->Sync().channelMask, 0u);
}

TEST_F(AudioInterop, PlainDoubleFloatWavIsRefused)
{
    std::string const f = PathOf("double.wav");
    run("sox -n -r 44100 -c 1 -b 64 -e floating-point " + f + " synth 0.01 sine 440");
    shared_ptr<Audio::Decode::Stream> reader = Audio::Decode::Stream::Instantiate(FilePath(String(f.c_str())));
    try {
        reader->Sync();
        // sox may write the extensible form, which syncs; then every float read is refused.
        float x;
        unsigned int n;
        EXPECT_THROW(reader->ReadFloatInterleaved(1, &x, n), Audio::Decode::Exception::BadFormat);
    } catch (Audio::Decode::Exception::BadFormat const& e) {
        EXPECT_EQ(e.GetMessage(), "Unsupported bit depth / wave format combination: 3/64");
    }
}

TEST_F(AudioInterop, OurFilesReadBackInLibsndfileAndSox)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-0.99f, 0.99f);
    std::vector<float> samples(2 * 4410);
    for (float& s : samples)
        s = uniform(random);
    struct Case {
        char const* name;
        WaveFormat format;
        bool aiff;
    };
    for (Case const& c : {Case{"a16.wav", {2, 2, 44100, false, 0}, false}, Case{"a24.wav", {2, 3, 44100, false, 0}, false},
                          Case{"a32.wav", {2, 4, 44100, false, 0}, false}, Case{"af.wav", {2, 4, 44100, true, 0}, false},
                          Case{"a24f.wav", {2, 3, 44100, true, 0}, false}, Case{"a16.aiff", {2, 2, 44100, false, 0}, true},
                          Case{"a24.aiff", {2, 3, 44100, false, 0}, true}, Case{"af-c.aif", {2, 4, 44100, true, 0}, true}}) {
        if (c.format.isFloat && c.format.bytesPerSample == 3)
            continue; // 24-bit float has no float conversion; its header is checked elsewhere
        std::string const file = PathOf(c.name);
        SCOPED_TRACE(file);
        FilePath const path(String(file.c_str()));
        std::unique_ptr<Audio::Encode::Stream> writer;
        if (c.aiff)
            writer = std::make_unique<Audio::Encode::AIFF::Encoder>(path, c.format);
        else
            writer = std::make_unique<Audio::Encode::WAV::Encoder>(path, c.format);
        writer->Open();
        writer->WriteFloatInterleaved(4410, samples.data());
        writer->WriteChunk(Audio::FourCC("note"), {'h', 'i', '!'});
        writer->Close();

        run("sox --i " + file);
        expectSameAsSndfile(file);
        SndfileData const ref = readWithSndfile(file);
        if (c.format.isFloat) {
            for (std::size_t i = 0; i < samples.size(); ++i)
                ASSERT_EQ(ref.floats[i], samples[i]) << i;
        }
    }
}
