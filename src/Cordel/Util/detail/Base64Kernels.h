#pragma once
// Internal: the bulk kernels behind Base64Encode and Base64Decode, one set per instruction set.
// The public functions run the fastest set the CPU has, chosen once when the library is loaded;
// the overloads taking a Base64Path run a given set, so that tests can hold every set against
// the portable one on the same machine.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <cstddef>
#include <vector>

namespace Cordel::Util::detail {

inline constexpr char base64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// AVX512 needs the byte permutes of AVX-512 VBMI on top of AVX-512 BW.
enum class Base64Path { Scalar, AVX2, AVX512 };

// A path the CPU lacks runs as Scalar.
CORDEL_API bool Base64PathAvailable(Base64Path path);
CORDEL_API String Base64Encode(std::vector<unsigned char> const& bytes, Base64Path path);
CORDEL_API void Base64Decode(String const& text, std::vector<unsigned char>& bytes, Base64Path path);

// Encoding kernels take whole groups of 3 bytes from the front of in[0, n), as many as they
// handle in bulk (possibly none), and return how many bytes they consumed, a multiple of 3,
// having written 4 characters per group to out. They never read beyond in + n.
std::size_t Base64EncodeAVX2(unsigned char const* in, std::size_t n, char* out);
std::size_t Base64EncodeAVX512(unsigned char const* in, std::size_t n, char* out);

// Decoding kernels take blocks of characters from the front of in[0, n) that are all in the
// alphabet and stop before the first block holding anything else, or before a tail shorter than
// a block. They return the characters consumed, a multiple of 4, having written 3 bytes per 4
// characters to out, and may scribble on up to decodeSlack bytes after those. They never read
// beyond in + n.
constexpr std::size_t decodeSlack = 16;
std::size_t Base64DecodeAVX2(unsigned char const* in, std::size_t n, unsigned char* out);
std::size_t Base64DecodeAVX512(unsigned char const* in, std::size_t n, unsigned char* out);

} // namespace Cordel::Util::detail
