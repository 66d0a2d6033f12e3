#include <Cordel/common/Char.h>

#include <array>

namespace Cordel {

namespace {

constexpr std::array<unsigned char, 256> buildCategories()
{
    std::array<unsigned char, 256> t{};
    auto set = [&t](int from, int to, unsigned char category) {
        for (int c = from; c <= to; ++c)
            t[c] = category;
    };
    auto each = [&t](char const* chars, unsigned char category) {
        for (; *chars; ++chars)
            t[static_cast<unsigned char>(*chars)] = category;
    };
    set(0x00, 0x1F, 10);
    set(0x7F, 0x9F, 10);
    t[0x20] = 7;
    t[0xA0] = 7;
    set('0', '9', 4);
    set('A', 'Z', 15);
    set(0xC0, 0xD6, 15);
    set(0xD8, 0xDE, 15);
    set('a', 'z', 16);
    set(0xDF, 0xF6, 16);
    set(0xF8, 0xFF, 16);
    t[0xAA] = t[0xB5] = t[0xBA] = 16;
    t[0xB2] = t[0xB3] = t[0xB9] = t[0xBC] = t[0xBD] = t[0xBE] = 6;
    t['_'] = 20;
    t['-'] = t[0xAD] = 21;
    each("([{", 22);
    each(")]}", 23);
    t[0xAB] = 24;
    t[0xBB] = 25;
    each("!\"#%&'*,./:;?@\\", 26);
    t[0xA1] = t[0xB7] = t[0xBF] = 26;
    each("+<=>|~", 27);
    t[0xAC] = t[0xB1] = t[0xD7] = t[0xF7] = 27;
    t['$'] = 28;
    set(0xA2, 0xA5, 28);
    each("^`", 29);
    t[0xA8] = t[0xAF] = t[0xB4] = t[0xB8] = 29;
    t[0xA6] = t[0xA7] = t[0xA9] = t[0xAE] = t[0xB0] = t[0xB6] = 30;
    return t;
}

constexpr auto categories = buildCategories();

} // namespace

unsigned char const CHAR_CATEGORIES[256] = {
#define C(i) categories[i]
#define C8(i) C(i), C(i + 1), C(i + 2), C(i + 3), C(i + 4), C(i + 5), C(i + 6), C(i + 7)
#define C64(i) C8(i), C8(i + 8), C8(i + 16), C8(i + 24), C8(i + 32), C8(i + 40), C8(i + 48), C8(i + 56)
    C64(0), C64(64), C64(128), C64(192)
#undef C64
#undef C8
#undef C
};

} // namespace Cordel
