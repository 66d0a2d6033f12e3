#include <Cordel/Util/File.h>
#include <Cordel/Util/FileIOException.h>

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace Cordel;
using Util::File;
using Util::Exception::FileIO;

namespace {

std::string readAll(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeAll(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// Runs the action and checks that it fails exactly as callers are told it will.
void expectFailure(std::function<void()> const& action, char const* message, int type, int line)
{
    try {
        action();
        ADD_FAILURE() << "no exception, expected \"" << message << "\"";
    } catch (FileIO const& e) {
        EXPECT_EQ(e.GetMessage(), message);
        EXPECT_EQ(static_cast<int>(e.GetErrorType()), type) << message;
        EXPECT_EQ(e.GetFile(), "../../src/Cordel/Util/File.cpp") << message;
        EXPECT_EQ(e.GetLine(), line) << message;
        EXPECT_EQ(e.GetErrorCode(), 0) << message;
    }
}

// What a C library mode does to a file, as seen from outside: whether it creates a missing file,
// the size just after opening "hello", the first byte it reads, where "XY" written at position 0
// lands, and whether what it wrote can be read back.
struct Behaviour {
    bool createsMissing = false;
    long sizeAfterOpen = -1;
    int firstByte = -1;
    std::string contentAfterWrite;
    bool readsBack = false;

    friend bool operator==(Behaviour const&, Behaviour const&) = default;
};

std::ostream& operator<<(std::ostream& out, Behaviour const& b)
{
    return out << "{creates " << b.createsMissing << ", size " << b.sizeAfterOpen << ", first " << b.firstByte
               << ", content \"" << b.contentAfterWrite << "\", reads back " << b.readsBack << "}";
}

Behaviour observeCLibrary(std::string const& folder, char const* mode)
{
    Behaviour b;
    std::string const missing = folder + "/c-missing";
    if (std::FILE* f = std::fopen(missing.c_str(), mode)) {
        b.createsMissing = true;
        std::fclose(f);
    }
    std::string const path = folder + "/c-existing";
    writeAll(path, "hello");
    std::FILE* f = std::fopen(path.c_str(), mode);
    std::fseek(f, 0, SEEK_END);
    b.sizeAfterOpen = std::ftell(f);
    std::fseek(f, 0, SEEK_SET);
    b.firstByte = std::fgetc(f);
    std::fseek(f, 0, SEEK_SET);
    std::fwrite("XY", 1, 2, f);
    std::fseek(f, 0, SEEK_SET);
    char back[2];
    b.readsBack = std::fread(back, 1, 2, f) == 2;
    std::fclose(f);
    b.contentAfterWrite = readAll(path);
    return b;
}

Behaviour observeFile(std::string const& folder, unsigned int mode)
{
    Behaviour b;
    File missing(FilePath(String(folder + "/f-missing")));
    try {
        missing.Open(mode);
        b.createsMissing = true;
    } catch (FileIO const&) {
    }
    std::string const path = folder + "/f-existing";
    writeAll(path, "hello");
    File file(FilePath(String(path.c_str())));
    file.Open(mode);
    b.sizeAfterOpen = file.Size();
    char c = 0;
    try {
        file.ReadBlock(&c, 1);
        b.firstByte = static_cast<unsigned char>(c);
    } catch (FileIO const&) {
        b.firstByte = EOF;
    }
    file.At(0);
    try {
        file.WriteBlock("XY", 2);
    } catch (FileIO const&) {
    }
    file.At(0);
    char back[2];
    try {
        file.ReadBlock(back, 2);
        b.readsBack = true;
    } catch (FileIO const&) {
    }
    file.Close();
    b.contentAfterWrite = readAll(path);
    return b;
}

} // namespace

class FileTest : public CordelTest::TempFolder {
protected:
    FilePath pathOf(std::string const& name) const { return FilePath(String(PathOf(name))); }
};

TEST_F(FileTest, EveryModeBehavesAsItsCLibraryMode)
{
    struct Case {
        unsigned int mode;
        char const* cMode;
    };
    Case const cases[] = {
        {0x00, "rb"},  {0x01, "rb"},  {0x02, "rb"},  {0x04, "wb"},  {0x10, "ab"},  {0x14, "ab"},
        {0x06, "r+b"}, {0x26, "w+b"}, {0x08, "w+b"}, {0x18, "w+b"}, {0x0A, "r+b"}, {0x12, "a+b"},
        {0x16, "a+b"}, {0x36, "w+b"}, {0x42, "rt"},  {0x44, "wt"},  {0x46, "r+t"}, {0x52, "a+t"},
    };
    for (Case const& c : cases) {
        EXPECT_STREQ(File::OpenModeText(c.mode), c.cMode) << "mode " << c.mode;
        std::filesystem::remove(PathOf("c-missing"));
        std::filesystem::remove(PathOf("f-missing"));
        EXPECT_EQ(observeFile(folder, c.mode), observeCLibrary(folder, c.cMode))
            << "mode " << c.mode << " should act as \"" << c.cMode << "\"";
    }
}

TEST_F(FileTest, OpenFailures)
{
    File missing(pathOf("missing"));
    expectFailure([&] { missing.Open(File::ModeRead); }, "Error opening file", 1, 262);
    EXPECT_FALSE(missing.IsOpen());

    // A folder opens fine for reading with stdio and fails only at the first read; refuse it.
    File folderAsFile(FilePath(String(folder.c_str())));
    expectFailure([&] { folderAsFile.Open(File::ModeRead); }, "Error opening file", 1, 262);
    expectFailure([&] { folderAsFile.Open(File::ModeWrite); }, "Error opening file", 1, 262);
    EXPECT_FALSE(folderAsFile.IsOpen());

    writeAll(PathOf("plain"), "x");
    File underAFile(pathOf("plain/inside"));
    expectFailure([&] { underAFile.Open(File::ModeWrite); }, "Error opening file", 1, 262);

    File tooLong(pathOf(std::string(300, 'n')));
    expectFailure([&] { tooLong.Open(File::ModeWrite); }, "Error opening file", 1, 262);

    File unnamed;
    expectFailure([&] { unnamed.Open(File::ModeRead); }, "Error opening file", 1, 262);
}

TEST_F(FileTest, PermissionDenied)
{
    writeAll(PathOf("locked"), "secret");
    File file(pathOf("locked"));
    file.SetMode(0);
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    // Root reads anything, so the check runs in a child that has given up root's rights.
    pid_t const child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            ::_exit(2);
        bool ok = !file.IsReadable() && !file.IsWritable();
        for (unsigned int mode : {File::ModeRead, File::ModeWrite}) {
            try {
                file.Open(mode);
                ok = false;
            } catch (FileIO const& e) {
                ok = ok && e.GetMessage() == "Error opening file" && e.GetErrorType() == FileIO::OpenError &&
                     e.GetLine() == 262;
            }
        }
        ::_exit(ok ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 2)
        GTEST_SKIP() << "running as root and cannot drop to an unprivileged user: permission bits stop nothing";
    EXPECT_EQ(WEXITSTATUS(status), 0) << "an unreadable file opened, or failed in the wrong way";
}

TEST_F(FileTest, ClosedFileFailures)
{
    File file(pathOf("never-opened"));
    char buffer[4];
    expectFailure([&] { file.At(5); }, "Attempt to seek to 5 when not open", 7, 292);
    expectFailure([&] { file.ReadBlock(buffer, 4); }, "Attempt to read 4 bytes when not open", 2, 408);
    expectFailure([&] { file.WriteBlock(buffer, 3); }, "Attempt to write 3 bytes when not open", 3, 445);
    // Nothing to move does not care whether the file is open.
    file.ReadBlock(buffer, 0);
    file.ReadBlock(nullptr, 4);
    file.WriteBlock(buffer, 0);
    file.WriteBlock(nullptr, 4);
    file.Close();
    EXPECT_FALSE(file.AtEnd());
    EXPECT_FALSE(file.At().IsSet());
}

TEST_F(FileTest, ShortReadsConsumeWhatWasThere)
{
    writeAll(PathOf("short"), "0123456789abcd");
    File file(pathOf("short"));
    file.Open(File::ModeRead);
    file.At(10);
    char buffer[10] = {};
    expectFailure([&] { file.ReadBlock(buffer, 10); }, "Attempt to read 10 bytes, only read 4 bytes", 2, 430);
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(file.At().Get(), 14u);
    EXPECT_TRUE(file.AtEnd());

    // Text mode measures by position and so reports from its own line.
    File text(pathOf("short"));
    text.Open(File::ModeRead | File::ModeText);
    text.At(12);
    expectFailure([&] { text.ReadBlock(buffer, 10); }, "Attempt to read 10 bytes, only read 2 bytes", 2, 423);
    text.At(0);
    text.ReadBlock(buffer, 10);
    EXPECT_EQ(std::string(buffer, 10), "0123456789");
}

TEST_F(FileTest, WriteFailures)
{
    writeAll(PathOf("readonly-open"), "abc");
    File readOnly(pathOf("readonly-open"));
    readOnly.Open(File::ModeRead);
    expectFailure([&] { readOnly.WriteBlock("xyz", 3); }, "Attempt to write 3 bytes, only wrote 0 bytes", 3, 452);

    // A full disk: small writes sit in the buffer and fail when it is flushed or closed; a large
    // one fails at once. Either way the handle is gone afterwards.
    File full(FilePath("/dev/full"));
    full.Open(File::ModeWrite);
    full.WriteBlock("abc", 3);
    expectFailure([&] { full.Flush(); }, "Flush failed", 3, 340);
    full.Open(File::ModeWrite);
    full.WriteBlock("abc", 3);
    expectFailure([&] { full.Close(); }, "Close failed", 4, 348);
    EXPECT_FALSE(full.IsOpen());

    full.Open(File::ModeWrite);
    std::vector<char> big(1 << 20, 'x');
    try {
        full.WriteBlock(big.data(), static_cast<unsigned int>(big.size()));
        ADD_FAILURE() << "a write to a full disk succeeded";
    } catch (FileIO const& e) {
        EXPECT_TRUE(e.GetMessage().BeginsWith("Attempt to write 1048576 bytes, only wrote ")) << e.GetMessage().c_str();
        EXPECT_EQ(e.GetLine(), 452);
    }
}

TEST_F(FileTest, SeekFailsOnAPipe)
{
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    File pipeEnd(FilePath(String("/proc/self/fd/") + String::Number(fds[0])));
    pipeEnd.Open(File::ModeRead);
    expectFailure([&] { pipeEnd.At(5); }, "Seek to 5 failed", 7, 299);
    EXPECT_FALSE(pipeEnd.At().IsSet());
    pipeEnd.Close();
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST_F(FileTest, PathOperationFailures)
{
    File missing(pathOf("missing"));
    expectFailure([&] { missing.Remove(); }, "Remove failed", 5, 365);
    expectFailure([&] { File::Rename(pathOf("missing"), pathOf("other")); }, "Rename failed", 6, 378);
    expectFailure([&] { missing.SetMode(0644); }, "Error modifying file permissions", 7, 121);
    expectFailure([&] { missing.SetTime(Util::FileTime{}); }, "Error setting file time", 7, 141);
    Util::FileTime time;
    expectFailure([&] { missing.GetTime(&time); }, "Error getting file time", 7, 170);
    EXPECT_EQ(missing.GetOSXFileType(), 0u);
    try {
        File::Rename(pathOf("missing"), pathOf("other"));
    } catch (FileIO const& e) {
        EXPECT_TRUE(e.ToString().EndsWith(String("\nFileIO:\n Unknown error: ") + pathOf("missing").ToString()));
    }
}

TEST_F(FileTest, RemainingAndSize)
{
    EXPECT_FALSE(File().Remaining().IsSet());
    writeAll(PathOf("ten"), "0123456789");
    File file(pathOf("ten"));
    EXPECT_EQ(file.Size(), 10u);
    EXPECT_FALSE(file.Remaining().IsSet());
    file.Open(File::ModeRead);
    EXPECT_EQ(file.Remaining().Get(), 10u);
    file.At(4);
    EXPECT_EQ(file.Remaining().Get(), 6u);
    file.At(25);
    EXPECT_EQ(file.Remaining().Get(), 0u);
    EXPECT_EQ(file.At().Get(), 25u);

    // Writes still in the buffer count towards the size.
    File written(pathOf("written"));
    written.Open(File::ModeWrite);
    written.WriteBlock("abcdef", 6);
    EXPECT_EQ(written.Size(), 6u);
}

TEST_F(FileTest, LargeReadsKeepPositionBufferAndEnd)
{
    // Large blocks bypass the stream's buffer; small reads, seeks and positions around them must
    // not notice.
    std::string bytes(100000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    writeAll(PathOf("large"), bytes);
    File file(pathOf("large"));
    file.Open(File::ModeRead);
    std::string got(40000, '\0');
    file.ReadBlock(got.data(), 44);
    file.ReadBlock(got.data() + 44, 39956);
    EXPECT_EQ(got, bytes.substr(0, 40000));
    EXPECT_EQ(file.At().Get(), 40000u);
    unsigned short small = 0;
    file.ReadPrimitive(small);
    EXPECT_EQ(small, static_cast<unsigned char>(bytes[40000]) | static_cast<unsigned char>(bytes[40001]) << 8);
    file.At(3);
    file.ReadBlock(got.data(), 20000);
    EXPECT_EQ(got.substr(0, 20000), bytes.substr(3, 20000));
    file.At(20000);
    file.ReadBlock(got.data(), 1);
    EXPECT_EQ(got[0], bytes[20000]);
    EXPECT_EQ(file.Remaining().Get(), 79999u);

    file.At(70000);
    expectFailure([&] { file.ReadBlock(got.data(), 40000); }, "Attempt to read 40000 bytes, only read 30000 bytes", 2, 430);
    EXPECT_EQ(got.substr(0, 30000), bytes.substr(70000));
    EXPECT_TRUE(file.AtEnd());
    EXPECT_EQ(file.At().Get(), 100000u);
    file.At(0);
    EXPECT_FALSE(file.AtEnd());
    file.ReadBlock(got.data(), 30000);
    EXPECT_EQ(got.substr(0, 30000), bytes.substr(0, 30000));
}

TEST_F(FileTest, LargeWritesKeepOrderAndPosition)
{
    std::string block(30000, '\0');
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<char>(i * 13 + i / 509);
    File file(pathOf("written"));
    file.Open(File::ModeWrite);
    file.WriteBlock("head", 4);
    file.WriteBlock(block.data(), 30000);
    EXPECT_EQ(file.At().Get(), 30004u);
    file.WriteBlock("mid", 3);
    file.WriteBlock(block.data(), 20000);
    EXPECT_EQ(file.Size(), 50007u);
    file.At(0);
    file.WriteBlock("HEAD", 4);
    file.Close();
    std::string expected = "HEAD";
    expected.append(block).append("mid").append(block, 0, 20000);
    EXPECT_EQ(readAll(PathOf("written")), expected);

    file.Open(File::ModeWrite | File::ModeAppend);
    file.WriteBlock("x", 1);
    file.WriteBlock(block.data(), 17000);
    file.Close();
    expected.append("x").append(block, 0, 17000);
    EXPECT_EQ(readAll(PathOf("written")), expected);
}

TEST_F(FileTest, BlocksAndPrimitivesRoundTrip)
{
    File file(pathOf("blocks"));
    file.Open(File::ModeReplace);
    file.WritePrimitive<unsigned int>(0x01020304u);
    file.WritePrimitive<unsigned short>(0xA0B0);
    file.WriteBlock("xyz", 3);
    file.Close();
    EXPECT_EQ(readAll(PathOf("blocks")), std::string("\x04\x03\x02\x01\xB0\xA0xyz", 9));

    file.Open(File::ModeRead);
    unsigned int u = 0;
    unsigned short s = 0;
    file.ReadPrimitive(u);
    file.ReadPrimitive(s);
    std::vector<unsigned char> tail(3);
    file.ReadBlock(tail);
    EXPECT_EQ(u, 0x01020304u);
    EXPECT_EQ(s, 0xA0B0);
    EXPECT_EQ(tail, (std::vector<unsigned char>{'x', 'y', 'z'}));
    EXPECT_FALSE(file.AtEnd());
}

TEST_F(FileTest, ExistsRenameRemoveAndPath)
{
    File file(pathOf("a"));
    EXPECT_FALSE(file.Exists());
    file.Open(File::ModeWrite);
    EXPECT_TRUE(file.Exists());
    EXPECT_TRUE(file.IsReadable());
    EXPECT_TRUE(file.IsWritable());
    file.SetPath(pathOf("b")); // closes the open handle
    EXPECT_FALSE(file.IsOpen());
    File::Rename(pathOf("a"), pathOf("b"));
    EXPECT_TRUE(file.Exists());
    file.Remove();
    EXPECT_FALSE(file.Exists());
    EXPECT_FALSE(File().Exists());
}

TEST_F(FileTest, TimesKeepSubSecondsAndUnsetFieldsStay)
{
    writeAll(PathOf("timed"), "t");
    File file(pathOf("timed"));
    Util::FileTime set;
    set.accessTime = Util::FileTimeStamp{1000000000, 123456789};
    set.modificationTime = Util::FileTimeStamp{1200000000, 987654321};
    file.SetTime(set);
    Util::FileTime got;
    file.GetTime(&got);
    EXPECT_EQ(got.accessTime.Get(), set.accessTime.Get());
    EXPECT_EQ(got.modificationTime.Get(), set.modificationTime.Get());

    Util::FileTime onlyModification;
    onlyModification.modificationTime = Util::FileTimeStamp{1300000000, 5};
    file.SetTime(onlyModification);
    file.GetTime(&got);
    EXPECT_EQ(got.accessTime.Get(), set.accessTime.Get());
    EXPECT_EQ(got.modificationTime.Get(), onlyModification.modificationTime.Get());
}
