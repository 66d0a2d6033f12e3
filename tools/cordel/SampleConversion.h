#pragma once
// Sample conversion for `cordel convert`, done in the tool rather than through the library's
// float reader and writer so that nothing changes that need not:
// - integers to wider integers, and integers of 24 bits or fewer to and from 32-bit float, are
//   exact (x * 2^k);
// - narrowing rounds to the nearest step, halves upwards, optionally after adding TPDF dither of
//   one step, and saturates, counting the samples it had to clip;
// - float to integer scales by 2^31 first (full scale 1.0), rounding halves away from zero, then
//   narrows as above.
// Samples whose width and kind stay the same are copied bit for bit, reordered as the output
// stores them. This is the arithmetic sox uses without dither, so both tools agree sample for
// sample.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace CordelTool {

// How one sample is stored.
struct SampleCoding {
    unsigned int bytes;    // 1 to 4 for integers, 4 or 8 for floats
    bool isFloat;
    bool bigEndian;
    bool signedBytes;      // 8-bit integers are signed, else offset by 128
};

class SampleConverter {
public:
    SampleConverter(SampleCoding from, SampleCoding to, bool dither);

    // Converts count samples from in (from.bytes each) to out (to.bytes each).
    void Convert(unsigned char const* in, unsigned char* out, std::size_t count);

    // Samples so far that lay beyond the output's range.
    unsigned long long Clipped() const { return clipped; }

private:
    void copy(unsigned char const* in, unsigned char* out, std::size_t count);
    void decode(unsigned char const* in, std::size_t count);
    void encode(unsigned char* out, std::size_t count);
    void narrow(std::size_t count);
    std::uint32_t random();

    SampleCoding from, to;
    unsigned int shift;   // bits of a 32-bit value that an integer output drops
    bool narrowing;       // the output has fewer bits than the input: samples are rounded
    bool dither;
    unsigned long long clipped = 0;
    std::uint64_t noiseState = 0x9E3779B97F4A7C15ull;
    // Integer samples as 32-bit values with the sample in the top bits, or float samples.
    std::vector<std::int32_t> wide;
    std::vector<double> real;
};

} // namespace CordelTool
