#pragma once

#include "Core_RL_GL.h"

namespace vellum::gallery {

/// The render layer of an oversampled sheet: the sheet is drawn `OVERSAMPLING` times as wide and high and
/// averaged afterwards, so sizes in pixels are multiplied by this factor. Oversampling smooths lines on every
/// driver; software rasterizers draw aliased lines even into a multisampled framebuffer.
///
/// Segments are drawn without lighting. They have no normal, so the normal of an earlier drawing would shade
/// them.
class SheetLayer : public Core_RL_GL {
public:
    static constexpr int OVERSAMPLING = 3;

    float setPointSize(float const& size) override;
    void setLineWidth(float const& width) override;
    void setLineStipple(bool on) override;

    void enableLighting() override;
    void disableLighting() override;
    void renderSegment3(Vector3<float> const& a, Vector3<float> const& b) override;

private:
    bool isLit = false;
};

}  // namespace vellum::gallery
