// cordel repair: rewrites the header of an interrupted WAV or AIFF recording so that every
// program reads it.

#include "AudioFiles.h"
#include "Command.h"

#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Open.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Cordel;

namespace CordelTool {

namespace {

// The temporary file being written, for the signal handler to remove.
char pendingTemporary[4096];

void removePendingAndDie(int signal)
{
    if (pendingTemporary[0])
        ::unlink(pendingTemporary);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Where the repaired file goes. A regular file (or a name not there yet) is replaced whole: the
// file is written beside it under a temporary name and renamed over it once complete, so that a
// failure or Ctrl-C leaves it as it was. Anything else (a FIFO, a device, standard output as
// "-") is written in place and never removed. A symbolic link is followed.
class Destination {
public:
    explicit Destination(String const& given)
    {
        if (given == "-") {
            target = "/dev/stdout";
            return;
        }
        std::error_code error;
        std::filesystem::path const resolved = std::filesystem::weakly_canonical(given.c_str(), error);
        target = error ? given : String(resolved.c_str());
        struct stat info;
        bool const exists = ::stat(target.c_str(), &info) == 0;
        if (exists && !S_ISREG(info.st_mode))
            return;
        mode_t const mask = ::umask(0);
        ::umask(mask);
        mode = exists ? info.st_mode & 07777 : 0666 & ~mask;
        std::string pattern = std::filesystem::path(target.c_str()).replace_filename(".").string() + "/.cordel-repair-XXXXXX";
        int const fd = ::mkstemp(pattern.data());
        if (fd < 0)
            FailFile(given, String("can't create a file beside it: %1").Arg(std::strerror(errno)));
        ::close(fd);
        temporary = pattern.c_str();
        std::snprintf(pendingTemporary, sizeof pendingTemporary, "%s", temporary.c_str());
        std::signal(SIGINT, removePendingAndDie);
        std::signal(SIGTERM, removePendingAndDie);
        std::signal(SIGHUP, removePendingAndDie);
    }
    ~Destination()
    {
        if (!temporary.IsEmpty())
            ::unlink(temporary.c_str());
        pendingTemporary[0] = 0;
    }
    Destination(Destination const&) = delete;
    Destination& operator=(Destination const&) = delete;

    // The name to write to.
    String WritePath() const { return temporary.IsEmpty() ? target : temporary; }

    void Commit(String const& given)
    {
        if (temporary.IsEmpty())
            return;
        if (::chmod(temporary.c_str(), mode) != 0 || ::rename(temporary.c_str(), target.c_str()) != 0)
            FailFile(given, std::strerror(errno));
        temporary = String();
        pendingTemporary[0] = 0;
    }

private:
    String target;
    String temporary; // empty when written in place
    mode_t mode = 0;
};

bool sameFile(String const& a, String const& b)
{
    std::error_code ignored;
    return std::filesystem::equivalent(a.c_str(), b.c_str(), ignored);
}

int repair(Args const& args)
{
    Util::CommandLine line("cordel repair", "Rewrites the header of an interrupted WAV or AIFF recording.");
    Util::PathArg in("IN", 0, "IN", "the interrupted recording");
    Util::PathArg out("OUT", 0, "OUT", "the repaired file to write, or - for standard output");
    Util::FlagArg inPlace("in-place", 'i', "replace IN with the repaired file instead of writing OUT");
    line.AddPositional(in);
    line.AddPositional(out, false);
    line.AddOption(inPlace);
    line.SetEpilogue("A recorder that crashed, or a program writing into a pipe, leaves a header whose sample\n"
                     "chunk is declared empty, 0xFFFFFFFF bytes long or longer than the file. 'cordel info'\n"
                     "and 'cordel convert' read such a file to its end anyway; other programs may refuse it.\n"
                     "repair writes a copy whose header declares what the file holds: every whole frame,\n"
                     "with a partial last frame dropped; the chunks before the samples are kept as they are.\n"
                     "OUT is written under a temporary name and renamed when complete; with --in-place IN is\n"
                     "replaced the same way, so an interruption leaves it untouched. A file whose header is\n"
                     "intact is left alone and reported (exit 1).\n");
    if (ParseOrHelp(line, args))
        return 0;
    if (inPlace.Get() == out.IsSet())
        throw Util::CommandLine::Error(inPlace.Get() ? "give OUT or --in-place, not both" : "give OUT, or --in-place to rewrite IN");
    if (out.IsSet() && sameFile(in.Get(), out.Get()))
        throw Util::CommandLine::Error("IN and OUT are the same file; use --in-place");

    String const outName = inPlace.Get() ? in.Get() : out.Get();
    OpenAudioFile(in.Get()); // fails with the reason when IN can't be read at all
    Destination destination(outName);
    unsigned int frames = 0;
    try {
        frames = Audio::Decode::Repair(FilePath::Exact(in.Get()), FilePath::Exact(destination.WritePath()));
    } catch (Audio::Decode::Exception::BadFormat const& e) {
        FailFile(in.Get(), e.GetMessage()); // IN read once already: what is wrong is its content
    } catch (Exception::Base const& e) {
        FailFile(outName, e.GetMessage());
    }
    destination.Commit(outName);
    if (outName != "-")
        Print(String("%1: %2 frames kept\n").Arg(outName).Arg(frames));
    return 0;
}

} // namespace

CORDEL_COMMAND("repair", "rewrite the header of an interrupted WAV or AIFF recording", repair);

} // namespace CordelTool
