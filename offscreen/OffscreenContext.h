#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vellum {

/// An OpenGL context without a window: for pictures in files, tests and benchmarks, on machines with or
/// without a display. It is a desktop compatibility context, drawing into a buffer of fixed size (8 bits per
/// color channel, 24 bits of depth, 8 of stencil).
///
///     vellum::OffscreenContext context({640, 480});
///     if (!context.isValid())
///         return fail(context.error());
///     ... draw ...
///     write(context.readPixels());
///
/// It is current in the constructing thread from construction to destruction, unless it is released or
/// another context is made current. Not for drawing into a window, but for pictures of what a window shows:
/// Settings::isBesideCurrent.
class OffscreenContext {
public:
    struct Settings {
        int width = 256;   ///< pixels, at least 1
        int height = 256;  ///< pixels, at least 1
        int samples = 0;   ///< per pixel; 0 or 1 for none; fewer are used where the driver has no such buffer

        /// Ask the driver to report errors at the call that raises them, see takeErrors().
        bool debug = false;

        /// Share textures, buffers and programs with the EGL context that is current at construction, as of a
        /// window, and make that one current again in the end. Without such a context none is made.
        bool isBesideCurrent = false;
    };

    /// Makes the context and makes it current. On failure isValid() is false and error() says why; nothing is
    /// left behind.
    explicit OffscreenContext(Settings const& settings);

    /// Releases the context and all that it drew into. GL objects must be deleted before.
    ~OffscreenContext();

    OffscreenContext(OffscreenContext const&) = delete;
    OffscreenContext& operator=(OffscreenContext const&) = delete;

    bool isValid() const;
    std::string const& error() const;  ///< one sentence without a line end; empty when valid

    int width() const;    ///< pixels
    int height() const;   ///< pixels
    int samples() const;  ///< samples per pixel that the driver gave; 0 for none

    /// Makes it current in the calling thread (it must be current in no other one). False when the driver
    /// refuses.
    bool makeCurrent();

    /// Makes none current in the calling thread, where this one is, so that another thread may make it
    /// current. False when the driver refuses.
    bool release();

    /// Makes current again what was current at construction, as for Settings::isBesideCurrent. False when the
    /// driver refuses, and where nothing was.
    bool makeFormerCurrent();

    /// What was drawn: width * height * 4 bytes, red green blue alpha, top row first. Waits for the drawing.
    /// The context must be current.
    /// State: none is left changed.
    std::vector<unsigned char> readPixels() const;

    /// The same of a part: width * height * 4 bytes, from the pixel in this column and this row, counted from
    /// the top. The part must lie within the buffer. It costs as little as it is small.
    std::vector<unsigned char> readPixels(int left, int top, int width, int height) const;

    /// True when the driver reports errors as asked for with Settings::debug.
    bool reportsErrors() const;

    /// The texts of the GL errors reported since the last call, oldest first.
    std::vector<std::string> takeErrors();

private:
    struct State;

    std::unique_ptr<State> native;
    Settings settings;
    std::string failure;
};

}  // namespace vellum
