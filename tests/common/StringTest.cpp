#include <Cordel/common/String.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using Cordel::Char;
using Cordel::String;

TEST(String, EmptyFormsAreEqual)
{
    String const a, b(static_cast<char const*>(nullptr)), c("");
    EXPECT_EQ(a, b);
    EXPECT_EQ(b, c);
    EXPECT_EQ(a, "");
    EXPECT_EQ(a.Length(), 0u);
    EXPECT_EQ(c.Length(), 0u);
    EXPECT_EQ(a.GetHandle().use_count(), 1u);
    EXPECT_EQ(a.GetHandle().get(), nullptr);
}

TEST(String, CopySharesAndMutationDetaches)
{
    String a("hello");
    String b = a;
    EXPECT_EQ(a.GetHandle().get(), b.GetHandle().get());
    EXPECT_EQ(a.GetHandle().use_count(), 2u);
    std::uint32_t const* sharedCell = a.GetHandle().count_cell();

    b += " world";
    EXPECT_EQ(a, "hello");
    EXPECT_EQ(b, "hello world");
    // b left a shared text: it got a fresh cell, a kept the old one.
    EXPECT_EQ(a.GetHandle().count_cell(), sharedCell);
    EXPECT_NE(b.GetHandle().count_cell(), sharedCell);
    EXPECT_EQ(a.GetHandle().use_count(), 1u);

    // A mutation of an unshared text reuses its cell.
    std::uint32_t const* ownCell = b.GetHandle().count_cell();
    b.Insert(0, ">");
    EXPECT_EQ(b, ">hello world");
    EXPECT_EQ(b.GetHandle().count_cell(), ownCell);
    EXPECT_EQ(b.GetHandle().use_count(), 1u);
}

TEST(String, TruncateBeyondLengthKeepsSharing)
{
    String a("abc");
    String b = a;
    b.Truncate(3);
    b.Truncate(10);
    EXPECT_EQ(a.GetHandle().get(), b.GetHandle().get());
    b.Truncate(1);
    EXPECT_EQ(b, "a");
    EXPECT_EQ(a, "abc");
}

TEST(String, ArgReturnsNewStringAndLeavesOriginal)
{
    String const t("%1-%2");
    String const filled = t.Arg("x");
    EXPECT_EQ(t, "%1-%2");
    EXPECT_EQ(filled, "x-%2");
}

TEST(String, ComparisonIsUnsignedBytewise)
{
    EXPECT_LT(String("a"), String("b"));
    EXPECT_LT(String("z"), String("\xC4"));
    EXPECT_LT(String("ab"), String("abc"));
    EXPECT_LE(String("abc"), "abc");
    EXPECT_FALSE(String("abd") < "abc");
    EXPECT_LT(String(""), "a");
}

TEST(String, FindWithAsciiFoldingOnly)
{
    String const s("xAbA");
    EXPECT_EQ(s.Find('a', 0, false).Get(), 1u);
    EXPECT_FALSE(s.Find('a', 0, true).IsSet());
    EXPECT_FALSE(s.Find('x', 4).IsSet()); // from at the length
    EXPECT_FALSE(String().Find('x').IsSet());
    EXPECT_FALSE(String("\xE4").Find('\xC4', 0, false).IsSet());
    EXPECT_EQ(s.Find("ba", 0, false).Get(), 2u);
    EXPECT_EQ(s.Find("A", 2).Get(), 3u);
    EXPECT_FALSE(s.Find("AbAx").IsSet());
    EXPECT_EQ(s.Find("", 1).Get(), 1u);

    EXPECT_EQ(s.FindRev('A').Get(), 3u);
    EXPECT_EQ(s.FindRev('A', 2u).Get(), 1u);
    EXPECT_EQ(s.FindRev('X', {}, false).Get(), 0u);
    EXPECT_FALSE(s.FindRev('X').IsSet());
    EXPECT_EQ(s.FindRev('A', 100u).Get(), 3u);

    EXPECT_TRUE(s.BeginsWith("XaB", false));
    EXPECT_FALSE(s.BeginsWith("XaB"));
    EXPECT_TRUE(s.EndsWith("ba", false));
    EXPECT_FALSE(s.EndsWith("xxAbA"));
    EXPECT_TRUE(s.EndsWith(""));
}

TEST(String, Substrings)
{
    String const s("abcdef");
    EXPECT_EQ(s.Left(2), "ab");
    EXPECT_EQ(s.Left(10), "abcdef");
    EXPECT_EQ(s.Right(2), "ef");
    EXPECT_EQ(s.Right(10), "abcdef");
    EXPECT_EQ(s.Mid(2), "cdef");
    EXPECT_EQ(s.Mid(2, 2u), "cd");
    EXPECT_EQ(s.Mid(4, 100u), "ef");
    EXPECT_EQ(s.Mid(6), "");
    EXPECT_EQ(s.Mid(100, 1u), "");
}

