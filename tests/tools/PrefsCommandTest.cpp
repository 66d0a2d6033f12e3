// cordel prefs as a user runs it: values come back as the kind they were stored with, names that
// cannot be files and writes that store nothing are failures, dead writers leave nothing behind.

#include "CordelTool.h"
#include "RiffBuilder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace {

class PrefsCommand : public CordelTest::ToolFolder {
protected:
    void SetUp() override
    {
        ToolFolder::SetUp();
        environment["XDG_CONFIG_HOME"] = PathOf("config");
        environment["XDG_CONFIG_DIRS"] = PathOf("system");
    }
};

TEST_F(PrefsCommand, GetPrintsTheStoredKindUnlessAskedForAnother)
{
    ASSERT_EQ(cordel("prefs set org.cordel.T count 42 --type int").status, 0);
    ASSERT_EQ(cordel("prefs set org.cordel.T gain 0.1 --type float").status, 0);
    ASSERT_EQ(cordel("prefs set org.cordel.T blob 00ff --type binary").status, 0);
    ASSERT_EQ(cordel("prefs set org.cordel.T name cordel").status, 0);
    EXPECT_EQ(cordel("prefs get org.cordel.T count").out, "42\n");
    EXPECT_EQ(cordel("prefs get org.cordel.T gain").out, "0.1\n");
    EXPECT_EQ(cordel("prefs get org.cordel.T blob").out, "00FF\n");
    EXPECT_EQ(cordel("prefs get org.cordel.T name").out, "cordel\n");
    EXPECT_EQ(cordel("prefs get org.cordel.T count --type bool").out, "true\n");
    EXPECT_EQ(cordel("prefs get org.cordel.T count --type string").out, "\n");

    // The float is readable in the file, and still the specified 8-byte block as binary.
    std::string const file = [&] {
        auto bytes = CordelTest::readFile(PathOf("config/org.cordel.T.xml"));
        return std::string(bytes.begin(), bytes.end());
    }();
    EXPECT_NE(file.find("<real key=\"gain\">0.1</real>"), std::string::npos) << file;
    EXPECT_EQ(cordel("prefs get org.cordel.T gain --type binary").out.substr(0, 8), "00000000");

    auto const missing = cordel("prefs get org.cordel.T nothing");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "cordel prefs: org.cordel.T: no value \"nothing\"\n");
    EXPECT_EQ(cordel("prefs set org.cordel.T gain 1,5 --type float").status, 2);
}

TEST_F(PrefsCommand, NamesThatCannotBeFilesAndFailedWritesAreFailures)
{
    for (std::string const& name : std::vector<std::string>{"", ".", "..", "a/b", "line\nbreak", "caf\xE9", std::string(237, 'a')}) {
        auto const result = Run({"prefs", "set", name, "k", "v"});
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_EQ(result.err.rfind("cordel prefs: the application name", 0), 0u) << result.err;
    }
    EXPECT_EQ(Run({"prefs", "set", std::string(236, 'a'), "k", "v"}).status, 0);

    // A configuration folder that is a file: nothing can be stored, and the tool says so.
    CordelTest::writeFile(PathOf("blocked"), {'x'});
    environment["XDG_CONFIG_HOME"] = PathOf("blocked");
    auto const blocked = cordel("prefs set org.cordel.T k v");
    EXPECT_EQ(blocked.status, 1);
    EXPECT_NE(blocked.err.find("org.cordel.T: can't lock"), std::string::npos) << blocked.err;
}

TEST_F(PrefsCommand, DeadWritersTemporaryFilesAreRemovedByTheNextWriter)
{
    ASSERT_EQ(cordel("prefs set org.cordel.T k 1").status, 0);
    CordelTest::writeFile(PathOf("config/org.cordel.T.xml.a1B2c3"), {'<'});
    CordelTest::writeFile(PathOf("config/org.cordel.T.xml.notours"), {'<'});
    ASSERT_EQ(cordel("prefs set org.cordel.T k 2").status, 0);
    EXPECT_FALSE(exists("config/org.cordel.T.xml.a1B2c3"));
    EXPECT_TRUE(exists("config/org.cordel.T.xml.notours"));
    EXPECT_EQ(cordel("prefs get org.cordel.T k").out, "2\n");
}

TEST_F(PrefsCommand, ClipAndOpenFailWhenTheyCannotDoTheirWork)
{
    environment["DISPLAY"] = CordelTest::ToolProcess::unset;
    auto const noDisplay = cordel("clip copy", "text");
    EXPECT_EQ(noDisplay.status, 1);
    EXPECT_EQ(noDisplay.err, "cordel clip: no clipboard: DISPLAY is not set\n");
    environment["DISPLAY"] = ":9871";
    EXPECT_EQ(cordel("clip copy", "text").err, "cordel clip: no clipboard: display :9871 is not running\n");

    EXPECT_EQ(Run({"open", "https://ex\xC3\xA4mple.org/"}).status, 1);
    EXPECT_EQ(Run({"open", "--", "-x"}).status, 1);
    environment["PATH"] = PathOf("empty");
    auto const noLauncher = cordel("open https://example.org/");
    EXPECT_EQ(noLauncher.status, 1);
    EXPECT_EQ(noLauncher.err, "cordel open: xdg-open is not on PATH: nothing to open the URL with\n");
}

} // namespace
