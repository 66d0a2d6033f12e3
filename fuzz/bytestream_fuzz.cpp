// A ByteStream read by a sequence of typed extractions that the input itself chooses: the first
// bytes are the program (one operation per byte), the rest is the stream.

#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/DataStreamIOException.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

using Cordel::Util::ByteStream;
using Cordel::Util::DataStream;

namespace {

void step(ByteStream& s, std::uint8_t op)
{
    switch (op % 20) {
    case 0: { bool v; s >> v; break; }
    case 1: { char v; s >> v; break; }
    case 2: { short v; s >> v; break; }
    case 3: { unsigned short v; s >> v; break; }
    case 4: { int v; s >> v; break; }
    case 5: { unsigned long v; s >> v; break; }
    case 6: { float v; s >> v; break; }
    case 7: { double v; s >> v; break; }
    case 8: { Cordel::String v; s >> v; if (v.Length() > ByteStream::MaxStringLength) std::abort(); break; }
    case 9: { std::vector<unsigned char> v(op / 20 * 3); s >> v; break; }
    case 10: { unsigned char buffer[16]; s.Read(op / 20 % 16, buffer); break; }
    // Positions are the caller's to keep sane (a skip before the start wraps around and the next
    // write would fill 4 GiB with zeros, as asked), so skips stop at the start.
    case 11: s.Skip(std::max(static_cast<int>(op / 20) - 6, -static_cast<int>(s.GetPosition()))); break;
    case 12: s.SetPosition(s.GetPosition() / 2); break;
    case 13: s.SetEndianType(static_cast<DataStream::EndianType>(op / 20)); break;
    case 14: s.ReadPrimitive<long>(); break;
    case 15: s.ReadPrimitive<signed char>(); break;
    case 16: s << static_cast<short>(op); break;
    case 17: s << Cordel::String("xy"); break;
    case 18: s.SetWriteStringLength(op & 32); break;
    default: s.ReadPrimitive<double>(); break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::size_t const programLength = data[0] % 32;
    if (size < 1 + programLength)
        return 0;
    std::uint8_t const* program = data + 1;
    ByteStream s(static_cast<unsigned int>(size - 1 - programLength), program + programLength);
    for (std::size_t i = 0; i < programLength; ++i) {
        unsigned int const before = s.GetPosition();
        try {
            step(s, program[i]);
        } catch (Cordel::Util::Exception::DataStreamIO const&) {
            // A failed extraction leaves the stream where it was.
            if (s.GetPosition() != before)
                std::abort();
        }
        // Each operation moves at most a few bytes forward: more growth is a runaway position.
        if (s.GetSize() > size + 1024)
            std::abort();
    }
    return 0;
}
