#include <Cordel/Util/detail/Utf8.h>

#include <gtest/gtest.h>

#include <string_view>

using namespace Cordel::Util::detail;
using namespace std::string_view_literals;

TEST(Utf8, WellFormedOnly)
{
    struct Row {
        char const* name;
        std::string_view text;
        bool valid;
    };
    Row const rows[] = {
        {"empty", ""sv, true},
        {"ASCII with a zero byte", "a\0b"sv, true},
        {"largest of each length", "\x7F\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF"sv, true},
        {"smallest of each length", "\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80"sv, true},
        {"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80"sv, true},
        {"overlong two bytes", "\xC0\x80"sv, false},
        {"overlong three bytes", "\xE0\x9F\xBF"sv, false},
        {"overlong four bytes", "\xF0\x8F\xBF\xBF"sv, false},
        {"surrogate", "\xED\xA0\x80"sv, false},
        {"past U+10FFFF", "\xF4\x90\x80\x80"sv, false},
        {"five-byte lead", "\xF8\x88\x80\x80\x80"sv, false},
        {"lone continuation", "a\x80"sv, false},
        {"cut short at the end", "a\xE2\x82"sv, false},
        {"ASCII where a continuation belongs", "\xE2\x82x"sv, false},
        {"Latin-1", "caf\xE9"sv, false},
    };
    for (Row const& row : rows)
        EXPECT_EQ(IsValidUtf8(row.text), row.valid) << row.name;
}

TEST(Utf8, PrintableHasNoControlCharacters)
{
    EXPECT_TRUE(IsPrintableUtf8("key \xE2\x99\xAA ~\x7F"));
    for (std::string_view const text : {"a\tb"sv, "a\nb"sv, "\x1F"sv, "a\0b"sv, "caf\xE9"sv})
        EXPECT_FALSE(IsPrintableUtf8(text)) << text;
}
