#pragma once

#include "toolkit/Framing.h"

namespace vellum::viewport {

/// From where a scene is seen. The scene is framed whole in every view.
struct CameraSpec {
    toolkit::ViewKind view = toolkit::ViewKind::PERSPECTIVE;
};

}  // namespace vellum::viewport
