// pkg: libcrypto glib-2.0
// Base64 and CRC-16 of 1 MiB against OpenSSL's and glib's Base64, boost's CRC-16 and the plain
// byte-at-a-time table loop a user would write.

#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/Util/Base64.h>
#include <Cordel/Util/CRC16.h>

#include <benchmark/benchmark.h>
#include <boost/crc.hpp>
#include <glib.h>
#include <openssl/evp.h>

#include <random>
#include <string>
#include <vector>

unsigned short tableLoopCRC16(unsigned char const* data, std::size_t length); // codec_bench_native.cpp

namespace {

constexpr std::size_t size = 1 << 20;

std::vector<unsigned char> const& input()
{
    static std::vector<unsigned char> const data = [] {
        std::mt19937 rng(42);
        std::vector<unsigned char> d(size);
        for (auto& b : d)
            b = static_cast<unsigned char>(rng());
        return d;
    }();
    return data;
}

std::string const& encodedInput()
{
    static std::string const text = Cordel::Util::Base64Encode(input()).ToStdString();
    return text;
}

// Runs a benchmark on the given instruction set, then goes back to the one in use before.
class OnInstructionSet {
public:
    OnInstructionSet(benchmark::State& state, Cordel::IPP::InstructionSet set)
        : previous(Cordel::IPP::ActiveInstructionSet())
    {
        if (!Cordel::IPP::UseInstructionSet(set))
            state.SkipWithError("this processor lacks the instruction set");
    }
    OnInstructionSet(OnInstructionSet const&) = delete;
    OnInstructionSet& operator=(OnInstructionSet const&) = delete;
    ~OnInstructionSet() { Cordel::IPP::UseInstructionSet(previous); }

private:
    Cordel::IPP::InstructionSet previous;
};

void encodeCordel(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Cordel::Util::Base64Encode(input()));
    state.SetBytesProcessed(state.iterations() * size);
}

// The same on a given instruction set, to show what each kernel adds.
void encodeCordelOn(benchmark::State& state, Cordel::IPP::InstructionSet set)
{
    OnInstructionSet const on(state, set);
    encodeCordel(state);
}

void encodeOpenSSL(benchmark::State& state)
{
    std::vector<unsigned char> out(size / 3 * 4 + 8);
    for (auto _ : state) {
        benchmark::DoNotOptimize(EVP_EncodeBlock(out.data(), input().data(), static_cast<int>(size)));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void encodeGlib(benchmark::State& state)
{
    for (auto _ : state) {
        gchar* text = g_base64_encode(input().data(), size);
        benchmark::DoNotOptimize(text);
        g_free(text);
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void decodeCordel(benchmark::State& state)
{
    Cordel::String const text(encodedInput());
    std::vector<unsigned char> out;
    for (auto _ : state) {
        Cordel::Util::Base64Decode(text, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void decodeCordelOn(benchmark::State& state, Cordel::IPP::InstructionSet set)
{
    OnInstructionSet const on(state, set);
    decodeCordel(state);
}

void decodeOpenSSL(benchmark::State& state)
{
    std::string const& text = encodedInput();
    std::vector<unsigned char> out(text.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(EVP_DecodeBlock(out.data(), reinterpret_cast<unsigned char const*>(text.data()),
                                                 static_cast<int>(text.size())));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void decodeGlib(benchmark::State& state)
{
    std::string const& text = encodedInput();
    for (auto _ : state) {
        gsize length = 0;
        guchar* bytes = g_base64_decode(text.c_str(), &length);
        benchmark::DoNotOptimize(bytes);
        g_free(bytes);
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void crcCordel(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Cordel::Util::CRC16(reinterpret_cast<char const*>(input().data()), size));
    state.SetBytesProcessed(state.iterations() * size);
}

void crcBoost(benchmark::State& state)
{
    for (auto _ : state) {
        boost::crc_16_type crc;
        crc.process_bytes(input().data(), size);
        benchmark::DoNotOptimize(crc.checksum());
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void crcTableLoop(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(tableLoopCRC16(input().data(), size));
    state.SetBytesProcessed(state.iterations() * size);
}

} // namespace

using Cordel::IPP::InstructionSet;
BENCHMARK(encodeCordel)->Name("Base64Encode1MiB/Cordel");
BENCHMARK_CAPTURE(encodeCordelOn, avx2, InstructionSet::AVX2)->Name("Base64Encode1MiB/Cordel AVX2 only");
BENCHMARK_CAPTURE(encodeCordelOn, portable, InstructionSet::Portable)->Name("Base64Encode1MiB/Cordel portable");
BENCHMARK(encodeOpenSSL)->Name("Base64Encode1MiB/OpenSSL EVP_EncodeBlock");
BENCHMARK(encodeGlib)->Name("Base64Encode1MiB/glib g_base64_encode");
BENCHMARK(decodeCordel)->Name("Base64Decode1MiB/Cordel");
BENCHMARK_CAPTURE(decodeCordelOn, avx2, InstructionSet::AVX2)->Name("Base64Decode1MiB/Cordel AVX2 only");
BENCHMARK_CAPTURE(decodeCordelOn, portable, InstructionSet::Portable)->Name("Base64Decode1MiB/Cordel portable");
BENCHMARK(decodeOpenSSL)->Name("Base64Decode1MiB/OpenSSL EVP_DecodeBlock");
BENCHMARK(decodeGlib)->Name("Base64Decode1MiB/glib g_base64_decode");
BENCHMARK(crcCordel)->Name("CRC16_1MiB/Cordel");
BENCHMARK(crcBoost)->Name("CRC16_1MiB/boost::crc_16_type");
BENCHMARK(crcTableLoop)->Name("CRC16_1MiB/table loop (-O3 -march=native)");

BENCHMARK_MAIN();
