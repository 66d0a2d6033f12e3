#include <Cordel/Util/Dir.h>
#include <Cordel/Util/FileIOException.h>

#include "Printers.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>

using namespace Cordel;
using Util::Dir;
using Util::Exception::FileIO;

namespace {

FileIO failureOf(std::function<void()> const& action)
{
    try {
        action();
    } catch (FileIO const& e) {
        return e;
    }
    ADD_FAILURE() << "no FileIO thrown";
    return FileIO("", FolderPath(), FileIO::UnexpectedError);
}

} // namespace

class DirTest : public CordelTest::TempFolder {
protected:
    FolderPath folderOf(std::string const& name) const { return FolderPath(String(PathOf(name))); }
    void touch(std::string const& name) const { std::ofstream(PathOf(name)) << "x"; }
    String full(std::string const& name) const { return String(PathOf(name)); }
};

TEST_F(DirTest, ExistsOnlyForFolders)
{
    EXPECT_TRUE(Dir(folderOf("")).Exists());
    EXPECT_FALSE(Dir(folderOf("missing")).Exists());
    touch("plain");
    EXPECT_FALSE(Dir(folderOf("plain")).Exists());
    EXPECT_FALSE(Dir().Exists());
    EXPECT_TRUE(Dir(FolderPath("/")).Exists());
}

TEST_F(DirTest, CreateRecursiveMakesEveryMissingStep)
{
    Dir(folderOf("a")).Create(false);
    Dir deep(folderOf("a/b/c"));
    deep.Create(true);
    EXPECT_TRUE(Dir(folderOf("a/b")).Exists());
    EXPECT_TRUE(deep.Exists());
    EXPECT_EQ(std::filesystem::status(PathOf("a/b")).permissions() & std::filesystem::perms::all,
              std::filesystem::perms(0755) & ~std::filesystem::perms(::umask(022)));
    deep.Create(false); // there already: nothing to do
}

TEST_F(DirTest, CreateFailuresNameErrnoAndDepth)
{
    std::string const top = folder.string(); // "/tmp/cordel-test-..." lies 2 deep
    auto const depth = static_cast<unsigned int>(std::count(top.begin(), top.end(), '/'));
    FileIO const missingParent = failureOf([&] { Dir(folderOf("x/y")).Create(false); });
    EXPECT_EQ(missingParent.GetMessage(), String("mkdir() failed with %1/%2").Arg(ENOENT).Arg(depth + 2));
    EXPECT_EQ(missingParent.GetErrorCode(), ENOENT);
    EXPECT_EQ(missingParent.GetPath(), folderOf("x/y").ToString());
    EXPECT_FALSE(Dir(folderOf("x")).Exists());

    // A file in the way of a step stops the walk at that step.
    touch("file");
    FileIO const fileInTheWay = failureOf([&] { Dir(folderOf("file/sub/deeper")).Create(true); });
    EXPECT_EQ(fileInTheWay.GetMessage(), String("mkdir() failed with %1/%2").Arg(EEXIST).Arg(depth + 1));
    EXPECT_EQ(fileInTheWay.GetPath(), folderOf("file").ToString());

    FileIO const tooLong = failureOf([&] { Dir(folderOf(std::string(300, 'n'))).Create(true); });
    EXPECT_TRUE(tooLong.GetMessage().BeginsWith(String("mkdir() failed with %1/").Arg(ENAMETOOLONG)));
}

TEST_F(DirTest, RemoveOnlyEmptyFolders)
{
    Dir(folderOf("full")).Create(false);
    touch("full/inside");
    FileIO const e = failureOf([&] { Dir(folderOf("full")).Remove(); });
    EXPECT_EQ(e.GetMessage(), "rmdir() failed");
    EXPECT_EQ(e.GetErrorType(), FileIO::RemoveError);
    EXPECT_EQ(e.GetErrorCode(), ENOTEMPTY);
    std::filesystem::remove(PathOf("full/inside"));
    Dir(folderOf("full")).Remove();
    EXPECT_FALSE(Dir(folderOf("full")).Exists());
}

TEST_F(DirTest, Times)
{
    Dir dir(folderOf(""));
    Util::FileTime time;
    time.modificationTime = Util::FileTimeStamp{1500000000, 250000000};
    dir.SetTime(time);
    Util::FileTime got;
    dir.GetTime(&got);
    EXPECT_EQ(got.modificationTime.Get(), time.modificationTime.Get());

    Dir missing(folderOf("missing"));
    EXPECT_EQ(failureOf([&] { missing.GetTime(&got); }).GetMessage(), "Error getting folder time");
    EXPECT_EQ(failureOf([&] { missing.SetTime(time); }).GetMessage(), "Error setting folder time");
    EXPECT_EQ(failureOf([&] { missing.SetTime(Util::FileTime{}); }).GetMessage(), "Error setting folder time");
}

TEST_F(DirTest, ListingFilters)
{
    for (char const* name : {"take1.wav", "Take2.WAV", "take3.wav.txt", "notes.txt", "aba", "abba"})
        touch(name);
    Dir(folderOf("folder.wav")).Create(false);
    Dir dir(folderOf(""));
    auto list = [&](char const* filter) {
        std::vector<String> names;
        dir.GetFilenames(names, filter, false);
        return names;
    };
    EXPECT_EQ(list("*.WAV"), (std::vector<String>{full("Take2.WAV"), full("take1.wav")}));
    EXPECT_EQ(list("TAKE"), (std::vector<String>{full("Take2.WAV"), full("take1.wav"), full("take3.wav.txt")}));
    EXPECT_EQ(list("take*.txt"), (std::vector<String>{full("take3.wav.txt")}));
    EXPECT_EQ(list("ab*ba"), (std::vector<String>{full("abba")})); // "*" does not let the ends overlap
    EXPECT_EQ(list("").size(), 6u);
    EXPECT_TRUE(list("*.aiff").empty());
}

TEST_F(DirTest, ListingRecursesAndAccumulates)
{
    Dir(folderOf("sub/deeper")).Create(true);
    touch("top.wav");
    touch("sub/mid.wav");
    touch("sub/deeper/low.wav");
    touch("sub/deeper/low.txt");
    // Links back up must not make the listing go round for ever.
    std::filesystem::create_directory_symlink(folder, PathOf("sub/deeper/loop"));
    std::filesystem::create_directory_symlink(folder / "sub", PathOf("sub/deeper/loop2"));

    std::vector<String> names{"kept"};
    Dir(folderOf("")).GetFilenames(names, "*.wav", true);
    EXPECT_EQ(names, (std::vector<String>{"kept", full("sub/deeper/low.wav"), full("sub/mid.wav"), full("top.wav")}));

    Dir(folderOf("sub")).GetFilenames(names, "*.txt", false);
    EXPECT_EQ(names.size(), 4u);
    Dir(folderOf("sub/deeper")).GetFilenames(names, "*.txt", false);
    EXPECT_EQ(names.back(), full("sub/deeper/low.txt"));

    Dir(folderOf("missing")).GetFilenames(names, "", true);
    EXPECT_EQ(names.size(), 5u);
}
