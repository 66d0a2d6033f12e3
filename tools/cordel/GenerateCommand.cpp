// cordel generate: a test signal (sine tone, white noise or a ramp) written as WAV or AIFF.

#include "AudioFiles.h"
#include "Command.h"
#include "SafeOutput.h"

#include <Cordel/IPP/Memory.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <random>

using namespace Cordel;

namespace CordelTool {

namespace {

constexpr unsigned int blockFrames = 8192;

enum class Signal { Tone, Noise, Ramp };

struct SignalSettings {
    Signal signal;
    double frequency;
    double amplitude;
    unsigned int channels;
    unsigned int rate;
    unsigned long long frames;
};

// Fills frames [first, first + count) of the signal, the same in every channel except noise,
// which is drawn independently per sample from a fixed seed so that a file can be made again.
class Generator {
public:
    explicit Generator(SignalSettings const& settings) : s(settings), noise(0x636F7264u) {}

    void Fill(unsigned long long first, unsigned int count, float* out)
    {
        for (unsigned int i = 0; i < count; ++i) {
            double const value = s.signal == Signal::Noise ? 0.0 : sampleAt(first + i);
            for (unsigned int c = 0; c < s.channels; ++c)
                *out++ = static_cast<float>(s.signal == Signal::Noise ? s.amplitude * uniform(noise) : value);
        }
    }

private:
    double sampleAt(unsigned long long frame) const
    {
        if (s.signal == Signal::Tone) {
            // The phase from the frame number, not a running sum, so that it never drifts.
            double const cycles = std::fmod(s.frequency * static_cast<double>(frame) / s.rate, 1.0);
            return s.amplitude * std::sin(2.0 * std::numbers::pi * cycles);
        }
        // From -amplitude at the first frame to +amplitude at the last.
        double const last = s.frames > 1 ? static_cast<double>(s.frames - 1) : 1.0;
        return s.amplitude * (2.0 * static_cast<double>(frame) / last - 1.0);
    }

    SignalSettings s;
    std::mt19937 noise;
    std::uniform_real_distribution<double> uniform{-1.0, 1.0};
};

Signal parseSignal(String const& name)
{
    if (name == "tone")
        return Signal::Tone;
    if (name == "noise")
        return Signal::Noise;
    if (name == "ramp")
        return Signal::Ramp;
    throw Util::CommandLine::Error(String("SIGNAL must be tone, noise or ramp, not '%1'").Arg(name));
}

int generate(Args const& args)
{
    Util::CommandLine line("cordel generate", "Writes a test signal to a WAV or AIFF file.");
    Util::TextArg signalName("SIGNAL", 0, "tone|noise|ramp", "a sine tone, white noise, or a linear ramp");
    Util::PathArg out("OUT", 0, "OUT", "the file to write (replaced if it exists)");
    Util::FloatArg frequency("freq", 0, "HZ", "the tone's frequency", 440.0);
    Util::FloatArg seconds("seconds", 's', "S", "the length", 1.0);
    Util::IntArg rate("rate", 'r', "HZ", "the sample rate", 44100, 1, 0xFFFFFFFFLL);
    Util::IntArg channels("channels", 'c', "N", "the channels, all with the same signal (noise: independent)", 1, 1, 256);
    Util::IntArg bits("bits", 'b', "N", "integer samples of 16, 24 or 32 bits", 16);
    Util::FlagArg isFloat("float", 'f', "32-bit float samples");
    Util::FloatArg level("level-db", 'l', "DB", "the peak level in dB below full scale (at most 0)", -6.0);
    Util::TextArg format("format", 0, "wav|aiff", "the container (default: from OUT's extension)");
    line.AddPositional(signalName);
    line.AddPositional(out);
    for (Util::CommandArg* option :
         std::initializer_list<Util::CommandArg*>{&frequency, &seconds, &rate, &channels, &bits, &isFloat, &level, &format})
        line.AddOption(*option);
    line.SetEpilogue("The ramp rises linearly from minus to plus the peak level over the whole file. Noise is\n"
                     "uniform between the two and the same on every run.\n");
    if (ParseOrHelp(line, args))
        return 0;

    SignalSettings settings{parseSignal(signalName.Get()), frequency.Get(), std::pow(10.0, level.Get() / 20.0),
                            static_cast<unsigned int>(channels.Get()), static_cast<unsigned int>(rate.Get()), 0};
    if (!(level.Get() <= 0.0))
        throw Util::CommandLine::Error("--level-db must be 0 or below");
    if (!(frequency.Get() > 0.0 && frequency.Get() <= settings.rate / 2.0))
        throw Util::CommandLine::Error(String("--freq must be above 0 and at most half the rate (%1 Hz)").Arg(settings.rate / 2.0, 1));
    if (!(seconds.Get() > 0.0 && seconds.Get() < 1e9))
        throw Util::CommandLine::Error("--seconds must be above 0");
    settings.frames = static_cast<unsigned long long>(std::llround(seconds.Get() * settings.rate));

    Audio::WaveFormat waveFormat{settings.channels, 2, settings.rate, false, 0};
    ApplySampleOptions(bits, isFloat, waveFormat);
    Container const container = ChooseContainer(format, out.Get());
    CheckDataSize(out.Get(), settings.frames, waveFormat);

    SafeOutput output(out.Get());
    auto writer = MakeWriter(container, output.WriterPath(), waveFormat);
    Generator generator(settings);
    aligned_vector<float> block(std::size_t(blockFrames) * settings.channels);
    Progress progress(String("generating %1").Arg(FilePath::Exact(out.Get()).GetFilename()), settings.frames);
    AboutFile(out.Get(), [&] {
        writer->Open();
        writer->WriteFloatInterleaved(0, block.data()); // even an empty signal gets its sample data chunk
        for (unsigned long long done = 0; done < settings.frames;) {
            unsigned int const n = static_cast<unsigned int>(std::min<unsigned long long>(blockFrames, settings.frames - done));
            generator.Fill(done, n, block.data());
            writer->WriteFloatInterleaved(n, block.data());
            progress.Update(done += n);
        }
        writer->Close();
    });
    output.Commit();
    return 0;
}

} // namespace

CORDEL_COMMAND("generate", "write a test tone, noise or ramp as WAV or AIFF", generate);

} // namespace CordelTool
