#pragma once

#include "toolkit/UserEffect.h"
#include "viewport/drawing/effects/EffectDrawer.h"

namespace vellum::viewport {

/// The drawer of shaders that a user has written.
class CustomDrawer : public EffectDrawer {
public:
    /// \param effect whose shader files can be read; see EffectSubject::prepare().
    CustomDrawer(toolkit::Layer& layer, CustomEffect const& effect);

    Base_shader& shader() override { return custom; }
    EffectMaterial material() const override;
    void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const override;
    bool isPlain() const override;
    std::vector<Fault> stageFaults() const override;

private:
    void _setVariables();

    CustomEffect const& effect;
    toolkit::UserEffect custom;
};

}  // namespace vellum::viewport
