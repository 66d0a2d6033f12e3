// cordel convert: a WAV or AIFF file to WAV or AIFF, in another sample format if asked.

#include "AudioFiles.h"
#include "Command.h"
#include "SafeOutput.h"
#include "SampleConversion.h"

#include <Cordel/IPP/Memory.h>

#include <algorithm>

using namespace Cordel;

namespace CordelTool {

namespace {

// Frames per read and write: about 1 MB, for few system calls, and never more than the file
// holds, so that a header claiming huge frames cannot make us allocate more than the file's size.
unsigned int blockFrames(AudioInput const& input)
{
    unsigned int const perFrame = std::max(1u, input.format.BytesPerFrame());
    return std::min(std::max(1u, (1u << 20) / perFrame), std::max(1u, input.stream->GetNumSampleFrames()));
}

SampleCoding codingOf(AudioInput const& input)
{
    auto const coding = input.stream->GetSampleCoding();
    return {input.format.bytesPerSample, input.format.isFloat, coding.bigEndian, coding.signedBytes};
}

// How the writer wants the bytes of one sample: WAV little-endian with unsigned 8-bit samples,
// AIFF big-endian with signed ones.
SampleCoding codingOf(Container container, Audio::WaveFormat const& format)
{
    bool const aiff = container == Container::AIFF;
    return {format.bytesPerSample, format.isFloat, aiff, aiff};
}

int convert(Args const& args)
{
    Util::CommandLine line("cordel convert", "Converts a WAV or AIFF file to WAV or AIFF.");
    Util::PathArg in("IN", 0, "IN", "the file to read");
    Util::PathArg out("OUT", 0, "OUT", "the file to write (replaced if it exists; '-' for standard output)");
    Util::IntArg bits("bits", 'b', "N", "integer samples of 16, 24 or 32 bits (default: as IN)", 0);
    Util::FlagArg isFloat("float", 'f', "32-bit float samples");
    Util::FlagArg dither("dither", 'd', "add TPDF dither before rounding to fewer bits");
    Util::TextArg format("format", 0, "wav|aiff", "the container (default: from OUT's extension)");
    line.AddPositional(in);
    line.AddPositional(out);
    line.AddOption(bits);
    line.AddOption(isFloat);
    line.AddOption(dither);
    line.AddOption(format);
    line.SetEpilogue("Nothing changes that need not. When the sample format stays the same the samples are\n"
                     "copied bit for bit, floats included. Integers widened to more bits, and integers of\n"
                     "up to 24 bits to and from float, are exact: 16 -> 24 -> 16 bits gives back the file.\n"
                     "Fewer bits round to the nearest step (halves upwards) and saturate; the number of\n"
                     "clipped samples is reported. Float full scale is 1.0. --dither adds triangular (TPDF)\n"
                     "noise of one output step before rounding, the same on every run; it acts only where\n"
                     "bits are lost. Without --dither the samples equal sox's with -D (no dither).\n"
                     "8-bit IN keeps 8 bits unless told otherwise. The channel mask is kept; other chunks\n"
                     "are not copied. OUT is written whole or not at all: see 'cordel help' on output.\n");
    if (ParseOrHelp(line, args))
        return 0;
    Container const container = ChooseContainer(format, out.Get());
    if (SameFile(in.Get(), out.Get()))
        throw Util::CommandLine::Error("IN and OUT are the same file");

    AudioInput input = OpenAudioFile(in.Get());
    Audio::WaveFormat target = input.format;
    ApplySampleOptions(bits, isFloat, target);
    unsigned int const frames = input.stream->GetNumSampleFrames();
    CheckDataSize(out.Get(), frames, target);

    SafeOutput output(out.Get());
    auto writer = MakeWriter(container, output.WriterPath(), target);
    SampleConverter converter(codingOf(input), codingOf(container, target), dither.Get());
    Progress progress(String("converting %1").Arg(FilePath::Exact(in.Get()).GetFilename()), frames);
    unsigned int const block = blockFrames(input);
    unsigned int const channels = input.format.numChannels;
    aligned_vector<unsigned char> from(std::size_t(block) * input.format.BytesPerFrame());
    aligned_vector<unsigned char> to(std::size_t(block) * target.BytesPerFrame());
    AboutFile(out.Get(), [&] { writer->Open(); });
    unsigned int done = 0, got = 0;
    do {
        AboutFile(in.Get(), [&] { input.stream->ReadRawInterleaved(block, from.data(), got); });
        converter.Convert(from.data(), to.data(), std::size_t(got) * channels);
        AboutFile(out.Get(), [&] { writer->WriteRawInterleaved(got, to.data()); });
        progress.Update(done += got);
    } while (got);
    AboutFile(out.Get(), [&] { writer->Close(); });
    output.Commit();
    if (converter.Clipped())
        PrintError(String("cordel convert: %1: %2 samples clipped\n").Arg(out.Get()).Arg(converter.Clipped()));
    return 0;
}

} // namespace

CORDEL_COMMAND("convert", "convert WAV and AIFF files between formats and sample formats", convert);

} // namespace CordelTool
