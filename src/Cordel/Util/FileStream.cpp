#include <Cordel/Util/FileStream.h>

#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace Cordel::Util {

namespace {

using Cordel::Exception::Site;

// Typed insertions and extractions report the header that declares them, at fixed lines, so that
// their failures read the same whichever type was involved.
constexpr Site typedExtractionSite{"../../src/Cordel/Util/FileStream.h", 38};
constexpr Site typedInsertionSite{"../../src/Cordel/Util/FileStream.h", 70};

// Anything longer is taken for a damaged or hostile file rather than a string.
constexpr unsigned int maximumStringLength = 200000;

[[noreturn]] void fail(String const& message, Site const& site)
{
    Cordel::Exception::Throw(Exception::DataStreamIO(message), site, 0);
}

bool swapsBytes(DataStream::EndianType type)
{
    return type != DataStream::EndianNative && type != DataStream::EndianLittle;
}

// How an inserted value shows in a message: integers in decimal, floating point as String::Number.
template <typename T>
String describe(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return String::Number(value);
    else if constexpr (std::is_signed_v<T>)
        return String::Number(static_cast<long long>(value));
    else
        return String::Number(static_cast<unsigned long long>(value));
}

} // namespace

template <typename Wire, typename T>
void FileStream::insert(T value)
{
    Wire const wire = static_cast<Wire>(value);
    unsigned char bytes[sizeof(Wire)];
    std::memcpy(bytes, &wire, sizeof bytes);
    if (swapsBytes(endianType))
        std::reverse(bytes, bytes + sizeof bytes);
    try {
        file.WriteBlock(reinterpret_cast<char const*>(bytes), sizeof bytes);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't insert %1: %2").Arg(describe(value)).Arg(e.ToString()), typedInsertionSite);
    }
}

template <typename Wire, typename T>
void FileStream::extract(T& value, char const* typeName)
{
    unsigned char bytes[sizeof(Wire)];
    try {
        file.ReadBlock(reinterpret_cast<char*>(bytes), sizeof bytes);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't extract %1: %2").Arg(typeName).Arg(e.ToString()), typedExtractionSite);
    }
    if (swapsBytes(endianType))
        std::reverse(bytes, bytes + sizeof bytes);
    Wire wire;
    std::memcpy(&wire, bytes, sizeof bytes);
    value = static_cast<T>(wire);
}

FileStream::FileStream(FilePath const& path, unsigned int mode) : file(path)
{
    try {
        file.Open(mode);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't open file: %1").Arg(e.ToString()), CORDEL_HERE);
    }
}

FileStream::~FileStream() = default;

// long and unsigned long are 4 bytes in the layout whatever their width here.
DataStream& FileStream::operator>>(bool& v) { extract<std::uint8_t>(v, "bool"); return *this; }
DataStream& FileStream::operator>>(char& v) { extract<char>(v, "char"); return *this; }
DataStream& FileStream::operator>>(signed char& v) { extract<signed char>(v, "signed char"); return *this; }
DataStream& FileStream::operator>>(unsigned char& v) { extract<unsigned char>(v, "unsigned char"); return *this; }
DataStream& FileStream::operator>>(short& v) { extract<std::int16_t>(v, "short"); return *this; }
DataStream& FileStream::operator>>(unsigned short& v) { extract<std::uint16_t>(v, "unsigned short"); return *this; }
DataStream& FileStream::operator>>(int& v) { extract<std::int32_t>(v, "int"); return *this; }
DataStream& FileStream::operator>>(unsigned int& v) { extract<std::uint32_t>(v, "unsigned int"); return *this; }
DataStream& FileStream::operator>>(long& v) { extract<std::int32_t>(v, "long"); return *this; }
DataStream& FileStream::operator>>(unsigned long& v) { extract<std::uint32_t>(v, "unsigned long"); return *this; }
DataStream& FileStream::operator>>(float& v) { extract<float>(v, "float"); return *this; }
DataStream& FileStream::operator>>(double& v) { extract<double>(v, "double"); return *this; }

DataStream& FileStream::operator>>(String& v)
{
    unsigned int length = 0;
    *this >> length;
    if (length > maximumStringLength)
        fail(String("Improbable string length %1").Arg(length), CORDEL_HERE);
    // Most strings are short names: read those on the stack and allocate once, for the String.
    char small[256];
    std::string large;
    char* const bytes = length <= sizeof small ? small : (large.resize(length), large.data());
    try {
        file.ReadBlock(bytes, length);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't extract string: %2").Arg(e.ToString()), CORDEL_HERE);
    }
    v.Assign(std::string_view(bytes, length));
    return *this;
}

DataStream& FileStream::operator>>(std::vector<unsigned char>& v)
{
    try {
        file.ReadBlock(v);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't extract %1 bytes: %2").Arg(static_cast<unsigned long long>(v.size())).Arg(e.ToString()),
             CORDEL_HERE);
    }
    return *this;
}

