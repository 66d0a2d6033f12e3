#pragma once
// FileStream: the data-stream layout written to and read from a file.
//
// Every operation is one block read or write on the file; the C library's buffer is the only
// buffering, so the file position always says where the next value goes. Unlike the memory
// stream, every failure throws Util::Exception::DataStreamIO, whose message carries the text of
// the file failure that caused it ("Can't extract int: ..."), and a stored string length above
// 200000 is an error ("Improbable string length %1") rather than an empty result.
//
// In messages, an inserted value shows as its number and a failed extraction names the type it
// wanted ("Can't extract unsigned short: ...").

#include <Cordel/Util/DataStream.h>
#include <Cordel/Util/File.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/Types.h>

#include <vector>

namespace Cordel::Util {

class CORDEL_API FileStream : public DataStream, noncopyable {
public:
    // Opens the file with File's mode bits; "Can't open file: %1" when that fails.
    FileStream(FilePath const& path, unsigned int mode);
    ~FileStream() override;

    using DataStream::operator<<;
    using DataStream::operator>>;
    using DataStream::ReadPrimitive;

    EndianType GetEndianType() const override { return endianType; }
    void SetEndianType(EndianType type) override { endianType = type; }
    bool IsWriteStringLength() const override { return writeStringLength; }
    void SetWriteStringLength(bool write) override { writeStringLength = write; }

    DataStream& operator>>(bool& v) override;
    DataStream& operator>>(char& v) override;
    DataStream& operator>>(signed char& v) override;
    DataStream& operator>>(unsigned char& v) override;
    DataStream& operator>>(short& v) override;
    DataStream& operator>>(unsigned short& v) override;
    DataStream& operator>>(int& v) override;
    DataStream& operator>>(unsigned int& v) override;
    DataStream& operator>>(long& v) override;
    DataStream& operator>>(unsigned long& v) override;
    DataStream& operator>>(float& v) override;
    DataStream& operator>>(double& v) override;
    DataStream& operator>>(String& v) override;
    // Reads exactly v.size() bytes.
    DataStream& operator>>(std::vector<unsigned char>& v) override;

    bool ReadPrimitive(Tag<bool>) override;
    char ReadPrimitive(Tag<char>) override;
    signed char ReadPrimitive(Tag<signed char>) override;
    unsigned char ReadPrimitive(Tag<unsigned char>) override;
    short ReadPrimitive(Tag<short>) override;
    unsigned short ReadPrimitive(Tag<unsigned short>) override;
    int ReadPrimitive(Tag<int>) override;
    unsigned int ReadPrimitive(Tag<unsigned int>) override;
    long ReadPrimitive(Tag<long>) override;
    unsigned long ReadPrimitive(Tag<unsigned long>) override;
    float ReadPrimitive(Tag<float>) override;
    double ReadPrimitive(Tag<double>) override;

    // Reads exactly count bytes or throws; a short read consumes what was there.
    void Read(unsigned int count, unsigned char* dest) override;

    DataStream& operator<<(bool v) override;
    DataStream& operator<<(char v) override;
    DataStream& operator<<(signed char v) override;
    DataStream& operator<<(unsigned char v) override;
    DataStream& operator<<(short v) override;
    DataStream& operator<<(unsigned short v) override;
    DataStream& operator<<(int v) override;
    DataStream& operator<<(unsigned int v) override;
    DataStream& operator<<(long v) override;
    DataStream& operator<<(unsigned long v) override;
    DataStream& operator<<(float v) override;
    DataStream& operator<<(double v) override;
    DataStream& operator<<(String const& v) override;
    DataStream& operator<<(std::vector<unsigned char> const& v) override;

    void Write(unsigned int count, unsigned char const* src) override;

    // The file's end-of-file state: true once a read has run into the end.
    bool AtEnd() const override;
    // 0 when the file is closed.
    unsigned int GetPosition() const override;
    unsigned int GetSize() const override;
    // 0 when the position lies past the end.
    unsigned int GetRemaining() const override;
    void SetPosition(unsigned int position) override;
    void Skip(int n) override;

    void Close();

private:
    template <typename Wire, typename T>
    void insert(T value);
    template <typename Wire, typename T>
    void extract(T& value, char const* typeName);

    File file;
    EndianType endianType = EndianNative;
    bool writeStringLength = true;
};

} // namespace Cordel::Util
