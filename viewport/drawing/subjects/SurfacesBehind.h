#pragma once

#include <GL/glew.h>

namespace vellum::viewport {

/// Moves surfaces a little back in depth while it lives, so that lines in a surface are seen whole.
class SurfacesBehind {
public:
    SurfacesBehind() {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(2, 2);
    }
    ~SurfacesBehind() { glDisable(GL_POLYGON_OFFSET_FILL); }
    SurfacesBehind(SurfacesBehind const&) = delete;
    SurfacesBehind& operator=(SurfacesBehind const&) = delete;
};

}  // namespace vellum::viewport
