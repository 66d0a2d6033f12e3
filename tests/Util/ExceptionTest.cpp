#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/FileIOException.h>

#include <gtest/gtest.h>

using namespace Cordel;
using Util::Exception::DataStreamIO;
using Util::Exception::FileIO;

TEST(Exception, UnsetSiteAndCodePrintAsEmptyAndMinusOne)
{
    Exception::Base const e("boom");
    EXPECT_EQ(e.ToString(), " (-1): Thrown, GetLastError(): -1\nBase:\n\tboom\n");
}

TEST(Exception, ThrowStampsSiteAndCode)
{
    try {
        Exception::Throw(Exception::Base("bad %1 here"), {"../../src/Cordel/X.cpp", 12}, 2);
        FAIL();
    } catch (Exception::Base const& e) {
        EXPECT_EQ(e.ToString(), "../../src/Cordel/X.cpp (12): Thrown, GetLastError(): 2\nBase:\n\tbad %1 here\n");
    }
}

TEST(Exception, DataStreamIOText)
{
    try {
        Exception::Throw(DataStreamIO("Can't extract 4 bytes at position 10, total size 12"),
                         {"../../src/Cordel/Util/ByteStream.h", 133});
        FAIL();
    } catch (Exception::Base const& e) {
        EXPECT_EQ(e.ToString(), "../../src/Cordel/Util/ByteStream.h (133): Thrown, GetLastError(): 0\n"
                                "Base:\n\tCan't extract 4 bytes at position 10, total size 12\n\nDataStreamIO\n");
    }
}

TEST(Exception, FileIOTextForEveryType)
{
    struct Case {
        int type;
        char const* text;
    };
    Case const cases[] = {{0, "File not found"}, {1, "Open error"},    {2, "Read error"},
                          {3, "Write error"},    {4, "Close error"},   {5, "Remove error"},
                          {6, " Unknown error"}, {7, "Unexpected error"}, {8, " Unknown error"},
                          {-1, " Unknown error"}};
    for (Case const& c : cases) {
        FileIO const e("gone", FilePath("/tmp/x.wav"), static_cast<FileIO::ErrorType>(c.type));
        EXPECT_EQ(e.ToString(), String(" (-1): Thrown, GetLastError(): -1\nBase:\n\tgone\n\nFileIO:\n") + c.text
                                    + ": /tmp/x.wav")
            << c.type;
    }
    FileIO const folder("no folder", FolderPath("/tmp/a"), FileIO::RemoveError);
    EXPECT_EQ(folder.GetPath(), "/tmp/a/");
}

TEST(Exception, CopiesKeepEverything)
{
    FileIO original("m", FilePath("/f"), FileIO::WriteError);
    original.SetFile("../../src/Cordel/Util/File.cpp");
    original.SetLine(7);
    original.SetErrorCode(28);
    FileIO const copy(original);
    EXPECT_EQ(copy.ToString(), original.ToString());
    Exception::Base const& asBase = copy;
    EXPECT_EQ(asBase.ToString(), original.ToString());
}
