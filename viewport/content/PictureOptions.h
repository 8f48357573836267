#pragma once

#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"
#include "viewport/playback/NumberedName.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// One of the pictures that the program is asked for. All values are within their ranges.
struct PictureOptions {
    std::string out;  ///< the picture's file; empty: nothing is written
    std::optional<NumberedName>
        names;  ///< of the files of a film, whose pattern `out` is; nothing: it is none
    std::optional<int> quality;
    PictureSize size;
    CameraSpec camera;
    Gizmo gizmo = Gizmo::NONE;
    std::optional<Pixel> pick;  ///< inside the picture
    Background background;
    Explanations explanations;
    std::optional<LightSpec> light;
};

}  // namespace vellum::viewport
