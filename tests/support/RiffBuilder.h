#pragma once
// Builds RIFF/WAVE and AIFF byte images by hand, for tests that need files no writer produces.

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace CordelTest {

class Bytes {
public:
    // Byte by byte: GCC 12's overflow warning misfires on range inserts into a growing vector.
    Bytes& tag(char const* t)
    {
        for (int i = 0; i < 4; ++i)
            u8(static_cast<unsigned char>(t[i]));
        return *this;
    }
    Bytes& le16(unsigned v) { return u8(v).u8(v >> 8); }
    Bytes& le32(unsigned v) { return le16(v & 0xFFFF).le16(v >> 16); }
    Bytes& be16(unsigned v) { return u8(v >> 8).u8(v); }
    Bytes& be32(unsigned v) { return be16(v >> 16).be16(v & 0xFFFF); }
    Bytes& u8(unsigned v) { data.push_back(static_cast<unsigned char>(v)); return *this; }
    Bytes& raw(std::vector<unsigned char> const& b)
    {
        for (unsigned char c : b)
            u8(c);
        return *this;
    }
    Bytes& zeros(std::size_t n)
    {
        while (n--)
            u8(0);
        return *this;
    }
    // A little-endian chunk with its pad byte.
    Bytes& chunk(char const* id, std::vector<unsigned char> const& body)
    {
        tag(id).le32(static_cast<unsigned>(body.size())).raw(body);
        if (body.size() & 1)
            u8(0);
        return *this;
    }
    std::vector<unsigned char> data;
};

// A plain format chunk body.
inline std::vector<unsigned char> fmtBody(unsigned tag, unsigned channels, unsigned rate, unsigned bits)
{
    unsigned const align = channels * ((bits + 7) / 8);
    return Bytes().le16(tag).le16(channels).le32(rate).le32(rate * align).le16(align).le16(bits).data;
}

// RIFF/WAVE around the given chunks.
inline std::vector<unsigned char> riffWave(std::vector<unsigned char> const& chunks)
{
    return Bytes().tag("RIFF").le32(static_cast<unsigned>(chunks.size() + 4)).tag("WAVE").raw(chunks).data;
}

inline void writeFile(std::string const& path, std::vector<unsigned char> const& bytes)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<char const*>(bytes.data()), bytes.size());
}

inline std::vector<unsigned char> readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
}

} // namespace CordelTest
