#include "viewport/drawing/overlays/checkers.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

int Checkers::side(PictureSize const& size) {
    constexpr double SIDE = 12;  // pixels of a picture of 720
    return std::max(4, static_cast<int>(std::lround(SIDE * size.scale())));
}

void layOverCheckers(Picture& picture) {
    constexpr int FULL = 255;
    int const side = Checkers::side({picture.width, picture.height});
    for (int y = 0; y < picture.height; ++y) {
        int const row = (picture.height - 1 - y) / side;
        for (int x = 0; x < picture.width; ++x) {
            unsigned char* const pixel =
                picture.pixels.data() +
                4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                     static_cast<std::size_t>(x));
            float const below = (Checkers::isDark(x / side, row) ? Checkers::DARK : Checkers::LIGHT).r * FULL;
            float const opacity = static_cast<float>(pixel[3]) / FULL;
            for (int i = 0; i < 3; ++i) {
                pixel[i] = static_cast<unsigned char>(
                    std::lround(opacity * static_cast<float>(pixel[i]) + (1 - opacity) * below));
            }
            pixel[3] = FULL;
        }
    }
}

}  // namespace vellum::viewport
