#pragma once

#include "glsl_shader/SSScattering_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"

namespace vellum::viewport {

/// The drawer of materials that scatter light below their surface.
class ScatteringDrawer : public EffectDrawer {
public:
    ScatteringDrawer(toolkit::Layer& layer, ScatteringEffect const& effect);

    Base_shader& shader() override { return scattering; }
    EffectMaterial material() const override;
    void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const override;

private:
    ScatteringEffect const& effect;
    SSScattering_shader scattering;
};

}  // namespace vellum::viewport
