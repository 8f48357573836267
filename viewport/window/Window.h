#pragma once

#include "viewport/text/Fault.h"
#include "viewport/window/WindowUnits.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct GLFWwindow;

namespace vellum::viewport {

/// A key that was pressed, or is held and repeats.
struct KeyPress {
    int key;  ///< GLFW_KEY_...
    bool hasControl;
    bool hasShift;
};

/// A window of the desktop with an OpenGL context, which is current from its construction to its end.
class Window {
public:
    /// Opens it. A fault where there is no display, or no OpenGL on it.
    /// \param points of the size, before the screen's scale
    static Result<std::unique_ptr<Window>> open(std::string const& title, PictureSize const& points);
    ~Window();
    Window(Window const&) = delete;
    Window& operator=(Window const&) = delete;

    WindowUnits units() const;
    GLFWwindow* handle() const { return window; }

    bool isAskedToClose() const;
    void close();  ///< As a click on the close button does.

    void setTitle(std::string const& title);
    void setFullScreen(bool newFull);
    bool isFullScreen() const { return isFull; }

    /// Shows what has been drawn.
    void swap();

    /// Waits for something to happen, at most so many seconds; 0 does not wait, nothing waits for ever.
    static void wait(std::optional<double> const& seconds);

    /// Ends a wait; from any thread.
    static void wake();

    /// What has been dropped onto it since the last call.
    std::vector<std::string> takeDroppedFiles();

    /// The keys that were pressed since the last call, oldest first; none is lost while the program is busy.
    std::vector<KeyPress> takeKeys();

    /// Whether something has happened to it since the last call: input, another size, damage.
    bool takeEvents();

private:
    explicit Window(GLFWwindow* window);
    void _listen();

    GLFWwindow* window;
    std::vector<std::string> dropped;
    std::vector<KeyPress> keys;
    bool hasEvents = true;
    bool isFull = false;
    int formerPlace[4] = {0, 0, 0, 0};  // x, y, width, height before full screen
};

}  // namespace vellum::viewport
