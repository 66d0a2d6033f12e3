// cordel tour: runs every stop of the tour in order.

#include "Command.h"
#include "Tour.h"

#include <algorithm>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

std::vector<TourStop>& stops()
{
    static std::vector<TourStop> all;
    return all;
}

int tour(Args const& args)
{
    Util::CommandLine line("cordel tour", "A guided tour of the Cordel library: each stop puts one capability to work.");
    if (ParseOrHelp(line, args))
        return 0;
    auto all = stops();
    std::sort(all.begin(), all.end(), [](TourStop const& a, TourStop const& b) { return a.order < b.order; });
    for (std::size_t i = 0; i < all.size(); ++i) {
        Print(String("%1. %2\n").Arg(static_cast<unsigned int>(i + 1)).Arg(all[i].title));
        all[i].run();
        Print("\n");
    }
    Print(String("The tour is over (%1 %2).\n").Arg(static_cast<unsigned int>(all.size())).Arg(all.size() == 1 ? "stop" : "stops"));
    return 0;
}

} // namespace

TourRegistration::TourRegistration(TourStop const& stop)
{
    stops().push_back(stop);
}

void TourSay(String const& line)
{
    Print(String("   ") + line + "\n");
}

CORDEL_COMMAND("tour", "a guided tour of the library", tour);

} // namespace CordelTool
