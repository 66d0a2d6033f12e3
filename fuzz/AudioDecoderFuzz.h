#pragma once
// What the audio reader targets share: the input is written to a file, synced, and put through
// every kind of read, seeks and chunk fetches. A malformed file may only raise BadFormat. A
// FileIO escaping means a read past the end of the file, which is a finding like a crash; so are
// a frame count that the file cannot hold, reads that disagree with each other, and any single
// allocation beyond the limit set below (inputs are at most 64 KiB). A recovered file must come
// out of WriteRepaired as one that reads the same without recovery.

#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/PCMDecoder.h>
#include <Cordel/common/Path.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace AudioFuzz {

using Cordel::Audio::Decode::Exception::BadFormat;

inline void check(bool condition)
{
    if (!condition)
        std::abort();
}

inline std::string const& scratchPath(char const* name)
{
    static std::string const path = [name] {
        std::string pattern = std::string("/tmp/cordel-") + name + "-fuzz-XXXXXX";
        int const fd = ::mkstemp(pattern.data());
        check(fd >= 0);
        ::close(fd);
        return pattern;
    }();
    return path;
}

inline void writeScratch(std::string const& path, std::uint8_t const* data, std::size_t size)
{
    std::FILE* f = std::fopen(path.c_str(), "wb");
    check(f && std::fwrite(data, 1, size, f) == size && std::fclose(f) == 0);
}

// Runs one read kind from frame 0 to the end in blocks of up to 61 frames (an odd count, so that
// blocks straddle every boundary); a refused conversion is allowed, and must refuse at once.
template <typename Read>
void readAll(Cordel::Audio::Decode::PCMDecoder& d, Read read)
{
    d.Seek(0);
    unsigned int const total = d.GetNumSampleFrames();
    try {
        for (unsigned int got = 1; got;) {
            unsigned int const before = d.GetSamplePos();
            got = 0;
            read(61u, got);
            check(got <= 61 && d.GetSamplePos() == before + got && (got > 0 || before == total));
        }
    } catch (BadFormat const&) {
        check(d.GetSamplePos() == 0);
    }
}

// A recovered file rewritten with a repaired header must read the same frames without recovery.
template <typename Decoder>
void checkRepair(Decoder& d, std::string const& repairedPath, std::vector<unsigned char> const& all)
{
    Cordel::FilePath const repaired(Cordel::String(repairedPath.c_str()));
    check(d.WriteRepaired(repaired) == d.GetNumSampleFrames());
    Decoder again(repaired);
    again.SetReadingOptions({true, false});
    check(again.Sync() == d.GetWaveFormat() && again.GetNumSampleFrames() == d.GetNumSampleFrames());
    std::vector<unsigned char> samples(all.size());
    unsigned int got = 0;
    again.ReadRawInterleaved(again.GetNumSampleFrames(), samples.data(), got);
    check(samples == all);
}

template <typename Decoder>
void runOnce(char const* name, std::size_t size, Cordel::Audio::Decode::PCMDecoder::ReadingOptions const& options)
{
    std::string const& path = scratchPath(name);
    Decoder d(Cordel::FilePath(Cordel::String(path.c_str())));
    d.SetReadingOptions(options);
    Cordel::Audio::WaveFormat format;
    try {
        format = d.Sync();
    } catch (BadFormat const&) {
        return;
    }
    unsigned int const frames = d.GetNumSampleFrames();
    std::size_t const frameBytes = format.BytesPerFrame();
    // An extensible header may declare 0 bits: such a file syncs and holds no frames.
    check((frameBytes > 0 || frames == 0) && std::uint64_t(frames) * frameBytes <= size);
    std::size_t const block = std::min<std::size_t>(61, frames);
    unsigned int const channels = format.numChannels;

    std::vector<unsigned char> all(frames * frameBytes), raw(block * frameBytes);
    unsigned int got = 0;
    d.ReadRawInterleaved(frames, all.data(), got);
    check(got == frames);
    readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadRawInterleaved(n, raw.data(), g); });

    std::vector<float> floats(block * channels);
    std::vector<short> shorts(block * channels);
    std::vector<double> doubles(block * channels);
    std::vector<std::vector<float>> floatChannels(channels, std::vector<float>(block));
    std::vector<std::vector<short>> shortChannels(channels, std::vector<short>(block));
    std::vector<float*> floatPointers;
    std::vector<short*> shortPointers;
    for (unsigned int c = 0; c < channels; ++c) {
        floatPointers.push_back(floatChannels[c].data());
        shortPointers.push_back(shortChannels[c].data());
    }
    readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadFloatInterleaved(n, floats.data(), g); });
    readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadInt16Interleaved(n, shorts.data(), g); });
    readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadFloatDeinterleaved(n, floatPointers.data(), g); });
    readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadInt16Deinterleaved(n, shortPointers.data(), g); });
    if (d.GetFileType() == Cordel::Audio::Decode::Stream::WAVFile || options.allSampleForms)
        readAll(d, [&](unsigned int n, unsigned int& g) { d.ReadFloatInterleaved(n, doubles.data(), g); });
    if (d.IsRecovered())
        checkRepair(d, path + "-repaired", all);

    // Seeks to the end and past it, then chunk fetches; the samples read after them must be
    // those read first, wherever the fetches left the file.
    d.Seek(frames);
    try {
        d.Seek(frames + 1);
        check(frames == 0xFFFFFFFFu);
    } catch (BadFormat const&) {
    }
    std::vector<unsigned char> body;
    for (auto const& chunk : d.GetApplicationChunks()) {
        check(d.ContainsApplicationChunk(chunk.id));
        d.GetApplicationChunk(chunk.id, body);
        check(std::uint64_t(chunk.position) + chunk.size <= size);
        d.GetChunk(chunk.id, body);
    }
    if constexpr (requires { d.GetChunks(); }) {
        for (auto const& chunk : d.GetChunks()) {
            check(d.ContainsChunk(chunk.id) && std::uint64_t(chunk.position) + chunk.size <= size);
            d.GetChunk(chunk.id, body);
            check(body.size() <= size); // the first chunk of that identifier, when there are several
        }
    }
    d.GetChunk(0x64617461u, body); // "data" is never a chunk a caller fetches
    unsigned int const middle = frames / 2;
    d.Seek(middle);
    std::vector<unsigned char> tail((frames - middle) * frameBytes);
    d.ReadRawInterleaved(frames, tail.data(), got);
    check(got == frames - middle && std::equal(tail.begin(), tail.end(), all.begin() + std::ptrdiff_t(middle * frameBytes)));

    d.Close();
    check(d.GetRemainingSampleFrames() == 0);
    check(d.Sync() == format);
}

// Each input is read as the format's own rules say, then with every addition (64-bit floats,
// doubles from every reader, recovery of interrupted recordings).
template <typename Decoder>
void run(char const* name, std::uint8_t const* data, std::size_t size)
{
    writeScratch(scratchPath(name), data, size);
    runOnce<Decoder>(name, size, {});
    runOnce<Decoder>(name, size, {true, true});
}

// Caps every allocation far below what a 64 KiB input could justify.
inline void limitAllocations(int* argc, char*** argv)
{
    static std::vector<char*> args;
    args.assign(*argv, *argv + *argc);
    static char limit[] = "-malloc_limit_mb=64";
    args.push_back(limit);
    args.push_back(nullptr);
    *argc = static_cast<int>(args.size() - 1);
    *argv = args.data();
}

} // namespace AudioFuzz
