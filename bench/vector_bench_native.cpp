// The plain loops a user would write for the same work, compiled for this very machine
// (-O3 -march=native): the speed the vector layer has to match.

#include <cstddef>

namespace Native {

void add(unsigned int n, float const* a, float const* b, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = a[i] + b[i];
}

void mulConstant(unsigned int n, float const* src, float* dst, float c)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = src[i] * c;
}

void addProduct(unsigned int n, float const* a, float const* b, float* srcDst)
{
    for (unsigned int i = 0; i < n; ++i)
        srcDst[i] += a[i] * b[i];
}

void shortToFloat(unsigned int n, short const* src, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = src[i] * (1.0f / 32768.0f);
}

void floatToShort(unsigned int n, float const* src, short* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        float v = src[i] * 32768.0f + 0.5f;
        v = v > 32767.0f ? 32767.0f : v;
        v = v < -32768.0f ? -32768.0f : v;
        dst[i] = static_cast<short>(v);
    }
}

void intToFloat(unsigned int n, int const* src, float* dst)
{
    for (unsigned int i = 0; i < n; ++i)
        dst[i] = static_cast<float>(src[i]);
}

void floatToInt(unsigned int n, float const* src, int* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        double v = static_cast<double>(src[i]) * 2147483648.0;
        v += v >= 0 ? 0.5 : -0.5;
        v = v > 2147483647.0 ? 2147483647.0 : v;
        v = v < -2147483648.0 ? -2147483648.0 : v;
        dst[i] = static_cast<int>(v);
    }
}

void interleave(unsigned int n, float const* left, float const* right, float* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        dst[2 * i] = left[i];
        dst[2 * i + 1] = right[i];
    }
}

void deinterleave(unsigned int n, float const* src, float* left, float* right)
{
    for (unsigned int i = 0; i < n; ++i) {
        left[i] = src[2 * i];
        right[i] = src[2 * i + 1];
    }
}

void interleave(unsigned int n, short const* left, short const* right, short* dst)
{
    for (unsigned int i = 0; i < n; ++i) {
        dst[2 * i] = left[i];
        dst[2 * i + 1] = right[i];
    }
}

void deinterleave(unsigned int n, short const* src, short* left, short* right)
{
    for (unsigned int i = 0; i < n; ++i) {
        left[i] = src[2 * i];
        right[i] = src[2 * i + 1];
    }
}

float max(unsigned int n, float const* x)
{
    float m = x[0];
    for (unsigned int i = 1; i < n; ++i)
        if (x[i] > m)
            m = x[i];
    return m;
}

void nothing(unsigned int, short*, short, int) {}

} // namespace Native
