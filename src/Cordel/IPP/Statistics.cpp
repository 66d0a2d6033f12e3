#include <Cordel/IPP/Statistics.h>

#include <Cordel/IPP/detail/Dispatch.h>

#include <cmath>
#include <cstring>

namespace Cordel::IPP {

float Sum(unsigned int n, float const* x)
{
    float sum = 0;
    for (unsigned int i = 0; i < n; ++i)
        sum += x[i];
    return sum;
}

float Max(unsigned int n, float const* x) { return detail::dispatch().vector.maxFloat(n, x); }
double Max(unsigned int n, double const* x) { return detail::dispatch().vector.maxDouble(n, x); }
float Min(unsigned int n, float const* x) { return detail::dispatch().vector.minFloat(n, x); }
double Min(unsigned int n, double const* x) { return detail::dispatch().vector.minDouble(n, x); }

void MaxEvery(unsigned int n, float const* src, float* srcDst)
{
    for (unsigned int i = 0; i < n; ++i)
        srcDst[i] = src[i] > srcDst[i] ? src[i] : srcDst[i];
}

float NormL2(unsigned int n, float const* x)
{
    double sum = 0;
    for (unsigned int i = 0; i < n; ++i) {
        float const square = x[i] * x[i];
        sum += square;
    }
    return static_cast<float>(std::sqrt(sum));
}

float DotProduct(unsigned int n, float const* a, float const* b)
{
    float sum = 0;
    for (unsigned int i = 0; i < n; ++i) {
        float const product = a[i] * b[i];
        sum += product;
    }
    return sum;
}

double DotProduct(unsigned int, double const*, double const*) { return 0; }

bool Equal(unsigned int n, unsigned char const* a, unsigned char const* b)
{
    return n == 0 || std::memcmp(a, b, n) == 0;
}

} // namespace Cordel::IPP
