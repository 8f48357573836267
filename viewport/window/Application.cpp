#include "viewport/window/Application.h"

#include "viewport/content/input_files.h"
#include "viewport/drawing/overlays/checkers.h"
#include "viewport/drawing/view/Navigation.h"
#include "viewport/program/SavedView.h"
#include "viewport/program/describe_pick.h"
#include "viewport/program/to_words.h"
#include "viewport/text/single_line.h"
#include "viewport/window/RecentFiles.h"
#include "viewport/window/shown_texts.h"
#include "viewport/window/window_picture.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include <GL/glew.h>
#include <GLFW/glfw3.h>
#include <imgui.h>

namespace vellum::viewport {

namespace {

// Seconds without a change until the picture gets all its pixels.
constexpr double UNTIL_REST = 0.15;
// Seconds that the cursor stays where it is until what is under it is looked for, and how long that may take.
constexpr double UNTIL_LOOK = 0.08;
constexpr double LONGEST_LOOK = 0.25;
// Seconds until the panel has counted what it shows.
constexpr double UNTIL_PICTURE = 1.5;
constexpr double WHILE_PLAYING = 1.0 / 60;
// While files are loaded, the bar moves on.
constexpr double WHILE_LOADING = 0.05;
// While a widget is held, which may repeat what it does; and while a text is typed, whose cursor blinks.
constexpr double WHILE_HELD = 0.05;
constexpr double WHILE_TYPED = 0.25;
// Widgets that are changed need another frame to show it.
constexpr int FRAMES_TO_SETTLE = 3;
// Pixels that the cursor may move in a click.
constexpr double CLICK_REACH = 3;

double secondsSince(std::chrono::steady_clock::time_point const& time) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - time).count();
}

}  // namespace

Application::Application(Window& window, Options const& options, WindowSettings& settings)
    : window(window)
    , interface(window)
    , workspace(options, Window::wake)
    , watch(Window::wake)
    , settings(settings)
    , hasPanel(settings.hasPanel)
    , lastChange(Clock::now())
    , lastMove(lastChange) {
    window.setTitle(titleOf(options));
}

std::optional<Fault> Application::run() {
    while (!window.isAskedToClose()) {
        Window::wait(_patience());
        if (window.takeEvents()) {
            framesToDraw = FRAMES_TO_SETTLE;
        }
        _layOut();
        if (workspace.update(area.size.aspect())) {
            isSceneChanged = true;
            framesToDraw = FRAMES_TO_SETTLE;
            _giveUpGizmo();
        }
        if (workspace.takeReplaced()) {
            drag = Drag::NONE;
            _takeOver();
        }
        if (watch.takeChange()) {
            workspace.reload();
            framesToDraw = FRAMES_TO_SETTLE;
        }
        bool const mustRest =
            !isSceneChanged && !isResting && _mayRest() && secondsSince(lastChange) >= UNTIL_REST;
        bool const mustLook = isResting && isCursorNew && hasPanel && secondsSince(lastMove) >= UNTIL_LOOK;
        if (framesToDraw > 0 || isSceneChanged || mustRest || mustLook || workspace.isLoading() ||
            panel.isPlaying() || isWidgetActive) {
            _frame();
            framesToDraw = std::max(0, framesToDraw - 1);
        }
        _keepSettings();
        _pictureWindow();
    }
    return pictureFault;
}

/// The object that is dragged may be another one, or gone. The view is turned on.
void Application::_giveUpGizmo() {
    gizmoDrag.reset();
    handle = GizmoHandle::NONE;
    if (LiveScene* const scene = workspace.scene()) {
        scene->highlight(handle);
    }
    if (drag == Drag::GIZMO) {
        drag = Drag::NONE;
    }
}

/// Writes what the window shows, where that is asked for, as soon as nothing is missing.
void Application::_pictureWindow() {
    std::string const& file = workspace.options().windowPicture;
    bool const isComplete = workspace.fault() || (isResting && !workspace.isLoading() && framesToDraw == 0);
    if (file.empty() || isPictured || !isComplete || secondsSince(lastChange) < UNTIL_PICTURE) {
        return;
    }
    isPictured = true;
    // Files that others name are known by now.
    if (workspace.content() != nullptr && isOneOf(file, workspace.content()->textures)) {
        pictureFault =
            Fault{"", singleLine("--window-picture: " + file + " is one of the files that are read")};
        window.close();
        return;
    }
    Picture seen;
    _frame(&seen);
    if (std::optional<Fault> const fault = seen.savePng(file)) {
        workspace.report(*fault);
        framesToDraw = FRAMES_TO_SETTLE;
    } else {
        window.close();
    }
}

