#pragma once

#include "Mesh_RL_GL.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/Layer.h"
#include "viewport/drawing/effects/EffectDrawer.h"
#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/drawing/effects/EffectSubject.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Draws models through an effect with its own lights, or the open sea of an ocean effect.
///
///     Result<EffectSubject> subject = EffectSubject::prepare(spec, meshes, scene, size.aspect());
///     ... make the context and the layer ...
///     EffectRenderer effect(layer, spec, style, std::move(subject.value()));
///     effect.draw();
///
/// It needs a current context as long as it lives, and the layer, which must outlive it.
class EffectRenderer {
public:
    /// \param spec of the subject
    /// \param style of which it takes facets, the outlines of triangles seen from behind, and whether buffer objects
    ///     are used.
    EffectRenderer(toolkit::Layer& layer, EffectSpec const& spec, MeshStyle const& style,
                   EffectSubject subject);
    ~EffectRenderer();
    EffectRenderer(EffectRenderer const&) = delete;
    EffectRenderer& operator=(EffectRenderer const&) = delete;

    /// The fault of a driver that lacks what the effect requires: shaders, or geometry stages. No renderer
    /// may be made then.
    static std::optional<Fault> firstLack(Core_RL& layer, EffectValues const& values);

    /// What the user is to know about the stages: one fault for each line.
    std::vector<Fault> notes() const { return drawer->notes(); }

    /// The fault of a user's stages that are not to be replaced, after the driver's words; empty where there
    /// is none.
    std::vector<Fault> stageFaults() const { return drawer->stageFaults(); }

    /// Whether the model, counted from 0, is drawn here.
    bool covers(std::size_t model) const { return spec.covers(model); }

    /// The whole scene, where the effect brings its own; else null.
    OceanScene const* ownScene() const {
        return subject.sea && subject.sea->scene ? &*subject.sea->scene : nullptr;
    }

    /// The open sea that the things of the scene stand in; null where there is none. It must be framed before
    /// it is drawn.
    SurroundingSea const* surroundingSea() const {
        return subject.sea && subject.sea->around ? &*subject.sea->around : nullptr;
    }

    /// Makes the water of the surrounding sea that is seen by a camera, unless it is the last one.
    void frameSea(SeaView const& view);

    /// Where a model is drawn that it covers; nothing: where the scene has it. Where the scale differs
    /// between axes, the meshes are scaled themselves, because effects rely on the length of normals. \param
    /// matrix in the frame of the scene: a rotation of what was scaled along the scene's axes, moved
    void setPlace(std::size_t model, std::optional<Matrix4<double>> const& matrix);

    /// Draws the models with the effect. What is seen through them must have been drawn.
    /// GL: whatever the effect needs.  State: that of Mesh_RL_GL::render(), and nothing of the effect.
    void draw();

private:
    /// A mesh as it was made, where it is scaled.
    struct Unscaled {
        std::vector<Vector3<double>> positions;
        std::vector<Vector3<float>> vertexNormals;
        std::vector<Color4<float>> faceNormals;
    };
    struct Place {
        Matrix4<double> toScene;
        Vector3<double> scale{1, 1, 1};  // of the meshes, along the axes of their frame
        std::vector<Unscaled> meshes;    // none until the first scale
    };

    void _addRenderers(EffectSubject::Model const& model);
    void _scale(std::size_t index, Vector3<double> const& scale);

    EffectSpec spec;
    MeshStyle style;
    EffectSubject subject;
    std::unique_ptr<EffectDrawer> drawer;
    bool hasBuffers;
    std::vector<std::vector<std::unique_ptr<Mesh_RL_GL>>> renderers;  // of each model
    std::optional<SeaView> seaView;                                   // that the sea is framed for
    std::vector<Place> places;                                        // of each model
};

}  // namespace vellum::viewport
