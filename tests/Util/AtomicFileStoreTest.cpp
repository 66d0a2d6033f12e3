#include <Cordel/Util/detail/AtomicFileStore.h>

#include "TempFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using Cordel::Util::detail::AtomicFileStore;
using State = AtomicFileStore::State;

namespace {

class AtomicFileStoreTest : public CordelTest::TempFolder {
protected:
    std::string Read(std::string const& path) const
    {
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    void Write(std::string const& path, std::string const& text) const
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    }
    std::vector<std::string> Names(std::string const& subfolder) const
    {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(PathOf(subfolder)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    static mode_t ModeOf(std::string const& path)
    {
        struct stat status{};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }
};

} // namespace

TEST_F(AtomicFileStoreTest, ReadTellsWhyThereIsNothing)
{
    AtomicFileStore const store(PathOf("file"), 0600, 0700);
    EXPECT_EQ(store.Read(100).state, State::Missing);

    Write(PathOf("file"), "0123456789");
    for (std::size_t const limit : {std::size_t(10), std::size_t(9)}) {
        AtomicFileStore::Contents const contents = store.Read(limit);
        EXPECT_EQ(contents.state, limit == 10 ? State::Read : State::Unusable) << "limit " << limit;
        EXPECT_EQ(contents.text, limit == 10 ? "0123456789" : "");
    }
    std::filesystem::create_directory(PathOf("folder"));
    EXPECT_EQ(AtomicFileStore(PathOf("folder"), 0600, 0700).Read(100).state, State::Unusable);
    // A file where a folder should be: there, in a way, but not to be read (root included).
    EXPECT_EQ(AtomicFileStore(PathOf("file/inside"), 0600, 0700).Read(100).state, State::Unreadable);
}

TEST_F(AtomicFileStoreTest, ReplaceSwapsTheWholeFileAndLeavesNothingBehind)
{
    AtomicFileStore const store(PathOf("box/file"), 0640, 0750);
    EXPECT_FALSE(store.Replace("no folder yet"));
    {
        auto const lock = store.TakeLock();
        ASSERT_TRUE(lock);
    }
    EXPECT_EQ(ModeOf(PathOf("box")), 0750u);

    mode_t const mask = ::umask(0077);
    ASSERT_TRUE(store.Replace("old"));
    ::umask(mask);
    EXPECT_EQ(ModeOf(PathOf("box/file")), 0640u) << "the store's mode, whatever the umask";

    // A reader that opened the old file goes on reading the old file whole.
    int const reader = ::open(PathOf("box/file").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_TRUE(store.Replace(std::string(100000, 'n')));
    char old[8] = {};
    EXPECT_EQ(::read(reader, old, sizeof old), 3);
    ::close(reader);
    EXPECT_EQ(store.Read(1 << 20).text, std::string(100000, 'n'));
    EXPECT_EQ(Names("box"), (std::vector<std::string>{"file", "file.lock"}));
}

TEST_F(AtomicFileStoreTest, OneLockHolderAtATime)
{
    AtomicFileStore const store(PathOf("a/b/c/file"), 0600, 0700);
    int const other = [&] {
        auto const lock = store.TakeLock();
        EXPECT_TRUE(lock);
        EXPECT_EQ(ModeOf(PathOf("a/b/c/file.lock")), 0600u);
        // flock belongs to the open file, so a second opening stands for another writer.
        int const fd = ::open(PathOf("a/b/c/file.lock").c_str(), O_RDWR | O_CLOEXEC);
        EXPECT_NE(::flock(fd, LOCK_EX | LOCK_NB), 0);
        return fd;
    }();
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0) << "the lock went with its holder";
    ::close(other);

    Write(PathOf("blocker"), "");
    EXPECT_FALSE(AtomicFileStore(PathOf("blocker/file"), 0600, 0700).TakeLock());
}

TEST_F(AtomicFileStoreTest, MoveAsideKeepsTheOldContents)
{
    AtomicFileStore const store(PathOf("file"), 0600, 0700);
    EXPECT_FALSE(store.MoveAside());
    Write(PathOf("file"), "<broken");
    ASSERT_TRUE(store.MoveAside());
    std::vector<std::string> const names = Names("");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0].size(), std::string("file.corrupt-XXXXXX").size());
    EXPECT_TRUE(names[0].starts_with("file.corrupt-"));
    EXPECT_EQ(Read(PathOf(names[0])), "<broken");
}
