#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Util/File.h>

#include <algorithm>

namespace Cordel::Audio::Decode {

Stream::SampleCoding Stream::GetSampleCoding() const
{
    return {};
}

Stream::ChunkList Stream::GetChunkList() const
{
    return {};
}

bool Stream::IsRecovered() const
{
    return false;
}

bool Stream::GetFileFormat(FilePath const& path, bool& flag, FileType& type)
{
    flag = false;
    type = UnknownFile;
    std::vector<unsigned char> head;
    try {
        Util::File file(path);
        file.Open(2);
        unsigned int const size = file.Size();
        if (size < 12)
            return false;
        head.resize(std::min(size, 2048u));
        file.ReadBlock(head);
        file.Close();
    } catch (Cordel::Exception::Base const&) {
        return false;
    }
    if (WAV::Decoder::IsFile(head))
        type = WAVFile;
    else if (AIFF::Decoder::IsFile(head))
        type = AIFFFile;
    return type != UnknownFile;
}

shared_ptr<Stream> Stream::Instantiate(FilePath const& path)
{
    bool flag = false;
    FileType type = UnknownFile;
    if (!GetFileFormat(path, flag, type)) {
        String const extension = path.GetExtension().ToLower();
        type = extension == "mp3" ? MP3File : (extension == "aif" || extension == "aiff") ? AIFFFile : WAVFile;
    }
    switch (type) {
    case WAVFile: return shared_ptr<Stream>(new WAV::Decoder(path));
    case AIFFFile: return shared_ptr<Stream>(new AIFF::Decoder(path));
    default: return shared_ptr<Stream>(nullptr);
    }
}

} // namespace Cordel::Audio::Decode
