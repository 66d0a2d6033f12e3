#pragma once
// The linear congruential step shared by every random generator of the library.

namespace Cordel::IPP::detail {

constexpr unsigned int nextSeed(unsigned int seed) { return seed * 214013u + 2531011u; }

// Bits 16 to 30 of a seed: 0 to 32767.
constexpr unsigned int drawOf(unsigned int seed) { return (seed >> 16) & 0x7FFFu; }

} // namespace Cordel::IPP::detail
