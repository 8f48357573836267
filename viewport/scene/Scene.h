#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ModelParts.h"
#include "viewport/scene/ParticleLook.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A mesh in the frame of the scene.
struct Model {
    std::string name;
    Array<Vector3<double>> vertices;
    std::vector<ModelPart> parts;
    Box3<double> box;
};

/// The particles of a file in the frame of the scene.
struct ParticleCloud {
    /// The channels of `system`, both vectors: the places, and what colors and arrows show.
    static constexpr unsigned int POSITIONS = 0;
    static constexpr unsigned int COLORS = 1;

    std::string name;
    std::shared_ptr<ParticleSystem_v2 const> system;
    std::vector<Vector3<float>> boxLines;  ///< two ends for each line of the box that the particles are in
    Box3<double> box;                      ///< around all of it
    double spacing;                        ///< the mean distance of neighbors
    double diameter;                       ///< of a sphere
};

/// Everything that is shown, moved and scaled so that drawing never meets extreme numbers: whatever the units of the
/// files, everything together is centered at the origin and reach as far as `RADIUS`. The files keep their places
/// relative to each other.
///
/// Plain arithmetic; nothing here touches OpenGL.
class Scene {
public:
    /// The distance of the farthest corner of box() from the origin. Orthographic cameras see 1000 units deep on both
    /// sides of the origin; this leaves room for a ground around the models, and uses the depth buffer well.
    static constexpr double RADIUS = 250;

    /// \param texture put on all models in place of their own textures, unless null.
    explicit Scene(std::vector<MeshData> const& meshes,
                   std::shared_ptr<VL_Image const> const& texture = nullptr,
                   std::vector<ParticleSet> const& particles = {});

    std::vector<Model> const& models() const { return modelList; }
    std::vector<ParticleCloud> const& clouds() const { return cloudList; }
    Box3<double> const& box() const { return bounds; }  ///< around everything; centered at the origin
    Vector3<double> const& fileOrigin() const { return origin; }  ///< where the files' origin came to lie
    double unitsPerFileUnit() const { return scale; }             ///< above 0

private:
    std::vector<Model> modelList;
    std::vector<ParticleCloud> cloudList;
    Box3<double> bounds;
    Vector3<double> origin;
    double scale;
};

}  // namespace vellum::viewport
