#pragma once
// The complex element types of the vector layer: real part, then imaginary part.

namespace Cordel::IPP {

struct Complex_Float {
    float re;
    float im;
};

struct Complex_Double {
    double re;
    double im;
};

} // namespace Cordel::IPP
