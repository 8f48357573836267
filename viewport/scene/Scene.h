#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ModelParts.h"
#include "viewport/scene/ParticleCloud.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Placement.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// An end of a line, or a point.
struct ModelVertex {
    Vector3<float> place;
    Color4<float> color;
};

/// A mesh in the frame of the scene.
struct Model {
    std::string name;
    Array<Vector3<double>> vertices;
    std::vector<ModelPart> parts;
    Box3<double> box;
    std::vector<ModelVertex> lines = {};  ///< two ends for each line
    std::vector<ModelVertex> points = {};
};

/// All models and particles of a picture, moved and scaled into one frame. Whatever the units of the files,
/// together they are centered at the origin and reach as far as RADIUS, so that drawing never meets extreme
/// numbers. The files keep their places relative to each other. What is up in the files is +y of the scene.
///
/// Plain arithmetic; nothing here touches OpenGL.
class Scene {
public:
    /// The distance of the farthest corner of box() from the origin. Orthographic cameras see 1000 units deep
    /// on both sides of the origin; this leaves room for a ground around the models, and uses the depth
    /// buffer well.
    static constexpr double RADIUS = 250;

    /// Whether the parts of models keep what they were made of, for the preview of imports. It takes as much
    /// memory as the models themselves.
    using Imports = PartImports;

    /// Whether the frames of particles are kept, for those who ask for the values of a particle. Everything
    /// that the file says takes much more memory than what is drawn of it.
    enum class Frames { DROPPED, KEPT };

    /// \param texture put on all models in place of their own textures, unless null.
    /// \param up of the files; nothing: that of the first mesh, or else z, which is up in files of particles
    /// \param particles used up: unless it is kept, each frame is freed as soon as its cloud is made.
    /// \param extent what the scene is placed and scaled by in place of its own extent, in units of the files: that of the
    ///     first of several frames, which then lie in the same frame. They may reach out of it. One without a size is none.
    explicit Scene(std::vector<MeshData> const& meshes,
                   std::shared_ptr<VL_Image const> const& texture = nullptr,
                   std::vector<ParticleFrame> particles = {}, ParticleLook const& look = {},
                   Imports imports = Imports::DROPPED, std::optional<UpAxis> up = std::nullopt,
                   Frames frames = Frames::DROPPED, std::optional<Box3<double>> const& extent = std::nullopt);

    // == What the files say, for those who ask for values ==

    /// The frame of each cloud, which then knows its records; empty: they were dropped.
    std::vector<ParticleFrame> const& frames() const { return frameList; }

    /// The mesh of each model, if they were given to keep(); else empty.
    std::vector<MeshData> const& meshes() const { return meshList; }

    /// Keeps the meshes that the scene was made of.
    void keep(std::vector<MeshData> meshes) { meshList = std::move(meshes); }

    std::vector<Model> const& models() const { return modelList; }
    std::vector<ParticleCloud> const& clouds() const { return cloudList; }
    Box3<double> const& box() const { return bounds; }         ///< around everything; centered at the origin
    Box3<double> const& extent() const { return fileBounds; }  ///< the same in axes and units of the files
    Vector3<double> const& fileOrigin() const { return origin; }  ///< where the files' origin came to lie
    double unitsPerFileUnit() const { return scale; }             ///< above 0
    UpAxis up() const { return upAxis; }                          ///< in the files

    // == Places and directions of the files ==

    Vector3<double> placeToScene(Vector3<double> const& p) const { return turn(p * scale) + origin; }
    Vector3<double> placeToFile(Vector3<double> const& p) const {
        return turn.back(p - origin) * (1 / scale);
    }
    Vector3<double> directionToScene(Vector3<double> const& v) const {
        return turn(v);
    }  ///< of the same length
    Vector3<double> directionToFile(Vector3<double> const& v) const {
        return turn.back(v);
    }  ///< of the same length

private:
    std::vector<Model> modelList;
    std::vector<ParticleCloud> cloudList;
    std::vector<ParticleFrame> frameList;
    std::vector<MeshData> meshList;
    Box3<double> bounds;
    Box3<double> fileBounds;
    Vector3<double> origin;
    double scale;
    UpAxis upAxis;
    Turn turn;
};

}  // namespace vellum::viewport
