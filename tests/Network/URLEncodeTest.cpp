// labels: interop
// pkg: libcurl
// Percent-encoding: a table worked out by hand, every byte value, malformed escapes, and
// agreement with libcurl's escaping (component mode) and Python's urlencode (form mode).

#include <Cordel/Network/BadURLEncoding.h>
#include <Cordel/Network/URLEncode.h>

#include "TempFolder.h"

#include <curl/curl.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>

using namespace Cordel;
using namespace Cordel::Network;

namespace {

String bytes(std::string const& s)
{
    return String(std::string_view(s));
}

std::string text(String const& s)
{
    return s.ToStdString();
}

TEST(URLEncode, Table)
{
    struct Row {
        char const* name;
        std::string in, component, form;
    } const rows[] = {
        {"empty", "", "", ""},
        {"unreserved", "AZaz09-._~", "AZaz09-._~", "AZaz09-._%7E"},
        {"space", "a b", "a%20b", "a+b"},
        {"plus and star", "1+1*2", "1%2B1%2A2", "1%2B1*2"},
        {"reserved", ":/?#[]@!$&'(),;=", "%3A%2F%3F%23%5B%5D%40%21%24%26%27%28%29%2C%3B%3D",
         "%3A%2F%3F%23%5B%5D%40%21%24%26%27%28%29%2C%3B%3D"},
        {"percent", "100%", "100%25", "100%25"},
        {"UTF-8 bytes, upper-case hex", "Bäss €", "B%C3%A4ss%20%E2%82%AC", "B%C3%A4ss+%E2%82%AC"},
        {"control and zero bytes", std::string("\0\n\x7f\xff", 4), "%00%0A%7F%FF", "%00%0A%7F%FF"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(text(URLEncode(bytes(row.in))), row.component) << row.name;
        EXPECT_EQ(text(URLEncode(bytes(row.in), URLEncoding::Form)), row.form) << row.name;
        EXPECT_EQ(text(URLDecode(bytes(row.component))), row.in) << row.name;
        EXPECT_EQ(text(URLDecode(bytes(row.form), URLEncoding::Form)), row.in) << row.name;
    }
}

TEST(URLEncode, DecodingKeepsWhatIsNotAnEscape)
{
    EXPECT_EQ(text(URLDecode("a+b%2b%2B")), "a+b++");
    EXPECT_EQ(text(URLDecode("a+b%2b", URLEncoding::Form)), "a b+");
    EXPECT_EQ(text(URLDecode("%e2%82%ac/x?y=1")), "\xe2\x82\xac/x?y=1");
}

TEST(URLEncode, MalformedEscapesThrowWithTheirOffset)
{
    struct Row {
        char const* in;
        unsigned int offset;
    } const rows[] = {{"%", 0}, {"ab%", 2}, {"ab%4", 2}, {"%G1", 0}, {"%1G", 0}, {"ok%41%%41", 5}, {"% 41", 0}};
    for (Row const& row : rows) {
        try {
            URLDecode(row.in);
            ADD_FAILURE() << row.in << ": no exception";
        } catch (Network::Exception::BadURLEncoding const& e) {
            EXPECT_EQ(e.GetOffset(), row.offset) << row.in;
            EXPECT_EQ(e.GetText(), row.in);
            EXPECT_TRUE(e.ToString().EndsWith(String("\nBadURLEncoding: at offset %1 of '%2'\n").Arg(row.offset).Arg(row.in)))
                << e.ToString().c_str();
        }
    }
}

TEST(URLEncode, FormFieldsJoinInOrder)
{
    EXPECT_EQ(text(FormEncode({{"q", "drum loops"}, {"page", "2"}, {"a&b", "c=d"}})), "q=drum+loops&page=2&a%26b=c%3Dd");
    EXPECT_EQ(text(FormEncode({})), "");
}

// Every byte value in both modes, and random strings, round-trip.
TEST(URLEncode, EveryByteRoundTrips)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    for (URLEncoding mode : {URLEncoding::Component, URLEncoding::Form}) {
        String const encoded = URLEncode(bytes(all), mode);
        EXPECT_EQ(text(URLDecode(encoded, mode)), all);
        for (char c : text(encoded))
            EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c)) || std::strchr("-._~*%+", c)) << c;
    }
}

std::vector<std::string> randomStrings()
{
    std::mt19937 random(2024);
    std::vector<std::string> out;
    for (int i = 0; i < 200; ++i) {
        std::string s(random() % 40, '\0');
        for (char& c : s)
            c = static_cast<char>(i % 2 ? random() % 256 : 32 + random() % 95);
        out.push_back(s);
    }
    return out;
}

TEST(URLEncode, ComponentModeAgreesWithLibcurl)
{
    CURL* curl = curl_easy_init();
    ASSERT_NE(curl, nullptr);
    for (std::string const& s : randomStrings()) {
        char* escaped = curl_easy_escape(curl, s.data(), static_cast<int>(s.size()));
        EXPECT_EQ(text(URLEncode(bytes(s))), escaped);
        curl_free(escaped);
    }
    curl_easy_cleanup(curl);
}

class URLEncodePython : public CordelTest::TempFolder {};

// Python's urlencode uses quote_plus, which keeps "~" (form encoding turns it into %7E) and
// escapes "*" (form encoding keeps it); otherwise the two agree byte for byte.
TEST_F(URLEncodePython, FormModeAgreesWithUrlencodeBesidesTildeAndStar)
{
    std::vector<std::string> const strings = randomStrings();
    std::string const input = PathOf("in.bin"), output = PathOf("out.txt");
    {
        std::ofstream in(input, std::ios::binary);
        for (std::string const& s : strings)
            in << s.size() << ' ' << s;
    }
    std::string const script =
        "import sys, urllib.parse\n"
        "data = open(sys.argv[1], 'rb').read(); out = open(sys.argv[2], 'w'); i = 0\n"
        "while i < len(data):\n"
        "    j = data.index(b' ', i); n = int(data[i:j]); value = data[j + 1:j + 1 + n]; i = j + 1 + n\n"
        "    out.write(urllib.parse.urlencode({'k': value})[2:] + '\\n')\n";
    std::ofstream(PathOf("urlencode.py")) << script;
    ASSERT_EQ(std::system(("python3 " + PathOf("urlencode.py") + " " + input + " " + output).c_str()), 0);

    std::ifstream out(output);
    std::string python;
    for (std::string const& s : strings) {
        ASSERT_TRUE(std::getline(out, python));
        std::string expected;
        for (std::size_t i = 0; i < python.size(); ++i)
            if (python[i] == '~')
                expected += "%7E";
            else if (python.compare(i, 3, "%2A") == 0) {
                expected += '*';
                i += 2;
            } else
                expected += python[i];
        EXPECT_EQ(text(URLEncode(bytes(s), URLEncoding::Form)), expected);
    }
}

} // namespace
