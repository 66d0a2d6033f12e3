#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/DataStreamIOException.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace Cordel;
using Util::ByteStream;
using Util::DataStream;
using Bytes = std::vector<unsigned char>;

namespace {

// Writes one value through the interface, as serialising code does, and returns the bytes.
template <typename T>
Bytes written(T value, DataStream::EndianType endian)
{
    ByteStream s;
    s.SetEndianType(endian);
    static_cast<DataStream&>(s) << value;
    EXPECT_EQ(s.GetPosition(), s.GetSize());
    return s.GetData();
}

template <typename T>
T readBack(Bytes const& bytes, DataStream::EndianType endian)
{
    ByteStream s(bytes);
    s.SetEndianType(endian);
    T a{};
    static_cast<DataStream&>(s) >> a;
    EXPECT_TRUE(s.AtEnd());
    s.SetPosition(0);
    T const b = static_cast<DataStream&>(s).ReadPrimitive<T>();
    if constexpr (std::is_floating_point_v<T>)
        EXPECT_TRUE(std::memcmp(&a, &b, sizeof a) == 0);
    else
        EXPECT_EQ(a, b);
    return a;
}

} // namespace

TEST(ByteStream, ScalarLayoutsInEveryByteOrder)
{
    // Native and little are the same on this host; 2 and every other value mean big.
    for (int e : {0, 1, 2, 3, -1}) {
        auto const endian = static_cast<DataStream::EndianType>(e);
        bool const big = e != 0 && e != 1;
        auto order = [big](Bytes le) { return big ? Bytes(le.rbegin(), le.rend()) : le; };
        SCOPED_TRACE(e);

        EXPECT_EQ(written(true, endian), Bytes{1});
        EXPECT_EQ(written(false, endian), Bytes{0});
        EXPECT_EQ(written('A', endian), Bytes{0x41});
        EXPECT_EQ(written(static_cast<signed char>(-2), endian), Bytes{0xFE});
        EXPECT_EQ(written(static_cast<unsigned char>(0x80), endian), Bytes{0x80});
        EXPECT_EQ(written(static_cast<short>(-2), endian), order({0xFE, 0xFF}));
        EXPECT_EQ(written(static_cast<unsigned short>(0x0102), endian), order({0x02, 0x01}));
        EXPECT_EQ(written(0x01020304, endian), order({0x04, 0x03, 0x02, 0x01}));
        EXPECT_EQ(written(0xFFFFFFFEu, endian), order({0xFE, 0xFF, 0xFF, 0xFF}));
        EXPECT_EQ(written(-3L, endian), order({0xFD, 0xFF, 0xFF, 0xFF}));
        EXPECT_EQ(written(0x01020304UL, endian), order({0x04, 0x03, 0x02, 0x01}));
        EXPECT_EQ(written(1.0f, endian), order({0x00, 0x00, 0x80, 0x3F}));
        EXPECT_EQ(written(-2.5, endian), order({0, 0, 0, 0, 0, 0, 0x04, 0xC0}));

        EXPECT_EQ(readBack<bool>({7}, endian), true);
        EXPECT_EQ(readBack<char>({0x41}, endian), 'A');
        EXPECT_EQ(readBack<signed char>({0xFE}, endian), -2);
        EXPECT_EQ(readBack<unsigned char>({0xFE}, endian), 0xFE);
        EXPECT_EQ(readBack<short>(order({0xFE, 0xFF}), endian), -2);
        EXPECT_EQ(readBack<unsigned short>(order({0x02, 0x01}), endian), 0x0102);
        EXPECT_EQ(readBack<int>(order({0x04, 0x03, 0x02, 0x01}), endian), 0x01020304);
        EXPECT_EQ(readBack<unsigned int>(order({0xFE, 0xFF, 0xFF, 0xFF}), endian), 0xFFFFFFFEu);
        EXPECT_EQ(readBack<long>(order({0xFD, 0xFF, 0xFF, 0xFF}), endian), -3L);
        EXPECT_EQ(readBack<unsigned long>(order({0xFD, 0xFF, 0xFF, 0xFF}), endian), 0xFFFFFFFDUL);
        EXPECT_EQ(readBack<float>(order({0x00, 0x00, 0x80, 0x3F}), endian), 1.0f);
        EXPECT_EQ(readBack<double>(order({0, 0, 0, 0, 0, 0, 0x04, 0xC0}), endian), -2.5);
    }
}

