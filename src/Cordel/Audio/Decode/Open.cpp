#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Open.h>
#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/detail/Throw.h>

#include <cstring>

namespace Cordel::Audio::Decode {

namespace {

PCMDecoder* makeReader(FilePath const& path)
{
    unsigned char head[12] = {};
    Util::File file(path);
    file.Open(Util::File::ModeRead);
    if (file.Size() >= 12)
        file.ReadBlock(reinterpret_cast<char*>(head), 12);
    file.Close();
    auto const is = [&](unsigned int at, char const* tag) { return std::memcmp(head + at, tag, 4) == 0; };
    if (is(0, "RIFF") && is(8, "WAVE"))
        return new WAV::Decoder(path);
    if (is(0, "FORM") && (is(8, "AIFF") || is(8, "AIFC")))
        return new AIFF::Decoder(path);
    Cordel::Exception::Throw(Exception::BadFormat("Not a WAV, AIFF or AIFF-C file", path), CORDEL_HERE);
}

} // namespace

shared_ptr<Stream> Open(FilePath const& path, OpenOptions const& options)
{
    PCMDecoder* const reader = makeReader(path);
    shared_ptr<Stream> stream(reader);
    reader->SetReadingOptions({true, options.recoverInterrupted});
    stream->Sync();
    return stream;
}

unsigned int Repair(FilePath const& in, FilePath const& out)
{
    shared_ptr<Stream> const stream = Open(in);
    if (!stream->IsRecovered())
        Cordel::Exception::Throw(Exception::BadFormat("Not an interrupted recording: the header is intact", in), CORDEL_HERE);
    // Every reader Open makes is one of ours.
    return static_cast<PCMDecoder&>(*stream).WriteRepaired(out);
}

} // namespace Cordel::Audio::Decode
