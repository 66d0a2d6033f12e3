// Typed insertion and extraction through ByteStream, one value at a time, against the memcpy
// into a growing vector that hand-written serialisation would use.

#include <Cordel/Util/ByteStream.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

using Cordel::Util::ByteStream;
using Cordel::Util::DataStream;

namespace {

constexpr int count = 4096;

template <typename T, bool big>
void insertCordel(benchmark::State& state)
{
    for (auto _ : state) {
        ByteStream s(count * sizeof(T));
        if (big)
            s.SetEndianType(DataStream::EndianBig);
        for (int i = 0; i < count; ++i)
            s << static_cast<T>(i);
        benchmark::DoNotOptimize(s.GetData().data());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

template <typename T>
void insertMemcpy(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<unsigned char> data;
        data.reserve(count * sizeof(T));
        for (int i = 0; i < count; ++i) {
            T const v = static_cast<T>(i);
            std::size_t const at = data.size();
            data.resize(at + sizeof v);
            std::memcpy(data.data() + at, &v, sizeof v);
        }
        benchmark::DoNotOptimize(data.data());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

template <typename T>
std::vector<unsigned char> filled()
{
    std::vector<unsigned char> data(count * sizeof(T));
    for (int i = 0; i < count; ++i) {
        T const v = static_cast<T>(i);
        std::memcpy(data.data() + i * sizeof(T), &v, sizeof v);
    }
    return data;
}

template <typename T, bool big>
void extractCordel(benchmark::State& state)
{
    ByteStream s(filled<T>());
    if (big)
        s.SetEndianType(DataStream::EndianBig);
    for (auto _ : state) {
        s.SetPosition(0);
        T sum = 0;
        for (int i = 0; i < count; ++i) {
            T v;
            s >> v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

template <typename T>
void extractMemcpy(benchmark::State& state)
{
    std::vector<unsigned char> const data = filled<T>();
    for (auto _ : state) {
        std::size_t position = 0;
        T sum = 0;
        for (int i = 0; i < count; ++i) {
            if (data.size() - position < sizeof(T))
                break;
            T v;
            std::memcpy(&v, data.data() + position, sizeof v);
            position += sizeof v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

// Through the interface, as code that takes a DataStream& pays.
void extractVirtual(benchmark::State& state)
{
    ByteStream s(filled<int>());
    DataStream& stream = s;
    for (auto _ : state) {
        stream.SetPosition(0);
        int sum = 0;
        for (int i = 0; i < count; ++i) {
            int v;
            stream >> v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

} // namespace

BENCHMARK(insertCordel<int, false>)->Name("InsertInt/Cordel");
BENCHMARK(insertMemcpy<int>)->Name("InsertInt/memcpy");
BENCHMARK(insertCordel<int, true>)->Name("InsertIntBigEndian/Cordel");
BENCHMARK(insertMemcpy<int>)->Name("InsertIntBigEndian/memcpy (no swap)");
BENCHMARK(insertCordel<double, false>)->Name("InsertDouble/Cordel");
BENCHMARK(insertMemcpy<double>)->Name("InsertDouble/memcpy");
BENCHMARK(extractCordel<int, false>)->Name("ExtractInt/Cordel");
BENCHMARK(extractVirtual)->Name("ExtractInt/Cordel through DataStream&");
BENCHMARK(extractMemcpy<int>)->Name("ExtractInt/memcpy");
BENCHMARK(extractCordel<int, true>)->Name("ExtractIntBigEndian/Cordel");
BENCHMARK(extractMemcpy<int>)->Name("ExtractIntBigEndian/memcpy (no swap)");
BENCHMARK(extractCordel<double, false>)->Name("ExtractDouble/Cordel");
BENCHMARK(extractMemcpy<double>)->Name("ExtractDouble/memcpy");

BENCHMARK_MAIN();
