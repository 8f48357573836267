#pragma once

#include "viewport/content/Options.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/GizmoDrag.h"
#include "viewport/live/FileWatch.h"
#include "viewport/live/ScreenPicture.h"
#include "viewport/live/WindowSettings.h"
#include "viewport/live/Workspace.h"
#include "viewport/text/Fault.h"
#include "viewport/window/Interface.h"
#include "viewport/window/Panel.h"
#include "viewport/window/Window.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

namespace vellum::viewport {

/// The window of vl_viewport: what the user does goes to the workspace, what it shows goes to the screen.
/// Draws only when something has changed.
class Application {
public:
    /// \param window whose context is current, with GLEW started; must outlive it
    /// \param settings of the window; takes what changes, and must outlive it
    Application(Window& window, Options const& options, WindowSettings& settings);

    /// Until the window is closed. A fault where the options ask for a picture of it under the name of a file
    /// that was read.
    std::optional<Fault> run();

private:
    using Clock = std::chrono::steady_clock;

    /// What the left and the middle button do while they are pressed.
    enum class Drag { NONE, ORBIT, PAN, GIZMO };

    /// Where the scene is drawn: all of the window but the panel and the bars. Pixels of the framebuffer.
    struct Area {
        int left = 0;
        int bottom = 0;
        PictureSize size;
    };

    std::optional<double> _patience() const;
    void _frame(Picture* seen = nullptr);
    bool _mayRest() const;
    bool _isOverScene() const;
    void _giveUpGizmo();
    void _layOut();
    void _handleMouse();
    void _handleKeys();
    void _handleKey(KeyPress const& press);
    void _handleControlKey(KeyPress const& press);
    void _escape();
    bool _handleWindowKey(int key);
    void _handleViewKey(int key);
    void _press();
    void _pull(bool snaps);
    void _release();
    void _cancelPull();
    void _click();
    void _highlightHandle(bool isOverScene);
    Pixel _cursorPixel() const;
    void _handleDroppedFiles();
    void _do(PanelRequests const& requests);
    void _open(std::vector<std::string> const& files);
    void _saveView();
    void _takeOver();
    void _keepSettings();
    void _moveCamera(CameraSpec const& spec);
    void _drawScene();
    void _show() const;
    void _pictureWindow();
    void _lookUnderCursor();
    void _saveScreenshot(std::string const& path);

    Window& window;
    Interface interface;
    Workspace workspace;
    FileWatch watch;
    WindowSettings& settings;
    Panel panel;

    WindowUnits units;
    Area area;
    bool hasPanel = true;
    ScreenPicture picture;  // of the scene, as it was drawn last
    ScreenPicture labels;   // over it, as long as the picture has none itself
    bool isSceneChanged = true;
    bool isResting = false;  // the picture has all its pixels
    Clock::time_point lastChange;
    std::optional<Fault> pictureFault;  // of the window's own picture
    bool isPictured = false;            // the window itself, as the options ask for
    bool isWidgetActive = false;        // one is held, or typed into
    int framesToDraw = 3;               // of the widgets, which need more than one to settle

    std::vector<std::string> watched;  // the files of the scene

    Drag drag = Drag::NONE;
    bool isCursorNew = false;    // what is under it has not been looked for
    Clock::time_point lastMove;  // of the cursor
    double costOfLook = 0;       // seconds
    double cursorX = 0;          // pixels from the upper left corner of the area
    double cursorY = 0;
    double pressedX = 0;  // where the left button was pressed
    double pressedY = 0;
    bool isClick = false;  // the left button is pressed and the cursor has not left the place
    GizmoHandle handle = GizmoHandle::NONE;  // under the cursor, or dragged
    std::optional<GizmoDrag> gizmoDrag;
    std::size_t dragged = 0;  // the object, only with gizmoDrag
};

}  // namespace vellum::viewport
