#include <Cordel/Util/ConfigFile.h>
#include <Cordel/Util/TinyXML.h>

#include "TempFolder.h"

#include <grp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

using namespace Cordel;
using Bytes = std::vector<unsigned char>;

namespace {

// Both scopes in the test's folder: "user" for the current user, "all" for all users.
class ConfigFileTest : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        TempFolder::SetUp();
        save("XDG_CONFIG_HOME");
        save("XDG_CONFIG_DIRS");
        save("USER");
        save("HOME");
        ::setenv("XDG_CONFIG_HOME", PathOf("user").c_str(), 1);
        ::setenv("XDG_CONFIG_DIRS", (PathOf("all") + ":" + PathOf("second")).c_str(), 1);
    }
    void TearDown() override
    {
        for (auto const& [name, value] : saved)
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        TempFolder::TearDown();
    }

    std::string UserFile() const { return PathOf("user/org.cordel.test.xml"); }
    std::string AllFile() const { return PathOf("all/org.cordel.test.xml"); }

    static std::string Read(std::string const& path)
    {
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    static void Write(std::string const& path, std::string const& text)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    }

    char const* const app = "org.cordel.test";

private:
    void save(std::string const& name)
    {
        char const* value = std::getenv(name.c_str());
        saved.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
    }
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

std::vector<String> valueNames(Util::ConfigFile const& prefs)
{
    std::vector<String> names;
    prefs.GetValueNames(names, "");
    return names;
}

} // namespace

TEST_F(ConfigFileTest, EveryKindRoundTrips)
{
    Util::ConfigFile prefs(app, false);
    prefs.SetString("name", "Cordel \xE2\x99\xAA");
    prefs.SetInt("negative", -2147483647 - 1);
    prefs.SetUInt("unsigned", 0xFFFFFFFFu);
    prefs.SetBool("yes", true);
    prefs.SetBool("no", false);
    prefs.SetBinary("blob", {0, 1, 2, 254, 255});
    prefs.SetFloat("gain", 1.5f);

    Util::ConfigFile other(app, false);
    EXPECT_EQ(other.GetString("name", ""), "Cordel \xE2\x99\xAA");
    EXPECT_EQ(other.GetInt("negative", 0), -2147483647 - 1);
    EXPECT_EQ(other.GetUInt("unsigned", 0), 0xFFFFFFFFu);
    EXPECT_EQ(other.GetInt("unsigned", 0), -1);
    EXPECT_TRUE(other.GetBool("yes", false));
    EXPECT_FALSE(other.GetBool("no", true));
    Bytes blob;
    other.GetBinary("blob", blob);
    EXPECT_EQ(blob, (Bytes{0, 1, 2, 254, 255}));
    EXPECT_EQ(other.GetFloat("gain", 0), 1.5f);

    // The wrong kind or no value gives the default; GetBinary empties.
    EXPECT_EQ(other.GetInt("name", 7), 7);
    EXPECT_EQ(other.GetString("negative", "none"), "none");
    EXPECT_EQ(other.GetFloat("negative", 2.5f), 2.5f);
    EXPECT_EQ(other.GetInt("missing", 9), 9);
    other.GetBinary("name", blob);
    EXPECT_TRUE(blob.empty());

    // Overwriting changes the kind too.
    prefs.SetInt("name", 3);
    EXPECT_EQ(other.GetInt("name", 0), 3);
    EXPECT_EQ(other.GetString("name", "gone"), "gone");
}

TEST_F(ConfigFileTest, TextsAndKeysThatXmlWouldMangle)
{
    Util::ConfigFile prefs(app, false);
    std::vector<std::string> const texts = {"", "  spaced  ", "   ", "line\nbreak\tand tab", "crlf\r\nline",
                                            "\x01\x1F control", "<&>\"' ]]> <!-- x -->"};
    for (std::size_t i = 0; i < texts.size(); ++i)
        prefs.SetString(String("key ") + "\"<&>'" + String::Number(unsigned(i)), texts[i].c_str());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(prefs.GetString(String("key ") + "\"<&>'" + String::Number(unsigned(i)), "default").ToStdString(),
                  texts[i])
            << i;

    // What cannot be stored faithfully is not stored at all.
    prefs.SetString("latin1", "caf\xE9");
    prefs.SetString("line\nkey", "x");
    prefs.SetInt("bad \xFF key", 1);
    EXPECT_EQ(prefs.GetString("latin1", "untouched"), "untouched");
    EXPECT_EQ(valueNames(prefs).size(), texts.size());

    TinyXML::XMLDocument doc;
    EXPECT_EQ(doc.LoadFile(UserFile().c_str()), TinyXML::XML_SUCCESS);
}

