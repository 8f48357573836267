#include "viewport/drawing/PixelBuffer.h"

#include <algorithm>
#include <cstddef>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr int SAMPLES = 4;

void readDepthsOfCorner(int width, int height, float* depths) {
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
}

}  // namespace

void ContextBuffer::readDepths(int width, int height, float* depths) {
    readDepthsOfCorner(width, height, depths);
}

std::unique_ptr<FramebufferObject> FramebufferObject::make(int width, int height) {
    if (!GLEW_VERSION_3_0 && !GLEW_ARB_framebuffer_object) {
        return nullptr;
    }
    GLint largest = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    if (width < 1 || height < 1 || width > largest || height > largest) {
        return nullptr;
    }
    GLint mostSamples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    std::unique_ptr<FramebufferObject> made(new FramebufferObject(width, height));
    made->begin();
    bool isMade = made->_make(made->drawn, std::min<int>(SAMPLES, mostSamples));
    isMade = made->_make(made->resolved, 0) && isMade;
    made->end();
    return isMade ? std::move(made) : nullptr;
}

FramebufferObject::~FramebufferObject() {
    _remove(drawn);
    _remove(resolved);
}

bool FramebufferObject::_make(Target& target, int samples) const {
    glGenFramebuffers(1, &target.framebuffer);
    glGenRenderbuffers(1, &target.color);
    glGenRenderbuffers(1, &target.depth);
    glBindRenderbuffer(GL_RENDERBUFFER, target.color);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, size[0], size[1]);
    glBindRenderbuffer(GL_RENDERBUFFER, target.depth);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_DEPTH24_STENCIL8, size[0], size[1]);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, target.color);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, target.depth);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void FramebufferObject::_remove(Target const& target) {
    glDeleteFramebuffers(1, &target.framebuffer);
    glDeleteRenderbuffers(1, &target.color);
    glDeleteRenderbuffers(1, &target.depth);
}

void FramebufferObject::begin() {
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &former[0]);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &former[1]);
    glBindFramebuffer(GL_FRAMEBUFFER, drawn.framebuffer);
}

void FramebufferObject::end() {
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(former[0]));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(former[1]));
}

/// Leaves the resolved samples to be read, and drawing as it is.
void FramebufferObject::_resolve(unsigned int bits) const {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, drawn.framebuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved.framebuffer);
    glBlitFramebuffer(0, 0, size[0], size[1], 0, 0, size[0], size[1], bits, GL_NEAREST);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawn.framebuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, resolved.framebuffer);
}

std::vector<unsigned char> FramebufferObject::readPixels() {
    _resolve(GL_COLOR_BUFFER_BIT);
    std::size_t const rowBytes = 4 * static_cast<std::size_t>(size[0]);
    std::vector<unsigned char> pixels(rowBytes * static_cast<std::size_t>(size[1]));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, size[0], size[1], GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    // GL's first row is the lowest.
    for (std::size_t low = 0, high = static_cast<std::size_t>(size[1]); low + 1 < high; ++low, --high) {
        std::swap_ranges(pixels.begin() + static_cast<std::ptrdiff_t>(low * rowBytes),
                         pixels.begin() + static_cast<std::ptrdiff_t>((low + 1) * rowBytes),
                         pixels.begin() + static_cast<std::ptrdiff_t>((high - 1) * rowBytes));
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, drawn.framebuffer);
    return pixels;
}

void FramebufferObject::readDepths(int width, int height, float* depths) {
    _resolve(GL_DEPTH_BUFFER_BIT);
    readDepthsOfCorner(width, height, depths);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, drawn.framebuffer);
}

}  // namespace vellum::viewport
