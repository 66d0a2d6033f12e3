// cordel crc16: the CRC-16 of a file or of standard input.

#include "Command.h"
#include "Input.h"

#include <Cordel/Util/CRC16.h>

#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

int crc16(Args const& args)
{
    Util::CommandLine line("cordel crc16", "Prints the CRC-16 (reflected polynomial 0x8005, initial value 0) of a file or of standard input.");
    Util::PathArg file("FILE", 0, "FILE", "the input; standard input when absent or \"-\"");
    line.AddPositional(file, false);
    line.SetEpilogue("The value is printed as four hexadecimal digits and in decimal: \"BB3D 47933\" for \"123456789\".\n");
    if (ParseOrHelp(line, args))
        return 0;

    Input input(file.Get());
    std::vector<unsigned char> block(1 << 16);
    unsigned short crc = 0;
    while (std::size_t const got = input.Read(block.data(), block.size()))
        crc = Util::CRC16(crc, reinterpret_cast<char const*>(block.data()), static_cast<unsigned int>(got));
    String hex = String::Number(static_cast<unsigned int>(crc), 16);
    while (hex.Length() < 4)
        hex.Insert(0, "0");
    Print(String("%1 %2\n").Arg(hex).Arg(static_cast<unsigned int>(crc)));
    return 0;
}

} // namespace

CORDEL_COMMAND("crc16", "the CRC-16 of a file", crc16);

} // namespace CordelTool
