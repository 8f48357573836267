#pragma once

#include "glsl_shader/Custom_shader.h"
#include "viewport/drawing/effects/EffectDrawer.h"

#include <string>

namespace vellum::viewport {

/// The drawer of shaders that a user has written. Stages that do not compile or do not fit together are replaced, and
/// notes() say so.
class CustomDrawer : public EffectDrawer {
public:
    /// \param effect whose shader files can be read; see EffectSubject::prepare().
    CustomDrawer(ReportingLayer& layer, CustomEffect const& effect);

    Base_shader& shader() override { return custom; }
    EffectMaterial material() const override;
    void placeLights(toolkit::ScreenAxes const& screen, double unit) const override;

protected:
    std::string fileOfStage(unsigned int stage) const override;

private:
    /// The library's effect, with what it keeps of its program.
    class LinkedShader : public Custom_shader {
    public:
        bool isLinked() const;
        std::string linkLog() const { return program->getInfoLog(); }
    };

    void _setVariables();
    void _setStages();

    CustomEffect const& effect;
    LinkedShader custom;
};

}  // namespace vellum::viewport
