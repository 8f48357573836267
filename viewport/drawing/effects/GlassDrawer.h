#pragma once

#include "glsl_shader/Glass_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"
#include "viewport/ocean/SkyPicture.h"

#include <memory>

namespace vellum::viewport {

/// The drawer of glass.
class GlassDrawer : public EffectDrawer {
public:
    GlassDrawer(ReportingLayer& layer, GlassEffect const& effect);

    Base_shader& shader() override { return glass; }
    EffectMaterial material() const override;
    void placeLights(toolkit::ScreenAxes const& screen, double unit) const override;

private:
    GlassEffect const& effect;
    std::unique_ptr<MemoryFile> sky;  // read whenever the shader is created; null with an environment file
    Glass_shader glass;
};

}  // namespace vellum::viewport
