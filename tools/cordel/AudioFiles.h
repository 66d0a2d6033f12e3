#pragma once
// What the audio commands share: the choice of reader and writer, the sample format options and
// a progress bar.

#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Encode/PCMEncoder.h>
#include <Cordel/Util/CommandLine.h>
#include <Cordel/common/String.h>

#include <memory>

namespace CordelTool {

// A synced reader for a WAV, AIFF or AIFF-C file, recognised by its content; an interrupted
// recording is recovered (the reader says so).
struct AudioInput {
    Cordel::String path;
    Cordel::shared_ptr<Cordel::Audio::Decode::Stream> stream;
    Cordel::Audio::WaveFormat format;
};
AudioInput OpenAudioFile(Cordel::String const& path);

enum class Container { WAV, AIFF };

// The --format option, else the output's extension ("wav", "aif", "aiff", "aifc").
Container ChooseContainer(Cordel::Util::TextArg const& option, Cordel::String const& path);
char const* ContainerName(Container container);

// The writer for a file; nothing touches the disk before Open.
std::unique_ptr<Cordel::Audio::Encode::PCMEncoder> MakeWriter(Container container, Cordel::FilePath const& path,
                                                              Cordel::Audio::WaveFormat const& format);

// The --bits and --float options: 16, 24 or 32-bit integers, or 32-bit float. Unset options keep
// what format already holds. Throws CommandLine::Error for a combination no writer offers.
void ApplySampleOptions(Cordel::Util::IntArg const& bits, Cordel::Util::FlagArg const& isFloat,
                        Cordel::Audio::WaveFormat& format);

// Throws when frames of the format would not fit the 32-bit sizes of the sample data chunk.
void CheckDataSize(Cordel::String const& path, unsigned long long frames, Cordel::Audio::WaveFormat const& format);

// A bar on standard error, drawn only when standard error is a terminal.
class Progress {
public:
    Progress(Cordel::String const& label, unsigned long long total);
    ~Progress();
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    void Update(unsigned long long done);

private:
    Cordel::String label;
    unsigned long long total;
    int shownPercent = -1;
    bool enabled;
};

} // namespace CordelTool
