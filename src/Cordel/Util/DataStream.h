#pragma once
// DataStream: typed binary serialisation with a selectable byte order, independent of where the
// bytes live. Code that serialises takes a DataStream& and works with a memory stream
// (ByteStream) and a file stream alike.
//
// Layout of each value: bool and the char types 1 byte (any non-zero byte reads as true); short
// 2 bytes; int, long and their unsigned forms 4 bytes on every platform; float 4 and double 8
// bytes, IEEE 754; all in the stream's byte order. A String is its byte count as a 4-byte
// unsigned int and then its bytes; the count is written only while write-string-length is on but
// always read. A byte vector is its bytes alone: the reader sizes the vector first.
//
// Implementations override every virtual member. Since a derived class's own operator<<,
// operator>> and ReadPrimitive hide the convenience overloads below, it should bring them in with
// "using DataStream::operator<<;" (and likewise for operator>> and ReadPrimitive).

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <type_traits>
#include <vector>

namespace Cordel::Util {

class CORDEL_API DataStream {
public:
    // Byte order of multi-byte values. Any value other than native and little behaves as big.
    enum EndianType : int {
        EndianNative = 0,
        EndianLittle = 1,
        EndianBig = 2,
    };

    virtual EndianType GetEndianType() const = 0;
    virtual void SetEndianType(EndianType type) = 0;

    virtual bool IsWriteStringLength() const = 0;
    virtual void SetWriteStringLength(bool write) = 0;

    virtual DataStream& operator>>(bool& v) = 0;
    virtual DataStream& operator>>(char& v) = 0;
    virtual DataStream& operator>>(signed char& v) = 0;
    virtual DataStream& operator>>(unsigned char& v) = 0;
    virtual DataStream& operator>>(short& v) = 0;
    virtual DataStream& operator>>(unsigned short& v) = 0;
    virtual DataStream& operator>>(int& v) = 0;
    virtual DataStream& operator>>(unsigned int& v) = 0;
    virtual DataStream& operator>>(long& v) = 0;
    virtual DataStream& operator>>(unsigned long& v) = 0;
    virtual DataStream& operator>>(float& v) = 0;
    virtual DataStream& operator>>(double& v) = 0;
    virtual DataStream& operator>>(String& v) = 0;
    virtual DataStream& operator>>(std::vector<unsigned char>& v) = 0;

    // One value read and returned, chosen by the tag: ReadPrimitive<short>() reads a short.
    template <typename T>
    using Tag = std::type_identity<T>;
    virtual bool ReadPrimitive(Tag<bool>) = 0;
    virtual char ReadPrimitive(Tag<char>) = 0;
    virtual signed char ReadPrimitive(Tag<signed char>) = 0;
    virtual unsigned char ReadPrimitive(Tag<unsigned char>) = 0;
    virtual short ReadPrimitive(Tag<short>) = 0;
    virtual unsigned short ReadPrimitive(Tag<unsigned short>) = 0;
    virtual int ReadPrimitive(Tag<int>) = 0;
    virtual unsigned int ReadPrimitive(Tag<unsigned int>) = 0;
    virtual long ReadPrimitive(Tag<long>) = 0;
    virtual unsigned long ReadPrimitive(Tag<unsigned long>) = 0;
    virtual float ReadPrimitive(Tag<float>) = 0;
    virtual double ReadPrimitive(Tag<double>) = 0;

    // Copies count bytes to dest. When fewer remain nothing is read and the position stays.
    virtual void Read(unsigned int count, unsigned char* dest) = 0;

    virtual DataStream& operator<<(bool v) = 0;
    virtual DataStream& operator<<(char v) = 0;
    virtual DataStream& operator<<(signed char v) = 0;
    virtual DataStream& operator<<(unsigned char v) = 0;
    virtual DataStream& operator<<(short v) = 0;
    virtual DataStream& operator<<(unsigned short v) = 0;
    virtual DataStream& operator<<(int v) = 0;
    virtual DataStream& operator<<(unsigned int v) = 0;
    virtual DataStream& operator<<(long v) = 0;
    virtual DataStream& operator<<(unsigned long v) = 0;
    virtual DataStream& operator<<(float v) = 0;
    virtual DataStream& operator<<(double v) = 0;
    virtual DataStream& operator<<(String const& v) = 0;
    virtual DataStream& operator<<(std::vector<unsigned char> const& v) = 0;

    virtual void Write(unsigned int count, unsigned char const* src) = 0;

    virtual bool AtEnd() const = 0;
    virtual unsigned int GetPosition() const = 0;
    virtual unsigned int GetSize() const = 0;
    virtual unsigned int GetRemaining() const = 0;
    virtual void SetPosition(unsigned int position) = 0;
    // Moves by n bytes from the current position; negative moves back.
    virtual void Skip(int n) = 0;

    virtual ~DataStream();

    template <typename T>
    T ReadPrimitive()
    {
        return ReadPrimitive(Tag<T>{});
    }
    // A literal is text: without this it would convert to bool before it converted to String.
    DataStream& operator<<(char const* text) { return *this << String(text); }
};

} // namespace Cordel::Util
