// pkg: fmt
// String against the standard library and the formatting libraries a user could pick instead.

#include <Cordel/common/String.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

using Cordel::String;

namespace {

char const* const message = "Can't extract %1 bytes at position %2, total size %3";
char const* const longText = "A sentence that is long enough to live outside any small-string buffer.";

void copyCordel(benchmark::State& state)
{
    String const source(longText);
    for (auto _ : state) {
        String copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

void copyStd(benchmark::State& state)
{
    std::string const source(longText);
    for (auto _ : state) {
        std::string copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

void appendCordel(benchmark::State& state)
{
    for (auto _ : state) {
        String s("start");
        for (int i = 0; i < 16; ++i)
            s += " more";
        benchmark::DoNotOptimize(s);
    }
}

void appendStd(benchmark::State& state)
{
    for (auto _ : state) {
        std::string s("start");
        for (int i = 0; i < 16; ++i)
            s += " more";
        benchmark::DoNotOptimize(s);
    }
}

void messageCordel(benchmark::State& state)
{
    int a = 4, b = 1234567, c = 99999999;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        String s = String(message).Arg(a).Arg(b).Arg(c);
        benchmark::DoNotOptimize(s);
    }
}

void messageFmt(benchmark::State& state)
{
    int a = 4, b = 1234567, c = 99999999;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        std::string s = fmt::format("Can't extract {} bytes at position {}, total size {}", a, b, c);
        benchmark::DoNotOptimize(s);
    }
}

void messageSnprintf(benchmark::State& state)
{
    int a = 4, b = 1234567, c = 99999999;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        char buffer[128];
        int n = std::snprintf(buffer, sizeof buffer, "Can't extract %d bytes at position %d, total size %d", a, b, c);
        std::string s(buffer, n);
        benchmark::DoNotOptimize(s);
    }
}

void toIntCordel(benchmark::State& state)
{
    String const text("-1234567");
    for (auto _ : state) {
        bool ok;
        benchmark::DoNotOptimize(text.ToInt(&ok));
    }
}

void toIntFromChars(benchmark::State& state)
{
    std::string const text("-1234567");
    for (auto _ : state) {
        int v = 0;
        std::from_chars(text.data(), text.data() + text.size(), v);
        benchmark::DoNotOptimize(v);
    }
}

void toDoubleCordel(benchmark::State& state)
{
    String const text("-1234.5678e-3");
    for (auto _ : state) {
        bool ok;
        benchmark::DoNotOptimize(text.ToDouble(&ok));
    }
}

void toDoubleFromChars(benchmark::State& state)
{
    std::string const text("-1234.5678e-3");
    for (auto _ : state) {
        double v = 0;
        std::from_chars(text.data(), text.data() + text.size(), v);
        benchmark::DoNotOptimize(v);
    }
}

void toDoubleStrtod(benchmark::State& state)
{
    std::string const text("-1234.5678e-3");
    for (auto _ : state)
        benchmark::DoNotOptimize(std::strtod(text.c_str(), nullptr));
}

} // namespace

BENCHMARK(copyCordel)->Name("Copy/Cordel");
BENCHMARK(copyStd)->Name("Copy/std::string");
BENCHMARK(appendCordel)->Name("Append16/Cordel");
BENCHMARK(appendStd)->Name("Append16/std::string");
BENCHMARK(messageCordel)->Name("Message3Args/Cordel");
BENCHMARK(messageFmt)->Name("Message3Args/fmt::format");
BENCHMARK(messageSnprintf)->Name("Message3Args/snprintf");
BENCHMARK(toIntCordel)->Name("ToInt/Cordel");
BENCHMARK(toIntFromChars)->Name("ToInt/from_chars");
BENCHMARK(toDoubleCordel)->Name("ToDouble/Cordel");
BENCHMARK(toDoubleFromChars)->Name("ToDouble/from_chars");
BENCHMARK(toDoubleStrtod)->Name("ToDouble/strtod");

BENCHMARK_MAIN();
