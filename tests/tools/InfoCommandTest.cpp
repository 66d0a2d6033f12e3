// labels: interop
// cordel info on files as sox and ffmpeg write them: names taken exactly as given, formats
// recognised by content, interrupted recordings, and hostile chunk lists.

#include "CordelTool.h"
#include "RiffBuilder.h"

#include <cstdlib>
#include <string>


using namespace CordelTest;

namespace {

class InfoCommand : public ToolFolder {
protected:
    // Runs a shell command of the test's own (sox, ffmpeg) in the folder.
    void shell(std::string const& command)
    {
        ASSERT_EQ(std::system(("cd '" + folder.string() + "' && " + command).c_str()), 0) << command;
    }
    static std::string readText(std::string const& path)
    {
        std::vector<unsigned char> const bytes = readFile(path);
        return std::string(bytes.begin(), bytes.end());
    }
    static bool has(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }
};

} // namespace

TEST_F(InfoCommand, OpensExactlyTheNamedFile)
{
    // Each name has a neighbour that the old normalisation would have opened instead.
    shell("sox -n -r 8000 'x y.wav' synth 0.1 sine 440 && sox -n -r 11025 'x  y.wav' synth 0.1 sine 440");
    shell("sox -n -r 8000 'lead.wav' synth 0.1 sine 440 && sox -n -r 16000 ' lead.wav' synth 0.1 sine 440");
    shell("mkdir a && sox -n -r 8000 a/b.wav synth 0.1 sine 440 && sox -n -r 22050 'a\\b.wav' synth 0.1 sine 440");
    struct Row {
        char const* name;
        char const* rate;
    } const rows[] = {{"x  y.wav", "11025"}, {" lead.wav", "16000"}, {"a\\b.wav", "22050"}};
    for (Row const& row : rows) {
        ToolOutcome const r = Run({"info", "--json", row.name});
        ASSERT_EQ(r.status, 0) << row.name << ": " << r.err;
        EXPECT_TRUE(has(r.out, std::string("\"sampleRate\": ") + row.rate)) << row.name << ": " << r.out;
    }
}

TEST_F(InfoCommand, RecognisesFilesByContent)
{
    shell("sox -n -r 44100 -c 2 -e floating-point -b 32 float.aifc synth 0.1 sine 440");
    shell("sox -n -r 44100 -c 2 -b 16 -t wav wave.aiff synth 0.1 sine 440");
    shell("sox -n -r 48000 -c 1 -e floating-point -b 64 double.wav synth 0.1 sine 440");
    shell("sox -n -r 48000 -c 1 -e floating-point -b 64 -t aifc double.aifc synth 0.1 sine 440");
    struct Row {
        char const* name;
        std::vector<char const*> fields;
    } const rows[] = {
        {"float.aifc", {"\"type\": \"AIFF\"", "\"bits\": 32", "\"float\": true", "\"frames\": 4410"}},
        {"wave.aiff", {"\"type\": \"WAV\"", "\"bits\": 16", "\"frames\": 4410"}},
        {"double.wav", {"\"type\": \"WAV\"", "\"bits\": 64", "\"float\": true", "\"frames\": 4800"}},
        {"double.aifc", {"\"type\": \"AIFF\"", "\"bits\": 64", "\"float\": true", "\"frames\": 4800"}},
    };
    for (Row const& row : rows) {
        ToolOutcome const r = Run({"info", "--json", row.name});
        ASSERT_EQ(r.status, 0) << row.name << ": " << r.err;
        for (char const* field : row.fields)
            EXPECT_TRUE(has(r.out, field)) << row.name << ": " << field << " in " << r.out;
        EXPECT_TRUE(has(r.out, "\"recovered\": false")) << row.name;
    }
    writeFile(PathOf("text.wav"), std::vector<unsigned char>(100, 'x'));
    ToolOutcome const r = cordel("info text.wav");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "cordel info: text.wav: Not a WAV, AIFF or AIFF-C file\n");
}

TEST_F(InfoCommand, ShowsInterruptedRecordingsAsRecovered)
{
    // ffmpeg writing into a pipe cannot go back to fill in the sizes.
    shell("ffmpeg -loglevel error -f lavfi -i sine=frequency=440:sample_rate=48000:duration=0.5 -ac 2 "
          "-c:a pcm_s24le -f wav - > piped.wav");
    ToolOutcome const json = cordel("info --json piped.wav");
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_TRUE(has(json.out, "\"frames\": 24000, \"recovered\": true")) << json.out;
    ToolOutcome const text = cordel("info piped.wav");
    EXPECT_TRUE(has(text.out, "24000 (recovered: an interrupted recording")) << text.out;
}

TEST_F(InfoCommand, ManyEmptyChunksCostLittleTimeAndMemory)
{
    // Two million empty chunks: 16 MB of headers.
    {
        // In a scope of its own: the tool is forked from this process, and its peak memory
        // would count these buffers.
        constexpr unsigned count = 2000000;
        Bytes chunks;
        chunks.chunk("fmt ", fmtBody(1, 1, 8000, 16));
        chunks.data.reserve(count * 8 + 64);
        for (unsigned i = 0; i < count; ++i)
            chunks.tag("junk").le32(0);
        chunks.chunk("data", {1, 0, 2, 0});
        writeFile(PathOf("many.wav"), riffWave(chunks.data));
    }

    ToolOutcome const r = cordel("info many.wav");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(has(r.out, "and 1990000 more chunks of 0 bytes in all, not listed")) << r.out.substr(r.out.size() - 200);
    EXPECT_LT(r.out.size(), 300000u);

    // The tool's own peak memory, measured by GNU time (a child of this process would count the
    // memory of the test itself), beyond what it takes for a small file: under 16 MB, the size
    // of the file.
    writeFile(PathOf("small.wav"), riffWave(Bytes().chunk("fmt ", fmtBody(1, 1, 8000, 16)).chunk("data", {1, 0}).data));
    auto const peakKB = [&](char const* name) {
        shell("/usr/bin/time -f %M -o peak.txt '" + ToolPath() + "' info " + name + " >/dev/null");
        return std::stol(readText(PathOf("peak.txt")));
    };
    long const small = peakKB("small.wav");
    EXPECT_LT(peakKB("many.wav") - small, 16 * 1024) << "KB more at the tool's peak than for a small file";
}
