#pragma once
// ByteStream: a DataStream over a growable byte vector in memory.
//
// Writing at a position inside the data overwrites what is there; writing past the end first
// extends the data with zero bytes. Reading a scalar past the end throws DataStreamIO and leaves
// the position and the target as they were. Strings, byte vectors and raw reads that would run
// past the end are lenient: they read nothing and report nothing (a string comes back empty, a
// vector emptied), so callers that care compare GetRemaining() first. A stored string length
// above 200000 is taken for damage and gives an empty string too.
//
// The typed members are defined here, in the header, so that a caller serialising value by
// value through a ByteStream (not through a DataStream&) pays for a bounds check and a copy, not
// for a call.

#include <Cordel/Util/DataStream.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Cordel::Util {

class CORDEL_API ByteStream final : public DataStream {
public:
    // Longest string extraction accepts; a longer stored length yields the empty string.
    static constexpr unsigned int MaxStringLength = 200000;

    // An empty stream with room for capacity bytes.
    explicit ByteStream(unsigned int capacity = 0);
    // A stream holding a copy of the bytes, positioned at the start.
    ByteStream(unsigned int size, unsigned char const* bytes);
    explicit ByteStream(std::vector<unsigned char> const& bytes);
    ~ByteStream() override;

    using DataStream::operator<<;
    using DataStream::ReadPrimitive;

    EndianType GetEndianType() const override { return endianType; }
    void SetEndianType(EndianType type) override { endianType = type; }
    bool IsWriteStringLength() const override { return writeStringLength; }
    void SetWriteStringLength(bool write) override { writeStringLength = write; }

    ByteStream& operator>>(bool& v) override { v = take<std::uint8_t>() != 0; return *this; }
    ByteStream& operator>>(char& v) override { v = static_cast<char>(take<std::uint8_t>()); return *this; }
    ByteStream& operator>>(signed char& v) override { v = static_cast<signed char>(take<std::uint8_t>()); return *this; }
    ByteStream& operator>>(unsigned char& v) override { v = take<std::uint8_t>(); return *this; }
    ByteStream& operator>>(short& v) override { v = static_cast<short>(take<std::uint16_t>()); return *this; }
    ByteStream& operator>>(unsigned short& v) override { v = take<std::uint16_t>(); return *this; }
    ByteStream& operator>>(int& v) override { v = static_cast<int>(take<std::uint32_t>()); return *this; }
    ByteStream& operator>>(unsigned int& v) override { v = take<std::uint32_t>(); return *this; }
    ByteStream& operator>>(long& v) override { v = static_cast<std::int32_t>(take<std::uint32_t>()); return *this; }
    ByteStream& operator>>(unsigned long& v) override { v = take<std::uint32_t>(); return *this; }
    ByteStream& operator>>(float& v) override { v = std::bit_cast<float>(take<std::uint32_t>()); return *this; }
    ByteStream& operator>>(double& v) override { v = std::bit_cast<double>(take<std::uint64_t>()); return *this; }
    ByteStream& operator>>(String& v) override;
    ByteStream& operator>>(std::vector<unsigned char>& v) override;

    bool ReadPrimitive(Tag<bool>) override { return take<std::uint8_t>() != 0; }
    char ReadPrimitive(Tag<char>) override { return static_cast<char>(take<std::uint8_t>()); }
    signed char ReadPrimitive(Tag<signed char>) override { return static_cast<signed char>(take<std::uint8_t>()); }
    unsigned char ReadPrimitive(Tag<unsigned char>) override { return take<std::uint8_t>(); }
    short ReadPrimitive(Tag<short>) override { return static_cast<short>(take<std::uint16_t>()); }
    unsigned short ReadPrimitive(Tag<unsigned short>) override { return take<std::uint16_t>(); }
    int ReadPrimitive(Tag<int>) override { return static_cast<int>(take<std::uint32_t>()); }
    unsigned int ReadPrimitive(Tag<unsigned int>) override { return take<std::uint32_t>(); }
    long ReadPrimitive(Tag<long>) override { return static_cast<std::int32_t>(take<std::uint32_t>()); }
    unsigned long ReadPrimitive(Tag<unsigned long>) override { return take<std::uint32_t>(); }
    float ReadPrimitive(Tag<float>) override { return std::bit_cast<float>(take<std::uint32_t>()); }
    double ReadPrimitive(Tag<double>) override { return std::bit_cast<double>(take<std::uint64_t>()); }

