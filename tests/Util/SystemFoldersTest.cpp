#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/SystemFolders.h>

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <set>
#include <string>

using namespace Cordel;
using Util::Exception::FileIO;

namespace {

// Sets an environment variable for the life of the object, then puts the old value back.
class ScopedVariable {
public:
    ScopedVariable(char const* name, char const* value) : name(name)
    {
        if (char const* old = std::getenv(name))
            previous = old;
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~ScopedVariable()
    {
        if (previous)
            ::setenv(name, previous->c_str(), 1);
        else
            ::unsetenv(name);
    }

private:
    char const* name;
    std::optional<std::string> previous;
};

// The folder of the mapped file whose name contains the text, read from the kernel's own list.
std::string mappedFolder(std::string const& part)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::size_t const slash = line.find('/');
        if (slash != std::string::npos && line.find(part, slash) != std::string::npos) {
            std::string const path = line.substr(slash);
            return path.substr(0, path.rfind('/') + 1);
        }
    }
    return {};
}

// Whether the name is prefix, then exactly count letters or digits, then suffix.
bool isRandomName(std::string const& name, std::string const& prefix, std::size_t count, std::string const& suffix)
{
    if (name.size() != prefix.size() + count + suffix.size() || !name.starts_with(prefix) || !name.ends_with(suffix))
        return false;
    return std::all_of(name.begin() + prefix.size(), name.end() - suffix.size(), [](char c) { return std::isalnum(c) != 0; });
}

} // namespace

TEST(SystemFolders, FixedFolders)
{
    EXPECT_EQ(Util::GetSystemFontFolder().ToString(), "/usr/share/fonts/");
    EXPECT_EQ(Util::GetAlternateSystemFontFolder().ToString(), "/usr/local/share/fonts/");
}

TEST(SystemFolders, FollowTheEnvironment)
{
    ScopedVariable home("HOME", "/home/someone");
    {
        ScopedVariable dataHome("XDG_DATA_HOME", "/data/home");
        EXPECT_EQ(Util::GetUserApplicationDataFolder().ToString(), "/data/home/");
    }
    for (char const* ignored : {static_cast<char const*>(nullptr), "", "relative/data"}) {
        ScopedVariable dataHome("XDG_DATA_HOME", ignored);
        EXPECT_EQ(Util::GetUserApplicationDataFolder().ToString(), "/home/someone/.local/share/");
    }
    {
        ScopedVariable dataDirs("XDG_DATA_DIRS", "relative::/opt/data/:/usr/share");
        EXPECT_EQ(Util::GetSystemApplicationDataFolder().ToString(), "/opt/data/");
    }
    for (char const* ignored : {static_cast<char const*>(nullptr), "", "relative"}) {
        ScopedVariable dataDirs("XDG_DATA_DIRS", ignored);
        EXPECT_EQ(Util::GetSystemApplicationDataFolder().ToString(), "/usr/local/share/");
        ScopedVariable temp("TMPDIR", ignored);
        EXPECT_EQ(Util::GetSystemTempFolder().ToString(), "/tmp/");
    }
    ScopedVariable temp("TMPDIR", "/var/tmp//");
    EXPECT_EQ(Util::GetSystemTempFolder().ToString(), "/var/tmp/");
}

class TempFileTest : public CordelTest::TempFolder {};

TEST_F(TempFileTest, MadeFromThePatternAndCreatedPrivately)
{
    FilePath const made = Util::GetTempFile(FilePath(String(PathOf("take.wav"))), false, 8);
    EXPECT_EQ(made.GetFolder().ToString(), String(folder.c_str()) + "/");
    EXPECT_TRUE(isRandomName(made.GetFilename().ToStdString(), "take-", 8, ".wav"));
    struct stat info;
    ASSERT_EQ(::stat(made.GetInternal().c_str(), &info), 0);
    EXPECT_EQ(info.st_size, 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    ScopedVariable temp("TMPDIR", folder.c_str());
    FilePath const bare = Util::GetTempFile(FilePath(), true, 2);
    EXPECT_EQ(bare.GetFolder(), made.GetFolder());
    EXPECT_TRUE(isRandomName(bare.GetFilename().ToStdString(), "cordel-", 6, ""));
}

TEST_F(TempFileTest, NoCollisionBetweenProcesses)
{
    // Short names and several processes at once: exclusive creation has to settle every clash.
    constexpr int processes = 4;
    constexpr int perProcess = 300;
    pid_t children[processes];
    for (pid_t& child : children) {
        child = ::fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            try {
                for (int i = 0; i < perProcess; ++i)
                    Util::GetTempFile(FilePath(String(PathOf("t"))), false, 6);
            } catch (...) {
                ::_exit(1);
            }
            ::_exit(0);
        }
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    std::size_t count = 0;
    for ([[maybe_unused]] auto const& entry : std::filesystem::directory_iterator(folder))
        ++count;
    EXPECT_EQ(count, static_cast<std::size_t>(processes * perProcess));
}

TEST_F(TempFileTest, MissingFolderFails)
{
    try {
        Util::GetTempFile(FilePath(String(PathOf("missing/take.wav"))), false, 8);
        FAIL() << "a temporary file in a missing folder";
    } catch (FileIO const& e) {
        EXPECT_EQ(e.GetMessage(), "Can't create a temporary file");
        EXPECT_EQ(e.GetErrorType(), FileIO::OpenError);
        EXPECT_EQ(e.GetErrorCode(), ENOENT);
        EXPECT_EQ(e.GetPath(), String(PathOf("missing/take.wav")));
    }
}

TEST(ModuleDirectory, ByAddressByNameAndTheProgram)
{
    std::string const library = mappedFolder("libcordel.so");
    ASSERT_FALSE(library.empty());
    auto* inLibrary = reinterpret_cast<void*>(&Util::GetSystemTempFolder);
    EXPECT_EQ(Util::GetModuleDirectory("", inLibrary, true).ToString().ToStdString(), library);
    EXPECT_EQ(Util::GetModuleDirectory("libcordel.so", nullptr, true).ToString().ToStdString(), library);
    EXPECT_EQ(Util::GetModuleDirectory("libcordel", nullptr, true).ToString().ToStdString(), library);
    EXPECT_TRUE(Util::GetModuleDirectory("libcordelx", nullptr, false).IsEmpty());

    char program[4096];
    ssize_t const length = ::readlink("/proc/self/exe", program, sizeof program);
    ASSERT_GT(length, 0);
    std::string const programText(program, static_cast<std::size_t>(length));
    std::string const programFolder = programText.substr(0, programText.rfind('/') + 1);
    EXPECT_EQ(Util::GetModuleDirectory("", nullptr, false).ToString().ToStdString(), programFolder);
    static int inProgram = 0;
    EXPECT_EQ(Util::GetModuleDirectory("", &inProgram, false).ToString().ToStdString(), programFolder);
}
