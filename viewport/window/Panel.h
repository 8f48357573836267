#pragma once

#include "viewport/content/Options.h"
#include "viewport/live/Workspace.h"
#include "viewport/window/WindowUnits.h"
#include "viewport/window/panel/PanelRequests.h"
#include "viewport/window/panel/Timeline.h"
#include "viewport/window/panel/sections.h"

#include <chrono>
#include <optional>

namespace vellum::viewport {

/// The widgets beside and over the scene: the panel with everything that the command line can do, the line of
/// status, help and messages. Draws with ImGui, between Interface::begin() and end(), and changes nothing
/// itself.
class Panel {
public:
    /// Draws all of it for one frame.
    /// \param isShown whether there is the panel; progress, faults and help appear without it, too
    PanelRequests draw(Workspace& workspace, WindowUnits const& units, bool isShown);

    /// How much of the window it covers, in units of the window.
    double width(WindowUnits const& units) const;
    double footHeight(Workspace const& workspace, WindowUnits const& units) const;

    /// Asks for the picture that the panel's own button would save.
    void savePicture(PanelRequests& requests) const { picture.save(requests); }

    /// What is under the cursor, for the line of status; empty: nothing.
    void setUnderCursor(std::string const& text) { underCursor = text; }

    /// What was clicked, as --pick prints it; empty: nothing was.
    void setPicked(std::string const& lines) { picked.set(lines); }

    void togglePlaying(Workspace& workspace) { timeline.togglePlaying(workspace); }
    bool isPlaying() const { return timeline.isPlaying(); }

    bool isHelpShown = false;
    bool isOverlayShown = false;

private:
    std::string underCursor;

    void _drawHelp();
    void _drawSections(Workspace& workspace, float width, PanelRequests& requests);
    void _drawProgress(Workspace const& workspace, PanelRequests& requests);
    void _drawFault(Workspace& workspace) const;
    void _drawStatus(Workspace& workspace, WindowUnits const& units) const;

    float covered = 0;  // of the window, by the panel; units of the window
    DataSection data;
    ParticleSection particles;
    MeshSection meshes;
    EffectSection effect;
    ViewSection view;
    ObjectSection object;
    PickedSection picked;
    PictureSection picture;
    Timeline timeline;
    std::optional<std::chrono::steady_clock::time_point> loadingSince;
    std::optional<Options>
        draft;  // while a widget is held that changes much; nothing: the workspace has them all
};

}  // namespace vellum::viewport
