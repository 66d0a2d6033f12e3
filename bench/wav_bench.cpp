// pkg: sndfile
// WAV files of five minutes of 44.1 kHz stereo, already in the page cache: read whole into
// interleaved float from 16-bit, 24-bit and float files, and written from float to 16-bit and
// 24-bit files, by Cordel and by libsndfile, in blocks of the same size.

#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>
#include <Cordel/Util/SystemFolders.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sndfile.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

using namespace Cordel;

namespace {

constexpr unsigned int rate = 44100;
constexpr unsigned int channels = 2;
constexpr unsigned int frames = 5 * 60 * rate;
constexpr unsigned int blockFrames = 4096;

// A stereo signal with every bit busy: two tones and a little noise, peaking near full scale.
std::vector<float> const& signal()
{
    static std::vector<float> const samples = [] {
        std::vector<float> s(std::size_t(frames) * channels);
        unsigned int noise = 1;
        for (unsigned int i = 0; i < frames; ++i) {
            noise = noise * 1664525u + 1013904223u;
            float const dither = static_cast<float>(static_cast<int>(noise >> 8) - (1 << 23)) * 1e-9f;
            s[2 * i] = 0.6f * std::sin(0.0627f * float(i % 100000)) + dither;
            s[2 * i + 1] = 0.3f * std::sin(0.0131f * float(i % 100000)) - dither;
        }
        return s;
    }();
    return samples;
}

// The files live in the temporary folder for the life of the program and are read once before
// the measurements so that they are in the page cache.
class Files {
public:
    Files()
    {
        for (auto [bytes, isFloat, name] : {std::tuple{2u, false, "pcm16"}, {3u, false, "pcm24"}, {4u, true, "float32"}}) {
            FilePath const path = Util::GetTempFile(FilePath(String("wav-bench-") + name + ".wav", false));
            Audio::Encode::WAV::Encoder writer(path, Audio::WaveFormat{channels, bytes, rate, isFloat, 0});
            writer.Open();
            writer.WriteFloatInterleaved(frames, signal().data());
            writer.Close();
            paths.push_back(path.ToString().ToStdString());
            std::ifstream warm(paths.back(), std::ios::binary);
            std::vector<char> chunk(1 << 20);
            while (warm.read(chunk.data(), std::streamsize(chunk.size())))
                ;
        }
        scratch = Util::GetTempFile(FilePath("wav-bench-out.wav", false)).ToString().ToStdString();
    }
    ~Files()
    {
        for (std::string const& p : paths)
            std::remove(p.c_str());
        std::remove(scratch.c_str());
    }
    std::vector<std::string> paths; // 16-bit, 24-bit, float
    std::string scratch;
};

Files const& files()
{
    static Files const f;
    return f;
}

std::vector<float>& output()
{
    static std::vector<float> out(std::size_t(frames) * channels);
    return out;
}

void readCordel(benchmark::State& state)
{
    std::string const& path = files().paths[state.range(0)];
    float* const out = output().data();
    for (auto _ : state) {
        Audio::Decode::WAV::Decoder reader(FilePath(String(path.c_str())));
        reader.Sync();
        unsigned int got = 0;
        for (std::size_t at = 0; reader.GetRemainingSampleFrames(); at += got)
            reader.ReadFloatInterleaved(blockFrames, out + at * channels, got);
        reader.Close();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(frames) * channels * (state.range(0) + 2));
}

void readSndfile(benchmark::State& state)
{
    std::string const& path = files().paths[state.range(0)];
    float* const out = output().data();
    for (auto _ : state) {
        SF_INFO info{};
        SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
        if (!f)
            std::abort();
        // Never ask beyond the end: libsndfile zero-fills what a short read leaves of the request.
        for (sf_count_t at = 0, got = 1; at < frames && got > 0; at += got)
            got = sf_readf_float(f, out + at * channels, std::min<sf_count_t>(blockFrames, frames - at));
        sf_close(f);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(frames) * channels * (state.range(0) + 2));
}

// Floors for the float file, whose samples need no conversion: any reader has to copy the same
// bytes into the same buffer. The first does just that with read(2) in the same blocks, without
// parsing anything; the second copies from a mapping of the file made once beforehand, so that
// neither the kernel's page-cache work nor page faults are counted: the cost of the copy alone.
std::uint64_t dataStartOf(std::string const& path, std::uint64_t dataBytes)
{
    std::ifstream f(path, std::ios::binary | std::ios::ate);
    return std::uint64_t(f.tellg()) - dataBytes; // the samples end the file
}

void readFloor(benchmark::State& state)
{
    std::string const& path = files().paths[state.range(0)];
    std::size_t const blockBytes = std::size_t(blockFrames) * channels * 4, dataBytes = std::size_t(frames) * channels * 4;
    off_t const start = off_t(dataStartOf(path, dataBytes));
    char* const out = reinterpret_cast<char*>(output().data());
    for (auto _ : state) {
        int const fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0 || ::lseek(fd, start, SEEK_SET) != start)
            std::abort();
        for (std::size_t at = 0; at < dataBytes; at += blockBytes)
            if (::read(fd, out + at, std::min(blockBytes, dataBytes - at)) <= 0)
                std::abort();
        ::close(fd);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(dataBytes));
}