template <typename T>
static T readOne(DataStream& stream)
{
    T value{};
    stream >> value;
    return value;
}

bool FileStream::ReadPrimitive(Tag<bool>) { return readOne<bool>(*this); }
char FileStream::ReadPrimitive(Tag<char>) { return readOne<char>(*this); }
signed char FileStream::ReadPrimitive(Tag<signed char>) { return readOne<signed char>(*this); }
unsigned char FileStream::ReadPrimitive(Tag<unsigned char>) { return readOne<unsigned char>(*this); }
short FileStream::ReadPrimitive(Tag<short>) { return readOne<short>(*this); }
unsigned short FileStream::ReadPrimitive(Tag<unsigned short>) { return readOne<unsigned short>(*this); }
int FileStream::ReadPrimitive(Tag<int>) { return readOne<int>(*this); }
unsigned int FileStream::ReadPrimitive(Tag<unsigned int>) { return readOne<unsigned int>(*this); }
long FileStream::ReadPrimitive(Tag<long>) { return readOne<long>(*this); }
unsigned long FileStream::ReadPrimitive(Tag<unsigned long>) { return readOne<unsigned long>(*this); }
float FileStream::ReadPrimitive(Tag<float>) { return readOne<float>(*this); }
double FileStream::ReadPrimitive(Tag<double>) { return readOne<double>(*this); }

void FileStream::Read(unsigned int count, unsigned char* dest)
{
    if (count == 0)
        return;
    try {
        file.ReadBlock(reinterpret_cast<char*>(dest), count);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't read %1 bytes: %2").Arg(count).Arg(e.ToString()), CORDEL_HERE);
    }
}

DataStream& FileStream::operator<<(bool v) { insert<std::uint8_t>(v); return *this; }
DataStream& FileStream::operator<<(char v) { insert<char>(v); return *this; }
DataStream& FileStream::operator<<(signed char v) { insert<signed char>(v); return *this; }
DataStream& FileStream::operator<<(unsigned char v) { insert<unsigned char>(v); return *this; }
DataStream& FileStream::operator<<(short v) { insert<std::int16_t>(v); return *this; }
DataStream& FileStream::operator<<(unsigned short v) { insert<std::uint16_t>(v); return *this; }
DataStream& FileStream::operator<<(int v) { insert<std::int32_t>(v); return *this; }
DataStream& FileStream::operator<<(unsigned int v) { insert<std::uint32_t>(v); return *this; }
DataStream& FileStream::operator<<(long v) { insert<std::int32_t>(v); return *this; }
DataStream& FileStream::operator<<(unsigned long v) { insert<std::uint32_t>(v); return *this; }
DataStream& FileStream::operator<<(float v) { insert<float>(v); return *this; }
DataStream& FileStream::operator<<(double v) { insert<double>(v); return *this; }

DataStream& FileStream::operator<<(String const& v)
{
    if (writeStringLength)
        *this << v.Length();
    try {
        file.WriteBlock(v.c_str(), v.Length());
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't insert %1 bytes: %2").Arg(v.Length()).Arg(e.ToString()), CORDEL_HERE);
    }
    return *this;
}

DataStream& FileStream::operator<<(std::vector<unsigned char> const& v)
{
    try {
        file.WriteBlock(reinterpret_cast<char const*>(v.data()), static_cast<unsigned int>(v.size()));
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't insert %1 bytes: %2").Arg(static_cast<unsigned long long>(v.size())).Arg(e.ToString()),
             CORDEL_HERE);
    }
    return *this;
}

void FileStream::Write(unsigned int count, unsigned char const* src)
{
    if (count == 0)
        return;
    try {
        file.WriteBlock(reinterpret_cast<char const*>(src), count);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't write %1 bytes: %2").Arg(count).Arg(e.ToString()), CORDEL_HERE);
    }
}

bool FileStream::AtEnd() const
{
    return file.AtEnd();
}

unsigned int FileStream::GetPosition() const
{
    return file.At().GetOr(0);
}

unsigned int FileStream::GetSize() const
{
    return file.Size();
}

unsigned int FileStream::GetRemaining() const
{
    unsigned int const size = GetSize();
    unsigned int const position = GetPosition();
    return position < size ? size - position : 0;
}

void FileStream::SetPosition(unsigned int position)
{
    try {
        file.At(position);
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't seek to %1: %2").Arg(position).Arg(e.ToString()), CORDEL_HERE);
    }
}

void FileStream::Skip(int n)
{
    SetPosition(GetPosition() + static_cast<unsigned int>(n));
}

void FileStream::Close()
{
    try {
        file.Close();
    } catch (Cordel::Exception::Base const& e) {
        fail(String("Can't close file: %1").Arg(e.ToString()), CORDEL_HERE);
    }
}

} // namespace Cordel::Util
