#pragma once

#include "viewport/drawing/overlays/ColorKey.h"

#include <memory>
#include <utility>

namespace vellum::viewport {

/// Two keys side by side, for pictures in which meshes and particles show different things. Each is laid out
/// in its place already.
class ColorKeys : public ColorKey {
public:
    ColorKeys(std::unique_ptr<ColorKey> first, std::unique_ptr<ColorKey> second)
        : first(std::move(first)), second(std::move(second)) {}

    int reservedWidth() const override { return first->reservedWidth() + second->reservedWidth(); }

    void draw(Picture& picture, Color4<float> const& ink) const override {
        first->draw(picture, ink);
        second->draw(picture, ink);
    }

private:
    std::unique_ptr<ColorKey> first;
    std::unique_ptr<ColorKey> second;
};

}  // namespace vellum::viewport
