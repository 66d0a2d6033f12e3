// Tour stop: audio files. A tone goes out as WAV and as AIFF with chunks of metadata, and comes
// back through the factory, which tells the formats apart by their first bytes.

#include "Tour.h"

#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Encode/AIFF/Encoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/SystemFolders.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

constexpr unsigned int frames = 4410; // a tenth of a second at 44.1 kHz

std::vector<float> stereoTone()
{
    std::vector<float> samples(2 * frames);
    for (unsigned int i = 0; i < frames; ++i) {
        float const v = static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * 441.0 * i / 44100.0));
        samples[2 * i] = v;
        samples[2 * i + 1] = -v;
    }
    return samples;
}

[[noreturn]] void tourFailed(String const& what)
{
    throw Exception::Base(String("The audio stop went wrong: %1").Arg(what));
}

// Writes the tone, the cue points and one metadata chunk; the writer's kind decides the layout.
void writeTone(Audio::Encode::Stream& writer, std::vector<float> const& tone)
{
    writer.Open();
    writer.WriteFloatInterleaved(frames / 2, tone.data());
    writer.WriteFloatInterleaved(frames - frames / 2, tone.data() + frames / 2 * 2);
    writer.WriteCueChunk({0, frames / 2});
    writer.WriteApplicationChunk(Audio::FourCC("cdl "), {'t', 'o', 'u', 'r'});
    writer.Close();
}

// Reads the file back and returns the largest difference from the tone, in units of the last bit.
double readBack(FilePath const& path, std::vector<float> const& tone, Audio::Decode::Stream::FileType expected)
{
    shared_ptr<Audio::Decode::Stream> reader = Audio::Decode::Stream::Instantiate(path);
    if (!reader || reader->GetFileType() != expected)
        tourFailed(String("the factory did not pick the right reader for %1").Arg(path.GetFilename()));
    Audio::WaveFormat const format = reader->Sync();
    std::vector<float> samples(tone.size());
    unsigned int got = 0;
    reader->ReadFloatInterleaved(frames, samples.data(), got);
    if (got != frames || format.numChannels != 2 || format.sampleRate != 44100)
        tourFailed(String("%1 came back as %2 frames").Arg(path.GetFilename()).Arg(got));
    std::vector<unsigned char> body;
    reader->GetApplicationChunk(Audio::FourCC("cdl "), body);
    if (body != std::vector<unsigned char>{'t', 'o', 'u', 'r'})
        tourFailed(String("the metadata chunk of %1 did not come back").Arg(path.GetFilename()));
    double worst = 0;
    for (std::size_t i = 0; i < tone.size(); ++i)
        worst = std::max(worst, std::fabs(double(samples[i]) - tone[i]));
    double const lastBit = std::ldexp(1.0, 1 - 8 * static_cast<int>(format.bytesPerSample));
    TourSay(String("Read back %1: %2 channels, %3 Hz, %4-bit, %5 frames, chunk 'cdl ' holds \"tour\"")
                .Arg(path.GetFilename())
                .Arg(format.numChannels)
                .Arg(format.sampleRate)
                .Arg(format.bytesPerSample * 8)
                .Arg(got));
    return worst / lastBit;
}

void audioTour()
{
    std::vector<float> const tone = stereoTone();
    FilePath const wav = Util::GetTempFile(FilePath("tour.wav", false));
    FilePath const aiff = Util::GetTempFile(FilePath("tour.aiff", false));
    struct Cleanup {
        std::vector<FilePath> paths;
        ~Cleanup()
        {
            for (FilePath const& p : paths)
                std::remove(p.GetInternal().c_str());
        }
    } cleanup{{wav, aiff}};

    Audio::WaveFormat const format24{2, 3, 44100, false, 0};
    Audio::Encode::WAV::Encoder wavWriter(wav, format24);
    writeTone(wavWriter, tone);
    TourSay(String("Wrote a 441 Hz tone, 24-bit stereo, with two cue points and a 'cdl ' chunk: %1 bytes of WAV")
                .Arg(Util::File(wav).Size()));
    double const wavError = readBack(wav, tone, Audio::Decode::Stream::WAVFile);

    Audio::Encode::AIFF::Encoder aiffWriter(aiff, Audio::WAVEFORMAT_CD_QUALITY);
    writeTone(aiffWriter, tone);
    TourSay(String("The same as 16-bit AIFF, the chunk inside an APPL chunk (AIFF keeps no cue points): %1 bytes")
                .Arg(Util::File(aiff).Size()));
    double const aiffError = readBack(aiff, tone, Audio::Decode::Stream::AIFFFile);

    // 16-bit samples are truncated, 24-bit ones rounded: at most one step, and half a step more
    // for the 24-bit writer's scale of 2^23 - 1.
    if (wavError > 1.5 || aiffError > 1.0)
        tourFailed(String("samples differ by %1 and %2 steps").Arg(wavError, 2).Arg(aiffError, 2));
    TourSay(String("Largest difference from the tone: %1 of a 24-bit step in WAV, %2 of a 16-bit step in AIFF")
                .Arg(wavError, 2)
                .Arg(aiffError, 2));
}

} // namespace

CORDEL_TOUR_STOP(40, "Audio files: WAV and AIFF written, recognised and read back", audioTour);

} // namespace CordelTool
