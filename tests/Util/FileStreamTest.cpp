#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileStream.h>

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <unistd.h>

using namespace Cordel;
using Util::DataStream;
using Util::File;
using Util::FileStream;
using Util::Exception::DataStreamIO;

namespace {

std::string readAll(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeAll(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// The failure that the action throws; fails the test when there is none.
DataStreamIO failureOf(std::function<void()> const& action)
{
    try {
        action();
    } catch (DataStreamIO const& e) {
        return e;
    }
    ADD_FAILURE() << "no DataStreamIO thrown";
    return DataStreamIO("");
}

// One value of every type the layout knows, with bytes that show any mix-up of order or width.
void writeEveryType(DataStream& s)
{
    s << true << false << 'A' << static_cast<signed char>(-2) << static_cast<unsigned char>(0xFE);
    s << static_cast<short>(-12345) << static_cast<unsigned short>(0xBEEF);
    s << -123456789 << 0xDEADBEEFu << -2000000000L << 4000000000UL;
    s << -1.5e-3f << 3.141592653589793;
    s << String("fl\xC3\xBCte") << String();
    s << std::vector<unsigned char>{1, 2, 3};
}

void readEveryType(DataStream& s)
{
    bool t = false, f = true;
    char c = 0;
    signed char sc = 0;
    unsigned char uc = 0;
    short sh = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned int ui = 0;
    long l = 0;
    unsigned long ul = 0;
    float fl = 0;
    double d = 0;
    String text, empty("x");
    std::vector<unsigned char> bytes(3);
    s >> t >> f >> c >> sc >> uc >> sh >> us >> i >> ui >> l >> ul >> fl >> d >> text >> empty >> bytes;
    EXPECT_TRUE(t);
    EXPECT_FALSE(f);
    EXPECT_EQ(c, 'A');
    EXPECT_EQ(sc, -2);
    EXPECT_EQ(uc, 0xFE);
    EXPECT_EQ(sh, -12345);
    EXPECT_EQ(us, 0xBEEF);
    EXPECT_EQ(i, -123456789);
    EXPECT_EQ(ui, 0xDEADBEEFu);
    EXPECT_EQ(l, -2000000000L);
    EXPECT_EQ(ul, 4000000000UL);
    EXPECT_EQ(fl, -1.5e-3f);
    EXPECT_EQ(d, 3.141592653589793);
    EXPECT_EQ(text, "fl\xC3\xBCte");
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(bytes, (std::vector<unsigned char>{1, 2, 3}));
}

} // namespace

class FileStreamTest : public CordelTest::TempFolder {
protected:
    FilePath pathOf(std::string const& name) const { return FilePath(String(PathOf(name))); }
};

TEST_F(FileStreamTest, EveryTypeRoundTripsInEveryByteOrderAsInMemory)
{
    for (int order : {0, 1, 2, 7}) {
        auto const type = static_cast<DataStream::EndianType>(order);
        {
            FileStream out(pathOf("all"), File::ModeWrite);
            out.SetEndianType(type);
            writeEveryType(out);
        }
        Util::ByteStream memory;
        memory.SetEndianType(type);
        writeEveryType(memory);
        std::vector<unsigned char> const& inMemory = memory.GetData();
        EXPECT_EQ(readAll(PathOf("all")), std::string(inMemory.begin(), inMemory.end())) << "order " << order;
        FileStream in(pathOf("all"), File::ModeRead);
        in.SetEndianType(type);
        readEveryType(in);
        EXPECT_EQ(in.GetRemaining(), 0u);
        EXPECT_FALSE(in.AtEnd()); // nothing has tried to read past the end yet
        EXPECT_THROW(in.ReadPrimitive<bool>(), DataStreamIO);
        EXPECT_TRUE(in.AtEnd());
    }
}

TEST_F(FileStreamTest, ByteOrderOnDisk)
{
    for (int order : {0, 1, 2, 3}) {
        {
            FileStream out(pathOf("order"), File::ModeWrite);
            out.SetEndianType(static_cast<DataStream::EndianType>(order));
            out << 0x01020304 << static_cast<short>(0x0506) << 1.0;
        }
        std::string const big("\x01\x02\x03\x04\x05\x06\x3F\xF0\0\0\0\0\0\0", 14);
        std::string const little("\x04\x03\x02\x01\x06\x05\0\0\0\0\0\0\xF0\x3F", 14);
        EXPECT_EQ(readAll(PathOf("order")), order < 2 ? little : big) << "order " << order;
    }
}

TEST_F(FileStreamTest, StringLayout)
{
    {
        FileStream out(pathOf("strings"), File::ModeWrite);
        out << String() << "abc";
        EXPECT_EQ(out.GetPosition(), 11u);
        out.SetWriteStringLength(false);
        out << "de";
    }
    EXPECT_EQ(readAll(PathOf("strings")), std::string("\0\0\0\0\x03\0\0\0abcde", 13));
}

// Extraction refills the target's own text when nobody shares it; a copy that shares the text
// must keep the old value, and a shorter value must not keep the tail of a longer one.
TEST_F(FileStreamTest, StringExtractionLeavesSharedCopiesAlone)
{
    {
        FileStream out(pathOf("refill"), File::ModeWrite);
        out << String("a sample name longer than the small-string buffer") << "kick" << String() << "snare";
    }
    FileStream in(pathOf("refill"), File::ModeRead);
    String text = "held";
    String const copy = text;
    in >> text;
    EXPECT_EQ(copy, "held");
    EXPECT_EQ(text, "a sample name longer than the small-string buffer");
    String const second = text;
    in >> text;
    EXPECT_EQ(text, "kick");
    EXPECT_EQ(second, "a sample name longer than the small-string buffer");
    in >> text;
    EXPECT_TRUE(text.IsEmpty());
    in >> text;
    EXPECT_EQ(text, "snare");
    EXPECT_EQ(text.Length(), 5u);
}

TEST_F(FileStreamTest, StringLengthLimit)
{
    {
        FileStream out(pathOf("longest"), File::ModeWrite);
        out << String(std::string(200000, 'z'));
        out << 200001u << 'x';
    }
    FileStream in(pathOf("longest"), File::ModeRead);
    String longest;
    in >> longest;
    EXPECT_EQ(longest.Length(), 200000u);
    DataStreamIO const e = failureOf([&] { in >> longest; });
    EXPECT_EQ(e.GetMessage(), "Improbable string length 200001");
    EXPECT_EQ(e.GetFile(), "../../src/Cordel/Util/FileStream.cpp");
    EXPECT_EQ(e.GetErrorCode(), 0);
}

TEST_F(FileStreamTest, ExtractionFailuresCarryTheFileFailure)
{
    writeAll(PathOf("two"), std::string("\x07\0", 2));
    FileStream in(pathOf("two"), File::ModeRead);
    int value = 42;
    DataStreamIO const e = failureOf([&] { in >> value; });
    EXPECT_TRUE(e.GetMessage().BeginsWith("Can't extract int: ../../src/Cordel/Util/File.cpp (430)"))
        << e.GetMessage().c_str();
    EXPECT_TRUE(e.GetMessage().Find("Attempt to read 4 bytes, only read 2 bytes").IsSet());
    EXPECT_TRUE(e.GetMessage().Find("Read error: " + pathOf("two").ToString()).IsSet());
    EXPECT_EQ(e.GetFile(), "../../src/Cordel/Util/FileStream.h");
    EXPECT_EQ(e.GetLine(), 38);
    EXPECT_EQ(value, 42);

    writeAll(PathOf("short-string"), std::string("\x05\0\0\0ab", 6));
    FileStream strings(pathOf("short-string"), File::ModeRead);
    String text;
    EXPECT_TRUE(failureOf([&] { strings >> text; }).GetMessage().BeginsWith("Can't extract string: ../../src"));

    FileStream empty(pathOf("two"), File::ModeRead);
    std::vector<unsigned char> bytes(8);
    EXPECT_TRUE(failureOf([&] { empty >> bytes; }).GetMessage().BeginsWith("Can't extract 8 bytes: "));
    empty.SetPosition(0);
    unsigned char raw[8];
    DataStreamIO const r = failureOf([&] { empty.Read(8, raw); });
    EXPECT_TRUE(r.GetMessage().BeginsWith("Can't read 8 bytes: ")) << r.GetMessage().c_str();
    EXPECT_EQ(r.GetFile(), "../../src/Cordel/Util/FileStream.cpp");
    empty.Read(0, nullptr);
}

TEST_F(FileStreamTest, OpenWriteSeekAndCloseFailures)
{
    DataStreamIO const open = failureOf([&] { FileStream(pathOf("missing"), File::ModeRead); });
    EXPECT_TRUE(open.GetMessage().BeginsWith("Can't open file: ../../src/Cordel/Util/File.cpp (262)"));
    EXPECT_TRUE(open.GetMessage().EndsWith("Open error: " + pathOf("missing").ToString()));

    // A full disk: a large block fails at once, small values when the buffer goes out at Close.
    FileStream full(FilePath("/dev/full"), File::ModeWrite);
    std::vector<unsigned char> big(1 << 20);
    EXPECT_TRUE(failureOf([&] { full.Write(static_cast<unsigned int>(big.size()), big.data()); })
                    .GetMessage()
                    .BeginsWith("Can't write 1048576 bytes: "));
    EXPECT_TRUE(failureOf([&] { full << big; }).GetMessage().BeginsWith("Can't insert 1048576 bytes: "));
    full << 7;
    EXPECT_TRUE(failureOf([&] { full.Close(); }).GetMessage().BeginsWith("Can't close file: "));
    DataStreamIO const afterClose = failureOf([&] { full << -7; });
    EXPECT_TRUE(afterClose.GetMessage().BeginsWith("Can't insert -7: ")) << afterClose.GetMessage().c_str();
    EXPECT_TRUE(afterClose.GetMessage().Find("Attempt to write 4 bytes when not open").IsSet());
    EXPECT_EQ(afterClose.GetLine(), 70);
    EXPECT_TRUE(failureOf([&] { full << 2.5; }).GetMessage().BeginsWith("Can't insert 2.500000: "));

    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    FileStream pipeEnd(FilePath(String("/proc/self/fd/") + String::Number(fds[0])), File::ModeRead);
    EXPECT_TRUE(failureOf([&] { pipeEnd.SetPosition(5); }).GetMessage().BeginsWith("Can't seek to 5: "));
    pipeEnd.Close();
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST_F(FileStreamTest, PositionSizeAndSkip)
{
    FileStream s(pathOf("positions"), File::ModeReplace);
    s << 1 << 2 << 3;
    EXPECT_EQ(s.GetSize(), 12u);
    EXPECT_EQ(s.GetPosition(), 12u);
    s.Skip(-8);
    int second = 0;
    s >> second;
    EXPECT_EQ(second, 2);
    EXPECT_EQ(s.GetRemaining(), 4u);
    s.SetPosition(20);
    EXPECT_EQ(s.GetRemaining(), 0u);
    s.Close();
    EXPECT_EQ(s.GetPosition(), 0u);
}
