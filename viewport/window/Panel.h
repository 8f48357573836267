#pragma once

#include "viewport/content/Options.h"
#include "viewport/live/Workspace.h"
#include "viewport/window/WindowUnits.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What the widgets ask for, beside other options.
struct PanelRequests {
    std::optional<Options> options;         ///< to be shown
    std::vector<std::string> filesToOpen;   ///< in place of what is open
    std::optional<std::string> screenshot;  ///< a file to be written
    bool fit = false;
    bool reload = false;
    bool cancelLoading = false;
    bool quit = false;
};

/// The widgets beside and over the scene: the panel with everything that the command line can do, the line of status, help and
/// messages. Draws with ImGui, between Interface::begin() and end(), and changes nothing itself.
class Panel {
public:
    /// Draws all of it for one frame.
    /// \param isShown whether there is the panel; progress, faults and help appear without it, too
    PanelRequests draw(Workspace& workspace, WindowUnits const& units, bool isShown);

    /// How much of the window it covers, in units of the window.
    double width(WindowUnits const& units) const;
    double statusHeight(WindowUnits const& units) const;

    bool isHelpShown = false;

private:
    void _drawHelp();
    void _drawProgress(Workspace const& workspace, PanelRequests& requests) const;
    void _drawFault(Workspace& workspace) const;
    void _drawStatus(Workspace& workspace, WindowUnits const& units) const;
    void _drawFiles(Workspace& workspace, PanelRequests& requests);
    void _drawMeshes(Options& options) const;
    void _drawParticles(Workspace& workspace, Options& options);
    void _drawView(Options& options) const;
};

}  // namespace vellum::viewport
