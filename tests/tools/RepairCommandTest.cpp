// labels: interop
// cordel repair on interrupted recordings as ffmpeg and a crashed recorder leave them: the result
// is read by sox and libsndfile with every whole frame, and nothing else is touched.

#include "CordelTool.h"
#include "RiffBuilder.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <thread>

using namespace CordelTest;

namespace {

class RepairCommand : public ToolFolder {
protected:
    void shell(std::string const& command)
    {
        ASSERT_EQ(std::system(("cd '" + folder.string() + "' && " + command).c_str()), 0) << command;
    }
    // The samples of a file as sox decodes them, as raw bytes.
    std::vector<unsigned char> soxSamples(std::string const& name)
    {
        std::string const raw = name + ".raw";
        EXPECT_EQ(std::system(("cd '" + folder.string() + "' && sox '" + name + "' -t raw '" + raw + "' 2>/dev/null").c_str()), 0)
            << name;
        return readFile(PathOf(raw));
    }
    std::vector<std::string> folderNames() const
    {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

// A recorder killed before it patched its header: sizes 0, and a frame cut in half at the end.
std::vector<unsigned char> crashed(std::vector<unsigned char> file, std::size_t dataSizeAt)
{
    for (std::size_t at : {std::size_t(4), dataSizeAt})
        for (int i = 0; i < 4; ++i)
            file[at + i] = 0;
    file.push_back(0x55);
    return file;
}

} // namespace

TEST_F(RepairCommand, PipedFfmpegOutputBecomesAFileEveryReaderTakes)
{
    shell("ffmpeg -loglevel error -f lavfi -i sine=frequency=440:sample_rate=48000:duration=0.5 -ac 2 "
          "-c:a pcm_s24le -f wav - > piped.wav && ffmpeg -loglevel error -i piped.wav -c:a pcm_s24le reference.wav");
    ToolOutcome const r = cordel("repair piped.wav fixed.wav");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "fixed.wav: 24000 frames kept\n");
    EXPECT_EQ(soxSamples("fixed.wav"), soxSamples("reference.wav"));
    shell("sndfile-info fixed.wav | grep -q 'Frames *: 24000'");
    // AIFF too: ffmpeg leaves the FORM and SSND sizes and COMM's frame count at 0.
    shell("ffmpeg -loglevel error -i reference.wav -c:a pcm_s16be -f aiff - > piped.aiff && "
          "ffmpeg -loglevel error -i reference.wav -c:a pcm_s16be reference.aiff");
    ASSERT_EQ(cordel("repair piped.aiff fixed.aiff").status, 0);
    shell("sndfile-info fixed.aiff | grep -q 'Frames *: 24000'");
    EXPECT_EQ(soxSamples("fixed.aiff"), soxSamples("reference.aiff"));

    // Standard output gets the same bytes.
    ToolOutcome const piped = cordel("repair piped.wav -");
    ASSERT_EQ(piped.status, 0) << piped.err;
    std::vector<unsigned char> const fixed = readFile(PathOf("fixed.wav"));
    EXPECT_EQ(piped.out, std::string(fixed.begin(), fixed.end()));
}

TEST_F(RepairCommand, CrashedRecordingsKeepTheirWholeFrames)
{
    shell("sox -n -r 44100 -c 2 -b 16 whole.wav synth 0.25 sine 440 && sox whole.wav whole.aiff");
    std::vector<unsigned char> const wav = readFile(PathOf("whole.wav"));
    std::vector<unsigned char> const aiff = readFile(PathOf("whole.aiff"));
    auto const find = [](std::vector<unsigned char> const& bytes, char const* tag) {
        return std::size_t(std::search(bytes.begin(), bytes.end(), tag, tag + 4) - bytes.begin()) + 4;
    };
    writeFile(PathOf("crashed.wav"), crashed(wav, find(wav, "data")));
    writeFile(PathOf("crashed.aiff"), crashed(aiff, find(aiff, "SSND")));
    for (char const* name : {"crashed.wav", "crashed.aiff"}) {
        std::string const whole = std::string("whole") + (name[8] == 'w' ? ".wav" : ".aiff");
        ToolOutcome const r = Run({"repair", name, std::string("fixed-") + name});
        ASSERT_EQ(r.status, 0) << name << ": " << r.err;
        EXPECT_EQ(r.out, std::string("fixed-") + name + ": 11025 frames kept\n");
        EXPECT_EQ(readFile(PathOf(std::string("fixed-") + name)), readFile(PathOf(whole))) << name;
    }
}

TEST_F(RepairCommand, InPlaceReplacesTheFileWholeAndKeepsItsMode)
{
    shell("ffmpeg -loglevel error -f lavfi -i sine=sample_rate=8000:duration=0.1 -c:a pcm_s16le -f wav - > take.wav");
    ::chmod(PathOf("take.wav").c_str(), 0640);
    ASSERT_EQ(::symlink("take.wav", PathOf("link.wav").c_str()), 0);
    ToolOutcome const r = cordel("repair --in-place link.wav");
    ASSERT_EQ(r.status, 0) << r.err;
    struct stat info{}, linkInfo{};
    ASSERT_EQ(::stat(PathOf("take.wav").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    ASSERT_EQ(::lstat(PathOf("link.wav").c_str(), &linkInfo), 0);
    EXPECT_TRUE(S_ISLNK(linkInfo.st_mode)) << "the link is followed, not replaced";
    EXPECT_EQ(folderNames(), (std::vector<std::string>{"link.wav", "take.wav"})) << "no temporary left behind";
    shell("sndfile-info take.wav | grep -q 'Frames *: 800'");
}

TEST_F(RepairCommand, RefusesWhatItCannotOrNeedNotRepair)
{
    shell("sox -n -r 8000 intact.wav synth 0.1 sine 440");
    std::vector<unsigned char> const before = readFile(PathOf("intact.wav"));
    ToolOutcome const intact = cordel("repair --in-place intact.wav");
    EXPECT_EQ(intact.status, 1);
    EXPECT_EQ(intact.err, "cordel repair: intact.wav: Not an interrupted recording: the header is intact\n");
    EXPECT_EQ(readFile(PathOf("intact.wav")), before);
    EXPECT_EQ(cordel("repair intact.wav out.wav").status, 1);
    EXPECT_FALSE(exists("out.wav"));

    EXPECT_EQ(cordel("repair intact.wav").status, 2);
    EXPECT_EQ(cordel("repair --in-place intact.wav out.wav").status, 2);
    EXPECT_EQ(cordel("repair intact.wav intact.wav").status, 2);
    ToolOutcome const missing = cordel("repair missing.wav out.wav");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "cordel repair: missing.wav: No such file or directory\n");
    EXPECT_EQ(folderNames(), (std::vector<std::string>{"intact.wav"}));
}

TEST_F(RepairCommand, WritesIntoAFifoWithoutReplacingIt)
{
    shell("ffmpeg -loglevel error -f lavfi -i sine=sample_rate=8000:duration=0.1 -c:a pcm_s16le -f wav - > take.wav");
    ASSERT_EQ(::mkfifo(PathOf("out.fifo").c_str(), 0600), 0);
    std::vector<unsigned char> received;
    std::thread reader([&] { received = readFile(PathOf("out.fifo")); });
    ToolOutcome const r = cordel("repair take.wav out.fifo");
    reader.join();
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(cordel("repair take.wav fixed.wav").status, 0);
    EXPECT_EQ(received, readFile(PathOf("fixed.wav")));
    struct stat info{};
    ASSERT_EQ(::lstat(PathOf("out.fifo").c_str(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
}