/// Something else is shown, or was refused.
void Application::_takeOver() {
    window.setTitle(titleOf(workspace.options()));
    if (workspace.fault() || workspace.scene() == nullptr) {
        return;
    }
    Options const& options = workspace.options();
    if (options.files != watched) {
        watched = options.files;
        panel.setPicked("");
        watch.setFiles(watched);
        settings.remember(options.view.empty() ? options.files : std::vector<std::string>{options.view});
        // What is open is known even if the window does not end well. A failure is told at the end.
        static_cast<void>(settings.save());
    }
}

void Application::_keepSettings() {
    settings.hasPanel = hasPanel;
    if (!window.isFullScreen()) {
        auto const points = [this](int pixels) {
            return static_cast<int>(std::lround(pixels / units.pixelsPerPoint));
        };
        settings.width = std::max(WindowSettings::SMALLEST, points(units.framebuffer.width));
        settings.height = std::max(WindowSettings::SMALLEST, points(units.framebuffer.height));
    }
}

/// Whether nothing moves that would only be held up by a picture with all its pixels.
bool Application::_mayRest() const {
    return drag == Drag::NONE && !panel.isPlaying();
}

/// How long nothing may happen until something is to be drawn.
std::optional<double> Application::_patience() const {
    if (isSceneChanged || framesToDraw > 0) {
        return 0;
    }
    if (!workspace.options().windowPicture.empty() && !isPictured) {
        return WHILE_LOADING;
    }
    if (workspace.isLoading()) {
        return WHILE_LOADING;
    }
    if (panel.isPlaying()) {
        return WHILE_PLAYING;
    }
    if (isWidgetActive) {
        return interface.hasKeys() ? WHILE_TYPED : WHILE_HELD;
    }
    if (isResting && isCursorNew && hasPanel) {
        return std::max(0.001, UNTIL_LOOK - secondsSince(lastMove));
    }
    if (!isResting && !picture.isEmpty() && _mayRest()) {
        return std::max(0.001, UNTIL_REST - secondsSince(lastChange));
    }
    return std::nullopt;
}

void Application::_layOut() {
    WindowUnits const newUnits = window.units();
    Area newArea;
    int const panelPixels =
        hasPanel ? static_cast<int>(std::lround(newUnits.toPixels(panel.width(newUnits)))) : 0;
    int const footPixels =
        hasPanel ? static_cast<int>(std::lround(newUnits.toPixels(panel.footHeight(workspace, newUnits))))
                 : 0;
    newArea.left = panelPixels;
    newArea.bottom = footPixels;
    newArea.size = {std::max(1, newUnits.framebuffer.width - panelPixels),
                    std::max(1, newUnits.framebuffer.height - footPixels)};
    if (newUnits != units || newArea.size != area.size || newArea.left != area.left) {
        isSceneChanged = true;
        framesToDraw = FRAMES_TO_SETTLE;
    }
    units = newUnits;
    area = newArea;
}

/// \param seen gets what the window shows then; may be null
void Application::_frame(Picture* seen) {
    interface.begin(units);
    PanelRequests const requests = panel.draw(workspace, units, hasPanel);
    _handleKeys();
    _handleMouse();
    _handleDroppedFiles();
    _do(requests);
    if (workspace.takeEdited()) {
        isSceneChanged = true;
        if (workspace.scene() != nullptr && drag == Drag::NONE) {
            // The handles may have moved away from the cursor, or under it.
            _highlightHandle(_isOverScene());
        }
    }
    if (workspace.scene() == nullptr && !workspace.isLoading()) {
        if (std::optional<std::string> const file =
                drawRecentFiles(settings.recentFiles(), units.toUnits(area.left))) {
            _open({*file});
        }
    }
    if (LiveScene* const scene = workspace.scene()) {
        if (isSceneChanged) {
            _drawScene();
        } else if (!isResting && secondsSince(lastChange) >= UNTIL_REST && _mayRest()) {
            scene->rest();
            Result<Picture> complete = scene->picture(area.size);
            if (complete.isOk()) {
                if (scene->options().pictures.front().background.isTransparent) {
                    layOverCheckers(complete.value());
                }
                picture.set(complete.value());
                labels.clear();
            } else {
                _drawScene();
            }
            isResting = true;
        }
    }
    isSceneChanged = false;
    _lookUnderCursor();
    _show();
    interface.end();
    if (seen != nullptr) {
        *seen = windowPicture(units.framebuffer);
    }
    window.swap();
    isWidgetActive = interface.isActive();
}

