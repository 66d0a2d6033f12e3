// FileStream against the loops a user would write by hand over stdio (the locking calls and the
// unlocked ones) and against the memory stream: one million ints and one thousand strings,
// written and read back, one call per value as FileStream makes them.

#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileStream.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Cordel;

namespace {

constexpr int intCount = 1000000;
constexpr int stringCount = 1000;

std::string const& benchPath()
{
    static std::string const path = "/tmp/cordel-filestream-bench-" + std::to_string(::getpid());
    return path;
}

FilePath benchFile()
{
    return FilePath(String(benchPath().c_str()));
}

// The strings are sample names of a typical length.
std::vector<std::string> const& sampleTexts()
{
    static std::vector<std::string> const texts = [] {
        std::vector<std::string> t;
        for (int i = 0; i < stringCount; ++i)
            t.push_back("Drums/Kit " + std::to_string(i) + "/Snare Rimshot Velocity 96.wav");
        return t;
    }();
    return texts;
}

void writeIntsFileStream(benchmark::State& state)
{
    for (auto _ : state) {
        Util::FileStream s(benchFile(), Util::File::ModeWrite);
        for (int i = 0; i < intCount; ++i)
            s << i;
        s.Close();
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

template <std::size_t (*write)(void const*, std::size_t, std::size_t, std::FILE*)>
void writeIntsStdio(benchmark::State& state)
{
    for (auto _ : state) {
        std::FILE* f = std::fopen(benchPath().c_str(), "wb");
        for (int i = 0; i < intCount; ++i)
            if (write(&i, sizeof i, 1, f) != 1)
                state.SkipWithError("write failed");
        std::fclose(f);
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

void writeIntsByteStream(benchmark::State& state)
{
    for (auto _ : state) {
        Util::ByteStream s;
        for (int i = 0; i < intCount; ++i)
            s << i;
        benchmark::DoNotOptimize(s.GetData().data());
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

void prepareInts()
{
    Util::FileStream s(benchFile(), Util::File::ModeWrite);
    for (int i = 0; i < intCount; ++i)
        s << i;
}

void readIntsFileStream(benchmark::State& state)
{
    prepareInts();
    for (auto _ : state) {
        Util::FileStream s(benchFile(), Util::File::ModeRead);
        int sum = 0, v = 0;
        for (int i = 0; i < intCount; ++i) {
            s >> v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

template <std::size_t (*read)(void*, std::size_t, std::size_t, std::FILE*)>
void readIntsStdio(benchmark::State& state)
{
    prepareInts();
    for (auto _ : state) {
        std::FILE* f = std::fopen(benchPath().c_str(), "rb");
        int sum = 0, v = 0;
        for (int i = 0; i < intCount; ++i) {
            if (read(&v, sizeof v, 1, f) != 1)
                state.SkipWithError("read failed");
            sum += v;
        }
        std::fclose(f);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

void readIntsByteStream(benchmark::State& state)
{
    Util::ByteStream source;
    for (int i = 0; i < intCount; ++i)
        source << i;
    for (auto _ : state) {
        Util::ByteStream s(source.GetData());
        int sum = 0, v = 0;
        for (int i = 0; i < intCount; ++i) {
            s >> v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * intCount);
}

void writeStringsFileStream(benchmark::State& state)
{
    std::vector<String> texts;
    for (std::string const& t : sampleTexts())
        texts.emplace_back(t);
    for (auto _ : state) {
        Util::FileStream s(benchFile(), Util::File::ModeWrite);
        for (String const& t : texts)
            s << t;
        s.Close();
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

template <std::size_t (*write)(void const*, std::size_t, std::size_t, std::FILE*)>
void writeStringsStdio(benchmark::State& state)
{
    for (auto _ : state) {
        std::FILE* f = std::fopen(benchPath().c_str(), "wb");
        for (std::string const& t : sampleTexts()) {
            auto const length = static_cast<std::uint32_t>(t.size());
            write(&length, sizeof length, 1, f);
            write(t.data(), 1, t.size(), f);
        }
        std::fclose(f);
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

void writeStringsByteStream(benchmark::State& state)
{
    std::vector<String> texts;
    for (std::string const& t : sampleTexts())
        texts.emplace_back(t);
    for (auto _ : state) {
        Util::ByteStream s;
        for (String const& t : texts)
            s << t;
        benchmark::DoNotOptimize(s.GetData().data());
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

void prepareStrings()
{
    Util::FileStream s(benchFile(), Util::File::ModeWrite);
    for (std::string const& t : sampleTexts())
        s << String(t);
}

void readStringsFileStream(benchmark::State& state)
{
    prepareStrings();
    for (auto _ : state) {
        Util::FileStream s(benchFile(), Util::File::ModeRead);
        String text;
        for (int i = 0; i < stringCount; ++i)
            s >> text;
        benchmark::DoNotOptimize(text.c_str());
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

template <std::size_t (*read)(void*, std::size_t, std::size_t, std::FILE*)>
void readStringsStdio(benchmark::State& state)
{
    prepareStrings();
    for (auto _ : state) {
        std::FILE* f = std::fopen(benchPath().c_str(), "rb");
        std::string text;
        for (int i = 0; i < stringCount; ++i) {
            std::uint32_t length = 0;
            if (read(&length, sizeof length, 1, f) != 1 || length > 200000)
                state.SkipWithError("read failed");
            text.resize(length);
            read(text.data(), 1, length, f);
        }
        std::fclose(f);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

void readStringsByteStream(benchmark::State& state)
{
    Util::ByteStream source;
    for (std::string const& t : sampleTexts())
        source << String(t);
    for (auto _ : state) {
        Util::ByteStream s(source.GetData());
        String text;
        for (int i = 0; i < stringCount; ++i)
            s >> text;
        benchmark::DoNotOptimize(text.c_str());
    }
    state.SetItemsProcessed(state.iterations() * stringCount);
}

} // namespace

BENCHMARK(writeIntsFileStream)->Name("WriteInts/Cordel FileStream")->Unit(benchmark::kMillisecond);
BENCHMARK(writeIntsStdio<std::fwrite>)->Name("WriteInts/fwrite")->Unit(benchmark::kMillisecond);
BENCHMARK(writeIntsStdio<::fwrite_unlocked>)->Name("WriteInts/fwrite_unlocked")->Unit(benchmark::kMillisecond);
BENCHMARK(writeIntsByteStream)->Name("WriteInts/ByteStream (memory)")->Unit(benchmark::kMillisecond);
BENCHMARK(readIntsFileStream)->Name("ReadInts/Cordel FileStream")->Unit(benchmark::kMillisecond);
BENCHMARK(readIntsStdio<std::fread>)->Name("ReadInts/fread")->Unit(benchmark::kMillisecond);
BENCHMARK(readIntsStdio<::fread_unlocked>)->Name("ReadInts/fread_unlocked")->Unit(benchmark::kMillisecond);
BENCHMARK(readIntsByteStream)->Name("ReadInts/ByteStream (memory)")->Unit(benchmark::kMillisecond);
BENCHMARK(writeStringsFileStream)->Name("WriteStrings/Cordel FileStream")->Unit(benchmark::kMicrosecond);
BENCHMARK(writeStringsStdio<std::fwrite>)->Name("WriteStrings/fwrite")->Unit(benchmark::kMicrosecond);
BENCHMARK(writeStringsStdio<::fwrite_unlocked>)->Name("WriteStrings/fwrite_unlocked")->Unit(benchmark::kMicrosecond);
BENCHMARK(writeStringsByteStream)->Name("WriteStrings/ByteStream (memory)")->Unit(benchmark::kMicrosecond);
BENCHMARK(readStringsFileStream)->Name("ReadStrings/Cordel FileStream")->Unit(benchmark::kMicrosecond);
BENCHMARK(readStringsStdio<std::fread>)->Name("ReadStrings/fread")->Unit(benchmark::kMicrosecond);
BENCHMARK(readStringsStdio<::fread_unlocked>)->Name("ReadStrings/fread_unlocked")->Unit(benchmark::kMicrosecond);
BENCHMARK(readStringsByteStream)->Name("ReadStrings/ByteStream (memory)")->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::remove(benchPath().c_str());
    return 0;
}