TEST(ByteStream, FloatsRoundTripBitForBit)
{
    float const nanF = std::numeric_limits<float>::quiet_NaN();
    double const values[] = {0.0, -0.0, 1e-310, std::numeric_limits<double>::infinity(), 3.141592653589793};
    for (int e : {0, 2}) {
        ByteStream s;
        s.SetEndianType(static_cast<DataStream::EndianType>(e));
        for (double v : values)
            s << v;
        s << nanF;
        s.SetPosition(0);
        for (double v : values) {
            double r;
            s >> r;
            EXPECT_EQ(std::signbit(r), std::signbit(v));
            EXPECT_EQ(r, v);
        }
        EXPECT_TRUE(std::isnan(s.ReadPrimitive<float>()));
    }
}

TEST(ByteStream, StringLayoutAndLengthFlag)
{
    ByteStream s;
    s << String("abc");
    EXPECT_EQ(s.GetData(), (Bytes{3, 0, 0, 0, 'a', 'b', 'c'}));
    EXPECT_EQ(s.GetPosition(), 7u);

    ByteStream big;
    big.SetEndianType(DataStream::EndianBig);
    big << "ab"; // a literal is text, not a bool
    EXPECT_EQ(big.GetData(), (Bytes{0, 0, 0, 2, 'a', 'b'}));

    ByteStream bare;
    bare.SetWriteStringLength(false);
    bare << String("abc") << String();
    EXPECT_EQ(bare.GetData(), (Bytes{'a', 'b', 'c'}));

    // The length is always read, whatever the flag: "abc" written bare reads as a length.
    ByteStream reader(Bytes{3, 0, 0, 0, 'x', 'y', 'z'});
    reader.SetWriteStringLength(false);
    String text;
    reader >> text;
    EXPECT_EQ(text, "xyz");
}

TEST(ByteStream, StringExtractionLeavesSharedCopiesAlone)
{
    ByteStream s;
    s << String("a sample name longer than the small-string buffer") << String("kick");
    s.SetPosition(0);
    String text = "held";
    String const copy = text;
    s >> text;
    EXPECT_EQ(copy, "held");
    String const first = text;
    s >> text;
    EXPECT_EQ(text, "kick");
    EXPECT_EQ(first, "a sample name longer than the small-string buffer");
}

TEST(ByteStream, StringExtractionIsLenient)
{
    String text = "stale";
    ByteStream tooLong(Bytes{0x41, 0x0D, 0x03, 0x00, 'a', 'b'}); // 200001
    tooLong >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(tooLong.GetPosition(), 4u);

    ByteStream atCap;
    atCap << String(std::string(200000, 'q'));
    atCap.SetPosition(0);
    atCap >> text;
    EXPECT_EQ(text.Length(), 200000u);

    text = "stale";
    ByteStream shortOfBytes(Bytes{5, 0, 0, 0, 'a', 'b'});
    shortOfBytes >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(shortOfBytes.GetPosition(), 4u);

    ByteStream empty(Bytes{0, 0, 0, 0});
    text = "stale";
    empty >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(empty.AtEnd());

    // Too short even for the length: the one string failure that throws.
    ByteStream noLength(Bytes{1, 0, 0});
    text = "stale";
    EXPECT_THROW(noLength >> text, Util::Exception::DataStreamIO);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(noLength.GetPosition(), 0u);
}

