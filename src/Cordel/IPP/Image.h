#pragma once
// 32-bit pixels with 8-bit channels: alpha in bits 24-31, red 16-23, green 8-15, blue 0-7.
// The image functions walk height rows; row r starts stride·r pixels after the first and holds
// width pixels.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

constexpr unsigned int PixelRed(unsigned int pixel) { return (pixel >> 16) & 0xFFu; }
constexpr unsigned int PixelGreen(unsigned int pixel) { return (pixel >> 8) & 0xFFu; }
constexpr unsigned int PixelBlue(unsigned int pixel) { return pixel & 0xFFu; }
constexpr unsigned int PixelAlpha(unsigned int pixel) { return pixel >> 24; }

// r·65536 + g·256 + b, alpha 0.
constexpr unsigned int MakePixel(unsigned int r, unsigned int g, unsigned int b) { return r * 65536u + g * 256u + b; }

// Inert.
CORDEL_API void ImageSet(unsigned int value, unsigned int* pixels, int stride, int width, int height);

// Adds the red, green and blue of colour to every pixel's, each clamped at 255; alpha is kept.
CORDEL_API void ImageAddConstant_InPlace(unsigned int colour, unsigned int* pixels, int stride, int width, int height);

// Scales red, green and blue by alpha/255 (channel·alpha / 255, rounded down); alpha is kept.
CORDEL_API void ImagePreMultiplyAlphaConstant_InPlace(unsigned char alpha, unsigned int* pixels, int stride, int width,
                                                      int height);

} // namespace Cordel::IPP
