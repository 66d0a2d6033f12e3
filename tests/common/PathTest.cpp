#include <Cordel/common/Path.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <unistd.h>

using namespace Cordel;

namespace {

std::string cwd()
{
    char buffer[4096];
    return ::getcwd(buffer, sizeof buffer) ? std::string(buffer) : std::string();
}

// Sets or unsets HOME for one test and puts the old value back.
class HomeGuard {
public:
    explicit HomeGuard(char const* value)
    {
        if (char const* old = std::getenv("HOME"))
            saved = old;
        if (value)
            ::setenv("HOME", value, 1);
        else
            ::unsetenv("HOME");
    }
    ~HomeGuard()
    {
        if (saved)
            ::setenv("HOME", saved->c_str(), 1);
        else
            ::unsetenv("HOME");
    }

private:
    std::optional<std::string> saved;
};

std::string folder(char const* text, bool resolve = true) { return FolderPath(text, resolve).GetInternal().ToStdString(); }
std::string file(char const* text, bool resolve = true) { return FilePath(text, resolve).GetInternal().ToStdString(); }

} // namespace

TEST(FolderPath, CleansComponents)
{
    EXPECT_EQ(folder("/a/b/c/../"), "/a/b/");
    EXPECT_EQ(folder("/a/b//"), "/a/b/");
    EXPECT_EQ(folder("/a//b/./c"), "/a/b/c/");
    EXPECT_EQ(folder("/a/b/../../.."), "/");
    EXPECT_EQ(folder("/../x"), "/x/");
    EXPECT_EQ(folder("//a///b"), "//a/b/"); // the leading run stays as it is
    EXPECT_EQ(folder("///a//b"), "///a/b/");
    EXPECT_EQ(folder("/"), "/");
    EXPECT_EQ(folder("///"), "/");
    EXPECT_EQ(folder("  /a   b/c  "), "/a b/c/");
}

TEST(FolderPath, EmptyAndBlankTextsAreEmpty)
{
    EXPECT_TRUE(FolderPath("").IsEmpty());
    EXPECT_TRUE(FolderPath("   ").IsEmpty());
    EXPECT_TRUE(FolderPath().IsEmpty());
    EXPECT_TRUE(FilePath(" \t\n").IsEmpty());
    EXPECT_FALSE(FolderPath("").IsTopLevel());
    EXPECT_TRUE(FolderPath("").GetParent().IsEmpty());
}

TEST(FolderPath, BackslashesAreSeparators)
{
    EXPECT_EQ(folder("\\a\\b\\\\c\\"), "/a/b/c/");
    EXPECT_EQ(folder("C:\\x\\y"), cwd() + "/C:/x/y/");
    EXPECT_EQ(folder("C:\\x\\y", false), "C:/x/y/");
}

TEST(FolderPath, RelativeTextsResolveAgainstWorkingDirectoryOnlyWhenAsked)
{
    EXPECT_EQ(folder("sub/./dir"), cwd() + "/sub/dir/");
    EXPECT_EQ(folder("."), cwd() + "/");
    EXPECT_EQ(folder("a/../b", false), "b/");
    // With nothing to climb out of, a relative ".." still means something and stays.
    EXPECT_EQ(folder("../../x", false), "../../x/");
    EXPECT_EQ(file("x.wav", false), "x.wav");
    EXPECT_EQ(file("x.wav"), cwd() + "/x.wav");
}

TEST(FolderPath, HomeExpansion)
{
    {
        HomeGuard home("/home/tester");
        EXPECT_EQ(folder("~"), "/home/tester/");
        EXPECT_EQ(folder("~/Music/../Audio"), "/home/tester/Audio/");
        EXPECT_EQ(folder("~\\Music"), "/home/tester/Music/");
        EXPECT_EQ(file("~/a.wav", false), "/home/tester/a.wav");
        // Only a leading "~" alone or before a separator is the home folder.
        EXPECT_EQ(folder("~user", false), "~user/");
    }
    {
        HomeGuard home(nullptr);
        EXPECT_EQ(folder("~"), "/");
        EXPECT_EQ(folder("~/x"), "/x/");
    }
}

TEST(FolderPath, IsRelative)
{
    EXPECT_FALSE(FolderPath::IsRelative(""));
    EXPECT_FALSE(FolderPath::IsRelative("/a"));
    EXPECT_FALSE(FolderPath::IsRelative("\\a"));
    EXPECT_TRUE(FolderPath::IsRelative("a"));
    EXPECT_TRUE(FilePath::IsRelative("~/a"));
    EXPECT_TRUE(FilePath::IsRelative("C:\\a"));
}

TEST(FolderPath, ParentAndTopLevel)
{
    FolderPath const deep("/a/b/c");
    EXPECT_EQ(deep.GetParent(), FolderPath("/a/b"));
    EXPECT_EQ(deep.GetParent().GetParent().GetParent(), FolderPath("/"));
    EXPECT_TRUE(FolderPath("/").IsTopLevel());
    EXPECT_TRUE(FolderPath("/").GetParent().IsEmpty());
    EXPECT_FALSE(deep.IsTopLevel());
    EXPECT_TRUE(FolderPath("a", false).IsTopLevel());
    EXPECT_EQ(FolderPath("a/b", false).GetParent().GetInternal(), "a/");
}

