#include <Cordel/Util/ByteStream.h>

#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/detail/Throw.h>

#include <limits>
#include <stdexcept>

namespace Cordel::Util {

namespace {

// Callers match on this site, so it stays put when the sources move.
constexpr Cordel::Exception::Site extractSite{"../../src/Cordel/Util/ByteStream.h", 133};

} // namespace

ByteStream::ByteStream(unsigned int capacity) { data.reserve(capacity); }

ByteStream::ByteStream(unsigned int size, unsigned char const* bytes) : data(bytes, bytes + size) {}

ByteStream::ByteStream(std::vector<unsigned char> const& bytes) : data(bytes) {}

ByteStream::~ByteStream() = default;

void ByteStream::extendTo(std::uint64_t size)
{
    if (size > std::numeric_limits<unsigned int>::max())
        throw std::length_error("ByteStream: a stream holds at most 4 GiB - 1 bytes");
    data.resize(static_cast<std::size_t>(size));
}

void ByteStream::failExtract(unsigned int width) const
{
    Cordel::Exception::Throw(
        Exception::DataStreamIO(
            String("Can't extract %1 bytes at position %2, total size %3").Arg(width).Arg(position).Arg(GetSize())),
        extractSite, 0);
}

ByteStream& ByteStream::operator>>(String& v)
{
    unsigned int length = 0;
    try {
        length = take<std::uint32_t>();
    } catch (...) {
        v.Assign({});
        throw;
    }
    if (length > MaxStringLength || length > remaining()) {
        v.Assign({});
        return *this;
    }
    v.Assign(std::string_view(reinterpret_cast<char const*>(data.data() + position), length));
    position += length;
    return *this;
}

ByteStream& ByteStream::operator>>(std::vector<unsigned char>& v)
{
    if (v.empty())
        return *this;
    if (v.size() > remaining()) {
        v.clear();
        return *this;
    }
    std::memcpy(v.data(), data.data() + position, v.size());
    position += static_cast<unsigned int>(v.size());
    return *this;
}

void ByteStream::Read(unsigned int count, unsigned char* dest)
{
    if (count == 0 || count > remaining())
        return;
    std::memcpy(dest, data.data() + position, count);
    position += count;
}

ByteStream& ByteStream::operator<<(String const& v)
{
    if (writeStringLength)
        put<std::uint32_t>(v.Length());
    Write(v.Length(), reinterpret_cast<unsigned char const*>(v.c_str()));
    return *this;
}

ByteStream& ByteStream::operator<<(std::vector<unsigned char> const& v)
{
    if (v.size() > std::numeric_limits<unsigned int>::max())
        throw std::length_error("ByteStream: a stream holds at most 4 GiB - 1 bytes");
    Write(static_cast<unsigned int>(v.size()), v.data());
    return *this;
}

void ByteStream::Write(unsigned int count, unsigned char const* src)
{
    if (count == 0)
        return;
    std::memcpy(claim(count), src, count);
}

} // namespace Cordel::Util
