// labels: interop
// cordel convert as a user runs it: sample arithmetic checked against sox on files sox makes, and
// the output written whole or not at all, whatever OUT is.

#include "CordelTool.h"
#include "RiffBuilder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

class ConvertCommand : public CordelTest::ToolFolder {
protected:
    // Runs a shell command inside the folder; the test fails when it does.
    void shell(std::string const& command)
    {
        int const status = std::system(("cd '" + folder.string() + "' && " + command).c_str());
        ASSERT_EQ(status, 0) << command;
    }

    // The samples of a file as raw bytes of the given sox encoding, read by sox.
    std::vector<unsigned char> samples(std::string const& name, std::string const& encoding)
    {
        std::string const raw = name + ".raw";
        shell("sox '" + name + "' " + encoding + " -t raw '" + raw + "'");
        auto bytes = CordelTest::readFile(PathOf(raw));
        fs::remove(folder / raw);
        return bytes;
    }

    // Names in the folder other than the given ones: what a run left behind.
    std::vector<std::string> othersThan(std::vector<std::string> const& known) const
    {
        std::vector<std::string> others;
        for (auto const& entry : fs::directory_iterator(folder)) {
            std::string const name = entry.path().filename().string();
            if (std::find(known.begin(), known.end(), name) == known.end())
                others.push_back(name);
        }
        return others;
    }

    // Full-scale noise sox makes, so that every low bit is in use.
    void makeNoise(std::string const& name, std::string const& format, double seconds = 0.5)
    {
        shell("sox -R " + format + " -n " + format + " '" + name + "' synth " + std::to_string(seconds) + " whitenoise vol 0.99");
    }
};

TEST_F(ConvertCommand, IntegerRoundTripsAndFloatAreExact)
{
    makeNoise("s16.wav", "-r 44100 -c 2 -b 16");
    ASSERT_EQ(cordel("convert s16.wav s24.aif --bits 24").status, 0);
    ASSERT_EQ(cordel("convert s24.aif back16.wav --bits 16").status, 0);
    EXPECT_EQ(samples("s16.wav", "-b 16 -e signed"), samples("back16.wav", "-b 16 -e signed"));

    // 24-bit full scale survives float both ways, the largest value included.
    std::vector<unsigned char> extremes;
    for (unsigned v : {0x7FFFFFu, 0x800000u, 0x000001u, 0xFFFFFFu, 0x123456u, 0u})
        extremes.insert(extremes.end(), {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v >> 16)});
    CordelTest::writeFile(PathOf("x24.wav"), CordelTest::riffWave(CordelTest::Bytes()
                                                                      .chunk("fmt ", CordelTest::fmtBody(1, 1, 48000, 24))
                                                                      .chunk("data", extremes)
                                                                      .data));
    ASSERT_EQ(cordel("convert x24.wav xf.aif --float").status, 0);
    ASSERT_EQ(cordel("convert xf.aif xback.wav --bits 24").status, 0);
    EXPECT_EQ(samples("xback.wav", "-b 24 -e signed"), extremes);

    makeNoise("n24.wav", "-r 48000 -c 3 -b 24");
    ASSERT_EQ(cordel("convert n24.wav nf.wav --float").status, 0);
    ASSERT_EQ(cordel("convert nf.wav nf.aiff").status, 0); // float container change: bit for bit
    ASSERT_EQ(cordel("convert nf.aiff n24back.wav --bits 24").status, 0);
    EXPECT_EQ(samples("n24.wav", "-b 24 -e signed"), samples("n24back.wav", "-b 24 -e signed"));
    EXPECT_EQ(samples("nf.wav", "-e floating-point -b 32"), samples("nf.aiff", "-e floating-point -b 32"));
}