TEST_F(ConfigFileTest, FloatForms)
{
    Util::ConfigFile prefs(app, false);
    prefs.SetFloat("f", 1.5f);
    Bytes block;
    prefs.GetBinary("f", block);
    Bytes expected(8, 0);
    float const f = 1.5f;
    std::memcpy(expected.data() + 4, &f, 4);
    EXPECT_EQ(block, expected);
    EXPECT_EQ(prefs.GetFloat("f", 0), 1.5f);

    prefs.SetBinary("f", {0x3F, 0xC0, 0x00, 0x00});
    EXPECT_EQ(prefs.GetFloat("f", 0), 1.5f) << "4 bytes are a big-endian float";
    prefs.SetBinary("f", {0, 0, 0, 0, 0, 0});
    EXPECT_EQ(prefs.GetFloat("f", -1), -1.0f);
    prefs.SetBinary("f", {0, 0, 0, 1, 0, 0, 0xC0, 0x3F});
    EXPECT_EQ(prefs.GetFloat("f", -1), -1.0f) << "a non-zero byte among the first four";
    prefs.SetBinary("f", {});
    EXPECT_EQ(prefs.GetFloat("f", -1), -1.0f);
}

TEST_F(ConfigFileTest, ScopesAndNames)
{
    Util::ConfigFile admin(app, true);
    Util::ConfigFile user(app, false);
    admin.SetInt("shared", 1);
    admin.SetString("only all", "a");
    EXPECT_FALSE(std::filesystem::exists(UserFile()));
    ASSERT_TRUE(std::filesystem::exists(AllFile()));
    EXPECT_FALSE(std::filesystem::exists(PathOf("second/org.cordel.test.xml")));
    EXPECT_EQ(user.GetInt("shared", 0), 1) << "all users' value is found when the user has none";

    user.SetInt("shared", 2);
    user.SetInt("b only user", 3);
    EXPECT_EQ(user.GetInt("shared", 0), 2);
    EXPECT_EQ(admin.GetInt("shared", 0), 2) << "the user's value hides all users' value";
    EXPECT_EQ(valueNames(user), (std::vector<String>{"b only user", "only all", "shared"}));
    std::vector<String> keys = {"x"};
    user.GetKeyNames(keys, "");
    EXPECT_TRUE(keys.empty());

    EXPECT_TRUE(user.RemoveValue("shared"));
    EXPECT_TRUE(user.RemoveValue("never there"));
    EXPECT_EQ(user.GetInt("shared", 0), 1);
    EXPECT_TRUE(admin.RemoveValue("shared"));
    EXPECT_EQ(user.GetInt("shared", 0), 0);
    user.Synchronize();

    // Relative XDG entries are ignored: the user's scope falls back to ~/.config.
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", PathOf("home").c_str(), 1);
    user.SetInt("home", 1);
    EXPECT_TRUE(std::filesystem::exists(PathOf("home/.config/org.cordel.test.xml")));

    // Identifiers that cannot name a file store nothing.
    for (char const* bad : {"", ".", "..", "a/b"}) {
        Util::ConfigFile odd(bad, false);
        odd.SetInt("k", 1);
        EXPECT_EQ(odd.GetInt("k", 0), 0) << bad;
    }
}

TEST_F(ConfigFileTest, AdministratorTest)
{
    ::unsetenv("USER");
    EXPECT_FALSE(Util::ConfigFile(app).IsAdmin());
    ::setenv("USER", "no-such-user-of-cordel", 1);
    if (::getgrnam("admin"))
        GTEST_SKIP() << "this machine has a group named admin";
    EXPECT_FALSE(Util::ConfigFile(app).IsAdmin());
    ::setenv("USER", "root", 1);
    Util::ConfigFile root(app);
    EXPECT_FALSE(root.IsAdmin());
    root.SetInt("k", 1);
    EXPECT_TRUE(std::filesystem::exists(UserFile()));
}

