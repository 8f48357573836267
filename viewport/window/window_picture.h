#pragma once

#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

namespace vellum::viewport {

/// What has been drawn into a window of this size and is not shown yet.
Picture windowPicture(PictureSize const& size);

}  // namespace vellum::viewport