TEST_F(ConvertCommand, SamplesEqualSoxsForTheSameCommand)
{
    makeNoise("n24.wav", "-r 96000 -c 2 -b 24");
    makeNoise("nf.wav", "-r 48000 -c 1 -e floating-point -b 32");
    struct Case {
        char const* in;
        char const* cordelOptions;
        char const* soxOptions;
        char const* encoding;
    };
    // sox dithers narrowing by default; without it (-D) its arithmetic is the one cordel uses.
    for (Case const& c : {Case{"n24.wav", "--bits 16", "-D -b 16", "-b 16 -e signed"},
                          Case{"n24.wav", "--float", "-e floating-point -b 32", "-e floating-point -b 32"},
                          Case{"n24.wav", "--bits 32", "-b 32", "-b 32 -e signed"},
                          Case{"nf.wav", "--bits 16", "-D -b 16", "-b 16 -e signed"},
                          Case{"nf.wav", "--bits 24", "-D -b 24", "-b 24 -e signed"},
                          Case{"nf.wav", "--bits 32", "-b 32", "-b 32 -e signed"}}) {
        SCOPED_TRACE(std::string(c.in) + " " + c.cordelOptions);
        auto const result = cordel(std::string("convert ") + c.in + " ours.wav " + c.cordelOptions);
        ASSERT_EQ(result.status, 0) << result.err;
        shell(std::string("sox ") + c.in + " " + c.soxOptions + " theirs.wav");
        EXPECT_EQ(samples("ours.wav", c.encoding), samples("theirs.wav", c.encoding));
    }
}

TEST_F(ConvertCommand, NarrowingRoundsDithersOnRequestAndCountsClips)
{
    // 24-bit values around 16-bit steps: halves round upwards, the top saturates and is counted.
    std::vector<unsigned char> data;
    std::vector<int> const in{0x7FFFFF, 0x7FFF80, 0x7FFF7F, 0x000080, 0x00007F, -0x80, -0x81, -0x800000};
    for (int v : in)
        data.insert(data.end(), {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v >> 16)});
    CordelTest::writeFile(PathOf("edge.wav"), CordelTest::riffWave(CordelTest::Bytes()
                                                                       .chunk("fmt ", CordelTest::fmtBody(1, 1, 8000, 24))
                                                                       .chunk("data", data)
                                                                       .data));
    auto const result = cordel("convert edge.wav edge16.wav --bits 16");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("edge16.wav: 2 samples clipped"), std::string::npos) << result.err;
    std::vector<unsigned char> expected;
    for (int v : {32767, 32767, 32767, 1, 0, 0, -1, -32768})
        expected.insert(expected.end(), {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)});
    EXPECT_EQ(samples("edge16.wav", "-b 16 -e signed"), expected);

    // Dither stays within one step of the plain rounding, changes some samples and repeats.
    makeNoise("n24.wav", "-r 48000 -c 1 -b 24", 0.2);
    ASSERT_EQ(cordel("convert n24.wav plain.wav --bits 16").status, 0);
    ASSERT_EQ(cordel("convert n24.wav d1.wav --bits 16 --dither").status, 0);
    ASSERT_EQ(cordel("convert n24.wav d2.wav --bits 16 --dither").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("d1.wav")), CordelTest::readFile(PathOf("d2.wav")));
    auto const plain = samples("plain.wav", "-b 16 -e signed"), dithered = samples("d1.wav", "-b 16 -e signed");
    ASSERT_EQ(plain.size(), dithered.size());
    std::size_t changed = 0;
    for (std::size_t i = 0; i + 1 < plain.size(); i += 2) {
        int const a = static_cast<short>(plain[i] | plain[i + 1] << 8), b = static_cast<short>(dithered[i] | dithered[i + 1] << 8);
        ASSERT_LE(std::abs(a - b), 1) << i;
        changed += a != b;
    }
    EXPECT_GT(changed, plain.size() / 2 / 10);
    EXPECT_LT(changed, plain.size() / 2 * 9 / 10);
    // Nothing lost, nothing to dither.
    ASSERT_EQ(cordel("convert plain.wav wide.wav --bits 24 --dither").status, 0);
    ASSERT_EQ(cordel("convert wide.wav narrow.wav --bits 16").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("plain.wav")), CordelTest::readFile(PathOf("narrow.wav")));
}

