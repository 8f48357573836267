#pragma once

#include "Camera_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Mesh.h"
#include "viewport/drawing/ReportingLayer.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/ocean/OceanScene.h"
#include "viewport/ocean/OceanSpectrum.h"
#include "viewport/ocean/SkyPicture.h"
#include "viewport/program/Options.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum {
class Base_shader;
}  // namespace vellum

namespace vellum::viewport {

/// What an effect is drawn on: the models that have it, as meshes with texture coordinates in the units that suit it,
/// and what it takes from files. Plain data; nothing here touches OpenGL.
///
/// The frame of the meshes: for displacement a tile of the map is 1 long; for the ocean 1 is the map's unit, with
/// texture coordinates that follow from the positions, which are meters; for the other effects the scene's radius is 1.
struct EffectSubject {
    struct Model {
        std::vector<std::unique_ptr<Mesh>> meshes;
        Matrix4<double> toScene;
    };

    /// Reads and computes it. `options` has an effect; the scene is that of the meshes. A fault is that of a picture
    /// file that cannot be read or does not suit.
    static Result<EffectSubject> prepare(Options const& options, std::vector<MeshData> const& meshes,
                                         Scene const& scene);

    std::vector<Model> models;
    std::optional<OceanScene> oceanScene;  ///< the whole scene, where there are no files
    OceanMap oceanMap;                     ///< only of an ocean
    float oceanPatch = 1;                  ///< meters
};

/// Draws models through an effect with its own lights, or the sea that an ocean effect has without models.
///
/// It needs a current context as long as it lives, and the layer and the options, which must outlive it.
class EffectRenderer {
public:
    EffectRenderer(ReportingLayer& layer, Options const& options, EffectSubject subject);
    ~EffectRenderer();
    EffectRenderer(EffectRenderer const&) = delete;
    EffectRenderer& operator=(EffectRenderer const&) = delete;

    /// What the user is to be told about the stages: one fault for each line.
    std::vector<Fault> const& notes() const { return stageNotes; }

    bool covers(std::size_t model) const;  ///< Whether the model, counted from 0, is drawn here.

    /// The whole scene, where the effect brings its own; else null.
    OceanScene const* ownScene() const { return subject.oceanScene ? &*subject.oceanScene : nullptr; }

    /// Draws the models with the effect. What is seen through them must have been drawn.
    /// \param screen the axes of the screen in eye space.
    /// GL: whatever the effect needs.  State: that of Mesh_RL_GL::render(), and nothing of the effect.
    void draw(ScreenAxes const& screen);

private:
    // == The effects ==
    void _makeDisplacement();
    void _makeOcean();
    void _makeGlass();
    void _makeScattering();
    void _makeCustom();
    bool _noteReports(unsigned int stage);  // whether one of them is about the stage

    // == Lights ==
    void _placeLights(ScreenAxes const& screen, double unit) const;
    void _placeSun() const;
    void _setMaterial() const;

    ReportingLayer& layer;
    Options const& request;
    EffectSubject subject;
    std::unique_ptr<MemoryFile> sky;  // read whenever the effect is created
    std::unique_ptr<Base_shader> shader;
    std::vector<std::vector<std::unique_ptr<Mesh_RL_GL>>> renderers;  // of each model
    std::vector<Fault> stageNotes;
};

}  // namespace vellum::viewport
