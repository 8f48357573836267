#include "toolkit/ColorMap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace vellum::toolkit {

namespace {

// Evenly spaced, each as 0xRRGGBB. There are more where the colors change fast. The authors of the published
// maps have put their tables into the public domain or under a license as free.
constexpr unsigned int VIRIDIS[] = {0x440154, 0x471568, 0x482878, 0x443A83, 0x3E4A89, 0x38598D, 0x31688E,
                                    0x2B758E, 0x26828E, 0x20908C, 0x1F9E89, 0x26AB83, 0x35B779, 0x4DC36B,
                                    0x6DCD59, 0x8FD642, 0xB4DE2C, 0xDCE31F, 0xFDE725};
constexpr unsigned int PLASMA[] = {0x0D0887, 0x2B0793, 0x47039F, 0x5E00A6, 0x7301A8, 0x880AA5, 0x9C179E,
                                   0xAD2693, 0xBD3786, 0xCB4779, 0xD8576B, 0xE3685F, 0xED7953, 0xF58B47,
                                   0xFA9E3B, 0xFDB230, 0xFDC926, 0xFAE31F, 0xF0F921};
constexpr unsigned int MAGMA[] = {0x000004, 0x080922, 0x180F3E, 0x2E0F5E, 0x451077, 0x5B1780, 0x721F81,
                                  0x892683, 0x9F2F7F, 0xB73679, 0xCD4071, 0xE14E65, 0xF1605D, 0xFA795F,
                                  0xFD9567, 0xFFAF77, 0xFEC98D, 0xFAE7A6, 0xFCFDBF};
constexpr unsigned int INFERNO[] = {0x000004, 0x090620, 0x1B0C41, 0x330A5E, 0x4B0C6B, 0x62146E, 0x781C6D,
                                    0x8F2468, 0xA52D60, 0xBB3755, 0xCF4446, 0xE05436, 0xED6925, 0xF68013,
                                    0xFB9A06, 0xFCB519, 0xF7D13C, 0xF1EB6C, 0xFCFFA4};
constexpr unsigned int CIVIDIS[] = {
    0x00224E, 0x002758, 0x002B63, 0x002F6E, 0x063370, 0x17376F, 0x223B6E, 0x2B406D, 0x32446D,
    0x39486C, 0x404C6C, 0x46506C, 0x4C556C, 0x52596D, 0x575D6D, 0x5D616E, 0x62666F, 0x676A71,
    0x6D6E72, 0x727374, 0x777776, 0x7C7B78, 0x828078, 0x888478, 0x8D8978, 0x938E78, 0x999277,
    0x9F9775, 0xA59C74, 0xABA172, 0xB2A570, 0xB8AA6E, 0xBEAF6B, 0xC5B568, 0xCBBA64, 0xD2BF60,
    0xD8C45C, 0xDFCA57, 0xE5CF51, 0xECD54A, 0xF3DB42, 0xFAE138, 0xFEE838};
constexpr unsigned int TURBO[] = {0x30123B, 0x392870, 0x3F3E9C, 0x4652C4, 0x4666DD, 0x4679F2, 0x458CFD,
                                  0x39A0FB, 0x2FB2F4, 0x23C4E3, 0x1AD4D0, 0x1CE0BD, 0x22EBAA, 0x38F491,
                                  0x52FA7A, 0x6EFE62, 0x8BFF4B, 0xA1FC3F, 0xB7F735, 0xCAEE35, 0xDBE236,
                                  0xEAD538, 0xF5C53A, 0xFCB435, 0xFEA130, 0xFE8B26, 0xF9751D, 0xF36015,
                                  0xE84B0C, 0xDC3B08, 0xCE2D04, 0xBB1F03, 0xA91601, 0x8E0A01, 0x7A0403};
constexpr unsigned int COOLWARM[] = {0x3B4CC0, 0x4D68D7, 0x6282EA, 0x779AF7, 0x8DB0FE, 0xA3C2FF,
                                     0xB8D0F9, 0xCCD9EE, 0xDDDDDD, 0xECD3C5, 0xF5C4AD, 0xF7B194,
                                     0xF49A7B, 0xEC7F63, 0xDE604D, 0xCB3E38, 0xB40426};

// Computed in CIELAB, where equal steps of lightness look equal: the lightness is linear, hue and chroma
// change smoothly.
constexpr unsigned int GLACIER[] = {0x0B1D47, 0x032858, 0x003365, 0x003F70, 0x014B7C, 0x025788, 0x016494,
                                    0x0071A0, 0x017EAC, 0x028BB8, 0x0299C4, 0x1CA6CD, 0x41B3D3, 0x5EBFD9,
                                    0x79CBDE, 0x93D7E3, 0xAEE2E9, 0xCAEDEF, 0xE6F7F7};
constexpr unsigned int EMBER[] = {0x360D14, 0x4A0F18, 0x5E111B, 0x70171C, 0x821F1D, 0x922A1D, 0xA1361D,
                                  0xAE431E, 0xBA521F, 0xC56122, 0xCF7127, 0xD7812F, 0xDF913A, 0xE5A148,
                                  0xEBB159, 0xF1C26D, 0xF6D183, 0xFCE19C, 0xFFF0C0};
constexpr unsigned int MOSS[] = {0x00292A, 0x003333, 0x003F3B, 0x014A43, 0x00564A, 0x016250, 0x006F55,
                                 0x007C58, 0x26885C, 0x3E9460, 0x549F65, 0x69AA6A, 0x7FB571, 0x94C079,
                                 0xA9CB82, 0xBED68E, 0xD3E09B, 0xE7EBAA, 0xFAF6BB};
constexpr unsigned int TEALRUST[] = {0x025456, 0x02686B, 0x047D80, 0x049296, 0x04A8AC, 0x18BEC2,
                                     0x78CED0, 0xB4DDDE, 0xEBEBEB, 0xF0CEC3, 0xEFB29E, 0xE8977B,
                                     0xDD7E5D, 0xCD6542, 0xB94F2D, 0xA23C1B, 0x882C0E};
constexpr unsigned int GRAY[] = {0x000000, 0xFFFFFF};

struct Named {
    char const* name;
    unsigned int const* colors;
    std::size_t count;
    Color4<float> above;
};

constexpr Color4<float> WHITE{1, 1, 1, 1};
constexpr Color4<float> RED{1, 0, 0, 1};

constexpr Named MAPS[] = {
    {"viridis", VIRIDIS, std::size(VIRIDIS), WHITE},    {"plasma", PLASMA, std::size(PLASMA), WHITE},
    {"magma", MAGMA, std::size(MAGMA), WHITE},          {"inferno", INFERNO, std::size(INFERNO), WHITE},
    {"cividis", CIVIDIS, std::size(CIVIDIS), WHITE},    {"glacier", GLACIER, std::size(GLACIER), WHITE},
    {"ember", EMBER, std::size(EMBER), WHITE},          {"moss", MOSS, std::size(MOSS), WHITE},
    {"turbo", TURBO, std::size(TURBO), WHITE},          {"coolwarm", COOLWARM, std::size(COOLWARM), WHITE},
    {"tealrust", TEALRUST, std::size(TEALRUST), WHITE}, {"gray", GRAY, std::size(GRAY), RED}};

Color4<float> fromHexadecimal(unsigned int rgb) {
    auto const part = [rgb](unsigned int shift) { return static_cast<float>(rgb >> shift & 0xFFU) / 255.0F; };
    return {part(16), part(8), part(0), 1};
}

}  // namespace

