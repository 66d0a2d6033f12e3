#include <Cordel/Util/LaunchURL.h>

#include "TempFolder.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace Cordel;

namespace {

// A stand-in xdg-open first on PATH: it appends its argument count and arguments, each ended by
// a zero byte, to a log, then stays until the test lets it go, the way xdg-open may stay until
// the browser exits (or until the test's folder is gone).
class LaunchURLTest : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        TempFolder::SetUp();
        std::string const script = PathOf("xdg-open");
        std::ofstream(script) << "#!/bin/sh\n"
                                 "printf '%s\\0' \"$#\" \"$@\" >> \"" << PathOf("log") << "\"\n"
                                 "n=0\n"
                                 "while [ ! -e \"" << PathOf("release") << "\" ] && [ -d \"" << folder.string() << "\" ] && [ $n -lt 300 ]; do\n"
                                 "  sleep 0.1; n=$((n+1))\n"
                                 "done\n"
                                 "touch \"" << PathOf("done") << "\" 2>/dev/null\n";
        ::chmod(script.c_str(), 0755);
        char const* path = std::getenv("PATH");
        savedPath = path ? path : "";
        ::setenv("PATH", (folder.string() + ":" + savedPath).c_str(), 1);
    }
    void TearDown() override
    {
        ::setenv("PATH", savedPath.c_str(), 1);
        TempFolder::TearDown();
    }

    bool Exists(char const* name) const { return std::filesystem::exists(PathOf(name)); }

    // Waits (bounded) for the log to hold `records` launches and returns them, arguments only.
    std::vector<std::vector<std::string>> Launches(std::size_t records)
    {
        std::vector<std::vector<std::string>> launches;
        for (int i = 0; i < 1000; ++i) {
            launches = parse();
            if (launches.size() >= records)
                break;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return launches;
    }

    std::string savedPath;

private:
    std::vector<std::vector<std::string>> parse() const
    {
        std::ifstream in(PathOf("log"), std::ios::binary);
        std::vector<std::vector<std::string>> launches;
        std::string field;
        while (std::getline(in, field, '\0')) {
            std::vector<std::string> args;
            int const count = std::atoi(field.c_str());
            for (int i = 0; i < count && std::getline(in, field, '\0'); ++i)
                args.push_back(field);
            launches.push_back(args);
        }
        return launches;
    }
};

} // namespace

TEST_F(LaunchURLTest, ReturnsAtOnceAndLeavesNoZombie)
{
    Util::LaunchURL("https://example.org/");
    ASSERT_EQ(Launches(1), (std::vector<std::vector<std::string>>{{"https://example.org/"}}));
    EXPECT_FALSE(Exists("done")) << "LaunchURL waited for the launched program";

    std::ofstream(PathOf("release")).put('\n');
    for (int i = 0; i < 1000 && !Exists("done"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(Exists("done"));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child of ours is left to reap";
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(LaunchURLTest, HostileTextArrivesAsOneUntouchedArgument)
{
    std::vector<std::string> const urls = {
        "https://example.org/a b  c",
        "https://example.org/?q=\"quoted\"&r='single'",
        "https://example.org/;rm -rf /tmp/nothing; echo",
        "https://example.org/$(touch pwned)`touch pwned`${HOME}",
        "file:///tmp/x|y>z<w\\n*?",
    };
    for (std::string const& url : urls)
        Util::LaunchURL(url.c_str());
    // The launched programs run side by side, so their records may come in any order.
    auto launches = Launches(urls.size());
    ASSERT_EQ(launches.size(), urls.size());
    std::vector<std::vector<std::string>> expected;
    for (std::string const& url : urls)
        expected.push_back({url});
    std::sort(launches.begin(), launches.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(launches, expected);
    EXPECT_FALSE(Exists("pwned"));
    EXPECT_FALSE(std::filesystem::exists("pwned"));
}

TEST_F(LaunchURLTest, RefusedURLsLaunchNothing)
{
    Util::LaunchURL("");
    Util::LaunchURL("--help");
    Util::LaunchURL("-x https://example.org/");
    Util::LaunchURL("https://example.org/caf\xC3\xA9");
    Util::LaunchURL("https://example.org/last");
    // Had any refused URL been launched, it would have been logged before the last one.
    EXPECT_EQ(Launches(1), (std::vector<std::vector<std::string>>{{"https://example.org/last"}}));
}
