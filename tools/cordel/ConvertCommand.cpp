// cordel convert: a WAV or AIFF file to WAV or AIFF, in another sample format if asked.

#include "AudioFiles.h"
#include "Command.h"

#include <Cordel/IPP/Memory.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

using namespace Cordel;

namespace CordelTool {

namespace {

// Frames per read and write: 8192, fewer for very wide frames, and never more than the file holds,
// so that a header claiming huge frames cannot make us allocate more than the file's size.
unsigned int blockFrames(AudioInput const& input)
{
    unsigned int const perFrame = std::max(1u, input.format.BytesPerFrame());
    return std::min({8192u, std::max(1u, (1u << 22) / perFrame), input.stream->GetNumSampleFrames()});
}

// How the writer wants the bytes of one sample: WAV little-endian with unsigned 8-bit samples,
// AIFF big-endian with signed ones.
Audio::Decode::Stream::SampleCoding codingOf(Container container)
{
    bool const aiff = container == Container::AIFF;
    return {aiff, aiff};
}

// Carries the file's own bytes over, reordered for the writer: exact whatever the format, and the
// only way for 8-bit and 64-bit samples, which have no float path.
void copySamples(AudioInput& input, Audio::Encode::PCMEncoder& writer, String const& outPath, Container container,
                 Progress& progress)
{
    Audio::WaveFormat const& f = input.format;
    auto const from = input.stream->GetSampleCoding();
    auto const to = codingOf(container);
    bool const swap = f.bytesPerSample > 1 && from.bigEndian != to.bigEndian;
    bool const flipSign = f.bytesPerSample == 1 && !f.isFloat && from.signedBytes != to.signedBytes;
    unsigned int const frames = blockFrames(input);
    aligned_vector<unsigned char> block(std::size_t(frames) * f.BytesPerFrame());
    unsigned int done = 0, got = 0;
    do {
        AboutFile(input.path, [&] { input.stream->ReadRawInterleaved(frames, block.data(), got); });
        std::size_t const bytes = std::size_t(got) * f.BytesPerFrame();
        if (swap)
            for (std::size_t i = 0; i < bytes; i += f.bytesPerSample)
                std::reverse(block.begin() + i, block.begin() + i + f.bytesPerSample);
        if (flipSign)
            for (std::size_t i = 0; i < bytes; ++i)
                block[i] ^= 0x80;
        AboutFile(outPath, [&] { writer.WriteRawInterleaved(got, block.data()); });
        progress.Update(done += got);
    } while (got);
}

void convertSamples(AudioInput& input, Audio::Encode::PCMEncoder& writer, String const& outPath, Progress& progress)
{
    unsigned int const frames = blockFrames(input);
    aligned_vector<float> block(std::size_t(frames) * input.format.numChannels);
    unsigned int done = 0, got = 0;
    do {
        AboutFile(input.path, [&] { input.stream->ReadFloatInterleaved(frames, block.data(), got); });
        AboutFile(outPath, [&] { writer.WriteFloatInterleaved(got, block.data()); });
        progress.Update(done += got);
    } while (got);
}

bool sameFile(String const& a, String const& b)
{
    std::error_code ignored;
    return std::filesystem::equivalent(a.c_str(), b.c_str(), ignored);
}

int convert(Args const& args)
{
    Util::CommandLine line("cordel convert", "Converts a WAV or AIFF file to WAV or AIFF.");
    Util::PathArg in("IN", 0, "IN", "the file to read");
    Util::PathArg out("OUT", 0, "OUT", "the file to write (replaced if it exists)");
    Util::IntArg bits("bits", 'b', "N", "integer samples of 16, 24 or 32 bits (default: as IN)", 0);
    Util::FlagArg isFloat("float", 'f', "32-bit float samples");
    Util::TextArg format("format", 0, "wav|aiff", "the container (default: from OUT's extension)");
    line.AddPositional(in);
    line.AddPositional(out);
    line.AddOption(bits);
    line.AddOption(isFloat);
    line.AddOption(format);
    line.SetEpilogue("When the sample format stays the same the samples are copied bit for bit, byte order\n"
                     "and 8-bit signedness adjusted. Otherwise they pass through 32-bit float: integers are\n"
                     "scaled by powers of two, except that 24-bit output is scaled by 2^23 - 1 and\n"
                     "rounded; 16- and 32-bit output is truncated and clipped. 8-bit IN keeps 8 bits unless\n"
                     "told otherwise. The channel mask is kept; other chunks are not copied.\n");
    if (ParseOrHelp(line, args))
        return 0;
    Container const container = ChooseContainer(format, out.Get());
    if (sameFile(in.Get(), out.Get()))
        throw Util::CommandLine::Error("IN and OUT are the same file");

    AudioInput input = OpenAudioFile(in.Get());
    Audio::WaveFormat target = input.format;
    ApplySampleOptions(bits, isFloat, target);
    bool const copy = target.bytesPerSample == input.format.bytesPerSample && target.isFloat == input.format.isFloat;
    unsigned int const frames = input.stream->GetNumSampleFrames();
    CheckDataSize(out.Get(), frames, target);

    OutputGuard guard(out.Get());
    auto writer = MakeWriter(container, out.Get(), target);
    Progress progress(String("converting %1").Arg(FilePath::Exact(in.Get()).GetFilename()), frames);
    AboutFile(out.Get(), [&] { writer->Open(); });
    if (copy)
        copySamples(input, *writer, out.Get(), container, progress);
    else
        convertSamples(input, *writer, out.Get(), progress);
    AboutFile(out.Get(), [&] { writer->Close(); });
    guard.Keep();
    return 0;
}

} // namespace

CORDEL_COMMAND("convert", "convert WAV and AIFF files between formats and sample formats", convert);

} // namespace CordelTool
