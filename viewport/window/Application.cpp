#include "viewport/window/Application.h"

#include "viewport/drawing/view/Navigation.h"

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
// While files are loaded, the bar moves on.
constexpr double WHILE_LOADING = 0.05;
// Widgets that are changed need another frame to show it.
constexpr int FRAMES_TO_SETTLE = 3;

double secondsSince(std::chrono::steady_clock::time_point const& time) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - time).count();
}

std::string titleOf(Options const& options) {
    if (options.files.empty()) {
        return "vl_viewport";
    }
    std::string const first = std::filesystem::path(options.files.front()).filename().string();
    std::size_t const others = options.files.size() - 1;
    return first + (others > 0 ? " and " + std::to_string(others) + " more" : "") + " \xE2\x80\x93 vl_viewport";
}

}  // namespace

Application::Application(Window& window, Options const& options)
    : window(window), interface(window), workspace(options, Window::wake), lastChange(Clock::now()) {
    window.setTitle(titleOf(options));
}

void Application::run() {
    while (!window.isAskedToClose()) {
        Window::wait(_patience());
        if (window.takeEvents()) {
            framesToDraw = FRAMES_TO_SETTLE;
        }
        _layOut();
        if (workspace.update(area.size.aspect())) {
            isSceneChanged = true;
            framesToDraw = FRAMES_TO_SETTLE;
            window.setTitle(titleOf(workspace.options()));
        }
        bool const mustRest = !isSceneChanged && !isResting && secondsSince(lastChange) >= UNTIL_REST;
        if (framesToDraw > 0 || isSceneChanged || mustRest || workspace.isLoading()) {
            _frame();
            framesToDraw = std::max(0, framesToDraw - 1);
        }
    }
}

/// How long nothing may happen until something is to be drawn.
std::optional<double> Application::_patience() const {
    if (isSceneChanged || framesToDraw > 0) {
        return 0;
    }
    if (workspace.isLoading()) {
        return WHILE_LOADING;
    }
    if (!isResting && !picture.isEmpty()) {
        return std::max(0.001, UNTIL_REST - secondsSince(lastChange));
    }
    return std::nullopt;
}

void Application::_layOut() {
    WindowUnits const newUnits = window.units();
    Area newArea;
    int const panelPixels =
        hasPanel ? static_cast<int>(std::lround(newUnits.toPixels(panel.width(newUnits)))) : 0;
    int const statusPixels =
        hasPanel ? static_cast<int>(std::lround(newUnits.toPixels(panel.statusHeight(newUnits)))) : 0;
    newArea.left = panelPixels;
    newArea.bottom = statusPixels;
    newArea.size = {std::max(1, newUnits.framebuffer.width - panelPixels),
                    std::max(1, newUnits.framebuffer.height - statusPixels)};
    if (newUnits != units || newArea.size != area.size || newArea.left != area.left) {
        isSceneChanged = true;
        framesToDraw = FRAMES_TO_SETTLE;
    }
    units = newUnits;
    area = newArea;
}

void Application::_frame() {
    interface.begin(units);
    PanelRequests const requests = panel.draw(workspace, units, hasPanel);
    _handleKeys();
    _handleMouse();
    _handleDroppedFiles();
    _do(requests);
    if (LiveScene* const scene = workspace.scene()) {
        if (isSceneChanged) {
            _drawScene();
        } else if (!isResting && secondsSince(lastChange) >= UNTIL_REST && drag == Drag::NONE) {
            scene->rest();
            Result<Picture> const complete = scene->picture(area.size);
            if (complete.isOk()) {
                picture.set(complete.value());
                labels.clear();
            } else {
                _drawScene();
            }
            isResting = true;
        }
    }
    isSceneChanged = false;
    _show();
    interface.end();
    window.swap();
    if (interface.isActive()) {
        framesToDraw = std::max(framesToDraw, 2);
    }
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
    LiveScene* const scene = workspace.scene();
    bool const isOverScene = !interface.hasMouse() && x >= 0 && y >= 0 && x < area.size.width && y < area.size.height;
    if (scene == nullptr) {
        drag = Drag::NONE;
        return;
    }
    Navigation const navigation(scene->scene(), scene->camera());
    if (isOverScene && ImGui::IsMouseClicked(ImGuiMouseButton_Left)) {
        drag = io.KeyShift ? Drag::PAN : Drag::ORBIT;
    } else if (isOverScene &&
               (ImGui::IsMouseClicked(ImGuiMouseButton_Middle) || ImGui::IsMouseClicked(ImGuiMouseButton_Right))) {
        drag = Drag::PAN;
    } else if (!ImGui::IsAnyMouseDown()) {
        drag = Drag::NONE;
    } else if (drag != Drag::NONE && (dx != 0 || dy != 0)) {
        _moveCamera(drag == Drag::ORBIT ? navigation.orbit(dx, dy) : navigation.pan(dx, dy));
    }
    if (isOverScene && io.MouseWheel != 0) {
        _moveCamera(navigation.zoom(static_cast<double>(io.MouseWheel), x, y));
    }
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
    if (press.hasControl) {
        if (press.key == GLFW_KEY_Q) {
            window.close();
        }
        return;
    }
    switch (press.key) {
    case GLFW_KEY_H:
        panel.isHelpShown = !panel.isHelpShown;
        return;
    case GLFW_KEY_TAB:
        hasPanel = !hasPanel;
        return;
    case GLFW_KEY_F11:
        window.setFullScreen(!window.isFullScreen());
        return;
    case GLFW_KEY_F5:
        workspace.reload();
        return;
    case GLFW_KEY_ESCAPE:
        workspace.cancelLoading();
        workspace.forgetFault();
        return;
    case GLFW_KEY_ENTER:
    case GLFW_KEY_KP_ENTER:
        workspace.forgetFault();
        return;
    default:
        _handleViewKey(press.key);
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
        workspace.open(files);
    }
}

void Application::_do(PanelRequests const& requests) {
    if (requests.options) {
        workspace.apply(*requests.options);
        isSceneChanged = true;
    }
    if (!requests.filesToOpen.empty()) {
        workspace.open(requests.filesToOpen);
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
    if (requests.screenshot) {
        workspace.saveScreenshot(*requests.screenshot, area.size);
    }
    if (requests.quit) {
        window.close();
    }
}

}  // namespace vellum::viewport
