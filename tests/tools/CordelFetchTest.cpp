// labels: interop
// pkg: cpp-httplib
// cordel fetch, run as a user runs it against a local server: to standard output and to a file,
// resuming, headers, and one line and exit code 1 for every failure.

#include "../Network/HttpTestServer.h"
#include "TempFolder.h"

#include <filesystem>
#include <sys/wait.h>

using namespace HttpTest;

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

std::string const tool = std::string(CORDEL_TEST_BINARY_DIR) + "/../tools/cordel/cordel";

std::string slurp(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class CordelFetch : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(tool))
            GTEST_SKIP() << "the cordel tool is not built";
        TempFolder::SetUp();
        ClearProxyEnvironment();
    }

    Outcome cordel(std::string const& arguments)
    {
        std::string const out = PathOf("stdout.txt"), err = PathOf("stderr.txt");
        int const raw = std::system(("cd " + folder.string() + " && " + tool + " fetch " + arguments + " >" + out + " 2>" + err).c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, slurp(out), slurp(err)};
    }

    Server server;
};

TEST_F(CordelFetch, ToStandardOutputAndToAFile)
{
    Outcome const out = cordel(server.URL("/bytes/100000"));
    ASSERT_EQ(out.status, 0) << out.err;
    EXPECT_TRUE(out.out == pattern(0, 100000));
    EXPECT_EQ(out.err, ""); // no progress line when stderr is not a terminal

    Outcome const file = cordel(server.URL("/redirect/2") + " -o hello.txt");
    ASSERT_EQ(file.status, 0) << file.err;
    EXPECT_EQ(file.out, "");
    EXPECT_EQ(slurp(PathOf("hello.txt")), "hello world");
}

TEST_F(CordelFetch, ContinuesAPartFileAndSendsHeaders)
{
    std::ofstream(PathOf("pack.bin.part"), std::ios::binary) << pattern(0, 12345);
    Outcome const resumed = cordel("--continue " + server.URL("/bytes/50000") + " -o pack.bin");
    ASSERT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_TRUE(slurp(PathOf("pack.bin")) == pattern(0, 50000));
    {
        std::lock_guard<std::mutex> hold(server.lastRangeMutex);
        EXPECT_EQ(server.lastRange, "bytes=12345-");
    }

    Outcome const echoed = cordel("-H 'X-One: 1' --header 'X-Two:  two ' " + server.URL("/echo"));
    ASSERT_EQ(echoed.status, 0) << echoed.err;
    EXPECT_NE(echoed.out.find("X-One: 1\n"), std::string::npos) << echoed.out;
    EXPECT_NE(echoed.out.find("X-Two: two\n"), std::string::npos) << echoed.out;
}

TEST_F(CordelFetch, FailuresExitWithOneLine)
{
    std::ofstream(PathOf("keep.txt")) << "mine";
    Outcome const missing = cordel(server.URL("/status/404") + " -o keep.txt");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "cordel fetch: HTTP 404 from " + server.URL("/status/404") + "\n");
    EXPECT_EQ(slurp(PathOf("keep.txt")), "mine");

    Outcome const cut = cordel(server.URL("/cut/100000") + " -o cut.bin");
    EXPECT_EQ(cut.status, 1);
    EXPECT_TRUE(cut.err.starts_with("cordel fetch: " + server.URL("/cut/100000") + ": ")) << cut.err;
    EXPECT_EQ(std::count(cut.err.begin(), cut.err.end(), '\n'), 1) << cut.err;
    EXPECT_FALSE(std::filesystem::exists(PathOf("cut.bin")));

    SilentServer silent;
    Outcome const stalled = cordel("--timeout 0.3 " + silent.URL());
    EXPECT_EQ(stalled.status, 1);
    EXPECT_EQ(stalled.err, "cordel fetch: " + silent.URL() + ": no data for 300 ms\n");

    EXPECT_EQ(cordel("--continue " + server.URL("/hello")).status, 2);
}

} // namespace
