#include "SampleConversion.h"

#include <climits>
#include <cstring>

namespace CordelTool {

namespace {

// Calls work.template operator()<bytes, bigEndian>() with the sample width and byte order as
// constants, so that the loops inside need no branches per sample.
template <typename Work>
void withLayout(unsigned int bytes, bool bigEndian, Work&& work)
{
    auto const order = [&]<unsigned int B>() {
        if (bigEndian)
            work.template operator()<B, true>();
        else
            work.template operator()<B, false>();
    };
    switch (bytes) {
    case 1: order.template operator()<1>(); break;
    case 2: order.template operator()<2>(); break;
    case 3: order.template operator()<3>(); break;
    case 4: order.template operator()<4>(); break;
    default: order.template operator()<8>(); break;
    }
}

template <unsigned int Bytes, bool BigEndian>
std::uint64_t load(unsigned char const* p)
{
    std::uint64_t v = 0;
    for (unsigned int k = 0; k < Bytes; ++k)
        v |= std::uint64_t(p[BigEndian ? Bytes - 1 - k : k]) << (8 * k);
    return v;
}

template <unsigned int Bytes, bool BigEndian>
void store(unsigned char* p, std::uint64_t v)
{
    for (unsigned int k = 0; k < Bytes; ++k)
        p[BigEndian ? Bytes - 1 - k : k] = static_cast<unsigned char>(v >> (8 * k));
}

// Full scale (1.0) of a float sample is 2^31 of a 32-bit one.
constexpr double fullScale = 2147483648.0;

// The 32-bit value of a float sample: rounded half away from zero and saturated, where exactly
// +1.0 maps to the largest value without counting as clipped. NaN is silence.
std::int32_t toInt32(double x, unsigned long long& clipped)
{
    double const v = x * fullScale;
    if (v != v)
        return 0;
    if (v < 0) {
        if (v > double(INT32_MIN) - 0.5)
            return static_cast<std::int32_t>(v - 0.5);
        ++clipped;
        return INT32_MIN;
    }
    if (v < double(INT32_MAX) + 0.5)
        return static_cast<std::int32_t>(v + 0.5);
    if (v > fullScale)
        ++clipped;
    return INT32_MAX;
}

} // namespace

SampleConverter::SampleConverter(SampleCoding from, SampleCoding to, bool dither)
    : from(from), to(to), shift(to.isFloat ? 0 : 32 - 8 * to.bytes),
      narrowing(shift > 0 && (from.isFloat || from.bytes > to.bytes)), dither(dither && narrowing)
{
}

void SampleConverter::Convert(unsigned char const* in, unsigned char* out, std::size_t count)
{
    if (from.bytes == to.bytes && from.isFloat == to.isFloat) {
        copy(in, out, count);
        return;
    }
    decode(in, count);
    if (from.isFloat && !to.isFloat) {
        wide.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            wide[i] = toInt32(real[i], clipped);
    }
    if (narrowing)
        narrow(count);
    encode(out, count);
}

// The same samples in another byte order or 8-bit signedness: bit for bit, floats included.
void SampleConverter::copy(unsigned char const* in, unsigned char* out, std::size_t count)
{
    unsigned int const b = from.bytes;
    if (b > 1 && from.bigEndian != to.bigEndian) {
        for (std::size_t i = 0; i < count * b; i += b)
            for (unsigned int k = 0; k < b; ++k)
                out[i + k] = in[i + b - 1 - k];
    } else {
        std::memcpy(out, in, count * b);
    }
    if (b == 1 && !from.isFloat && from.signedBytes != to.signedBytes)
        for (std::size_t i = 0; i < count; ++i)
            out[i] ^= 0x80;
}

void SampleConverter::decode(unsigned char const* in, std::size_t count)
{
    if (!from.isFloat) {
        wide.resize(count);
        std::uint32_t const flip = from.bytes == 1 && !from.signedBytes ? 0x80000000u : 0;
        withLayout(from.bytes, from.bigEndian, [&]<unsigned int B, bool Big>() {
            if constexpr (B <= 4)
                for (std::size_t i = 0; i < count; ++i)
                    wide[i] = static_cast<std::int32_t>((std::uint32_t(load<B, Big>(in + i * B)) << (32 - 8 * B)) ^ flip);
        });
        return;
    }
    real.resize(count);
    withLayout(from.bytes, from.bigEndian, [&]<unsigned int B, bool Big>() {
        for (std::size_t i = 0; i < count; ++i) {
            if constexpr (B == 4) {
                std::uint32_t const bits = std::uint32_t(load<4, Big>(in + i * 4));
                float f;
                std::memcpy(&f, &bits, 4);
                real[i] = f;
            } else if constexpr (B == 8) {
                std::uint64_t const bits = load<8, Big>(in + i * 8);
                std::memcpy(&real[i], &bits, 8);
            }
        }
    });
}

// Rounds the 32-bit values to the output's step, leaving them in the top bits.
void SampleConverter::narrow(std::size_t count)
{
    std::int64_t const step = std::int64_t(1) << shift;
    std::int64_t const high = (std::int64_t(1) << (31 - shift)) - 1, low = -high - 1;
    for (std::size_t i = 0; i < count; ++i) {
        std::int64_t v = std::int64_t(wide[i]) + step / 2;
        if (dither) // the sum of two uniform values of one step each: triangular over +-1 step
            v += std::int64_t(random() >> (32 - shift)) + std::int64_t(random() >> (32 - shift)) - (step - 1);
        std::int64_t q = v >> shift;
        if (q > high || q < low) {
            ++clipped;
            q = q > high ? high : low;
        }
        wide[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(q) << shift);
    }
}

void SampleConverter::encode(unsigned char* out, std::size_t count)
{
    if (!to.isFloat) {
        std::uint32_t const flip = to.bytes == 1 && !to.signedBytes ? 0x80000000u : 0;
        withLayout(to.bytes, to.bigEndian, [&]<unsigned int B, bool Big>() {
            if constexpr (B <= 4)
                for (std::size_t i = 0; i < count; ++i)
                    store<B, Big>(out + i * B, (std::uint32_t(wide[i]) ^ flip) >> (32 - 8 * B));
        });
        return;
    }
    withLayout(to.bytes, to.bigEndian, [&]<unsigned int B, bool Big>() {
        for (std::size_t i = 0; i < count; ++i) {
            if constexpr (B == 4) {
                // Scaling by a power of two is exact: integers of up to 24 bits come through whole.
                float const f = from.isFloat ? float(real[i]) : float(wide[i]) * float(1.0 / fullScale);
                std::uint32_t bits;
                std::memcpy(&bits, &f, 4);
                store<4, Big>(out + i * 4, bits);
            } else if constexpr (B == 8) {
                double const d = from.isFloat ? real[i] : double(wide[i]) / fullScale;
                std::uint64_t bits;
                std::memcpy(&bits, &d, 8);
                store<8, Big>(out + i * 8, bits);
            }
        }
    });
}

std::uint32_t SampleConverter::random()
{
    // xorshift64*: fast, and the same dither on every run.
    noiseState ^= noiseState >> 12;
    noiseState ^= noiseState << 25;
    noiseState ^= noiseState >> 27;
    return static_cast<std::uint32_t>((noiseState * 0x2545F4914F6CDD1Dull) >> 32);
}

} // namespace CordelTool
