#include "viewport/window/Window.h"

#include "viewport/text/single_line.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <GLFW/glfw3.h>

namespace vellum::viewport {

namespace {

std::string lastError() {
    char const* text = nullptr;
    glfwGetError(&text);
    std::string reason = text != nullptr ? text : "the window system gives no reason";
    return singleLine(reason);
}

Window& self(GLFWwindow* window) {
    return *static_cast<Window*>(glfwGetWindowUserPointer(window));
}

}  // namespace

Result<std::unique_ptr<Window>> Window::open(std::string const& title, PictureSize const& points) {
    if (glfwInit() != GLFW_TRUE) {
        return Fault{"", "no window can be opened: " + lastError() +
                             "; with --out FILE pictures are drawn without a display"};
    }
    // The panel and the picture are drawn; nothing in the window itself needs more.
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    glfwWindowHint(GLFW_STENCIL_BITS, 8);
    glfwWindowHint(GLFW_SAMPLES, 0);
    // On X11 too: pictures are drawn by a context beside it that shares its buffers.
    glfwWindowHint(GLFW_CONTEXT_CREATION_API, GLFW_EGL_CONTEXT_API);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    glfwWindowHintString(GLFW_X11_CLASS_NAME, "vl_viewport");
    glfwWindowHintString(GLFW_X11_INSTANCE_NAME, "vl_viewport");
    GLFWwindow* const window = glfwCreateWindow(points.width, points.height, title.c_str(), nullptr, nullptr);
    if (window == nullptr) {
        std::string const reason = lastError();
        glfwTerminate();
        return Fault{"", "no window can be opened: " + reason +
                             "; with --out FILE pictures are drawn without a display"};
    }
    glfwMakeContextCurrent(window);
    glfwSwapInterval(1);
    return std::unique_ptr<Window>(new Window(window));
}

Window::Window(GLFWwindow* window) : window(window) {
    _listen();
}

Window::~Window() {
    glfwDestroyWindow(window);
    glfwTerminate();
}

void Window::_listen() {
    glfwSetWindowUserPointer(window, this);
    glfwSetDropCallback(window, [](GLFWwindow* source, int count, char const** paths) {
        self(source).dropped.insert(self(source).dropped.end(), paths, paths + count);
        self(source).hasEvents = true;
    });
    glfwSetWindowRefreshCallback(window, [](GLFWwindow* source) { self(source).hasEvents = true; });
    glfwSetFramebufferSizeCallback(window,
                                   [](GLFWwindow* source, int, int) { self(source).hasEvents = true; });
    glfwSetWindowContentScaleCallback(
        window, [](GLFWwindow* source, float, float) { self(source).hasEvents = true; });
    glfwSetWindowFocusCallback(window, [](GLFWwindow* source, int) { self(source).hasEvents = true; });
    glfwSetCursorEnterCallback(window, [](GLFWwindow* source, int) { self(source).hasEvents = true; });
    glfwSetCursorPosCallback(window,
                             [](GLFWwindow* source, double, double) { self(source).hasEvents = true; });
    glfwSetMouseButtonCallback(window,
                               [](GLFWwindow* source, int, int, int) { self(source).hasEvents = true; });
    glfwSetScrollCallback(window, [](GLFWwindow* source, double, double) { self(source).hasEvents = true; });
    glfwSetKeyCallback(window, [](GLFWwindow* source, int key, int, int action, int modifiers) {
        if (action != GLFW_RELEASE) {
            self(source).keys.push_back(
                {key, (modifiers & GLFW_MOD_CONTROL) != 0, (modifiers & GLFW_MOD_SHIFT) != 0});
        }
        self(source).hasEvents = true;
    });
    glfwSetCharCallback(window, [](GLFWwindow* source, unsigned int) { self(source).hasEvents = true; });
}

WindowUnits Window::units() const {
    int size[2] = {0, 0};
    int pixels[2] = {0, 0};
    float scale[2] = {1, 1};
    glfwGetWindowSize(window, &size[0], &size[1]);
    glfwGetFramebufferSize(window, &pixels[0], &pixels[1]);
    glfwGetWindowContentScale(window, &scale[0], &scale[1]);
    return WindowUnits::of(size[0], size[1], pixels[0], pixels[1],
                           static_cast<double>(std::max(scale[0], scale[1])));
}

bool Window::isAskedToClose() const {
    return glfwWindowShouldClose(window) != 0;
}

void Window::close() {
    glfwSetWindowShouldClose(window, GLFW_TRUE);
}

void Window::setTitle(std::string const& title) {
    glfwSetWindowTitle(window, title.c_str());
}

void Window::setFullScreen(bool newFull) {
    GLFWmonitor* const monitor = glfwGetPrimaryMonitor();
    GLFWvidmode const* const mode = monitor != nullptr ? glfwGetVideoMode(monitor) : nullptr;
    if (newFull == isFull || mode == nullptr) {
        return;
    }
    if (newFull) {
        glfwGetWindowPos(window, &formerPlace[0], &formerPlace[1]);
        glfwGetWindowSize(window, &formerPlace[2], &formerPlace[3]);
        glfwSetWindowMonitor(window, monitor, 0, 0, mode->width, mode->height, mode->refreshRate);
    } else {
        glfwSetWindowMonitor(window, nullptr, formerPlace[0], formerPlace[1], formerPlace[2], formerPlace[3],
                             GLFW_DONT_CARE);
    }
    isFull = newFull;
    hasEvents = true;
}

void Window::swap() {
    glfwSwapBuffers(window);
}

void Window::wait(std::optional<double> const& seconds) {
    if (!seconds) {
        glfwWaitEvents();
    } else if (*seconds > 0) {
        glfwWaitEventsTimeout(*seconds);
    } else {
        glfwPollEvents();
    }
}

void Window::wake() {
    glfwPostEmptyEvent();
}

std::vector<std::string> Window::takeDroppedFiles() {
    return std::exchange(dropped, {});
}

std::vector<KeyPress> Window::takeKeys() {
    return std::exchange(keys, {});
}

bool Window::takeEvents() {
    return std::exchange(hasEvents, false);
}

}  // namespace vellum::viewport
