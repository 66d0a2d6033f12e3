// Runs a sequence of FileStream extractions over an arbitrary file. The input is a script and a
// file: byte 0 picks the byte order, byte 1 the length of the script that follows, and the rest
// is written to disk and read back through the stream. Every failure must be a DataStreamIO;
// anything else escaping, a crash or an unbounded allocation is a finding.

#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileStream.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Cordel;

namespace {

std::string const& scratchPath()
{
    static std::string const path = [] {
        std::string pattern = "/tmp/cordel-filestream-fuzz-XXXXXX";
        int const fd = ::mkstemp(pattern.data());
        if (fd < 0)
            std::abort();
        ::close(fd);
        return pattern;
    }();
    return path;
}

void writeScratch(std::uint8_t const* data, std::size_t size)
{
    std::FILE* f = std::fopen(scratchPath().c_str(), "wb");
    if (!f || std::fwrite(data, 1, size, f) != size || std::fclose(f) != 0)
        std::abort();
}

template <typename T>
void extract(Util::DataStream& s)
{
    T value{};
    s >> value;
}

void step(Util::FileStream& s, std::uint8_t op, std::uint8_t argument)
{
    switch (op % 20) {
    case 0: extract<bool>(s); break;
    case 1: extract<char>(s); break;
    case 2: extract<signed char>(s); break;
    case 3: extract<unsigned char>(s); break;
    case 4: extract<short>(s); break;
    case 5: extract<unsigned short>(s); break;
    case 6: extract<int>(s); break;
    case 7: extract<unsigned int>(s); break;
    case 8: extract<long>(s); break;
    case 9: extract<unsigned long>(s); break;
    case 10: extract<float>(s); break;
    case 11: extract<double>(s); break;
    case 12: case 13: extract<String>(s); break;
    case 14: {
        std::vector<unsigned char> bytes(argument);
        s >> bytes;
        break;
    }
    case 15: {
        unsigned char bytes[256];
        s.Read(argument, bytes);
        break;
    }
    case 16: s.SetPosition(argument); break;
    case 17: s.Skip(static_cast<std::int8_t>(argument)); break;
    case 18: s.ReadPrimitive<double>(); break;
    default: (void)(s.GetRemaining() + s.GetSize() + s.AtEnd()); break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2)
        return 0;
    auto const order = static_cast<Util::DataStream::EndianType>(data[0] % 3);
    std::size_t const scriptLength = std::min<std::size_t>(data[1], size - 2);
    std::uint8_t const* script = data + 2;
    writeScratch(script + scriptLength, size - 2 - scriptLength);

    Util::FileStream stream(FilePath(String(scratchPath().c_str())), Util::File::ModeRead);
    stream.SetEndianType(order);
    for (std::size_t i = 0; i < scriptLength; i += 2) {
        try {
            step(stream, script[i], i + 1 < scriptLength ? script[i + 1] : 0);
        } catch (Util::Exception::DataStreamIO const&) {
        }
    }
    return 0;
}
