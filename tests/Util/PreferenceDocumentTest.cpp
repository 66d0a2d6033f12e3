#include <Cordel/Util/detail/PreferenceDocument.h>

#include "Printers.h"

#include <gtest/gtest.h>

#include <string>

using namespace Cordel;
using Util::detail::PreferenceDocument;
using Util::detail::PreferenceValue;

namespace {

std::string const emptyDocument = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<preferences/>\n";

std::string document(std::string const& entries)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<preferences>\n" + entries + "</preferences>\n";
}

} // namespace

TEST(PreferenceDocument, WritesTheFileFormatExactly)
{
    PreferenceDocument doc;
    EXPECT_EQ(doc.Print(), emptyDocument);
    doc.SetText("name", "a <b> & \"c\"");
    doc.SetText("empty", "");
    doc.SetText("blank", "  ");
    doc.SetText("return", "a\rb");
    doc.SetNumber("count", -3);
    doc.SetData("blob", {0, 1, 2, 255});
    doc.SetData("none", {});
    doc.SetNumber("name", 7);
    EXPECT_EQ(doc.Print(), document("    <string key=\"empty\"/>\n"
                                    "    <string key=\"blank\" encoding=\"base64\">ICA=</string>\n"
                                    "    <string key=\"return\" encoding=\"base64\">YQ1i</string>\n"
                                    "    <integer key=\"count\">-3</integer>\n"
                                    "    <data key=\"blob\">AAEC/w==</data>\n"
                                    "    <data key=\"none\"/>\n"
                                    "    <integer key=\"name\">7</integer>\n"));
}

TEST(PreferenceDocument, ReadsWhatItCanAndKeepsTheRest)
{
    PreferenceDocument doc;
    std::string const text = document("    <!-- kept -->\n"
                                      "    <integer key=\"twice\">1</integer>\n"
                                      "    <other key=\"odd\">x</other>\n"
                                      "    <integer>5</integer>\n"
                                      "    <integer key=\"twice\">2</integer>\n"
                                      "    <string key=\"packed\" encoding=\"rot13\">nop</string>\n");
    ASSERT_TRUE(doc.Parse(text));
    EXPECT_EQ(doc.Print(), text);
    EXPECT_EQ(doc.Find("twice")->number, 1) << "the first entry of a key counts";
    EXPECT_EQ(doc.Find("odd")->kind, PreferenceValue::Unusable);
    EXPECT_EQ(doc.Find("packed")->kind, PreferenceValue::Unusable);
    EXPECT_FALSE(doc.Find("missing"));

    EXPECT_TRUE(doc.Remove("twice"));
    EXPECT_FALSE(doc.Remove("twice"));
    EXPECT_EQ(doc.Print(), document("    <!-- kept -->\n"
                                    "    <other key=\"odd\">x</other>\n"
                                    "    <integer>5</integer>\n"
                                    "    <string key=\"packed\" encoding=\"rot13\">nop</string>\n"));

    for (char const* broken : {"", "<preferences>", "<other/>", "<preferences><x></preferences>"}) {
        EXPECT_FALSE(doc.Parse(broken)) << broken;
        EXPECT_EQ(doc.Print(), emptyDocument) << "a failed parse leaves the document empty";
    }
}

TEST(PreferenceDocument, IntegersAreSigned32BitDecimals)
{
    struct Row {
        char const* text;
        bool usable;
        int number;
    };
    Row const rows[] = {
        {"2147483647", true, 2147483647}, {"-2147483648", true, -2147483647 - 1}, {"0000000012", true, 12},
        {"-0", true, 0},                  {"2147483648", false, 0},               {"-2147483649", false, 0},
        {"00000000012", false, 0},        {"+1", false, 0},                       {"1 ", false, 0},
        {"12a", false, 0},                {"-", false, 0},                        {"", false, 0},
    };
    for (Row const& row : rows) {
        PreferenceDocument doc;
        ASSERT_TRUE(doc.Parse(document(std::string("<integer key=\"n\">") + row.text + "</integer>\n")));
        auto const value = doc.Find("n");
        ASSERT_TRUE(value);
        EXPECT_EQ(value->kind, row.usable ? PreferenceValue::Number : PreferenceValue::Unusable) << row.text;
        EXPECT_EQ(value->number, row.number) << row.text;
    }
}
