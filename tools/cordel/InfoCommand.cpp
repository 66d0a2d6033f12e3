// cordel info: what a WAV or AIFF file holds, as text or as JSON.

#include "AudioFiles.h"
#include "Command.h"

#include <Cordel/Audio/Decode/AIFF/Decoder.h>

#include <cstdio>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

struct ChunkEntry {
    unsigned int id;
    unsigned int size;
};

struct FileInfo {
    String path;
    String type;
    Audio::WaveFormat format;
    unsigned int frames = 0;
    std::vector<ChunkEntry> chunks;            // fetched with GetChunk
    std::vector<ChunkEntry> applicationChunks; // AIFF "APPL" chunks by signature
};

std::vector<ChunkEntry> entries(std::vector<Audio::Decode::PCMDecoder::ApplicationChunkInfo> const& list)
{
    std::vector<ChunkEntry> out;
    for (auto const& c : list)
        out.push_back({c.id, c.size});
    return out;
}

FileInfo inspect(String const& path)
{
    AudioInput input = OpenAudioFile(path);
    FileInfo info{path, {}, input.format, input.stream->GetNumSampleFrames(), {}, {}};
    if (auto const* aiff = dynamic_cast<Audio::Decode::AIFF::Decoder const*>(input.decoder)) {
        info.type = "AIFF";
        info.chunks = entries(aiff->GetChunks());
        info.applicationChunks = entries(aiff->GetApplicationChunks());
    } else {
        info.type = "WAV";
        info.chunks = entries(input.decoder->GetApplicationChunks());
    }
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

String chunkList(std::vector<ChunkEntry> const& chunks)
{
    std::vector<String> parts;
    for (ChunkEntry const& c : chunks)
        parts.push_back(String("'%1' %2 bytes").Arg(chunkName(c.id)).Arg(c.size));
    return parts.empty() ? String("none") : String::Join(", ", parts);
}

String asText(FileInfo const& info)
{
    Audio::WaveFormat const& f = info.format;
    String text = String("%1\n").Arg(info.path);
    text += String("  type           %1\n").Arg(info.type);
    text += String("  channels       %1\n").Arg(f.numChannels);
    text += String("  sample rate    %1 Hz\n").Arg(f.sampleRate);
    text += String("  bits           %1 (%2)\n").Arg(f.bytesPerSample * 8).Arg(f.isFloat ? "float" : "integer");
    text += String("  frames         %1\n").Arg(info.frames);
    text += String("  duration       %1 s\n").Arg(seconds(info), 3);
    text += String("  channel mask   0x%1\n").Arg(f.channelMask, 16);
    text += String("  chunks         %1\n").Arg(chunkList(info.chunks));
    if (info.type == "AIFF")
        text += String("  APPL chunks    %1\n").Arg(chunkList(info.applicationChunks));
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

String jsonChunks(std::vector<ChunkEntry> const& chunks)
{
    std::vector<String> parts;
    for (ChunkEntry const& c : chunks) {
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
    text += String("\"float\": %1, \"frames\": %2, \"duration\": %3, \"channelMask\": %4, \"chunks\": %5")
                .Arg(f.isFloat ? "true" : "false")
                .Arg(info.frames)
                .Arg(seconds(info), 6)
                .Arg(f.channelMask)
                .Arg(jsonChunks(info.chunks));
    if (info.type == "AIFF")
        text += String(", \"applicationChunks\": %1").Arg(jsonChunks(info.applicationChunks));
    return text + "}";
}

int info(Args const& args)
{
    Util::CommandLine line("cordel info", "Shows the format, length and chunks of WAV and AIFF files.");
    Util::FlagArg json("json", 0, "one JSON array with an object per file, for scripts");
    line.AddOption(json);
    line.AddRest("FILE", "the files to inspect", 1);
    line.SetEpilogue("A file that can't be read is reported on standard error and left out; the others are\n"
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

CORDEL_COMMAND("info", "format, length and chunks of WAV and AIFF files", info);

} // namespace CordelTool