TEST_F(ConfigFileTest, CorruptOrTruncatedFileGivesDefaultsAndIsKeptAside)
{
    Util::ConfigFile prefs(app, false);
    for (int i = 0; i < 20; ++i)
        prefs.SetInt(String("key%1").Arg(i), i);
    std::string const whole = Read(UserFile());
    std::filesystem::create_directories(PathOf("all"));

    for (std::string const& broken : {whole.substr(0, whole.size() / 2), std::string(), std::string("\0\xFF<<", 4),
                                      std::string("<other><integer key=\"key1\">1</integer></other>")}) {
        Write(UserFile(), broken);
        Write(AllFile(), whole);
        EXPECT_EQ(prefs.GetInt("key1", -1), 1) << "a broken user file hides nothing";
        EXPECT_EQ(prefs.GetInt("nothing", -1), -1);
        std::filesystem::remove(AllFile());
        EXPECT_EQ(prefs.GetInt("key1", -1), -1);
        EXPECT_TRUE(valueNames(prefs).empty());

        prefs.SetInt("fresh", 5);
        EXPECT_EQ(prefs.GetInt("fresh", 0), 5);
        EXPECT_EQ(valueNames(prefs), std::vector<String>{"fresh"});
        std::vector<std::string> aside;
        for (auto const& entry : std::filesystem::directory_iterator(PathOf("user")))
            if (entry.path().filename().string().starts_with("org.cordel.test.xml.corrupt-"))
                aside.push_back(entry.path().string());
        ASSERT_EQ(aside.size(), 1u);
        EXPECT_EQ(Read(aside[0]), broken);
        std::filesystem::remove(aside[0]);
    }
}

TEST_F(ConfigFileTest, TwoProcessesWritingAtOnceLoseNothing)
{
    constexpr int keys = 1000;
    // The lock is under test here, not the disk: in memory, the 2000 fsyncs cost nothing.
    char shared[] = "/dev/shm/cordel-test-XXXXXX";
    bool const inMemory = ::access("/dev/shm", W_OK) == 0 && ::mkdtemp(shared);
    if (inMemory)
        ::setenv("XDG_CONFIG_HOME", shared, 1);
    pid_t children[2];
    for (int p = 0; p < 2; ++p) {
        children[p] = ::fork();
        ASSERT_GE(children[p], 0);
        if (children[p] == 0) {
            Util::ConfigFile prefs(app, false);
            for (int i = 0; i < keys; ++i)
                prefs.SetInt(String("p%1-%2").Arg(p).Arg(i), i);
            ::_exit(0);
        }
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    Util::ConfigFile prefs(app, false);
    EXPECT_EQ(valueNames(prefs).size(), 2u * keys);
    for (int p = 0; p < 2; ++p)
        for (int i = 0; i < keys; i += 37)
            EXPECT_EQ(prefs.GetInt(String("p%1-%2").Arg(p).Arg(i), -1), i);
    if (inMemory)
        std::filesystem::remove_all(shared);
}

TEST_F(ConfigFileTest, ProcessKilledWhileWritingLeavesOldOrNewValues)
{
    constexpr int keys = 20;
    int progress[2];
    ASSERT_EQ(::pipe(progress), 0);
    pid_t const child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(progress[0]);
        Util::ConfigFile prefs(app, false);
        // Round r sets every key to r, in order, and reports each write.
        for (int r = 1;; ++r)
            for (int i = 0; i < keys; ++i) {
                prefs.SetInt(String("k%1").Arg(i), r);
                char const one = 1;
                (void)!::write(progress[1], &one, 1);
            }
    }
    ::close(progress[1]);
    char buffer[64];
    for (int got = 0; got < keys * 5;) {
        ssize_t const n = ::read(progress[0], buffer, std::min<std::size_t>(sizeof buffer, std::size_t(keys * 5 - got)));
        ASSERT_GT(n, 0);
        got += int(n);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(progress[0]);

    TinyXML::XMLDocument doc;
    ASSERT_EQ(doc.LoadFile(UserFile().c_str()), TinyXML::XML_SUCCESS);
    Util::ConfigFile prefs(app, false);
    int const newest = prefs.GetInt("k0", 0);
    ASSERT_GE(newest, 5);
    // Writes went in key order, so the file holds a prefix of the newest round over the one before.
    bool older = false;
    for (int i = 0; i < keys; ++i) {
        int const v = prefs.GetInt(String("k%1").Arg(i), 0);
        EXPECT_TRUE(v == newest || v == newest - 1) << "k" << i << " = " << v;
        EXPECT_FALSE(older && v == newest) << "k" << i;
        older = older || v == newest - 1;
    }
    // The killed writer's lock went with it.
    prefs.SetInt("after", 1);
    EXPECT_EQ(prefs.GetInt("after", 0), 1);
}
