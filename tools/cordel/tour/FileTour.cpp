// Tour stop: files, file streams and folders.

#include "Tour.h"

#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/Dir.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileStream.h>
#include <Cordel/Util/SystemFolders.h>

#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

// A scratch folder under the temporary folder, removed again at the end of the stop.
FolderPath makeScratchFolder()
{
    FilePath const marker = Util::GetTempFile(FilePath(String("cordel-tour")), true, 8);
    Util::File(marker).Remove();
    FolderPath const folder(marker.ToString());
    Util::Dir(folder).Create(true);
    return folder;
}

void removeScratchFolder(FolderPath const& folder, std::vector<String> const& files)
{
    for (String const& name : files)
        Util::File(FilePath(name)).Remove();
    Util::Dir(folder + "loops").Remove();
    Util::Dir(folder).Remove();
}

void fileTour()
{
    FolderPath const folder = makeScratchFolder();
    FilePath const session(folder, "session.dat");
    {
        Util::FileStream out(session, Util::File::ModeWrite);
        out.SetEndianType(Util::DataStream::EndianBig);
        out << String("Verse take 3") << 120.0 << static_cast<unsigned short>(44100);
    }
    Util::File file(session);
    TourSay(String("Wrote a name, a tempo and a rate big-endian to %1: %2 bytes").Arg(session.GetFilename()).Arg(file.Size()));

    Util::FileStream in(session, Util::File::ModeRead);
    in.SetEndianType(Util::DataStream::EndianBig);
    String name;
    double tempo = 0;
    unsigned short rate = 0;
    in >> name >> tempo >> rate;
    TourSay(String("Read back: \"%1\" at %2 BPM, %3 Hz").Arg(name).Arg(tempo, 1).Arg(rate));
    try {
        in >> rate;
    } catch (Util::Exception::DataStreamIO const& e) {
        TourSay(String("One value more fails, carrying the file's own failure: \"%1...\"").Arg(e.GetMessage().Left(60)));
    }
    in.Close();

    Util::Dir(folder + "loops").Create(false);
    for (char const* sample : {"Kick.WAV", "snare.wav", "notes.txt", "loops/hat.wav"})
        Util::FileStream(FilePath(folder, sample), Util::File::ModeWrite) << String(sample);
    std::vector<String> found;
    Util::Dir(folder).GetFilenames(found, "*.wav", true);
    TourSay(String("Files matching \"*.wav\" in %1, subfolders included:").Arg(folder.ToString()));
    for (String const& path : found)
        TourSay(String("  %1").Arg(path.Mid(folder.ToString().Length())));

    TourSay(String("User application data: %1; temporary files: %2")
                .Arg(Util::GetUserApplicationDataFolder().ToString())
                .Arg(Util::GetSystemTempFolder().ToString()));

    std::vector<String> all;
    Util::Dir(folder).GetFilenames(all, "", true);
    removeScratchFolder(folder, all);
}

} // namespace

CORDEL_TOUR_STOP(30, "Files: a file stream written and read back, a folder listed through a filter", fileTour);

} // namespace CordelTool
