#pragma once

#include "glsl_shader/Displacement_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"

namespace vellum::viewport {

/// The drawer of surfaces that a map displaces.
class DisplacementDrawer : public EffectDrawer {
public:
    DisplacementDrawer(toolkit::Layer& layer, DisplacementEffect const& effect);

    Base_shader& shader() override { return displacement; }
    EffectMaterial material() const override;
    void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const override;

private:
    DisplacementEffect const& effect;
    Displacement_shader displacement;
};

}  // namespace vellum::viewport
