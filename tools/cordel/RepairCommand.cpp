// cordel repair: rewrites the header of an interrupted WAV or AIFF recording so that every
// program reads it.

#include "AudioFiles.h"
#include "Command.h"
#include "SafeOutput.h"

#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Open.h>


using namespace Cordel;

namespace CordelTool {

namespace {

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
    if (out.IsSet() && SameFile(in.Get(), out.Get()))
        throw Util::CommandLine::Error("IN and OUT are the same file; use --in-place");

    String const outName = inPlace.Get() ? in.Get() : out.Get();
    OpenAudioFile(in.Get()); // fails with the reason when IN can't be read at all
    SafeOutput output(outName);
    unsigned int frames = 0;
    try {
        frames = Audio::Decode::Repair(FilePath::Exact(in.Get()), output.WriterPath());
    } catch (Audio::Decode::Exception::BadFormat const& e) {
        throw FileFailure(in.Get(), e.GetMessage(), e.ToString()); // IN opened already: its content is at fault
    } catch (Exception::Base const& e) {
        throw FileFailure(outName, e.GetMessage(), e.ToString());
    }
    output.Commit();
    if (outName != "-")
        Print(String("%1: %2 frames kept\n").Arg(outName).Arg(frames));
    return 0;
}

} // namespace

CORDEL_COMMAND("repair", "rewrite the header of an interrupted WAV or AIFF recording", repair);

} // namespace CordelTool
