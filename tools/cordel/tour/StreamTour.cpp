// Tour stop: binary streams, Base64 and the CRC-16 checksum.

#include "Tour.h"

#include <Cordel/Util/Base64.h>
#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/CRC16.h>
#include <Cordel/Util/DataStreamIOException.h>

#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

String hexBytes(std::vector<unsigned char> const& bytes)
{
    String text;
    for (unsigned char b : bytes) {
        if (!text.IsEmpty())
            text += ' ';
        if (b < 16)
            text += '0';
        text += String::Number(static_cast<unsigned int>(b), 16);
    }
    return text;
}

void streamTour()
{
    Util::ByteStream little;
    little << 0x01020304 << String("abc");
    TourSay(String("The int 0x01020304 and the string \"abc\", little-endian: %1").Arg(hexBytes(little.GetData())));

    Util::ByteStream big;
    big.SetEndianType(Util::DataStream::EndianBig);
    big << 0x01020304 << static_cast<short>(-2);
    TourSay(String("The same int and the short -2, big-endian: %1").Arg(hexBytes(big.GetData())));

    little.SetPosition(0);
    int number = 0;
    String text;
    little >> number >> text;
    TourSay(String("Read back: 0x%1 and \"%2\", position %3 of %4").Arg(number, 16).Arg(text).Arg(little.GetPosition()).Arg(little.GetSize()));

    try {
        little >> number;
    } catch (Util::Exception::DataStreamIO const& e) {
        TourSay(String("One int more is past the end: \"%1\"").Arg(e.GetMessage()));
    }

    std::vector<unsigned char> const bytes = {'C', 'o', 'r', 'd', 'e', 'l'};
    String const encoded = Util::Base64Encode(bytes);
    std::vector<unsigned char> decoded;
    Util::Base64Decode(String("Q29y\nZGVs=="), decoded);
    TourSay(String("\"Cordel\" in Base64: %1; \"Q29y\\nZGVs==\" decodes to %2 bytes (the line break is skipped)")
                .Arg(encoded)
                .Arg(static_cast<unsigned int>(decoded.size())));

    unsigned short const check = Util::CRC16("123456789", 9);
    unsigned short running = 0;
    for (char c : String("123456789").View())
        Util::CRC16(running, c);
    TourSay(String("CRC-16 of \"123456789\": %1 in one call, %2 byte by byte").Arg(check, 16).Arg(running, 16));
}

} // namespace

CORDEL_TOUR_STOP(20, "Streams: typed binary data in any byte order, Base64 and CRC-16", streamTour);

} // namespace CordelTool
