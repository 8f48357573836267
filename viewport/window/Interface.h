#pragma once

#include "viewport/window/Window.h"
#include "viewport/window/WindowUnits.h"

#include <string>

namespace vellum::viewport {

/// The widgets of a window, drawn over what is in its framebuffer. Between begin() and end() any code may
/// call ImGui.
///
///     Interface interface(window);
///     interface.begin(window.units());
///     ImGui::Begin("Scene"); ...
///     interface.end();
class Interface {
public:
    /// The window must outlive it, and its context must be current to the end.
    explicit Interface(Window& window);
    ~Interface();
    Interface(Interface const&) = delete;
    Interface& operator=(Interface const&) = delete;

    /// Begins a frame. Letters and widgets follow the screen's scale.
    void begin(WindowUnits const& units);

    /// Draws it. GL: those of the widgets.  State: none is left changed.
    void end();

    /// Whether the cursor is over a widget, or drags one.
    bool hasMouse() const;

    /// Whether keys are typed into a widget.
    bool hasKeys() const;

    /// Whether something of it still changes by itself, such as a blinking caret or a drag.
    bool isActive() const;

private:
    void _setScale(double pixelsPerPoint, double pixelsPerUnit);

    double scale = 0;  // of letters in units of the window, as they were made; 0: none have been made yet
};

}  // namespace vellum::viewport
