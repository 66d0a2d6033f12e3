// Tour stop: platform services, a preference written and read back.

#include "Tour.h"

#include <Cordel/Util/ConfigFile.h>

#include <cstdlib>
#include <filesystem>
#include <string>

using namespace Cordel;

namespace CordelTool {

namespace {

void platformTour()
{
    // A configuration folder of the tour's own, so that the user's settings stay untouched.
    std::string pattern = (std::filesystem::temp_directory_path() / "cordel-tour-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) {
        TourSay("(no temporary folder: skipped)");
        return;
    }
    char const* old = std::getenv("XDG_CONFIG_HOME");
    std::string const saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", pattern.c_str(), 1);

    Util::ConfigFile prefs("org.cordel.tour", false);
    prefs.SetString("Last Project", "Demo Song.cordel");
    prefs.SetInt("Sample Rate", 48000);
    prefs.SetFloat("Master Gain", 0.75f);
    prefs.Synchronize();
    TourSay(String("Wrote three values to %1/org.cordel.tour.xml").Arg(pattern.c_str()));

    Util::ConfigFile again("org.cordel.tour", false);
    TourSay(String("Read back: Last Project = \"%1\", Sample Rate = %2, Master Gain = %3")
                .Arg(again.GetString("Last Project", "?"))
                .Arg(again.GetInt("Sample Rate", 0))
                .Arg(again.GetFloat("Master Gain", 0), 2));
    TourSay(String("A key never written gives the caller's default: %1").Arg(again.GetInt("Buffer Size", 512)));

    old ? ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
    std::error_code ignored;
    std::filesystem::remove_all(pattern, ignored);
}

} // namespace

CORDEL_TOUR_STOP(110, "Platform services: a preference written and read back", platformTour);

} // namespace CordelTool
