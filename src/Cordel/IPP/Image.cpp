#include <Cordel/IPP/Image.h>

#include <algorithm>
#include <cstddef>

namespace Cordel::IPP {

namespace {

unsigned int withColour(unsigned int pixel, unsigned int r, unsigned int g, unsigned int b)
{
    return (pixel & 0xFF000000u) | (r << 16) | (g << 8) | b;
}

template <typename PerPixel>
void forEachPixel(unsigned int* pixels, int stride, int width, int height, PerPixel perPixel)
{
    for (int row = 0; row < height; ++row) {
        unsigned int* line = pixels + std::ptrdiff_t(stride) * row;
        for (int x = 0; x < width; ++x)
            line[x] = perPixel(line[x]);
    }
}

} // namespace

void ImageSet(unsigned int, unsigned int*, int, int, int) {}

void ImageAddConstant_InPlace(unsigned int colour, unsigned int* pixels, int stride, int width, int height)
{
    unsigned int const r = PixelRed(colour);
    unsigned int const g = PixelGreen(colour);
    unsigned int const b = PixelBlue(colour);
    forEachPixel(pixels, stride, width, height, [=](unsigned int p) {
        return withColour(p, std::min(PixelRed(p) + r, 255u), std::min(PixelGreen(p) + g, 255u),
                          std::min(PixelBlue(p) + b, 255u));
    });
}

void ImagePreMultiplyAlphaConstant_InPlace(unsigned char alpha, unsigned int* pixels, int stride, int width, int height)
{
    unsigned int const a = alpha;
    forEachPixel(pixels, stride, width, height, [=](unsigned int p) {
        return withColour(p, PixelRed(p) * a / 255u, PixelGreen(p) * a / 255u, PixelBlue(p) * a / 255u);
    });
}

} // namespace Cordel::IPP