void mappedCopyFloor(benchmark::State& state)
{
    std::string const& path = files().paths[state.range(0)];
    std::size_t const blockBytes = std::size_t(blockFrames) * channels * 4, dataBytes = std::size_t(frames) * channels * 4;
    std::size_t const start = dataStartOf(path, dataBytes);
    int const fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    void* const map = fd < 0 ? MAP_FAILED : ::mmap(nullptr, start + dataBytes, PROT_READ, MAP_SHARED | MAP_POPULATE, fd, 0);
    if (map == MAP_FAILED)
        std::abort();
    char const* const in = static_cast<char const*>(map) + start;
    char* const out = reinterpret_cast<char*>(output().data());
    for (auto _ : state) {
        for (std::size_t at = 0; at < dataBytes; at += blockBytes)
            std::memcpy(out + at, in + at, std::min(blockBytes, dataBytes - at));
        benchmark::ClobberMemory();
    }
    ::munmap(map, start + dataBytes);
    ::close(fd);
    state.SetBytesProcessed(state.iterations() * std::int64_t(dataBytes));
}

void writeCordel(benchmark::State& state)
{
    unsigned int const bytes = static_cast<unsigned int>(state.range(0));
    float const* const in = signal().data();
    FilePath const path(String(files().scratch.c_str()));
    for (auto _ : state) {
        Audio::Encode::WAV::Encoder writer(path, Audio::WaveFormat{channels, bytes, rate, false, 0});
        writer.Open();
        for (unsigned int at = 0; at < frames; at += blockFrames)
            writer.WriteFloatInterleaved(std::min(blockFrames, frames - at), in + std::size_t(at) * channels);
        writer.Close();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(frames) * channels * bytes);
}

void writeSndfile(benchmark::State& state)
{
    int const bytes = static_cast<int>(state.range(0));
    float const* const in = signal().data();
    for (auto _ : state) {
        SF_INFO info{};
        info.samplerate = rate;
        info.channels = channels;
        info.format = SF_FORMAT_WAV | (bytes == 2 ? SF_FORMAT_PCM_16 : SF_FORMAT_PCM_24);
        SNDFILE* f = sf_open(files().scratch.c_str(), SFM_WRITE, &info);
        if (!f)
            std::abort();
        for (unsigned int at = 0; at < frames; at += blockFrames)
            sf_writef_float(f, in + std::size_t(at) * channels, std::min(blockFrames, frames - at));
        sf_close(f);
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(frames) * channels * bytes);
}

} // namespace

// Argument of the reads: 0 = 16-bit, 1 = 24-bit, 2 = float file; of the writes: bytes per sample.
BENCHMARK(readCordel)->Name("Read16/Cordel")->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(readSndfile)->Name("Read16/libsndfile")->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(readCordel)->Name("Read24/Cordel")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(readSndfile)->Name("Read24/libsndfile")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(readCordel)->Name("ReadFloat32/Cordel")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(readSndfile)->Name("ReadFloat32/libsndfile")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(readFloor)->Name("ReadFloat32/floor: read(2) only")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(mappedCopyFloor)->Name("ReadFloat32/floor: copy from a mapping")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(writeCordel)->Name("Write16/Cordel")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(writeSndfile)->Name("Write16/libsndfile")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(writeCordel)->Name("Write24/Cordel")->Arg(3)->Unit(benchmark::kMillisecond);
BENCHMARK(writeSndfile)->Name("Write24/libsndfile")->Arg(3)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
