#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/MeshImporter.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/Placement.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// What one material covers of a model: a mesh of one color, or of one texture, or with a color per vertex,
/// or both.
struct ModelPart {
    /// The name of the mesh's channel of texture coordinates.
    static constexpr char CHANNEL[] = "uv";

    /// The same of the emission map, where that lies otherwise than the texture.
    static constexpr char LIGHT_CHANNEL[] = "uv of light";

    std::unique_ptr<Mesh> mesh;
    std::unique_ptr<MeshImporter> import;  ///< what the mesh was made of; may be null (see Scene::Imports)
    Color4<float> color;  ///< of the surface, with its opacity; the texture's tint where it has one
    std::shared_ptr<VL_Image const> texture;  ///< may be null
    bool hasHardNormals = false;              ///< some vertices have several normals

    Color4<float> emission{0, 0, 0, 1};
    std::shared_ptr<VL_Image const>
        emissionMap;                         ///< added to the surface, whatever light is on it; may be null
    char const* emissionChannel = CHANNEL;   ///< of the mesh; only with `emissionMap`
    std::optional<Color4<float>> specular;   ///< nothing: that of the drawing
    float shininess = 0;                     ///< only with `specular`
    AlphaMode alphaMode = AlphaMode::SOLID;  ///< of the texture
    float alphaCutoff = 0.5F;                ///< only with AlphaMode::MASK
    bool isBlended = false;  ///< something shines through somewhere: it is drawn from the back to the front

    // What a mesh renderer does not know: a color for each vertex, with its opacity. All are empty where one
    // color is enough and nothing shines through. The triangles are those of the mesh, in the same order.
    Array<Vector3<double>> vertices;
    Array<Tuple3<unsigned int>> triangles;
    Array<Vector3<float>> normals;
    Array<Color4<float>> colors;
};

/// Whether parts keep what their meshes were made of.
enum class PartImports { KEPT, DROPPED };

/// Makes the parts of a model, ready to be drawn in every mode.
///
/// Vertices at exactly the same position become one, so that the seams at which formats repeat vertices are
/// no borders; triangles that lose their area by it are left out. Normals are those of the file, or else
/// computed with hard edges where faces meet at more than 40 degrees. Vertex normal i belongs to vertex i.
///
/// \param place moves the file to the frame of the scene.
/// \param texture put on all parts in place of their own textures, unless null. Where the mesh has no texture
///     coordinates each triangle shows the texture as if projected along the axis that its normal is nearest
///     to.
std::vector<ModelPart> makeParts(MeshData const& data, Placement const& place,
                                 std::shared_ptr<VL_Image const> const& texture,
                                 PartImports imports = PartImports::KEPT);

}  // namespace vellum::viewport
