#pragma once

#include "viewport/drawing/view/PictureSize.h"

namespace vellum::viewport {

/// A part of a picture, pixels; x from the left, y from below. May reach over the picture's edges.
struct Region {
    double x;
    double y;
    double width;
    double height;

    static Region whole(PictureSize const& size) {
        return {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    }
};

/// Changes the projection so that a part of what it shows fills the viewport.
/// \param size that of the whole, which the projection stands for now.
/// State: the projection matrix; GL_MODELVIEW selected.
void cropProjection(Region const& region, PictureSize const& size);

}  // namespace vellum::viewport
