#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/scene/Scene.h"

#include <optional>

namespace vellum::viewport {

/// OpenGL draws only what is inside a box while it lives. The camera's model-view matrix must be loaded.
/// Drawing by the fixed pipeline only: shaders need not obey.
class ClipPlanes {
public:
    /// \param box in axes and units of the files; nothing: nothing is clipped.
    /// GL: glClipPlane and glEnable x 6.  State: the clip planes 0 to 5, enabled until its end.
    ClipPlanes(std::optional<Box3<double>> const& box, Scene const& scene);
    ~ClipPlanes();
    ClipPlanes(ClipPlanes const&) = delete;
    ClipPlanes& operator=(ClipPlanes const&) = delete;

private:
    bool isClipping;
};

}  // namespace vellum::viewport
