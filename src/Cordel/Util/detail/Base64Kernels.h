#pragma once
// Internal: the bulk kernels behind Base64Encode and Base64Decode, one set per instruction set,
// reached through the dispatch table.

#include <Cordel/IPP/detail/Dispatch.h>

#include <cstddef>

namespace Cordel::Util::detail {

inline constexpr char base64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Encoding kernels take whole groups of 3 bytes from the front of in[0, n), as many as they
// handle in bulk (possibly none), and return how many bytes they consumed, a multiple of 3,
// having written 4 characters per group to out. They never read beyond in + n.
std::size_t Base64EncodePortable(unsigned char const* in, std::size_t n, char* out);
std::size_t Base64EncodeAVX2(unsigned char const* in, std::size_t n, char* out);
std::size_t Base64EncodeAVX512(unsigned char const* in, std::size_t n, char* out);

// Decoding kernels take blocks of characters from the front of in[0, n) that are all in the
// alphabet and stop before the first block holding anything else, or before a tail shorter than
// a block. They return the characters consumed, a multiple of 4, having written 3 bytes per 4
// characters to out, and may scribble on up to decodeSlack bytes after those. They never read
// beyond in + n.
constexpr std::size_t decodeSlack = 16;
std::size_t Base64DecodePortable(unsigned char const* in, std::size_t n, unsigned char* out);
std::size_t Base64DecodeAVX2(unsigned char const* in, std::size_t n, unsigned char* out);
std::size_t Base64DecodeAVX512(unsigned char const* in, std::size_t n, unsigned char* out);

// Base64's entries in the dispatch table. The AVX-512 kernels need AVX-512 VBMI besides.
inline constexpr IPP::detail::Base64Entry base64Portable{Base64EncodePortable, Base64DecodePortable};
inline constexpr IPP::detail::Base64Entry base64Avx2{Base64EncodeAVX2, Base64DecodeAVX2};
inline constexpr IPP::detail::Base64Entry base64Avx512Vbmi{Base64EncodeAVX512, Base64DecodeAVX512};

} // namespace Cordel::Util::detail
