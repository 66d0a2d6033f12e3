// cordel info: what a WAV or AIFF file holds, as text or as JSON.

#include "AudioFiles.h"
#include "Command.h"

#include <cstdio>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

using ChunkInfo = Audio::Decode::Stream::ChunkInfo;

struct FileInfo {
    String path;
    String type;
    Audio::WaveFormat format;
    unsigned int frames = 0;
    bool recovered = false;
    std::vector<ChunkInfo> chunks;            // fetched with GetChunk
    std::vector<ChunkInfo> applicationChunks; // AIFF "APPL" chunks by signature
    unsigned long long unlistedCount = 0;     // chunks past the reader's list, only counted
    unsigned long long unlistedBytes = 0;
};

FileInfo inspect(String const& path)
{
    AudioInput input = OpenAudioFile(path);
    bool const aiff = input.stream->GetFileType() == Audio::Decode::Stream::AIFFFile;
    FileInfo info{path, aiff ? "AIFF" : "WAV", input.format, input.stream->GetNumSampleFrames(), input.stream->IsRecovered(),
                  {}, {}, 0, 0};
    Audio::Decode::Stream::ChunkList list = input.stream->GetChunkList();
    for (ChunkInfo const& c : list.listed)
        (c.application ? info.applicationChunks : info.chunks).push_back(c);
    info.unlistedCount = list.unlistedCount;
    info.unlistedBytes = list.unlistedBytes;
    return info;
}

double seconds(FileInfo const& info)
{
    return static_cast<double>(info.frames) / info.format.sampleRate;
}

// The four characters, with anything unprintable shown as '?'.
String chunkName(unsigned int id)
{
    String name;
    for (int shift = 24; shift >= 0; shift -= 8) {
        char const c = static_cast<char>(id >> shift);
        name += (c >= 0x20 && c < 0x7F) ? c : '?';
    }
    return name;
}

String chunkList(std::vector<ChunkInfo> const& chunks)
{
    std::vector<String> parts;
    for (ChunkInfo const& c : chunks)
        parts.push_back(String("'%1' %2 bytes").Arg(chunkName(c.id)).Arg(c.size));
    return parts.empty() ? String("none") : String::Join(", ", parts);
}

// What lies past the listed chunks of a file with very many of them.
String unlisted(FileInfo const& info)
{
    return String("%1 more chunks of %2 bytes in all, not listed").Arg(info.unlistedCount).Arg(info.unlistedBytes);
}

String asText(FileInfo const& info)
{
    Audio::WaveFormat const& f = info.format;
    String text = String("%1\n").Arg(info.path);
    text += String("  type           %1\n").Arg(info.type);
    text += String("  channels       %1\n").Arg(f.numChannels);
    text += String("  sample rate    %1 Hz\n").Arg(f.sampleRate);
    text += String("  bits           %1 (%2)\n").Arg(f.bytesPerSample * 8).Arg(f.isFloat ? "float" : "integer");
    text += String("  frames         %1%2\n")
                .Arg(info.frames)
                .Arg(info.recovered ? " (recovered: an interrupted recording, read to the end of the file)" : "");
    text += String("  duration       %1 s\n").Arg(seconds(info), 3);
    text += String("  channel mask   0x%1\n").Arg(f.channelMask, 16);
    text += String("  chunks         %1\n").Arg(chunkList(info.chunks));
    if (info.type == "AIFF")
        text += String("  APPL chunks    %1\n").Arg(chunkList(info.applicationChunks));
    if (info.unlistedCount)
        text += String("                 and %1\n").Arg(unlisted(info));
    return text;
}

String jsonString(std::string_view text)
{
    String out = "\"";
    for (char ch : text) {
        unsigned char const c = static_cast<unsigned char>(ch);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += ch;
        } else if (c < 0x20 || c >= 0x7F) {
            // Bytes are not necessarily UTF-8; each becomes the code point of the same value.
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", c);
            out += escape;
        } else {
            out += ch;
        }
    }
    return out + "\"";
}

String jsonChunks(std::vector<ChunkInfo> const& chunks)
{
    std::vector<String> parts;
    for (ChunkInfo const& c : chunks) {
        char const id[4] = {static_cast<char>(c.id >> 24), static_cast<char>(c.id >> 16), static_cast<char>(c.id >> 8),
                            static_cast<char>(c.id)};
        parts.push_back(String("{\"id\": %1, \"size\": %2}").Arg(jsonString(std::string_view(id, 4))).Arg(c.size));
    }
    return "[" + String::Join(", ", parts) + "]";
}

String asJson(FileInfo const& info)
{
    Audio::WaveFormat const& f = info.format;
    String text = String("{\"file\": %1, \"type\": \"%2\", \"channels\": %3, \"sampleRate\": %4, \"bits\": %5, ")
                      .Arg(jsonString(info.path.View()))
                      .Arg(info.type)
                      .Arg(f.numChannels)
                      .Arg(f.sampleRate)
                      .Arg(f.bytesPerSample * 8);
    text += String("\"float\": %1, \"frames\": %2, \"recovered\": %3, \"duration\": %4, \"channelMask\": %5, ")
                .Arg(f.isFloat ? "true" : "false")
                .Arg(info.frames)
                .Arg(info.recovered ? "true" : "false")
                .Arg(seconds(info), 6)
                .Arg(f.channelMask);
    text += String("\"chunks\": %1, \"unlistedChunks\": %2, \"unlistedChunkBytes\": %3")
                .Arg(jsonChunks(info.chunks))
                .Arg(info.unlistedCount)
                .Arg(info.unlistedBytes);
    if (info.type == "AIFF")
        text += String(", \"applicationChunks\": %1").Arg(jsonChunks(info.applicationChunks));
    return text + "}";
}

int info(Args const& args)
{
    Util::CommandLine line("cordel info", "Shows the format, length and chunks of WAV, AIFF and AIFF-C files.");
    Util::FlagArg json("json", 0, "one JSON array with an object per file, for scripts");
    line.AddOption(json);
    line.AddRest("FILE", "the files to inspect", 1);
    line.SetEpilogue("Files are recognised by their content, whatever their names. An interrupted recording (a\n"
                     "sample chunk declared empty, 0xFFFFFFFF bytes long or longer than the file) is read to the\n"
                     "end of the file, whole frames only, and shown as recovered; 'cordel repair' fixes its\n"
                     "header. The first 10000 chunks are listed, the rest counted.\n"
                     "A file that can't be read is reported on standard error and left out; the others are\n"
                     "still shown, and the exit code is then 1.\n");
    if (ParseOrHelp(line, args))
        return 0;

    int result = 0;
    std::vector<String> objects;
    for (String const& path : line.GetRest()) {
        try {
            FileInfo const found = inspect(path);
            if (json.Get())
                objects.push_back(asJson(found));
            else
                Print(asText(found));
        } catch (Exception::Base const& e) {
            PrintError(String("cordel info: %1\n").Arg(e.GetMessage()));
            result = 1;
        }
    }
    if (json.Get())
        Print("[" + String::Join(",\n ", objects) + "]\n");
    return result;
}

} // namespace

CORDEL_COMMAND("info", "format, length and chunks of WAV, AIFF and AIFF-C files", info);

} // namespace CordelTool
