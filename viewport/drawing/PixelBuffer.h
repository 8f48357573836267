#pragma once

#include "offscreen/OffscreenContext.h"

#include <memory>
#include <vector>

namespace vellum::viewport {

/// Where a picture is drawn that is read back: with 4 samples per pixel, if the driver has them, and 24 bits of depth.
class PixelBuffer {
public:
    virtual ~PixelBuffer() = default;

    virtual int width() const = 0;   ///< pixels
    virtual int height() const = 0;  ///< pixels

    /// What is drawn goes there from now on. Must come before the other operations.
    virtual void begin() = 0;

    /// width * height * 4 bytes: red, green, blue, opacity; the top row first.
    virtual std::vector<unsigned char> readPixels() = 0;

    /// Values of the depth buffer, the lowest row first, of the lower left corner of this size.
    virtual void readDepths(int width, int height, float* depths) = 0;

    /// What is drawn goes where it went before begin().
    virtual void end() = 0;
};

/// The buffer of an off-screen context, which is current and outlives it.
class ContextBuffer : public PixelBuffer {
public:
    explicit ContextBuffer(OffscreenContext& context) : context(context) {}

    int width() const override { return context.width(); }
    int height() const override { return context.height(); }
    void begin() override {}
    std::vector<unsigned char> readPixels() override { return context.readPixels(); }
    void readDepths(int width, int height, float* depths) override;
    void end() override {}

private:
    OffscreenContext& context;
};

/// A buffer of its own beside that of a window: the same pixels as in an off-screen context. Needs framebuffer objects
/// (OpenGL 3.0 or GL_ARB_framebuffer_object), and a current context to its end.
class FramebufferObject : public PixelBuffer {
public:
    /// Null where the driver has none, or none of this size.
    static std::unique_ptr<FramebufferObject> make(int width, int height);
    ~FramebufferObject() override;
    FramebufferObject(FramebufferObject const&) = delete;
    FramebufferObject& operator=(FramebufferObject const&) = delete;

    int width() const override { return size[0]; }
    int height() const override { return size[1]; }
    void begin() override;
    std::vector<unsigned char> readPixels() override;
    void readDepths(int width, int height, float* depths) override;
    void end() override;

private:
    /// A framebuffer with its color and depth.
    struct Target {
        unsigned int framebuffer = 0;
        unsigned int color = 0;
        unsigned int depth = 0;
    };

    FramebufferObject(int width, int height) : size{width, height} {}
    bool _make(Target& target, int samples) const;
    static void _remove(Target const& target);
    void _resolve(unsigned int bits) const;

    int size[2];
    Target drawn;     // with samples
    Target resolved;  // one sample for each pixel
    int former[2] = {0, 0};
};

}  // namespace vellum::viewport
