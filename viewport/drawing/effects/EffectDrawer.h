#pragma once

#include "glsl_shader/Base_shader.h"
#include "toolkit/Framing.h"
#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/drawing/effects/EffectSubject.h"
#include "viewport/drawing/layer/ReportingLayer.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The specular part of a material; the rest is the same for all effects.
struct EffectMaterial {
    float gloss;      ///< strength of the highlight, 0 to 1
    float shininess;  ///< exponent of the highlight, 0 to 128
};

/// One effect of the library with its parameters set: its shader, its lights and its material. There is a class for
/// each effect; EffectRenderer draws meshes with any of them.
///
///     std::unique_ptr<EffectDrawer> const drawer = EffectDrawer::make(layer, spec.values, subject);
///     renderer.shader = &drawer->shader();
///     drawer->placeLights(screen, unit);
///     drawer->prepareMesh();
///     renderer.render(shading);
///
/// The context that it is made in must be current until its end; layer, values and subject must outlive it.
class EffectDrawer {
public:
    /// Makes the drawer that suits the values and creates its shader.
    static std::unique_ptr<EffectDrawer> make(ReportingLayer& layer, EffectValues const& values,
                                              EffectSubject const& subject);

    virtual ~EffectDrawer() = default;
    EffectDrawer(EffectDrawer const&) = delete;
    EffectDrawer& operator=(EffectDrawer const&) = delete;

    virtual Base_shader& shader() = 0;
    virtual EffectMaterial material() const = 0;

    /// Sets the lights for a model, with the matrices of the scene.
    /// \param screen the screen's axes in eye space
    /// \param unit what a length of 1 of the model is in the scene
    /// State: parameters of lights 0 and 1.
    virtual void placeLights(toolkit::ScreenAxes const& screen, double unit) const = 0;

    /// Must be called before each mesh is rendered with the shader.
    virtual void prepareMesh();

    /// What the user is to know about the stages, one fault for each line.
    std::vector<Fault> const& notes() const { return stageNotes; }

protected:
    explicit EffectDrawer(ReportingLayer& layer) : layer(layer) {}

    /// The file that a stage was read from; empty for the effect's own text.
    /// \param stage GL_VERTEX_SHADER, ...
    virtual std::string fileOfStage(unsigned int stage) const;

    /// Turns what the layer has been reported since the last call into notes.
    /// \return whether one of the reports is about the stage
    bool takeReports(unsigned int stage);

    ReportingLayer& layer;
    std::vector<Fault> stageNotes;

private:
    void _create();
};

}  // namespace vellum::viewport