/// Says what is under the cursor, where the view rests. The back buffer is used up by it.
void Application::_lookUnderCursor() {
    bool const isInside =
        cursorX >= 0 && cursorY >= 0 && cursorX < area.size.width && cursorY < area.size.height;
    if (!isCursorNew || !hasPanel || !isResting || workspace.scene() == nullptr ||
        secondsSince(lastMove) < UNTIL_LOOK) {
        return;
    }
    isCursorNew = false;
    if (!isInside || interface.hasMouse() || costOfLook > LONGEST_LOOK) {
        panel.setUnderCursor("");
        return;
    }
    Clock::time_point const start = Clock::now();
    std::optional<Picked> const picked = workspace.scene()->pick(area.size, _cursorPixel());
    costOfLook = secondsSince(start);
    panel.setUnderCursor(picked ? inOneLine(describePick(picked)) : std::string());
    framesToDraw = std::max(framesToDraw, 1 + 1);
}

/// As fast as it goes, into the texture.
void Application::_drawScene() {
    LiveScene* const scene = workspace.scene();
    scene->draw(area.size);
    picture.copy(area.size);
    std::optional<Picture> const letters = scene->labels(area.size);
    if (letters) {
        labels.set(*letters);
    } else {
        labels.clear();
    }
    isResting = false;
    isCursorNew = true;
    lastChange = Clock::now();
}

