#include "viewport/drawing/TiledPicture.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

/// Of a color c with the opacity a, c a is seen over black, and over white 1 - a more.
void removeBackground(Picture& overBlack, Picture const& overWhite) {
    for (std::size_t i = 0; i + 3 < overBlack.pixels.size(); i += 4) {
        unsigned char* const pixel = overBlack.pixels.data() + i;
        int shining = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            shining += std::max(0, overWhite.pixels[i + k] - pixel[k]);
        }
        int const opacity = 255 - (shining + 1) / 3;
        for (std::size_t k = 0; k < 3; ++k) {
            pixel[k] = static_cast<unsigned char>(
                opacity > 0 ? std::min(255, (pixel[k] * 255 + opacity / 2) / opacity) : 0);
        }
        pixel[3] = static_cast<unsigned char>(opacity);
    }
}

OffscreenContext::Settings TiledPicture::contextSettings() const {
    OffscreenContext::Settings settings;
    settings.width = tiling.bufferWidth();
    settings.height = tiling.bufferHeight();
    settings.samples = 4;
    return settings;
}

template <class Draw>
void TiledPicture::_forEachTile(Draw const& draw) const {
    for (int top = 0; top < size.height; top += tiling.height) {
        for (int left = 0; left < size.width; left += tiling.width) {
            glViewport(0, 0, tiling.bufferWidth(), tiling.bufferHeight());
            draw(left, top);
        }
    }
}

Result<Picture> TiledPicture::draw(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const {
    Background const background = viewer.background();
    if (!background.isTransparent) {
        return _drawOpaque(viewer, layer, context);
    }
    viewer.setBackground(Background::of({0, 0, 0, 1}));
    Result<Picture> overBlack = _drawOpaque(viewer, layer, context);
    viewer.setBackground(Background::of({1, 1, 1, 1}));
    Result<Picture> const overWhite = _drawOpaque(viewer, layer, context);
    viewer.setBackground(background);
    if (!overBlack.isOk() || !overWhite.isOk()) {
        return overBlack.isOk() ? overWhite : overBlack;
    }
    removeBackground(overBlack.value(), overWhite.value());
    return overBlack;
}

Result<Picture> TiledPicture::_drawOpaque(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const {
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    picture.pixels.resize(4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    bool hasFailed = false;
    _forEachTile([&](int left, int top) {
        viewer.draw(size, _regionOfTile(left, top), tiling.samplesPerSide);
        _shrinkInto(picture, left, top, context);
        hasFailed = layer.getError("TiledPicture::draw", __LINE__) || hasFailed;
    });
    if (hasFailed) {
        return Fault{"", "cannot be drawn: OpenGL reports an error"};
    }
    viewer.drawLabels(picture);
    return picture;
}

std::vector<float> TiledPicture::drawDepths(Viewer& viewer) const {
    std::vector<float> distances(static_cast<std::size_t>(size.width) *
                                 static_cast<std::size_t>(size.height));
    auto const bufferWidth = static_cast<std::size_t>(tiling.bufferWidth());
    auto const bufferHeight = static_cast<std::size_t>(tiling.bufferHeight());
    std::vector<float> depths(bufferWidth * bufferHeight);
    auto const side = static_cast<std::size_t>(tiling.samplesPerSide);
    auto const margin = static_cast<std::size_t>(tiling.margin);
    _forEachTile([&](int left, int top) {
        viewer.drawDepths(size, _regionOfTile(left, top), tiling.samplesPerSide);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glReadPixels(0, 0, tiling.bufferWidth(), tiling.bufferHeight(), GL_DEPTH_COMPONENT, GL_FLOAT,
                     depths.data());
        auto const width = static_cast<std::size_t>(std::min(tiling.width, size.width - left));
        auto const height = static_cast<std::size_t>(std::min(tiling.height, size.height - top));
        for (std::size_t y = 0; y < height; ++y) {
            float* out = distances.data() +
                         (static_cast<std::size_t>(top) + y) * static_cast<std::size_t>(size.width) +
                         static_cast<std::size_t>(left);
            for (std::size_t x = 0; x < width; ++x) {
                float nearest = 1;
                for (std::size_t k = 0; k < side * side; ++k) {
                    // GL's first row is the lowest.
                    std::size_t const row = bufferHeight - 1 - ((y + margin) * side + k / side);
                    nearest = std::min(nearest, depths[row * bufferWidth + (x + margin) * side + k % side]);
                }
                *out++ = static_cast<float>(viewer.distanceOf(static_cast<double>(nearest)));
            }
        }
    });
    return distances;
}

Region TiledPicture::_regionOfTile(int left, int top) const {
    return {static_cast<double>(left - tiling.margin),
            static_cast<double>(size.height - top - tiling.height - tiling.margin),
            static_cast<double>(tiling.width + 2 * tiling.margin),
            static_cast<double>(tiling.height + 2 * tiling.margin)};
}

/// Makes each pixel of the tile the mean of its samples. No others are read: of the last tile of a row most
/// may lie outside.
void TiledPicture::_shrinkInto(Picture& picture, int left, int top, OffscreenContext const& context) const {
    int const side = tiling.samplesPerSide;
    int const width = std::min(tiling.width, picture.width - left);
    int const height = std::min(tiling.height, picture.height - top);
    // The buffer may be higher.
    std::vector<unsigned char> const samples = context.readPixels(
        tiling.margin * side, context.height() - tiling.bufferHeight() + tiling.margin * side, width * side,
        height * side);
    std::size_t const row = 4 * static_cast<std::size_t>(width * side);
    for (int y = 0; y < height; ++y) {
        std::size_t const pixelRow =
            static_cast<std::size_t>(top + y) * static_cast<std::size_t>(picture.width);
        unsigned char* out = picture.pixels.data() + 4 * (pixelRow + static_cast<std::size_t>(left));
        for (int x = 0; x < width; ++x) {
            unsigned int sums[3] = {0, 0, 0};
            for (int j = 0; j < side; ++j) {
                unsigned char const* in = samples.data() + row * static_cast<std::size_t>(y * side + j) +
                                          4 * static_cast<std::size_t>(x * side);
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
