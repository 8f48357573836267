#pragma once

#include "Core_RL_GL.h"

namespace vellum::gallery {

/// The render layer of a picture that is drawn `OVERSAMPLING` times as wide and high as it will be and averaged
/// afterwards: what is measured in pixels grows by the same factor. Software rasterizers draw lines without
/// anti-aliasing even into a buffer of several samples, so that a larger picture is the way to smooth lines
/// everywhere.
///
/// Segments are drawn without lighting: they have no surface, and would otherwise take their shade from
/// whatever normal came last.
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
