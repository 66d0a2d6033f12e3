#include <Cordel/common/String.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

using Cordel::String;

TEST(StringArg, LowestDigitLeftmostFirst)
{
    EXPECT_EQ(String("%2 %1").Arg("a"), "%2 a");
    EXPECT_EQ(String("%2 %1").Arg("a").Arg("b"), "b a");
    EXPECT_EQ(String("x").Arg("y"), "xy");
    EXPECT_EQ(String("%1%1").Arg("a"), "a%1");
    EXPECT_EQ(String("%4%4%4").Arg(1).Arg(2).Arg(3), "123");
    EXPECT_EQ(String("%10").Arg("a"), "a0");
    EXPECT_EQ(String("%1 %0").Arg("a"), "%1 a");
    EXPECT_EQ(String().Arg("z"), "z");
    EXPECT_EQ(String("100%").Arg("!"), "100%!");
    EXPECT_EQ(String("%%1").Arg("x"), "%x");
    // An argument holding a placeholder is never revisited by the same call.
    EXPECT_EQ(String("%1 %2").Arg("%2").Arg("b"), "b %2");
}

TEST(StringArg, LvalueAndRvalueChainsAgree)
{
    String const t("Can't extract %1 bytes at position %2, total size %3");
    String step = t.Arg(4);
    step = step.Arg(10);
    step = step.Arg(12);
    EXPECT_EQ(step, "Can't extract 4 bytes at position 10, total size 12");
    EXPECT_EQ(String(t).Arg(4).Arg(10).Arg(12), step);
    EXPECT_EQ(t, "Can't extract %1 bytes at position %2, total size %3");
}

