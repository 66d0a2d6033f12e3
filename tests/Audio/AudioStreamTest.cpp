#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Decode/WAV/Decoder.h>

#include "RiffBuilder.h"
#include "TempFolder.h"

using namespace Cordel;
using namespace CordelTest;
using Audio::Decode::Stream;

namespace {

class AudioProbe : public TempFolder {
protected:
    FilePath make(char const* name, std::vector<unsigned char> const& bytes)
    {
        writeFile(PathOf(name), bytes);
        return FilePath(String(PathOf(name).c_str()));
    }
};

} // namespace

TEST_F(AudioProbe, ContentNeedsTwelveBytes)
{
    bool flag = true;
    Stream::FileType type = Stream::AIFFFile;
    EXPECT_FALSE(Stream::GetFileFormat(make("a", Bytes().tag("RIFF").le32(0).tag("WAV").data), flag, type));
    EXPECT_EQ(type, Stream::UnknownFile);
    EXPECT_FALSE(flag);
    EXPECT_TRUE(Stream::GetFileFormat(make("b", Bytes().tag("RIFF").le32(0).tag("WAVE").data), flag, type));
    EXPECT_EQ(type, Stream::WAVFile);
    EXPECT_TRUE(Stream::GetFileFormat(make("c", Bytes().tag("FORM").le32(0).tag("AIFF").data), flag, type));
    EXPECT_EQ(type, Stream::AIFFFile);
    EXPECT_FALSE(Stream::GetFileFormat(make("d", Bytes().tag("FORM").le32(0).tag("AIFC").data), flag, type));
    EXPECT_FALSE(Stream::GetFileFormat(FilePath(String(PathOf("missing").c_str())), flag, type));
}

TEST_F(AudioProbe, FactoryFallsBackOnTheExtension)
{
    std::vector<unsigned char> const junk(40, 'x');
    EXPECT_FALSE(Stream::Instantiate(make("x.mp3", junk)));
    shared_ptr<Stream> aiff = Stream::Instantiate(make("x.AIFF", junk));
    ASSERT_TRUE(aiff);
    EXPECT_EQ(aiff->GetFileType(), Stream::AIFFFile);
    shared_ptr<Stream> wav = Stream::Instantiate(make("x.txt", junk));
    ASSERT_TRUE(wav);
    EXPECT_EQ(wav->GetFileType(), Stream::WAVFile);
    EXPECT_THROW(wav->Sync(), Audio::Decode::Exception::BadFormat);
    shared_ptr<Stream> aifc = Stream::Instantiate(make("x.aif", Bytes().tag("FORM").le32(4).tag("AIFC").data));
    ASSERT_TRUE(aifc);
    EXPECT_EQ(aifc->GetFileType(), Stream::AIFFFile);
    // A WAV file named like an AIFF is still read as WAV: content wins.
    shared_ptr<Stream> byContent = Stream::Instantiate(make("y.aiff", Bytes().tag("RIFF").le32(4).tag("WAVE").data));
    EXPECT_EQ(byContent->GetFileType(), Stream::WAVFile);
}
