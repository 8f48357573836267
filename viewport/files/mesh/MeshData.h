#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/image/VL_Image.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A material of a mesh file, with or without a diffuse texture.
struct Material {
    Color4<float> tint{1, 1, 1, 1};           ///< what the texture is multiplied with
    std::string texture;                      ///< as the file names it; empty: no texture
    std::vector<unsigned char> textureBytes;  ///< the picture file, where the mesh file itself holds it
    std::shared_ptr<VL_Image const> image;    ///< the texture once it is read (see Textures.h); else null
};

/// A mesh as its file has it: one list of triangles over one list of vertices. The parts of the file stand
/// one after the other, placed where their nodes put them. Nothing is derived: seams are open and normals may
/// be missing. What is drawn of it is made by makeParts().
///
/// A plain value. Whoever fills one from outside asks firstFault() before relying on it.
struct MeshData {
    using Triangle = Tuple3<unsigned int>;

    /// The most vertices and the most triangles: the corners of all triangles are drawn with one 31-bit
    /// count.
    static constexpr std::uint64_t LARGEST_COUNT = std::uint64_t(1) << 29;

    std::string name;  ///< the file's name without its folders

    std::vector<Vector3<double>> positions;  ///< in the file's units, as many as there are vertices
    std::vector<Triangle> triangles;         ///< indices into the vertices, counter-clockwise from outside
    /// One per vertex, of unit length, or zero where the file has none; empty: the file has none at all.
    std::vector<Vector3<float>> normals;
    std::vector<Color4<float>> colors;               ///< one per vertex
    std::vector<Vector2<float>> textureCoordinates;  ///< one per vertex, or empty

    std::vector<Material> materials;
    std::vector<unsigned int> triangleMaterials;  ///< one index per triangle, or empty: all are alike

    unsigned int partCount = 0;    ///< meshes of the file that gave triangles
    bool hasVertexColors = false;  ///< some colors were given per vertex, not by a material

    /// The first fault of the mesh, under the name of its file, or nothing: lists of different lengths, no
    /// triangle (or none with three different corners), an index out of range, a coordinate that is not a
    /// number or infinite.
    std::optional<Fault> firstFault(std::string const& file) const;

    bool hasNormal(unsigned int vertex) const;  ///< The file gives one.
    std::size_t missingNormalCount() const;     ///< Vertices without a normal of the file.

    /// The smallest upright box around all vertices; empty meshes give a box of size 0 at the origin.
    Box3<double> box() const;
};

}  // namespace vellum::viewport
