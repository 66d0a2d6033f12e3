// labels: interop
#include <Cordel/Util/Clipboard.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern char** environ;

using namespace Cordel;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr unsigned int Text = Util::Clipboard::TextFormat;
constexpr unsigned int Pict = 0x50494354; // PICT
char const* const pictTarget = "application/x-cordel-format-50494354";

Bytes bytesOf(std::string const& s)
{
    return Bytes(s.begin(), s.end());
}

Bytes binary(std::size_t size)
{
    Bytes b(size);
    for (std::size_t i = 0; i < size; ++i)
        b[i] = static_cast<unsigned char>((i * 7919u) >> 3);
    return b;
}

// Runs a shell command line of the test's own making, feeding it input; returns its output.
std::string shell(std::string const& command, Bytes const& input = {}, int* status = nullptr)
{
    std::string const withInput = input.empty() ? command + " </dev/null" : command;
    std::string output;
    if (input.empty()) {
        FILE* p = ::popen(withInput.c_str(), "r");
        char buffer[65536];
        std::size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, p)) > 0)
            output.append(buffer, n);
        int const s = ::pclose(p);
        if (status)
            *status = s;
    } else {
        FILE* p = ::popen(withInput.c_str(), "w");
        std::fwrite(input.data(), 1, input.size(), p);
        int const s = ::pclose(p);
        if (status)
            *status = s;
    }
    return output;
}

std::string xclipOut(std::string const& target, int* status = nullptr)
{
    return shell("xclip -selection clipboard -o -t '" + target + "' 2>/dev/null", {}, status);
}

void xclipIn(std::string const& target, Bytes const& data)
{
    // xclip forks a server of its own that stays after this returns, and that server takes the
    // selection a moment later: wait (bounded) until it offers the target.
    shell("xclip -selection clipboard -i -t '" + target + "' >/dev/null 2>&1", data);
    for (int i = 0; i < 500; ++i) {
        std::string const targets = xclipOut("TARGETS");
        if (targets.find(target) != std::string::npos)
            return;
        ::usleep(10000);
    }
    ADD_FAILURE() << "xclip never offered " << target;
}

// A virtual X server of the test's own, on a display number it picks itself.
class XClipboardTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (::access("/usr/bin/Xvfb", X_OK) != 0 || ::access("/usr/bin/xclip", X_OK) != 0)
            GTEST_SKIP() << "Xvfb or xclip is not installed: the X11 clipboard is not tested";
        int fds[2];
        ASSERT_EQ(::pipe(fds), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, fds[1], 3);
        ::posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        char const* argv[] = {"Xvfb", "-displayfd", "3", "-nolisten", "tcp", "-screen", "0", "64x64x24", nullptr};
        int const spawned = ::posix_spawn(&server, "/usr/bin/Xvfb", &actions, nullptr, const_cast<char**>(argv), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(fds[1]);
        ASSERT_EQ(spawned, 0);
        std::string number;
        pollfd p{fds[0], POLLIN, 0};
        char c;
        while (::poll(&p, 1, 20000) == 1 && ::read(fds[0], &c, 1) == 1 && c != '\n')
            number += c;
        ::close(fds[0]);
        ASSERT_FALSE(number.empty()) << "Xvfb did not start";
        char const* old = std::getenv("DISPLAY");
        savedDisplay = old ? old : "";
        ::setenv("DISPLAY", (":" + number).c_str(), 1);
    }
    void TearDown() override
    {
        if (server > 0) {
            ::kill(server, SIGTERM);
            ::waitpid(server, nullptr, 0);
            ::setenv("DISPLAY", savedDisplay.c_str(), 1);
        }
    }

    pid_t server = 0;
    std::string savedDisplay;
};

} // namespace

TEST(Clipboard, RegisterFormatReturnsTheFormat)
{
    EXPECT_EQ(Util::Clipboard::RegisterFormat("anything", 7), 7u);
    EXPECT_EQ(Util::Clipboard::RegisterFormat("", Pict), Pict);
}

TEST_F(XClipboardTest, TextAndDataSetByCordelAreReadByAnotherProgram)
{
    std::string const text = "h\xC3\xA9llo, w\xC3\xB6rld";
    Bytes const data = {0, 1, 2, 0, 255, 0};
    Util::Clipboard::SetContent(nullptr, Pict, data, text.c_str());

    EXPECT_EQ(xclipOut("UTF8_STRING"), text);
    EXPECT_EQ(xclipOut("text/plain;charset=utf-8"), text);
    EXPECT_EQ(xclipOut("STRING"), text);
    EXPECT_EQ(bytesOf(xclipOut(pictTarget)), data);
    std::string const targets = xclipOut("TARGETS");
    EXPECT_NE(targets.find(pictTarget), std::string::npos) << targets;

    EXPECT_TRUE(Util::Clipboard::IsFormatAvailable(Text));
    EXPECT_TRUE(Util::Clipboard::IsFormatAvailable(Pict));
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(7));
    EXPECT_EQ(Util::Clipboard::GetString(nullptr, 1000), text.c_str());
    Bytes got;
    Util::Clipboard::GetContent(nullptr, Text, got, 1000);
    Bytes withZero = bytesOf(text);
    withZero.push_back(0);
    EXPECT_EQ(got, withZero);

    // Placing again replaces all of it: no text this time.
    Util::Clipboard::SetContent(nullptr, 7, {42}, "");
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Text));
    EXPECT_EQ(Util::Clipboard::GetString(nullptr, 1000), "");
    int status = 0;
    xclipOut("UTF8_STRING", &status);
    EXPECT_NE(status, 0);
    EXPECT_EQ(bytesOf(xclipOut("application/x-cordel-format-00000007")), Bytes{42});

    // An unset format places only the text.
    Util::Clipboard::SetContent(nullptr, {}, data, "only text");
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Pict));
    EXPECT_EQ(xclipOut("UTF8_STRING"), "only text");

    // Nothing at all empties the clipboard.
    Util::Clipboard::SetContent(nullptr, {}, {}, "");
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Text));
}

