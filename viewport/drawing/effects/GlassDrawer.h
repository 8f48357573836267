#pragma once

#include "glsl_shader/Glass_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"
#include "viewport/ocean/SkyPicture.h"

#include <memory>

namespace vellum::viewport {

/// The drawer of glass.
class GlassDrawer : public EffectDrawer {
public:
    GlassDrawer(toolkit::Layer& layer, GlassEffect const& effect);

    Base_shader& shader() override { return glass; }
    EffectMaterial material() const override;
    void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const override;

private:
    GlassEffect const& effect;
    std::unique_ptr<MemoryFile> sky;  // read whenever the shader is created; null with an environment file
    Glass_shader glass;
};

}  // namespace vellum::viewport