void Application::_show() const {
    glViewport(0, 0, units.framebuffer.width, units.framebuffer.height);
    glClearColor(0.085F, 0.098F, 0.122F, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    picture.draw(area.left, area.bottom, ScreenPicture::Cover::ALL);
    labels.draw(area.left, area.bottom, ScreenPicture::Cover::BY_OPACITY);
}

// == What the user does ==

void Application::_moveCamera(CameraSpec const& spec) {
    if (LiveScene* const scene = workspace.scene()) {
        workspace.setCamera(spec);
        isSceneChanged = true;
    }
}

void Application::_handleMouse() {
    ImGuiIO const& io = ImGui::GetIO();
    double const x = units.toPixels(static_cast<double>(io.MousePos.x)) - area.left;
    double const y = units.toPixels(static_cast<double>(io.MousePos.y));
    double const dx = x - std::exchange(cursorX, x);
    double const dy = y - std::exchange(cursorY, y);
    if (dx != 0 || dy != 0) {
        isCursorNew = true;
        lastMove = Clock::now();
    }
    LiveScene* const scene = workspace.scene();
    bool const isOverScene = _isOverScene();
    if (scene == nullptr) {
        drag = Drag::NONE;
        return;
    }
    Navigation const navigation(scene->scene(), scene->camera());
    bool const hasMoved = dx != 0 || dy != 0;
    if (hasMoved && drag == Drag::NONE) {
        _highlightHandle(isOverScene);
    }
    if (isOverScene && drag == Drag::NONE && ImGui::IsMouseClicked(ImGuiMouseButton_Left)) {
        _press();
    } else if (isOverScene && drag == Drag::NONE &&
               (ImGui::IsMouseClicked(ImGuiMouseButton_Middle) ||
                ImGui::IsMouseClicked(ImGuiMouseButton_Right))) {
        drag = Drag::PAN;
    } else if (drag == Drag::GIZMO) {
        _pull(io.KeyCtrl);
        if (!ImGui::IsMouseDown(ImGuiMouseButton_Left)) {
            _release();
        }
    } else if (!ImGui::IsAnyMouseDown()) {
        if (std::exchange(isClick, false)) {
            _click();
        }
        drag = Drag::NONE;
    } else if (drag != Drag::NONE && hasMoved) {
        // What a click has held back comes at once.
        double const mostX = isClick ? x - pressedX : dx;
        double const mostY = isClick ? y - pressedY : dy;
        isClick = isClick && std::hypot(mostX, mostY) <= CLICK_REACH;
        if (!isClick) {
            _moveCamera(drag == Drag::ORBIT ? navigation.orbit(mostX, mostY) : navigation.pan(mostX, mostY));
        }
    }
    if (isOverScene && drag != Drag::GIZMO && io.MouseWheel != 0) {
        _moveCamera(navigation.zoom(static_cast<double>(io.MouseWheel), x, y));
    }
}

bool Application::_isOverScene() const {
    return !interface.hasMouse() && cursorX >= 0 && cursorY >= 0 && cursorX < area.size.width &&
           cursorY < area.size.height;
}

// == Editing ==

Pixel Application::_cursorPixel() const {
    return {std::clamp(static_cast<int>(std::floor(cursorX)), 0, area.size.width - 1),
            std::clamp(static_cast<int>(std::floor(cursorY)), 0, area.size.height - 1)};
}

/// Draws the handle under the cursor as such.
void Application::_highlightHandle(bool isOverScene) {
    LiveScene& scene = *workspace.scene();
    bool const canBeGrabbed = isOverScene && workspace.selected() && workspace.gizmo() != Gizmo::NONE;
    GizmoHandle const now = canBeGrabbed ? scene.handleAt(area.size, _cursorPixel()) : GizmoHandle::NONE;
    if (now != std::exchange(handle, now)) {
        scene.highlight(now);
        isSceneChanged = true;
    }
}

/// Of the left button, over the scene.
void Application::_press() {
    _highlightHandle(true);
    pressedX = cursorX;
    pressedY = cursorY;
    if (handle == GizmoHandle::NONE) {
        isClick = true;
        drag = ImGui::GetIO().KeyShift ? Drag::PAN : Drag::ORBIT;
        return;
    }
    LiveScene& scene = *workspace.scene();
    dragged = *workspace.selected();
    gizmoDrag.emplace(scene.scene(), dragged, workspace.gizmo(), handle, workspace.transform(dragged),
                      scene.view(area.size), cursorX, cursorY);
    drag = Drag::GIZMO;
}

void Application::_pull(bool snaps) {
    ObjectTransform const former = gizmoDrag->after();
    ObjectTransform const now = gizmoDrag->update(cursorX, cursorY, snaps);
    if (now != former) {
        workspace.preview(dragged, now);
    }
}

void Application::_release() {
    Gizmo const gizmo = workspace.gizmo();
    std::string const label = gizmo == Gizmo::MOVE ? "Move" : gizmo == Gizmo::ROTATE ? "Rotate" : "Scale";
    workspace.setTransform(dragged, gizmoDrag->after(), label);
    gizmoDrag.reset();
    drag = Drag::NONE;
}

/// What is dragged returns.
void Application::_cancelPull() {
    workspace.preview(dragged, gizmoDrag->before());
    gizmoDrag.reset();
    drag = Drag::NONE;
}

/// Of the left button, on something or nothing.
void Application::_click() {
    std::optional<Picked> const picked = workspace.scene()->pick(area.size, _cursorPixel());
    panel.setPicked(describePick(picked));
    workspace.select(picked ? picked->object() : std::nullopt);
}

void Application::_handleKeys() {
    for (KeyPress const& press : window.takeKeys()) {
        // Keys that are typed into a widget are its own.
        if (!interface.hasKeys()) {
            _handleKey(press);
        }
    }
}

void Application::_handleKey(KeyPress const& press) {
    if (drag == Drag::GIZMO) {
        if (press.key == GLFW_KEY_ESCAPE) {
            _cancelPull();
        }
    } else if (press.hasControl) {
        _handleControlKey(press);
    } else if (press.key == GLFW_KEY_ESCAPE) {
        _escape();
    } else if (!_handleWindowKey(press.key)) {
        _handleViewKey(press.key);
    }
}

void Application::_handleControlKey(KeyPress const& press) {
    if (press.key == GLFW_KEY_Q) {
        window.close();
    } else if (press.key == GLFW_KEY_S && press.hasShift) {
        _saveView();
    } else if (press.key == GLFW_KEY_S) {
        PanelRequests requests;
        panel.savePicture(requests);
        _do(requests);
    } else if (press.key == GLFW_KEY_Z && press.hasShift) {
        workspace.redo();
    } else if (press.key == GLFW_KEY_Z) {
        workspace.undo();
    }
}

/// Leaves one thing after the other.
void Application::_escape() {
    if (workspace.isLoading()) {
        workspace.cancelLoading();
    } else if (workspace.fault()) {
        workspace.forgetFault();
    } else {
        workspace.setGizmo(Gizmo::NONE);
    }
}

/// Whether the key has a meaning for the window or the gizmo.
bool Application::_handleWindowKey(int key) {
    switch (key) {
    case GLFW_KEY_H:
        panel.isHelpShown = !panel.isHelpShown;
        return true;
    case GLFW_KEY_I:
        panel.isOverlayShown = !panel.isOverlayShown;
        return true;
    case GLFW_KEY_TAB:
        hasPanel = !hasPanel;
        return true;
    case GLFW_KEY_F11:
        window.setFullScreen(!window.isFullScreen());
        return true;
    case GLFW_KEY_F5:
        workspace.reload();
        return true;
    case GLFW_KEY_ENTER:
    case GLFW_KEY_KP_ENTER:
        workspace.forgetFault();
        return true;
    case GLFW_KEY_SPACE:
        panel.togglePlaying(workspace);
        return true;
    case GLFW_KEY_G:
        workspace.setGizmo(Gizmo::MOVE);
        return true;
    case GLFW_KEY_T:
        workspace.setGizmo(Gizmo::ROTATE);
        return true;
    case GLFW_KEY_S:
        workspace.setGizmo(Gizmo::SCALE);
        return true;
    default:
        return false;
    }
}

void Application::_handleViewKey(int key) {
    LiveScene* const scene = workspace.scene();
    if (scene == nullptr) {
        return;
    }
    Navigation const navigation(scene->scene(), scene->camera());
    int const number = key >= GLFW_KEY_KP_0 && key <= GLFW_KEY_KP_9 ? key - GLFW_KEY_KP_0 : key - GLFW_KEY_0;
    if (key == GLFW_KEY_F) {
        _moveCamera(navigation.fit());
    } else if (key == GLFW_KEY_P) {
        _moveCamera(navigation.otherProjection());
    } else if (number >= 0 && number <= static_cast<int>(toolkit::ViewKind::RIGHT)) {
        _moveCamera(navigation.lookAlong(static_cast<toolkit::ViewKind>(number)));
    }
}

void Application::_handleDroppedFiles() {
    std::vector<std::string> const files = window.takeDroppedFiles();
    if (!files.empty()) {
        _open(files);
    }
}

/// Files, or a saved view.
void Application::_open(std::vector<std::string> const& files) {
    auto const view = std::find_if(files.begin(), files.end(), SavedView::isOne);
    if (view == files.end()) {
        workspace.open(files);
        return;
    }
    Result<Options> const loaded = loadView(*view);
    if (!loaded.isOk()) {
        workspace.report(loaded.fault());
        return;
    }
    Options options = loaded.value();
    options.given = workspace.options().given;
    options.isQuiet = workspace.options().isQuiet;
    workspace.apply(options);
    isSceneChanged = true;
    framesToDraw = FRAMES_TO_SETTLE;
}

/// Over the view that is open, else beside the first file.
void Application::_saveView() {
    Options options = workspace.options();
    if (options.view.empty()) {
        options.view = newViewPath(options.files);
    }
    if (options.view.empty()) {
        workspace.report({"", "a view of no file has no name to be saved under"});
        return;
    }
    options.pictures.front().size = area.size;
    if (std::optional<Fault> const fault = saveView(options.view, options)) {
        workspace.report(*fault);
        return;
    }
    workspace.apply(options);
    settings.remember({options.view});
    window.setTitle(std::filesystem::path(options.view).filename().string() +
                    " is saved \xE2\x80\x93 vl_viewport");
}

void Application::_do(PanelRequests const& requests) {
    if (requests.options) {
        workspace.apply(*requests.options);
        isSceneChanged = true;
    }
    if (!requests.filesToOpen.empty()) {
        _open(requests.filesToOpen);
    }
    if (requests.camera) {
        _moveCamera(*requests.camera);
    }
    if (requests.fit && workspace.scene() != nullptr) {
        _moveCamera(Navigation(workspace.scene()->scene(), workspace.scene()->camera()).fit());
    }
    if (requests.reload) {
        workspace.reload();
    }
    if (requests.cancelLoading) {
        workspace.cancelLoading();
    }
    if (requests.commandLine) {
        ImGui::SetClipboardText(commandLineOf(workspace.options(),
                                              requests.screenshotSize.value_or(area.size),
                                              *requests.commandLine)
                                    .c_str());
    }
    if (requests.screenshot) {
        workspace.saveScreenshot(*requests.screenshot, requests.screenshotSize.value_or(area.size));
    }
    if (requests.quit) {
        window.close();
    }
}

}  // namespace vellum::viewport