TEST(ByteStream, ScalarPastTheEndThrowsAndKeepsState)
{
    ByteStream s(Bytes(12, 0xAA));
    s.SetPosition(9);
    int target = 77;
    try {
        s >> target;
        FAIL();
    } catch (Util::Exception::DataStreamIO const& e) {
        EXPECT_EQ(e.GetMessage(), "Can't extract 4 bytes at position 9, total size 12");
        EXPECT_EQ(e.ToString(), "../../src/Cordel/Util/ByteStream.h (133): Thrown, GetLastError(): 0\nBase:\n"
                                "\tCan't extract 4 bytes at position 9, total size 12\n\nDataStreamIO\n");
    }
    EXPECT_EQ(target, 77);
    EXPECT_EQ(s.GetPosition(), 9u);
    EXPECT_THROW(s.ReadPrimitive<double>(), Util::Exception::DataStreamIO);
    EXPECT_EQ(s.ReadPrimitive<short>(), static_cast<short>(0xAAAA));
    EXPECT_EQ(s.ReadPrimitive<unsigned char>(), 0xAA);
    EXPECT_TRUE(s.AtEnd());
    EXPECT_THROW(s.ReadPrimitive<bool>(), Util::Exception::DataStreamIO);

    // Far past the end: nothing remains rather than a wrapped-around count.
    s.SetPosition(1000);
    EXPECT_EQ(s.GetRemaining(), 0u);
    EXPECT_TRUE(s.AtEnd());
    EXPECT_THROW(s.ReadPrimitive<char>(), Util::Exception::DataStreamIO);
}

TEST(ByteStream, RawAndVectorReadsAreLenient)
{
    ByteStream s(Bytes{1, 2, 3, 4, 5});
    unsigned char out[8] = {};
    s.Read(6, out);
    EXPECT_EQ(s.GetPosition(), 0u);
    EXPECT_EQ(out[0], 0);
    s.Read(0, nullptr);
    s.Read(2, out);
    EXPECT_EQ(out[1], 2);
    EXPECT_EQ(s.GetPosition(), 2u);

    Bytes v(4, 9);
    s >> v;
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(s.GetPosition(), 2u);
    v.assign(3, 0);
    s >> v;
    EXPECT_EQ(v, (Bytes{3, 4, 5}));
    EXPECT_TRUE(s.AtEnd());
}

TEST(ByteStream, WritesOverwriteInTheMiddleAndExtendWithZeros)
{
    ByteStream s(Bytes{1, 2, 3, 4, 5, 6, 7});
    s.SetPosition(2);
    s << static_cast<short>(0x2AFF);
    EXPECT_EQ(s.GetData(), (Bytes{1, 2, 0xFF, 0x2A, 5, 6, 7}));
    EXPECT_EQ(s.GetPosition(), 4u);

    s.SetPosition(6);
    s << 0x11223344;
    EXPECT_EQ(s.GetData(), (Bytes{1, 2, 0xFF, 0x2A, 5, 6, 0x44, 0x33, 0x22, 0x11}));

    s.SetPosition(12);
    s << Bytes{0xEE};
    s << Bytes{};
    EXPECT_EQ(s.GetSize(), 13u);
    EXPECT_EQ(s.GetData()[10], 0);
    EXPECT_EQ(s.GetData()[11], 0);
    EXPECT_EQ(s.GetData()[12], 0xEE);

    s.Skip(-3);
    EXPECT_EQ(s.GetPosition(), 10u);
    s.Skip(2);
    EXPECT_EQ(s.GetRemaining(), 1u);
}

TEST(ByteStream, Construction)
{
    ByteStream reserved(64);
    EXPECT_EQ(reserved.GetSize(), 0u);
    EXPECT_TRUE(reserved.AtEnd());
    EXPECT_EQ(reserved.GetEndianType(), DataStream::EndianNative);
    EXPECT_TRUE(reserved.IsWriteStringLength());

    unsigned char const raw[] = {9, 8, 7};
    ByteStream copied(3, raw);
    EXPECT_EQ(copied.GetData(), (Bytes{9, 8, 7}));
    EXPECT_EQ(copied.GetPosition(), 0u);
}