    void Read(unsigned int count, unsigned char* dest) override;

    ByteStream& operator<<(bool v) override { put<std::uint8_t>(v ? 1 : 0); return *this; }
    ByteStream& operator<<(char v) override { put(static_cast<std::uint8_t>(v)); return *this; }
    ByteStream& operator<<(signed char v) override { put(static_cast<std::uint8_t>(v)); return *this; }
    ByteStream& operator<<(unsigned char v) override { put<std::uint8_t>(v); return *this; }
    ByteStream& operator<<(short v) override { put(static_cast<std::uint16_t>(v)); return *this; }
    ByteStream& operator<<(unsigned short v) override { put<std::uint16_t>(v); return *this; }
    ByteStream& operator<<(int v) override { put(static_cast<std::uint32_t>(v)); return *this; }
    ByteStream& operator<<(unsigned int v) override { put<std::uint32_t>(v); return *this; }
    // Four bytes whatever the platform's long: the layout must not depend on the writer's system.
    ByteStream& operator<<(long v) override { put(static_cast<std::uint32_t>(v)); return *this; }
    ByteStream& operator<<(unsigned long v) override { put(static_cast<std::uint32_t>(v)); return *this; }
    ByteStream& operator<<(float v) override { put(std::bit_cast<std::uint32_t>(v)); return *this; }
    ByteStream& operator<<(double v) override { put(std::bit_cast<std::uint64_t>(v)); return *this; }
    ByteStream& operator<<(String const& v) override;
    ByteStream& operator<<(std::vector<unsigned char> const& v) override;

    void Write(unsigned int count, unsigned char const* src) override;

    bool AtEnd() const override { return position >= data.size(); }
    unsigned int GetPosition() const override { return position; }
    unsigned int GetSize() const override { return static_cast<unsigned int>(data.size()); }
    // Zero when the position was set past the end.
    unsigned int GetRemaining() const override { return remaining(); }
    // Not checked: a position past the end makes reads fail and the next write extend the data.
    void SetPosition(unsigned int p) override { position = p; }
    void Skip(int n) override { SetPosition(GetPosition() + static_cast<unsigned int>(n)); }

    // The stream's bytes, all of them, whatever the position.
    std::vector<unsigned char> const& GetData() const { return data; }

private:
    bool isBigEndian() const { return endianType != EndianNative && endianType != EndianLittle; }
    unsigned int remaining() const
    {
        return position < data.size() ? static_cast<unsigned int>(data.size()) - position : 0;
    }

    template <typename U>
    static U swapped(U v)
    {
        if constexpr (sizeof(U) == 2)
            return __builtin_bswap16(v);
        else if constexpr (sizeof(U) == 4)
            return __builtin_bswap32(v);
        else if constexpr (sizeof(U) == 8)
            return __builtin_bswap64(v);
        else
            return v;
    }

    // The next sizeof(U) bytes as an unsigned value in host order; throws when fewer remain.
    template <typename U>
    U take()
    {
        if (remaining() < sizeof(U))
            failExtract(sizeof(U));
        U v;
        std::memcpy(&v, data.data() + position, sizeof v);
        position += sizeof v;
        return isBigEndian() ? swapped(v) : v;
    }

    template <typename U>
    void put(U v)
    {
        if (isBigEndian())
            v = swapped(v);
        std::memcpy(claim(sizeof v), &v, sizeof v);
    }

    // Room for count bytes at the position, the data extended with zeros as needed; the position
    // moves past them.
    unsigned char* claim(unsigned int count)
    {
        std::uint64_t const end = std::uint64_t(position) + count;
        if (end > data.size()) {
            // Within the reserved room the vector only grows its size: no call, no check.
            if (end <= data.capacity())
                data.resize(static_cast<std::size_t>(end));
            else
                extendTo(end);
        }
        unsigned char* at = data.data() + position;
        position = static_cast<unsigned int>(end);
        return at;
    }

    void extendTo(std::uint64_t size);
    [[noreturn]] void failExtract(unsigned int width) const;

    std::vector<unsigned char> data;
    unsigned int position = 0;
    EndianType endianType = EndianNative;
    bool writeStringLength = true;
};

} // namespace Cordel::Util
