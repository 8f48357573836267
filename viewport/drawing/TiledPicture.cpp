#include "viewport/drawing/TiledPicture.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

OffscreenContext::Settings TiledPicture::contextSettings() const {
    OffscreenContext::Settings settings;
    settings.width = tiling.bufferWidth();
    settings.height = tiling.bufferHeight();
    settings.samples = 4;
    return settings;
}

Result<Picture> TiledPicture::draw(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const {
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    picture.pixels.resize(4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    for (int top = 0; top < size.height; top += tiling.height) {
        for (int left = 0; left < size.width; left += tiling.width) {
            glViewport(0, 0, tiling.bufferWidth(), tiling.bufferHeight());
            viewer.draw(size, _regionOfTile(left, top), tiling.samplesPerSide);
            _shrinkInto(picture, left, top, context.readPixels());
            if (layer.getError("TiledPicture::draw", __LINE__)) {
                return Fault{"", "cannot be drawn: OpenGL reports an error"};
            }
        }
    }
    viewer.drawLabels(picture);
    return picture;
}

Region TiledPicture::_regionOfTile(int left, int top) const {
    return {static_cast<double>(left - tiling.margin),
            static_cast<double>(size.height - top - tiling.height - tiling.margin),
            static_cast<double>(tiling.width + 2 * tiling.margin),
            static_cast<double>(tiling.height + 2 * tiling.margin)};
}

/// Makes each pixel of the tile the mean of its samples.
void TiledPicture::_shrinkInto(Picture& picture, int left, int top,
                               std::vector<unsigned char> const& samples) const {
    int const side = tiling.samplesPerSide;
    int const width = std::min(tiling.width, picture.width - left);
    int const height = std::min(tiling.height, picture.height - top);
    std::size_t const row = 4 * static_cast<std::size_t>(tiling.bufferWidth());
    for (int y = 0; y < height; ++y) {
        std::size_t const pixelRow =
            static_cast<std::size_t>(top + y) * static_cast<std::size_t>(picture.width);
        unsigned char* out = picture.pixels.data() + 4 * (pixelRow + static_cast<std::size_t>(left));
        for (int x = 0; x < width; ++x) {
            unsigned int sums[3] = {0, 0, 0};
            for (int j = 0; j < side; ++j) {
                unsigned char const* in = samples.data() +
                                          row * static_cast<std::size_t>((y + tiling.margin) * side + j) +
                                          4 * static_cast<std::size_t>((x + tiling.margin) * side);
                for (int i = 0; i < side; ++i, in += 4) {
                    sums[0] += in[0];
                    sums[1] += in[1];
                    sums[2] += in[2];
                }
            }
            unsigned int const count = static_cast<unsigned int>(side * side);
            for (unsigned int sum : sums) {
                *out++ = static_cast<unsigned char>((sum + count / 2) / count);
            }
            *out++ = 255;
        }
    }
}

}  // namespace vellum::viewport