TEST(FolderPath, AppendingNormalisesAgain)
{
    FolderPath const base("/a/b");
    EXPECT_EQ((base + "c/d").GetInternal(), "/a/b/c/d/");
    EXPECT_EQ((base + "../c").GetInternal(), "/a/c/");
    EXPECT_EQ((base + "").GetInternal(), "/a/b/");
    EXPECT_EQ((FolderPath() + "/x").GetInternal(), "/x/");
}

TEST(FolderPath, ComparesNormalisedTextsBytewise)
{
    EXPECT_EQ(FolderPath("/a/b"), FolderPath("/a/./b//"));
    EXPECT_LT(FolderPath("/a/"), FolderPath("/b/"));
    EXPECT_LT(FolderPath("/A/"), FolderPath("/a/"));
    EXPECT_LE(FolderPath("/a/"), FolderPath("/a"));
    EXPECT_FALSE(FolderPath("/\xE4/") < FolderPath("/z/"));
    EXPECT_EQ(FilePath("/a/../b.wav"), FilePath("/b.wav"));
    EXPECT_LT(FilePath("/a.wav"), FilePath("/b.wav"));
    EXPECT_LE(FilePath("/b.wav"), FilePath("/b.wav"));
}

TEST(FilePath, NameParts)
{
    FilePath const archive("/data/archive.tar.gz");
    EXPECT_EQ(archive.GetFilename(), "archive.tar.gz");
    EXPECT_EQ(archive.GetBaseName(), "archive.tar");
    EXPECT_EQ(archive.GetExtension(), "gz");

    FilePath const readme("/data/README");
    EXPECT_EQ(readme.GetExtension(), "");
    EXPECT_EQ(readme.GetBaseName(), "README");

    FilePath const dotFile("/home/u/.profile");
    EXPECT_EQ(dotFile.GetExtension(), "profile");
    EXPECT_EQ(dotFile.GetBaseName(), "");

    // The dot of a folder name is not the file's.
    FilePath const inDottedFolder("/a.b/c");
    EXPECT_EQ(inDottedFolder.GetExtension(), "");
}

TEST(FilePath, CleansLikeAFolderPath)
{
    EXPECT_EQ(file("/a//b/./c/../x.wav"), "/a/b/x.wav");
    EXPECT_EQ(file("\\a\\x.wav"), "/a/x.wav");
    EXPECT_EQ(file("/a/b/.."), "/a");
    EXPECT_EQ(FilePath(FolderPath("/a/b"), "x.wav").GetInternal(), "/a/b/x.wav");
}

// The folder of a file and the name of that folder must tell the same story at every depth.
TEST(FilePath, FolderAgreesWithFolderName)
{
    struct Case {
        char const* file;
        char const* folder;
        char const* name;
    };
    Case const cases[] = {
        {"/x.wav", "/", ""},
        {"/a/x.wav", "/a/", "a"},
        {"/a/b c/x.wav", "/a/b c/", "b c"},
        {"//server/share/x", "//server/share/", "share"},
    };
    for (Case const& c : cases) {
        FilePath const path(c.file);
        FolderPath const parent = path.GetFolder();
        EXPECT_EQ(parent.GetInternal(), c.folder) << c.file;
        EXPECT_EQ(parent, FolderPath(c.folder)) << c.file;
        EXPECT_EQ(parent.GetFolderName(), c.name) << c.file;
        EXPECT_EQ(FilePath(parent, path.GetFilename()), path) << c.file;
    }
    EXPECT_EQ(FolderPath("/").GetFolderName(), "");
    EXPECT_EQ(FolderPath("/a/b").GetFolderName(), "b");
    EXPECT_TRUE(FilePath("x", false).GetFolder().IsEmpty());
}

TEST(FilePathExact, KeepsTheNameAsTheSystemKnowsIt)
{
    struct Row {
        char const* name;
        char const* text;
        std::string expected; // relative names after the working folder
    };
    std::string const here = cwd() + "/";
    Row const rows[] = {
        {"inner blanks", "x  y.wav", here + "x  y.wav"},
        {"leading blank", " a.wav", here + " a.wav"},
        {"trailing blank and tab", "a.wav \t", here + "a.wav \t"},
        {"backslash", "a\\b.wav", here + "a\\b.wav"},
        {"tilde is a name", "~/a.wav", here + "~/a.wav"},
        {"dot components stay", "./d/../a.wav", here + "./d/../a.wav"},
        {"absolute as given", "/tmp//x  y/../z.wav", "/tmp//x  y/../z.wav"},
        {"empty", "", ""},
    };
    for (Row const& row : rows) {
        FilePath const p = FilePath::Exact(row.text);
        EXPECT_EQ(std::string(p.GetInternal().c_str()), row.expected) << row.name;
    }
    FilePath const p = FilePath::Exact("/music/x  y.take 2.wav");
    EXPECT_EQ(p.GetFilename(), "x  y.take 2.wav");
    EXPECT_EQ(p.GetExtension(), "wav");
    EXPECT_EQ(p.GetFolder().GetInternal(), "/music/");
}