TEST_F(ConvertCommand, FailureLeavesAnExistingOutAndNothingElse)
{
    makeNoise("good.wav", "-r 8000 -b 16", 0.1);
    CordelTest::writeFile(PathOf("bad.wav"), {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'W', 'A', 'V', 'E'});
    CordelTest::writeFile(PathOf("out.wav"), {'k', 'e', 'e', 'p'});
    ::chmod(PathOf("out.wav").c_str(), 0640);
    auto const failed = cordel("convert bad.wav out.wav --bits 24");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err.find('\n'), failed.err.size() - 1) << failed.err;
    EXPECT_EQ(failed.err.rfind("cordel convert: bad.wav: ", 0), 0u) << failed.err;
    EXPECT_EQ(CordelTest::readFile(PathOf("out.wav")), (std::vector<unsigned char>{'k', 'e', 'e', 'p'}));
    EXPECT_EQ(othersThan({"good.wav", "bad.wav", "out.wav"}), std::vector<std::string>{});

    // A success replaces it and keeps its permissions.
    ASSERT_EQ(cordel("convert good.wav out.wav").status, 0);
    EXPECT_EQ(CordelTest::readFile(PathOf("out.wav")), CordelTest::readFile(PathOf("good.wav")));
    EXPECT_EQ(fs::status(folder / "out.wav").permissions(), fs::perms(0640));
    EXPECT_EQ(othersThan({"good.wav", "bad.wav", "out.wav"}), std::vector<std::string>{});

    // Names are taken as given: blanks and backslashes included.
    ASSERT_EQ(Run({"convert", "good.wav", " a  b\\c.wav"}).status, 0);
    EXPECT_TRUE(exists(" a  b\\c.wav"));
    EXPECT_EQ(othersThan({"good.wav", "bad.wav", "out.wav", " a  b\\c.wav"}), std::vector<std::string>{});
}

TEST_F(ConvertCommand, FifosDevicesLinksAndStandardOutputAreWrittenInPlace)
{
    makeNoise("good.wav", "-r 8000 -b 16", 0.1);
    CordelTest::writeFile(PathOf("bad.wav"), {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'W', 'A', 'V', 'E'});
    ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
    EXPECT_EQ(cordel("convert bad.wav pipe --format wav").status, 1);
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));

    // A reader on the FIFO gets the whole file.
    std::thread reader([&] { shell("cat pipe > fromPipe.wav"); });
    auto const written = cordel("convert good.wav pipe --format wav");
    reader.join();
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_EQ(CordelTest::readFile(PathOf("fromPipe.wav")), CordelTest::readFile(PathOf("good.wav")));

    auto const full = cordel("convert good.wav /dev/full --format wav");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "cordel convert: /dev/full: No space left on device\n");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));

    auto const out = cordel("convert good.wav - --format wav");
    ASSERT_EQ(out.status, 0) << out.err;
    EXPECT_EQ(std::vector<unsigned char>(out.out.begin(), out.out.end()), CordelTest::readFile(PathOf("good.wav")));

    // A link is followed and stays a link, also one to a file not yet there.
    fs::create_directory(folder / "sub");
    fs::create_symlink("sub/target.wav", folder / "link.wav");
    ASSERT_EQ(cordel("convert good.wav link.wav").status, 0);
    EXPECT_TRUE(fs::is_symlink(folder / "link.wav"));
    EXPECT_EQ(CordelTest::readFile(PathOf("sub/target.wav")), CordelTest::readFile(PathOf("good.wav")));
    EXPECT_EQ(cordel("convert good.wav sub --format wav").status, 1);
    EXPECT_EQ(cordel("convert good.wav missing/out.wav").status, 1);
}

TEST_F(ConvertCommand, StopSignalsLeaveOutUntouchedAndNoTemporaryFile)
{
    // Long enough that the conversion is still running when the signal comes.
    makeNoise("long.wav", "-r 96000 -c 2 -b 24", 60);
    CordelTest::writeFile(PathOf("out.wav"), {'o', 'l', 'd'});
    for (int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        CordelTest::ToolProcess run(folder, {"convert", "long.wav", "out.wav", "--bits", "16", "--dither"}, {}, environment);
        auto const started = std::chrono::steady_clock::now();
        while (othersThan({"long.wav", "out.wav"}).empty() && std::chrono::steady_clock::now() - started < std::chrono::seconds(20))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ::kill(run.Pid(), signal);
        EXPECT_EQ(run.Wait().status, 128 + signal);
        EXPECT_EQ(CordelTest::readFile(PathOf("out.wav")), (std::vector<unsigned char>{'o', 'l', 'd'}));
        EXPECT_EQ(othersThan({"long.wav", "out.wav"}), std::vector<std::string>{});
    }
}

} // namespace
