#include "viewport/gallery/sheets/SheetLayer.h"

#include <GL/gl.h>

namespace vellum::gallery {

float SheetLayer::setPointSize(float const& size) {
    float const former = Core_RL_GL::setPointSize(size);
    glPointSize(size * OVERSAMPLING);
    return former;
}

void SheetLayer::setLineWidth(float const& width) {
    Core_RL_GL::setLineWidth(width * OVERSAMPLING);
    lineWidthStack.back() = width;  // the width that was asked for, or the next pop would scale it once more
}

void SheetLayer::setLineStipple(bool on) {
    constexpr int DASH = 3;  // pixels, as the base class has it
    Core_RL_GL::setLineStipple(on);
    if (on) {
        glLineStipple(DASH * OVERSAMPLING, 0xAAAA);
    }
}

void SheetLayer::enableLighting() {
    Core_RL_GL::enableLighting();
    isLit = true;
}

void SheetLayer::disableLighting() {
    Core_RL_GL::disableLighting();
    isLit = false;
}

void SheetLayer::renderSegment3(Vector3<float> const& a, Vector3<float> const& b) {
    if (!isLit) {
        Core_RL_GL::renderSegment3(a, b);
        return;
    }
    disableLighting();
    Core_RL_GL::renderSegment3(a, b);
    enableLighting();
}

}  // namespace vellum::gallery