TEST(String, InsertAndRemoveClampToTheEnd)
{
    String s("abc");
    s.Insert(100, "!");
    EXPECT_EQ(s, "abc!");
    s.Insert(1, "-");
    EXPECT_EQ(s, "a-bc!");
    s.Remove(1, 1u);
    EXPECT_EQ(s, "abc!");
    s.Remove(2);
    EXPECT_EQ(s, "ab");
    s.Remove(10);
    EXPECT_EQ(s, "ab");
    s.Remove(0, 100u);
    EXPECT_EQ(s, "");
    EXPECT_EQ(String("x") + "y" + String("z"), "xyz");
}

TEST(String, ReplaceAndCase)
{
    EXPECT_EQ(String("aaaa").Replace("aa", "b"), "bb");
    EXPECT_EQ(String("a.b.c").Replace(".", "::"), "a::b::c");
    EXPECT_EQ(String("abc").Replace("", "x"), "abc");
    EXPECT_EQ(String("a-b-c").ReplaceChar('-', '+'), "a+b+c");
    EXPECT_EQ(String("aB\xE4\xC4").ToUpper(), "AB\xE4\xC4");
    EXPECT_EQ(String("aB\xE4\xC4").ToLower(), "ab\xE4\xC4");
}

TEST(String, WhiteSpaceIncludesNoBreakSpace)
{
    EXPECT_EQ(String("\xA0 \t a  b \r\n\v\f\xA0").StripWhiteSpace(), "a  b");
    EXPECT_EQ(String("\xA0 \t a \xA0\x0B b \r\n").SimplifyWhiteSpace(), "a b");
    EXPECT_EQ(String("   ").SimplifyWhiteSpace(), "");
    EXPECT_TRUE(Char('\xA0').IsSpace());
    EXPECT_FALSE(Char('\x85').IsSpace()); // a control, not a separator, in this table
    EXPECT_TRUE(Char('7').IsDigit());
    EXPECT_FALSE(Char('\xB2').IsDigit()); // superscript two is an "other number"
}

TEST(String, SplitAndJoin)
{
    std::vector<String> parts{"stale"};
    String("a,,b,").Split(',', parts);
    ASSERT_EQ(parts.size(), 4u);
    EXPECT_EQ(parts[0], "a");
    EXPECT_EQ(parts[1], "");
    EXPECT_EQ(parts[2], "b");
    EXPECT_EQ(parts[3], "");
    EXPECT_EQ(String::Join("--", parts), "a----b--");

    String("whole").Split(',', parts);
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0], "whole");

    String().Split(',', parts);
    EXPECT_TRUE(parts.empty());
    EXPECT_EQ(String::Join(",", {}), "");
}

TEST(String, DetachAndExtend)
{
    String a("abc");
    String b = a;
    char* p = b.detachAndExtend(5);
    EXPECT_EQ(b.Length(), 6u);
    EXPECT_EQ(std::string(p, 6), std::string("abc\0\0\0", 6));
    EXPECT_EQ(a, "abc");

    String c("abcdef");
    c.detachAndExtend(2); // shorter: copied, not cut
    EXPECT_EQ(c, "abcdef");

    String e;
    e.detachAndExtend(3);
    EXPECT_EQ(e.Length(), 4u);
}

TEST(String, CharCategoriesFollowLatin1)
{
    using Cordel::CHAR_CATEGORIES;
    EXPECT_EQ(CHAR_CATEGORIES[static_cast<unsigned char>('5')], 4);
    EXPECT_EQ(CHAR_CATEGORIES[0xBD], 6);
    EXPECT_EQ(CHAR_CATEGORIES[0xA0], 7);
    EXPECT_EQ(CHAR_CATEGORIES[0x9F], 10);
    EXPECT_EQ(CHAR_CATEGORIES[0xD7], 27);
    EXPECT_EQ(CHAR_CATEGORIES[0xDE], 15);
    EXPECT_EQ(CHAR_CATEGORIES[0xDF], 16);
    EXPECT_EQ(CHAR_CATEGORIES[0xAD], 21);
    EXPECT_EQ(CHAR_CATEGORIES[static_cast<unsigned char>('`')], 29);
    EXPECT_EQ(CHAR_CATEGORIES[0xA6], 30);
    for (int c = 0; c < 256; ++c)
        EXPECT_NE(CHAR_CATEGORIES[c], 0) << "byte " << c << " has no category";
}

TEST(String, MovedFromStringStaysUsable)
{
    String a("moved");
    String b(std::move(a));
    EXPECT_EQ(b, "moved");
    EXPECT_EQ(b.GetHandle().use_count(), 1u);
    a += "again"; // a moved-from string takes new text
    EXPECT_EQ(a, "again");
    String c;
    c = std::move(b);
    EXPECT_EQ(c, "moved");
    std::vector<String> v{"b", "c", "a"};
    std::sort(v.begin(), v.end());
    EXPECT_EQ(String::Join(",", v), "a,b,c");
}
