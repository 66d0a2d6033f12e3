// Tour stop: the string layer.

#include "Tour.h"

#include <Cordel/common/String.h>

#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

void stringTour()
{
    String const message = String("Can't extract %1 bytes at position %2, total size %3").Arg(4).Arg(10).Arg(12);
    TourSay(String("A message filled in with Arg: \"%1\"").Arg(message));
    TourSay(String("Placeholders go lowest first: \"%2 %1\" filled with a, then b -> \"") + String("%2 %1").Arg("a").Arg("b") + "\"");
    TourSay(String("255 in bases 16, 2 and 36: %1, %2, %3").Arg(255, 16).Arg(255, 2).Arg(255, 36));
    TourSay(String("pi to 4 decimals: %1, in scientific notation: %2").Arg(3.14159265, 4).Arg(3.14159265, 3, 'e'));

    char const* samples[] = {" 42 ", "-2147483648", "2147483648", "0x1F", "４２"};
    for (char const* sample : samples) {
        bool ok = false;
        int const value = String(sample).ToInt(&ok);
        TourSay(String("ToInt(\"%1\") -> %2").Arg(sample).Arg(ok ? String::Number(value) : String("refused")));
    }
    bool ok = false;
    double const hex = String("1F").ToInt(&ok, 16);
    TourSay(String("ToInt(\"1F\", base 16) -> %1").Arg(hex, 0));
    double const d = String("1.5e3").ToDouble(&ok);
    TourSay(String("ToDouble(\"1.5e3\") -> %1 (%2)").Arg(d, 1).Arg(ok ? "ok" : "refused"));

    std::vector<String> parts;
    String("left,centre,,right").Split(',', parts);
    TourSay(String("\"left,centre,,right\" split at ',' gives %1 pieces, joined with \" | \": %2")
                .Arg(static_cast<unsigned int>(parts.size()))
                .Arg(String::Join(" | ", parts)));
    TourSay(String("SimplifyWhiteSpace(\"  a \\t b  \") -> \"%1\"").Arg(String("  a \t b  ").SimplifyWhiteSpace()));
}

} // namespace

CORDEL_TOUR_STOP(10, "Strings: messages with placeholders, numbers to text and back", stringTour);

} // namespace CordelTool
