#pragma once

#include "viewport/scene/ViewFraming.h"

namespace vellum::viewport {

/// From where a scene is seen. The scene is framed whole in every view.
struct CameraSpec {
    View view = View::PERSPECTIVE;
};

}  // namespace vellum::viewport
