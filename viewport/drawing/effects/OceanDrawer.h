#pragma once

#include "glsl_shader/Displacement_XZ_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"

namespace vellum::viewport {

/// The drawer of a sea in the light of its sun.
class OceanDrawer : public EffectDrawer {
public:
    /// \param sea must outlive it, as the effect.
    OceanDrawer(toolkit::Layer& layer, OceanEffect const& effect, Sea const& sea);

    Base_shader& shader() override { return ocean; }
    EffectMaterial material() const override;
    void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const override;

private:
    OceanEffect const& effect;
    Displacement_XZ_shader ocean;
};

}  // namespace vellum::viewport
