#pragma once

#include "viewport/content/Options.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/PictureSize.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What the widgets ask for, beside other options.
struct PanelRequests {
    std::optional<Options> options;             ///< to be shown
    std::optional<CameraSpec> camera;           ///< to look from
    std::vector<std::string> filesToOpen;       ///< in place of what is open
    std::optional<std::string> screenshot;      ///< a file to be written
    std::optional<PictureSize> screenshotSize;  ///< of it; nothing: that of the scene in the window
    std::optional<std::string>
        commandLine;  ///< that draws this file is to be copied, with the size of a screenshot
    bool fit = false;
    bool reload = false;
    bool cancelLoading = false;
    bool quit = false;
};

}  // namespace vellum::viewport