TEST_F(XClipboardTest, SetByAnotherProgramIsReadByCordel)
{
    xclipIn("UTF8_STRING", bytesOf("from xclip"));
    EXPECT_TRUE(Util::Clipboard::IsFormatAvailable(Text));
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Pict));
    EXPECT_EQ(Util::Clipboard::GetString(nullptr, 100), "from xclip");

    // The size counts the zero byte that text has on our clipboard.
    Bytes data = {9, 9};
    Util::Clipboard::GetContent(nullptr, Text, data, 10);
    EXPECT_EQ(data, (Bytes{9, 9})) << "11 bytes must not fit in 10";
    EXPECT_EQ(Util::Clipboard::GetString(nullptr, 10), "");
    Util::Clipboard::GetContent(nullptr, Text, data, 11);
    EXPECT_EQ(data, bytesOf(std::string("from xclip", 11)));
    EXPECT_EQ(Util::Clipboard::GetString(nullptr, 11), "from xclip");

    Bytes const picture = binary(300);
    xclipIn(pictTarget, picture);
    Bytes got = {1};
    Util::Clipboard::GetContent(nullptr, Pict, got, 299);
    EXPECT_EQ(got, Bytes{1});
    Util::Clipboard::GetContent(nullptr, Pict, got, 300);
    EXPECT_EQ(got, picture);
    // xclip hands its data out for any target asked for, but offers only its own.
    EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(7));
}

TEST_F(XClipboardTest, LargeDataTravelsInPiecesBothWays)
{
    Bytes const big = binary(3 << 20);
    Util::Clipboard::SetContent(nullptr, Pict, big, "");
    EXPECT_EQ(bytesOf(xclipOut(pictTarget)), big);

    xclipIn(pictTarget, big);
    Bytes got = {1};
    Util::Clipboard::GetContent(nullptr, Pict, got, unsigned(big.size() - 1));
    EXPECT_EQ(got, Bytes{1});
    Util::Clipboard::GetContent(nullptr, Pict, got, unsigned(big.size()));
    EXPECT_EQ(got, big);
}

// With no display (or no helper to reach it), a clipboard inside the process follows the same rules.
TEST(LocalClipboard, SameRulesWithoutADesktop)
{
    for (char const* way : {"no display", "no helper", "dead display"}) {
        SCOPED_TRACE(way);
        std::string const w = way;
        ::unsetenv("DISPLAY");
        ::unsetenv("CORDEL_CLIPBOARD_HELPER");
        if (w == "no helper") {
            ::setenv("DISPLAY", ":0", 1);
            ::setenv("CORDEL_CLIPBOARD_HELPER", "/nonexistent/cordel-clipboard", 1);
        } else if (w == "dead display") {
            ::setenv("DISPLAY", "/nonexistent/socket:0", 1);
        }

        Util::Clipboard::SetContent(nullptr, {}, {1, 2}, "abc");
        EXPECT_TRUE(Util::Clipboard::IsFormatAvailable(Text));
        Bytes data = {7};
        Util::Clipboard::GetContent(nullptr, Text, data, 3);
        EXPECT_EQ(data, Bytes{7});
        Util::Clipboard::GetContent(nullptr, Text, data, 4);
        EXPECT_EQ(data, (Bytes{'a', 'b', 'c', 0}));
        EXPECT_EQ(Util::Clipboard::GetString(nullptr, 3), "");
        EXPECT_EQ(Util::Clipboard::GetString(nullptr, 4), "abc");

        Util::Clipboard::SetContent(nullptr, Pict, {5, 0, 6}, "");
        EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Text));
        EXPECT_TRUE(Util::Clipboard::IsFormatAvailable(Pict));
        Util::Clipboard::GetContent(nullptr, Pict, data, 3);
        EXPECT_EQ(data, (Bytes{5, 0, 6}));
        EXPECT_EQ(Util::Clipboard::GetString(nullptr, 100), "");

        Util::Clipboard::SetContent(nullptr, {}, {}, "");
        EXPECT_FALSE(Util::Clipboard::IsFormatAvailable(Pict));
    }
    ::unsetenv("DISPLAY");
    ::unsetenv("CORDEL_CLIPBOARD_HELPER");
}
