// Every instruction set's Base64 kernels against the portable code, on the same machine. Sets
// the CPU lacks are skipped.
#include <Cordel/Util/Base64.h>
#include <Cordel/Util/detail/Base64Kernels.h>

#include "InstructionSets.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace Cordel;
using Cordel::IPP::InstructionSet;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes randomBytes(std::size_t n, std::mt19937& rng)
{
    Bytes b(n);
    for (auto& x : b)
        x = static_cast<unsigned char>(rng());
    return b;
}

bool inAlphabet(unsigned char c)
{
    for (char a : Util::detail::base64Alphabet)
        if (a != '\0' && static_cast<unsigned char>(a) == c)
            return true;
    return false;
}

// Lengths around every block size of every kernel, and a few long runs.
std::vector<std::size_t> lengths()
{
    std::vector<std::size_t> all;
    for (std::size_t n = 0; n <= 300; ++n)
        all.push_back(n);
    for (std::size_t n : {4095u, 4096u, 4097u, 65536u + 47u, 300000u})
        all.push_back(n);
    return all;
}

class Base64Kernel : public CordelTest::OnEveryInstructionSet<> {
protected:
    // What the portable code makes of the same call.
    template <typename Call>
    auto portably(Call call) const
    {
        IPP::UseInstructionSet(InstructionSet::Portable);
        auto const result = call();
        IPP::UseInstructionSet(GetParam());
        return result;
    }

    static Bytes decode(std::string const& text)
    {
        Bytes out{0xEE};
        Util::Base64Decode(String(text), out);
        return out;
    }

    std::string portableEncoding(Bytes const& data) const
    {
        return portably([&] { return Util::Base64Encode(data).ToStdString(); });
    }

    void expectSameDecoding(std::string const& text) const
    {
        EXPECT_EQ(decode(text), portably([&] { return decode(text); })) << '"' << text << '"';
    }
};

} // namespace

TEST_P(Base64Kernel, EncodesAsThePortableCode)
{
    std::mt19937 rng(1);
    for (std::size_t n : lengths()) {
        Bytes const data = randomBytes(n, rng);
        ASSERT_EQ(Util::Base64Encode(data).ToStdString(), portableEncoding(data)) << n;
    }
}

TEST_P(Base64Kernel, DecodesCleanTextBackToTheBytes)
{
    std::mt19937 rng(2);
    for (std::size_t n : lengths()) {
        Bytes const data = randomBytes(n, rng);
        std::string const text = portableEncoding(data);
        ASSERT_EQ(decode(text), data) << n;
        // Unpadded and with a stray leading character, so that groups and blocks fall elsewhere.
        std::string const bare = text.substr(0, text.find('='));
        ASSERT_EQ(decode(bare), data) << n;
        expectSameDecoding("#" + bare);
    }
}

// Skipped characters anywhere in a block must hand it to the portable code and leave the
// result unchanged, however many are inserted and wherever groups then fall.
TEST_P(Base64Kernel, SkipsJunkAsThePortableCode)
{
    std::mt19937 rng(3);
    std::string junk;
    for (int c = 0; c < 256; ++c)
        if (!inAlphabet(static_cast<unsigned char>(c)))
            junk += static_cast<char>(c);
    for (std::size_t n : lengths()) {
        Bytes const data = randomBytes(n, rng);
        std::string const text = portableEncoding(data);
        for (unsigned int every : {3u, 50u, 200u}) {
            std::string mixed;
            for (char c : text) {
                mixed += c;
                while (rng() % every == 0)
                    mixed += junk[rng() % junk.size()];
            }
            ASSERT_EQ(decode(mixed), data) << n << " every " << every;
        }
    }
    // Lines of 76 characters, as mail wraps them.
    Bytes const data = randomBytes(3000, rng);
    std::string const text = portableEncoding(data);
    std::string wrapped;
    for (std::size_t i = 0; i < text.size(); i += 76)
        wrapped += text.substr(i, 76) + "\r\n";
    EXPECT_EQ(decode(wrapped), data);
}

TEST_P(Base64Kernel, DecodesArbitraryBytesAsThePortableCode)
{
    std::mt19937 rng(4);
    for (std::size_t n : lengths()) {
        Bytes const raw = randomBytes(n, rng);
        expectSameDecoding(std::string(raw.begin(), raw.end()));
        // Mostly alphabet, so that whole blocks are clean now and then.
        std::string text;
        for (unsigned char b : raw)
            text += (b < 250) ? Util::detail::base64Alphabet[b % 64] : static_cast<char>(b);
        expectSameDecoding(text);
    }
}

// Every code at every position of a 64-character block (the widest kernel's): the kernels'
// own tables decide what is in the alphabet and what each character is worth.
TEST_P(Base64Kernel, EveryCodeAtEveryPosition)
{
    std::mt19937 rng(5);
    std::string const clean = portableEncoding(randomBytes(96, rng));
    for (std::size_t position = 0; position < 64; ++position)
        for (int code = 1; code < 256; ++code) {
            std::string text = clean;
            text[position] = static_cast<char>(code);
            ASSERT_EQ(decode(text), portably([&] { return decode(text); })) << position << " " << code;
        }
}

CORDEL_ON_EVERY_INSTRUCTION_SET(Base64Kernel);
