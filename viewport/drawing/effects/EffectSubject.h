#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Mesh.h"
#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/ocean/OceanScene.h"
#include "viewport/ocean/OceanSpectrum.h"
#include "viewport/ocean/SurroundingSea.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// The sea of an ocean effect, at one time.
struct Sea {
    OceanMap map;
    float patch;                           ///< side of the map, meters
    std::optional<OceanScene> scene;       ///< the whole scene, where there are no files
    std::optional<SurroundingSea> around;  ///< the open sea that the things of files stand in
};

/// What an effect is drawn on: the models that have it, as meshes with texture coordinates in the units that
/// suit it. Plain data; nothing here touches OpenGL.
///
/// The frame of the meshes: for displacement a tile of the map is 1 long; for the ocean 1 is the map's unit,
/// with texture coordinates that follow from the positions, which are meters; for the other effects the
/// scene's radius is 1.
struct EffectSubject {
    struct Model {
        std::vector<std::unique_ptr<Mesh>> meshes;
        Matrix4<double> toScene;  ///< scales alike along all axes, and moves
    };

    std::vector<Model> models;    ///< none of a sea around things, whose water depends on the camera
    std::optional<Sea> sea;       ///< only of an ocean
    std::optional<Fault> misfit;  ///< of parameters that show nothing: a viewer who is under water

    /// Reads the files that the effect names, and computes the meshes. A fault where a file cannot be read or
    /// does not suit, or where there is no mesh to be drawn. \param meshes, scene the scene is that of the
    /// meshes \param aspect of the picture, for a sea without files
    static Result<EffectSubject> prepare(EffectSpec const& spec, std::vector<MeshData> const& meshes,
                                         Scene const& scene, double aspect);
};

}  // namespace vellum::viewport
