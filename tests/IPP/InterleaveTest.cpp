// Interleaving any number of channels and back.

#include <Cordel/IPP/Interleave.h>

#include <gtest/gtest.h>

#include <vector>

using namespace Cordel;

namespace {

template <typename T>
void roundTrip(unsigned int channels, unsigned int n)
{
    std::vector<std::vector<T>> in(channels, std::vector<T>(n)), out(channels, std::vector<T>(n));
    std::vector<T const*> src;
    std::vector<T*> dst;
    for (unsigned int c = 0; c < channels; ++c) {
        for (unsigned int j = 0; j < n; ++j)
            in[c][j] = T(c * 1000 + j);
        src.push_back(in[c].data());
        dst.push_back(out[c].data());
    }
    std::vector<T> frames(std::size_t(channels) * n);
    IPP::Interleave(channels, n, src.data(), frames.data(), false);
    for (unsigned int j = 0; j < n; ++j)
        for (unsigned int c = 0; c < channels; ++c)
            ASSERT_EQ(in[c][j], frames[j * channels + c]) << channels << " channels, frame " << j;
    IPP::Deinterleave(channels, n, frames.data(), dst.data(), true);
    EXPECT_EQ(in, out) << channels << " channels";
}

TEST(Interleave, OneToEightChannelsRoundTrip)
{
    for (unsigned int channels = 1; channels <= 8; ++channels)
        for (unsigned int n : {0u, 1u, 5u, 37u}) {
            roundTrip<float>(channels, n);
            roundTrip<double>(channels, n);
        }
}

} // namespace