Color4<float> ColorMap::at(double t) const {
    if (std::isnan(t)) {
        return undefined;
    }
    if (t > 1 || colors.empty()) {
        return above;
    }
    double const place = std::max(t, 0.0) * static_cast<double>(colors.size() - 1);
    auto const before = static_cast<std::size_t>(place);
    Color4<float> const& a = colors[before];
    Color4<float> const& b = colors[std::min(before + 1, colors.size() - 1)];
    auto const f = static_cast<float>(place - static_cast<double>(before));
    return {a.r + (b.r - a.r) * f, a.g + (b.g - a.g) * f, a.b + (b.b - a.b) * f, 1};
}

ColorMap ColorMap::named(std::string const& name) {
    auto const* found = std::find_if(std::begin(MAPS), std::end(MAPS),
                                     [&name](Named const& map) { return map.name == name; });
    Named const& map = found != std::end(MAPS) ? *found : MAPS[0];
    ColorMap result;
    result.colors.clear();
    std::transform(map.colors, map.colors + map.count, std::back_inserter(result.colors), fromHexadecimal);
    result.above = map.above;
    return result;
}

std::vector<std::string> ColorMap::names() {
    std::vector<std::string> names;
    for (Named const& map : MAPS) {
        names.emplace_back(map.name);
    }
    return names;
}

}  // namespace vellum::toolkit
