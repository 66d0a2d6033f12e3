// pkg: libcrypto
// labels: interop
#include <Cordel/Util/Base64.h>
#include <Cordel/Util/CRC16.h>

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <random>
#include <string>
#include <vector>

using namespace Cordel;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes bytesOf(std::string const& s) { return Bytes(s.begin(), s.end()); }

Bytes decoded(char const* text)
{
    Bytes out{0xEE}; // decoding must start from an empty vector
    Util::Base64Decode(text, out);
    return out;
}

Bytes randomBytes(std::size_t n, unsigned int seed)
{
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& x : b)
        x = static_cast<unsigned char>(rng());
    return b;
}

// The textbook bit-at-a-time form, independent of any table.
unsigned short bitwiseCRC(Bytes const& data)
{
    unsigned short crc = 0;
    for (unsigned char byte : data) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<unsigned short>((crc >> 1) ^ 0xA001) : static_cast<unsigned short>(crc >> 1);
    }
    return crc;
}

} // namespace

TEST(Base64, RfcVectors)
{
    char const* const vectors[][2] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},        {"foo", "Zm9v"},
                                      {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
    for (auto const& v : vectors) {
        EXPECT_EQ(Util::Base64Encode(bytesOf(v[0])), v[1]);
        EXPECT_EQ(decoded(v[1]), bytesOf(v[0])) << v[1];
    }
    EXPECT_EQ(Util::Base64Encode({0x4D, 0x61}), "TWE=");
    EXPECT_EQ(Util::Base64Encode({0x4D}), "TQ==");
    EXPECT_EQ(Util::Base64Encode({0xFB, 0xFF, 0xBF}), "+/+/");
}

TEST(Base64, DecoderSkipsWhatIsNotInTheAlphabet)
{
    EXPECT_EQ(decoded("TW E=\n"), (Bytes{0x4D, 0x61}));
    // Padding in the middle neither ends the decoding nor closes a group: "ZgZm" then a lone "8".
    EXPECT_EQ(decoded("Zg==Zm8="), (Bytes{0x66, 0x06, 0x66}));
    EXPECT_EQ(decoded("Z\x80m\xFF" "9~v-"), bytesOf("foo"));
    EXPECT_EQ(decoded("*Zm9v\r\nYmFy!"), bytesOf("foobar"));
    // Groups of 3 and 2 values give 2 and 1 bytes; a lone value nothing.
    EXPECT_EQ(decoded("Zm9"), bytesOf("fo"));
    EXPECT_EQ(decoded("Zm"), bytesOf("f"));
    EXPECT_EQ(decoded("Z"), Bytes{});
    EXPECT_EQ(decoded("Zm9vY"), bytesOf("foo"));
    EXPECT_EQ(decoded("===="), Bytes{});
}

// Long inputs run the eight-at-a-time paths; line breaks and stray characters break them up at
// every offset.
TEST(Base64, LongRoundTripsAgreeWithOpenSSL)
{
    for (std::size_t n : {1u, 5u, 6u, 7u, 8u, 9u, 47u, 48u, 49u, 1000u, 4099u}) {
        Bytes const data = randomBytes(n, static_cast<unsigned int>(n));
        String const text = Util::Base64Encode(data);
        std::string reference(4 * ((n + 2) / 3) + 1, '\0');
        int const written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(reference.data()), data.data(), static_cast<int>(n));
        reference.resize(static_cast<std::size_t>(written));
        ASSERT_EQ(text.ToStdString(), reference) << n;

        Bytes back;
        Util::Base64Decode(text, back);
        EXPECT_EQ(back, data) << n;

        std::string wrapped;
        for (std::size_t i = 0; i < reference.size(); ++i) {
            wrapped += reference[i];
            if (i % 13 == 5)
                wrapped += (i % 2) ? "\r\n" : " =";
        }
        Util::Base64Decode(String(wrapped), back);
        EXPECT_EQ(back, data) << n;
    }
}

TEST(CRC16, CheckValueAndEmptyRun)
{
    EXPECT_EQ(Util::CRC16("123456789", 9), 0xBB3D);
    EXPECT_EQ(Util::CRC16("", 0), 0);
    EXPECT_EQ(Util::CRC16(nullptr, 0), 0);
}

TEST(CRC16, RunBytewiseAndBitwiseFormsAgree)
{
    Bytes const data = randomBytes(1000, 7);
    for (std::size_t n : {1u, 15u, 16u, 17u, 31u, 32u, 33u, 1000u}) {
        Bytes const run(data.begin(), data.begin() + static_cast<long>(n));
        unsigned short running = 0;
        for (unsigned char b : run)
            Util::CRC16(running, static_cast<char>(b));
        unsigned short const whole = Util::CRC16(reinterpret_cast<char const*>(run.data()), static_cast<unsigned int>(n));
        EXPECT_EQ(whole, running) << n;
        EXPECT_EQ(whole, bitwiseCRC(run)) << n;
        // Block by block from any split point.
        unsigned int const split = static_cast<unsigned int>(n / 3);
        unsigned short const first = Util::CRC16(reinterpret_cast<char const*>(run.data()), split);
        EXPECT_EQ(Util::CRC16(first, reinterpret_cast<char const*>(run.data()) + split, static_cast<unsigned int>(n) - split), whole);
    }
}
