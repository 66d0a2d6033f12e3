#include "AudioFiles.h"

#include <Cordel/Audio/Decode/Open.h>
#include "Command.h"

#include <Cordel/Audio/Encode/AIFF/Encoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>

#include <cstdio>
#include <unistd.h>

using namespace Cordel;

namespace CordelTool {

AudioInput OpenAudioFile(String const& path)
{
    CheckReadable(path);
    return AboutFile(path, [&] {
        AudioInput input{path, Audio::Decode::Open(FilePath::Exact(path)), {}};
        input.format = input.stream->GetWaveFormat();
        return input;
    });
}

Container ChooseContainer(Util::TextArg const& option, String const& path)
{
    String const name = option.IsSet() ? option.Get().ToLower() : FilePath::Exact(path).GetExtension().ToLower();
    if (name == "wav" || name == "wave")
        return Container::WAV;
    if (name == "aif" || name == "aiff" || name == "aifc")
        return Container::AIFF;
    if (option.IsSet())
        throw Util::CommandLine::Error(String("--format must be wav or aiff, not '%1'").Arg(option.Get()));
    throw Util::CommandLine::Error(String("can't tell the format of '%1' from its extension; give --format").Arg(path));
}

char const* ContainerName(Container container)
{
    return container == Container::WAV ? "WAV" : "AIFF";
}

std::unique_ptr<Audio::Encode::PCMEncoder> MakeWriter(Container container, FilePath const& path,
                                                      Audio::WaveFormat const& format)
{
    if (container == Container::WAV)
        return std::make_unique<Audio::Encode::WAV::Encoder>(path, format);
    return std::make_unique<Audio::Encode::AIFF::Encoder>(path, format);
}

void ApplySampleOptions(Util::IntArg const& bits, Util::FlagArg const& isFloat, Audio::WaveFormat& format)
{
    if (isFloat.Get()) {
        if (bits.IsSet() && bits.Get() != 32)
            throw Util::CommandLine::Error("--float takes 32 bits");
        format.isFloat = true;
        format.bytesPerSample = 4;
        return;
    }
    if (bits.IsSet()) {
        if (bits.Get() != 16 && bits.Get() != 24 && bits.Get() != 32)
            throw Util::CommandLine::Error(String("--bits must be 16, 24 or 32, not %1").Arg(bits.Get()));
        format.isFloat = false;
        format.bytesPerSample = static_cast<unsigned int>(bits.Get() / 8);
    }
}

void CheckDataSize(String const& path, unsigned long long frames, Audio::WaveFormat const& format)
{
    // Room for the header and a few chunks under the 32-bit file size.
    constexpr unsigned long long limit = 0xFFFFFFFFull - 65536;
    if (frames * format.BytesPerFrame() > limit)
        FailFile(path, String("%1 frames of %2 bytes are more than a 4 GiB file holds")
                           .Arg(frames)
                           .Arg(format.BytesPerFrame()));
}

Progress::Progress(String const& label, unsigned long long total)
    : label(label), total(total), enabled(::isatty(STDERR_FILENO) == 1)
{
}

Progress::~Progress()
{
    if (enabled && shownPercent >= 0)
        std::fputs("\n", stderr);
}

void Progress::Update(unsigned long long done)
{
    if (!enabled)
        return;
    int const percent = total ? static_cast<int>(done * 100 / total) : 100;
    if (percent == shownPercent)
        return;
    shownPercent = percent;
    constexpr int width = 40;
    int const filled = percent * width / 100;
    std::fprintf(stderr, "\r%s [%.*s%*s] %3d%%", label.c_str(), filled, "########################################",
                 width - filled, "", percent);
    std::fflush(stderr);
}

} // namespace CordelTool
