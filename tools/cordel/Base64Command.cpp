// cordel base64: Base64 encoding and decoding of a file or of standard input.

#include "Command.h"
#include "Input.h"

#include <Cordel/Util/Base64.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Cordel;

namespace CordelTool {

namespace {

// A multiple of 3, so that every block but the last encodes without padding.
constexpr std::size_t encodeBlock = 3 * 16384;
constexpr std::size_t decodeBlock = 65536;

void writeOut(void const* data, std::size_t size)
{
    if (size && std::fwrite(data, 1, size, stdout) != size)
        throw std::runtime_error("can't write to standard output");
}

void encode(Input& input)
{
    std::vector<unsigned char> block(encodeBlock);
    for (;;) {
        block.resize(encodeBlock);
        block.resize(input.Read(block.data(), block.size()));
        if (block.empty())
            break;
        String const text = Util::Base64Encode(block);
        writeOut(text.c_str(), text.Length());
    }
    writeOut("\n", 1);
}

bool inAlphabet(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// Decodes whole groups of 4 alphabet characters as they arrive; the characters of an unfinished
// group wait for the next block, since a group may straddle two blocks.
void decode(Input& input)
{
    std::vector<unsigned char> block(decodeBlock);
    std::string pending;
    std::vector<unsigned char> bytes;
    for (;;) {
        std::size_t const got = input.Read(block.data(), block.size());
        for (std::size_t i = 0; i < got; ++i)
            if (inAlphabet(block[i]))
                pending += static_cast<char>(block[i]);
        std::size_t const whole = got ? pending.size() / 4 * 4 : pending.size();
        Util::Base64Decode(String(std::string_view(pending).substr(0, whole)), bytes);
        writeOut(bytes.data(), bytes.size());
        pending.erase(0, whole);
        if (got == 0)
            break;
    }
}

int base64(Args const& args)
{
    Util::CommandLine line("cordel base64", "Encodes a file (or standard input) as Base64 text, or decodes Base64 text.");
    Util::TextArg mode("MODE", 0, "encode|decode", "encode: bytes to text; decode: text to bytes");
    Util::PathArg file("FILE", 0, "FILE", "the input; standard input when absent or \"-\"");
    line.AddPositional(mode);
    line.AddPositional(file, false);
    line.SetEpilogue("Encoding writes one line without breaks. Decoding skips every character outside the\n"
                     "Base64 alphabet, padding and line breaks included.\n");
    if (ParseOrHelp(line, args))
        return 0;
    if (mode.Get() != "encode" && mode.Get() != "decode")
        throw Util::CommandLine::Error(String("MODE must be encode or decode, not '%1'").Arg(mode.Get()));

    Input input(file.Get());
    if (mode.Get() == "encode")
        encode(input);
    else
        decode(input);
    std::fflush(stdout);
    return 0;
}

} // namespace

CORDEL_COMMAND("base64", "Base64 encoding and decoding", base64);

} // namespace CordelTool
