#include "viewport/scene/elements.h"

#include "viewport/scene/rgb_color.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace vellum::viewport {

namespace {

// clang-format off
constexpr Element ELEMENTS[] = {
    {"H", 0xFFFFFF, 0.31},
    {"He", 0xD9FFFF, 0.28},
    {"Li", 0xCC80FF, 1.28},
    {"Be", 0xC2FF00, 0.96},
    {"B", 0xFFB5B5, 0.84},
    {"C", 0x909090, 0.76},
    {"N", 0x3050F8, 0.71},
    {"O", 0xFF0D0D, 0.66},
    {"F", 0x90E050, 0.57},
    {"Ne", 0xB3E3F5, 0.58},
    {"Na", 0xAB5CF2, 1.66},
    {"Mg", 0x8AFF00, 1.41},
    {"Al", 0xBFA6A6, 1.21},
    {"Si", 0xF0C8A0, 1.11},
    {"P", 0xFF8000, 1.07},
    {"S", 0xFFFF30, 1.05},
    {"Cl", 0x1FF01F, 1.02},
    {"Ar", 0x80D1E3, 1.06},
    {"K", 0x8F40D4, 2.03},
    {"Ca", 0x3DFF00, 1.76},
    {"Sc", 0xE6E6E6, 1.70},
    {"Ti", 0xBFC2C7, 1.60},
    {"V", 0xA6A6AB, 1.53},
    {"Cr", 0x8A99C7, 1.39},
    {"Mn", 0x9C7AC7, 1.39},
    {"Fe", 0xE06633, 1.32},
    {"Co", 0xF090A0, 1.26},
    {"Ni", 0x50D050, 1.24},
    {"Cu", 0xC88033, 1.32},
    {"Zn", 0x7D80B0, 1.22},
    {"Ga", 0xC28F8F, 1.22},
    {"Ge", 0x668F8F, 1.20},
    {"As", 0xBD80E3, 1.19},
    {"Se", 0xFFA100, 1.20},
    {"Br", 0xA62929, 1.20},
    {"Kr", 0x5CB8D1, 1.16},
    {"Rb", 0x702EB0, 2.20},
    {"Sr", 0x00FF00, 1.95},
    {"Y", 0x94FFFF, 1.90},
    {"Zr", 0x94E0E0, 1.75},
    {"Nb", 0x73C2C9, 1.64},
    {"Mo", 0x54B5B5, 1.54},
    {"Tc", 0x3B9E9E, 1.47},
    {"Ru", 0x248F8F, 1.46},
    {"Rh", 0x0A7D8C, 1.42},
    {"Pd", 0x006985, 1.39},
    {"Ag", 0xC0C0C0, 1.45},
    {"Cd", 0xFFD98F, 1.44},
    {"In", 0xA67573, 1.42},
    {"Sn", 0x668080, 1.39},
    {"Sb", 0x9E63B5, 1.39},
    {"Te", 0xD47A00, 1.38},
    {"I", 0x940094, 1.39},
    {"Xe", 0x429EB0, 1.40},
    {"Cs", 0x57178F, 2.44},
    {"Ba", 0x00C900, 2.15},
    {"La", 0x70D4FF, 2.07},
    {"Ce", 0xFFFFC7, 2.04},
    {"Pr", 0xD9FFC7, 2.03},
    {"Nd", 0xC7FFC7, 2.01},
    {"Pm", 0xA3FFC7, 1.99},
    {"Sm", 0x8FFFC7, 1.98},
    {"Eu", 0x61FFC7, 1.98},
    {"Gd", 0x45FFC7, 1.96},
    {"Tb", 0x30FFC7, 1.94},
    {"Dy", 0x1FFFC7, 1.92},
    {"Ho", 0x00FF9C, 1.92},
    {"Er", 0x00E675, 1.89},
    {"Tm", 0x00D452, 1.90},
    {"Yb", 0x00BF38, 1.87},
    {"Lu", 0x00AB24, 1.87},
    {"Hf", 0x4DC2FF, 1.75},
    {"Ta", 0x4DA6FF, 1.70},
    {"W", 0x2194D6, 1.62},
    {"Re", 0x267DAB, 1.51},
    {"Os", 0x266696, 1.44},
    {"Ir", 0x175487, 1.41},
    {"Pt", 0xD0D0E0, 1.36},
    {"Au", 0xFFD123, 1.36},
    {"Hg", 0xB8B8D0, 1.32},
    {"Tl", 0xA6544D, 1.45},
    {"Pb", 0x575961, 1.46},
    {"Bi", 0x9E4FB5, 1.48},
    {"Po", 0xAB5C00, 1.40},
    {"At", 0x754F45, 1.50},
    {"Rn", 0x428296, 1.50},
    {"Fr", 0x420066, 2.60},
    {"Ra", 0x007D00, 2.21},
    {"Ac", 0x70ABFA, 2.15},
    {"Th", 0x00BAFF, 2.06},
    {"Pa", 0x00A1FF, 2.00},
    {"U", 0x008FFF, 1.96},
    {"Np", 0x0080FF, 1.90},
    {"Pu", 0x006BFF, 1.87},
    {"Am", 0x545CF2, 1.80},
    {"Cm", 0x785CE3, 1.69},
    {"Bk", 0x8A4FE3, 0},
    {"Cf", 0xA136D4, 0},
    {"Es", 0xB31FD4, 0},
    {"Fm", 0xB31FBA, 0},
    {"Md", 0xB30DA6, 0},
    {"No", 0xBD0D87, 0},
    {"Lr", 0xC70066, 0},
    {"Rf", 0xCC0059, 0},
    {"Db", 0xD1004F, 0},
    {"Sg", 0xD90045, 0},
    {"Bh", 0xE00038, 0},
    {"Hs", 0xE6002E, 0},
    {"Mt", 0xEB0026, 0},
};
// clang-format on

constexpr std::size_t LONGEST_SYMBOL = 2;

}  // namespace

Color4<float> Element::color() const {
    return colorOfRgb(rgb);
}

Element const* findElement(std::string_view symbol) {
    if (symbol.size() > LONGEST_SYMBOL) {
        return nullptr;
    }
    std::string const wanted = lowerCase(symbol);
    if (wanted == "d" || wanted == "t") {
        return ELEMENTS;
    }
    Element const* const found =
        std::find_if(std::begin(ELEMENTS), std::end(ELEMENTS),
                     [&wanted](Element const& element) { return lowerCase(element.symbol) == wanted; });
    return found != std::end(ELEMENTS) ? found : nullptr;
}

unsigned int atomicNumber(Element const& element) {
    return static_cast<unsigned int>(&element - ELEMENTS) + 1;
}

}  // namespace vellum::viewport
