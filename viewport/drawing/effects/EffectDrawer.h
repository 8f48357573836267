#pragma once

#include "glsl_shader/Base_shader.h"
#include "toolkit/EffectLights.h"
#include "toolkit/Layer.h"
#include "toolkit/StageReport.h"
#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/drawing/effects/EffectSubject.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <vector>

namespace vellum::viewport {

/// The specular part of a material; the rest is the same for all effects.
struct EffectMaterial {
    float gloss;      ///< strength of the highlight, 0 to 1
    float shininess;  ///< exponent of the highlight, 0 to 128
};

/// One effect of the library with its parameters set: its shader, its lights and its material. There is a
/// class for each effect; EffectRenderer draws meshes with any of them.
///
///     std::unique_ptr<EffectDrawer> const drawer = EffectDrawer::make(layer, spec.values, subject);
///     drawer->placeLights(view, scene);
///     toolkit::drawWith(drawer->shader(), [&] { renderer.render(shading); });
///
/// The context that it is made in must be current until its end; layer, values and subject must outlive it.
class EffectDrawer {
public:
    /// Makes the drawer that suits the values and creates its shader.
    static std::unique_ptr<EffectDrawer> make(toolkit::Layer& layer, EffectValues const& values,
                                              EffectSubject const& subject);

    virtual ~EffectDrawer() = default;
    EffectDrawer(EffectDrawer const&) = delete;
    EffectDrawer& operator=(EffectDrawer const&) = delete;

    virtual Base_shader& shader() = 0;
    virtual EffectMaterial material() const = 0;

    /// Sets the lights for a model.
    /// \param view with the matrices that the model is drawn with
    /// \param scene in the frame of the model
    /// State: parameters of lights 0 and 1.
    virtual void placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const = 0;

    /// Whether nothing is left of the user's stages. The meshes are lit as without an effect then, for their
    /// shape to be seen: stages that pass everything on show a silhouette.
    virtual bool isPlain() const { return false; }

    /// What the user is to know about the stages, one fault for each line.
    std::vector<Fault> notes() const;

    /// The fault of a user's stages that are not to be replaced, after the driver's words; empty where there
    /// is none.
    virtual std::vector<Fault> stageFaults() const { return {}; }

protected:
    explicit EffectDrawer(toolkit::Layer& layer) : layer(layer) {}

    /// The lines of a report.
    static std::vector<Fault> linesOf(toolkit::StageReport const& report);

    toolkit::Layer& layer;
    std::vector<toolkit::StageReport> reports;

private:
    void _create();
};

}  // namespace vellum::viewport