TEST(StringArg, IntegerKindsAndBases)
{
    EXPECT_EQ(String("%1").Arg(-1, 16), "FFFFFFFF");
    EXPECT_EQ(String("%1").Arg(-1L, 16), "FFFFFFFF");
    EXPECT_EQ(String("%1").Arg(-1, 10), "-1");
    EXPECT_EQ(String("%1").Arg(static_cast<short>(-1), 16), "-1"); // short is widened, signed
    EXPECT_EQ(String("%1").Arg(static_cast<unsigned short>(65535), 16), "FFFF");
    EXPECT_EQ(String("%1").Arg(255u, 2), "11111111");
    EXPECT_EQ(String("%1").Arg(-5, 2), "-101");
    EXPECT_EQ(String("%1").Arg(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(String("%1").Arg(-1LL, 16), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(String("%1").Arg(255LL, 2), "255");
    EXPECT_EQ(String("%1").Arg(18446744073709551615ULL), "18446744073709551615");
    EXPECT_EQ(String("%1").Arg('c'), "c");
    EXPECT_EQ(String("%1").Arg(Cordel::Char('d')), "d");
    EXPECT_EQ(String("%1").Arg(1.5), "1.500000");
    EXPECT_EQ(String("%1").Arg(1.5f, 2), "1.50");
}

TEST(StringNumber, IntegerFormatting)
{
    EXPECT_EQ(String::Number(255, 16), "FF");
    EXPECT_EQ(String::Number(255, 1), "255");
    EXPECT_EQ(String::Number(255, 37), "255");
    EXPECT_EQ(String::Number(35, 36), "Z");
    EXPECT_EQ(String::Number(0, 2), "0");
    EXPECT_EQ(String::Number(std::numeric_limits<int>::min(), 16), "-80000000");
    EXPECT_EQ(String::Number(std::numeric_limits<long>::min()), "-9223372036854775808");
    EXPECT_EQ(String::Number(4294967295u, 16), "FFFFFFFF");
    // The 64-bit forms know hexadecimal and decimal only.
    EXPECT_EQ(String::Number(255LL, 2), "255");
    EXPECT_EQ(String::Number(255ULL, 8), "255");
    EXPECT_EQ(String::Number(-255LL, 16), "FFFFFFFFFFFFFF01");
    EXPECT_EQ(String::Number(std::numeric_limits<long long>::min()), "-9223372036854775808");
}

TEST(StringNumber, FloatingFormatting)
{
    EXPECT_EQ(String::Number(1.5, String::NoPrecision, 'q'), "1.500000");
    EXPECT_EQ(String::Number(1.5, 0, 'f'), "2");
    EXPECT_EQ(String::Number(1234.5, 2, 'e'), "1.23e+03");
    EXPECT_EQ(String::Number(1234.5, 3, 'E'), "1.234E+03");
    EXPECT_EQ(String::Number(0.0001, String::NoPrecision, 'g'), "0.0001");
    String const wide = String::Number(1.0, 150, 'f');
    EXPECT_EQ(wide.Length(), 2u + 99u); // "1." and 99 decimals
    EXPECT_EQ(String::Number(1.0f / 3.0f, 3), "0.333");
}

TEST(StringToNumber, IntegerLimitsAndGarbage)
{
    bool ok = true;
    EXPECT_EQ(String(" 42 ").ToInt(&ok), 42);
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("42x").ToInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("2147483648").ToInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("-2147483648").ToInt(&ok), std::numeric_limits<int>::min());
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("-2147483649").ToInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("+7").ToInt(&ok), 7);
    EXPECT_TRUE(ok);
    String("").ToInt(&ok);
    EXPECT_FALSE(ok);
    String("-").ToInt(&ok);
    EXPECT_FALSE(ok);
    String("4 2").ToInt(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("\xA0" "12\t").ToInt(&ok), 12);
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("12").ToInt(nullptr), 12);

    EXPECT_EQ(String("-1").ToUInt(&ok), 0u);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("4294967295").ToUInt(&ok), 4294967295u);
    EXPECT_TRUE(ok);
    String("4294967296").ToUInt(&ok);
    EXPECT_FALSE(ok);

    EXPECT_EQ(String("32767").ToShort(&ok), 32767);
    EXPECT_TRUE(ok);
    String("32768").ToShort(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("-32768").ToShort(&ok), -32768);
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("65535").ToUShort(&ok), 65535);
    EXPECT_TRUE(ok);
    String("65536").ToUShort(&ok);
    EXPECT_FALSE(ok);

    EXPECT_EQ(String("9223372036854775807").ToInt64(&ok), std::numeric_limits<long long>::max());
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("-9223372036854775808").ToInt64(&ok), std::numeric_limits<long long>::min());
    EXPECT_TRUE(ok);
    String("9223372036854775808").ToInt64(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("18446744073709551615").ToUInt64(&ok), std::numeric_limits<unsigned long long>::max());
    EXPECT_TRUE(ok);
    String("18446744073709551616").ToUInt64(&ok);
    EXPECT_FALSE(ok);
}

TEST(StringToNumber, Bases)
{
    bool ok = false;
    EXPECT_EQ(String("ff").ToInt(&ok, 16), 255);
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("-Zz").ToInt(&ok, 36), -(35 * 36 + 35));
    EXPECT_TRUE(ok);
    String("12").ToInt(&ok, 2);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("FFFFFFFF").ToUInt(&ok, 16), 0xFFFFFFFFu);
    EXPECT_TRUE(ok);
    String("FFFFFFFF").ToInt(&ok, 16);
    EXPECT_FALSE(ok);
    String("0x1F").ToInt(&ok, 16);
    EXPECT_FALSE(ok);
}

TEST(StringToNumber, WideDigitsAndSigns)
{
    bool ok = false;
    EXPECT_EQ(String("\xEF\xBC\x94\xEF\xBC\x92").ToInt(&ok), 42); // full-width "42"
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("\xE2\x88\x92" "5").ToInt(&ok), -5); // minus sign
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("\xEF\xBC\x8D" "3").ToInt(&ok), -3); // full-width hyphen-minus
    EXPECT_TRUE(ok);
    EXPECT_DOUBLE_EQ(String("1\xEF\xBC\x8E" "5").ToDouble(&ok), 1.5); // full-width full stop
    EXPECT_TRUE(ok);
    EXPECT_DOUBLE_EQ(String("2\xE3\x80\x82" "5").ToDouble(&ok), 2.5); // ideographic full stop
    EXPECT_TRUE(ok);
}

