#pragma once

#include "viewport/drawing/view/PictureSize.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

/// The measures of a window. Window systems place the cursor in units of their own; GL draws in pixels of the
/// framebuffer; and people choose how large letters are on their screen. Nothing else converts between the
/// three.
///
///     screen                     units of the window     pixels     points (as letters are measured)
///     X11, 96 dots per inch      800                     800        800
///     X11, scaled by 1.5         1200                    1200       800
///     Wayland, scaled by 2       800                     1600       800
struct WindowUnits {
    PictureSize framebuffer;    ///< pixels
    double pixelsPerUnit = 1;   ///< of the framebuffer, for each unit of the window; above 0
    double pixelsPerPoint = 1;  ///< how much larger letters are than on a plain screen; above 0

    /// \param windowWidth, windowHeight in units of the window; a window that is minimized has none
    /// \param contentScale that the user has chosen for the screen
    static WindowUnits of(int windowWidth, int windowHeight, int framebufferWidth, int framebufferHeight,
                          double contentScale) {
        WindowUnits units;
        units.framebuffer = {std::max(1, framebufferWidth), std::max(1, framebufferHeight)};
        if (windowWidth > 0 && windowHeight > 0 && framebufferWidth > 0) {
            units.pixelsPerUnit = static_cast<double>(framebufferWidth) / windowWidth;
        }
        units.pixelsPerPoint =
            std::isfinite(contentScale) && contentScale > 0 ? std::clamp(contentScale, 0.5, 8.0) : 1;
        return units;
    }

    /// The place of a cursor.
    double toPixels(double windowUnits) const { return windowUnits * pixelsPerUnit; }

    /// The pixel that the cursor is in; nothing is said of whether it is inside of the window.
    Pixel pixelAt(double x, double y) const {
        return {static_cast<int>(std::floor(toPixels(x))), static_cast<int>(std::floor(toPixels(y)))};
    }

    double toUnits(double pixels) const { return pixels / pixelsPerUnit; }

    /// A length of the interface, in units of the window.
    double pointsToUnits(double points) const { return points * pixelsPerPoint / pixelsPerUnit; }

    bool operator==(WindowUnits const& o) const {
        return framebuffer == o.framebuffer && pixelsPerUnit == o.pixelsPerUnit &&
               pixelsPerPoint == o.pixelsPerPoint;
    }
    bool operator!=(WindowUnits const& o) const { return !(*this == o); }
};

}  // namespace vellum::viewport