TEST(StringToNumber, FloatingPointInTheCLocale)
{
    bool ok = false;
    EXPECT_DOUBLE_EQ(String("1.5").ToDouble(&ok), 1.5);
    EXPECT_TRUE(ok);
    EXPECT_DOUBLE_EQ(String("-2.5e3").ToDouble(&ok), -2500.0);
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("").ToDouble(&ok), 0.0);
    EXPECT_FALSE(ok);
    EXPECT_DOUBLE_EQ(String("3.25xyz").ToDouble(&ok), 3.25); // the partial value comes back
    EXPECT_FALSE(ok);
    String("1.5 ").ToDouble(&ok);
    EXPECT_FALSE(ok);
    EXPECT_FLOAT_EQ(String("0.1").ToFloat(&ok), 0.1f);
    EXPECT_TRUE(ok);
    String("1,5").ToDouble(&ok);
    EXPECT_FALSE(ok); // a comma means nothing where the separator is "."
}

// Under a locale whose decimal separator is a comma, both notations parse.
class CommaLocale : public ::testing::Test {
protected:
    void SetUp() override
    {
        previous = std::setlocale(LC_NUMERIC, nullptr);
        if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
            GTEST_SKIP() << "de_DE.UTF-8 is not installed (scripts/setup generates it)";
    }
    void TearDown() override { std::setlocale(LC_NUMERIC, previous.c_str()); }
    std::string previous;
};

TEST_F(CommaLocale, BothSeparatorsParse)
{
    bool ok = false;
    EXPECT_DOUBLE_EQ(String("1.5").ToDouble(&ok), 1.5);
    EXPECT_TRUE(ok);
    EXPECT_DOUBLE_EQ(String("1,5").ToDouble(&ok), 1.5);
    EXPECT_TRUE(ok);
    EXPECT_DOUBLE_EQ(String(" -0,25 ").ToDouble(&ok), -0.25); // surrounding space is stripped here
    EXPECT_TRUE(ok);
    EXPECT_EQ(String("12").ToInt(&ok), 12);
    EXPECT_TRUE(ok);
}

TEST(StringEncoding, Utf16RoundTripAndLimits)
{
    String const text("Gr\xC3\xBC\xC3\x9F" "e"); // "Grüße" in UTF-8
    Cordel::shared_ptr<unsigned short[]> units = text.Unicode(String::UTF8);
    ASSERT_TRUE(units);
    EXPECT_EQ(units[2], 0xFC);
    EXPECT_EQ(units[3], 0xDF);
    EXPECT_EQ(units[5], 0);
    EXPECT_EQ(String(units.get(), String::UTF8), text);

    // Mac Roman: 0x8A is "ä".
    String const roman(units.get(), String::MacRoman);
    EXPECT_EQ(roman, "Gr\x9F\xA7" "e");
    EXPECT_EQ(String(roman.Unicode(String::MacRoman).get(), String::UTF8), text);
    EXPECT_EQ(String(units.get(), 77), roman); // unknown selectors mean Mac Roman

    EXPECT_FALSE(String().Unicode(String::UTF8));
    EXPECT_EQ(String(static_cast<unsigned short const*>(nullptr), String::UTF8), "");

    std::u16string longText(100000, u'a');
    EXPECT_EQ(String(reinterpret_cast<unsigned short const*>(longText.c_str()), String::UTF8), "");
    longText.resize(99999);
    EXPECT_EQ(String(reinterpret_cast<unsigned short const*>(longText.c_str()), String::UTF8).Length(), 99999u);

    EXPECT_FALSE(String(std::string(100000, 'b')).Unicode(String::UTF8));
    EXPECT_FALSE(String("\xFF\xFE").Unicode(String::UTF8)); // not UTF-8
    unsigned short const lone[] = {0xD800, 0};
    EXPECT_EQ(String(lone, String::UTF8), ""); // a lone surrogate does not convert
}
