#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Tuple2.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/Material.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A straight line between two vertices, as their indices.
using MeshLine = Tuple2<unsigned int>;

/// One number for each vertex.
struct MeshScalar {
    std::string name;            ///< as the file has it, without its unit
    std::string unit;            ///< as the file has it; empty: it has none
    std::vector<double> values;  ///< one per vertex; NaN where the file has none
};

/// A movement that the file holds.
struct MeshAnimation {
    std::string name;     ///< as the file has it; may be empty
    double duration = 0;  ///< seconds, finite, 0 or more
};

/// A mesh as its file has it: triangles, lines and points over one list of vertices. The parts of the file
/// stand one after the other, placed where their nodes put them. Nothing is derived: seams are open and
/// normals may be missing. What is drawn of it is made by makeParts().
///
/// A plain value. Whoever fills one from outside asks firstFault() before relying on it.
struct MeshData {
    using Triangle = Tuple3<unsigned int>;

    /// The most vertices, triangles, lines and points: the corners of all triangles are drawn with one
    /// 31-bit count.
    static constexpr std::uint64_t LARGEST_COUNT = std::uint64_t(1) << 29;

    std::string name;       ///< the file's name without its folders
    UpAxis up = UpAxis::Y;  ///< as the file says, or else its format

    std::vector<Vector3<double>> positions;  ///< in the file's units, as many as there are vertices
    std::vector<Triangle> triangles;         ///< indices into the vertices, counter-clockwise from outside
    std::vector<MeshLine> lines;             ///< indices into the vertices; in the colors of these
    std::vector<unsigned int> points;        ///< indices into the vertices; in the colors of these
    /// One per vertex, of unit length, or zero where the file has none; empty: the file has none at all.
    std::vector<Vector3<float>> normals;
    std::vector<Color4<float>> colors;               ///< one per vertex; the opacity is 1 or that of the file
    std::vector<Vector2<float>> textureCoordinates;  ///< one per vertex, or empty
    std::vector<MeshScalar> scalars;                 ///< of the vertices

    std::vector<Material> materials;
    std::vector<unsigned int> triangleMaterials;  ///< one index per triangle, or empty: all are alike

    unsigned int partCount = 0;    ///< meshes of the file that gave triangles, lines or points
    bool hasVertexColors = false;  ///< some colors were given per vertex, not by a material

    std::vector<MeshAnimation> animations;  ///< in the order of the file

    std::vector<std::string> notes;  ///< what of the file is missing or was skipped, one clause each

    /// The first fault of the mesh, under the name of its file, or nothing: lists of different lengths,
    /// nothing to be drawn (no point, no line, no triangle with three different corners), an index out of
    /// range, a coordinate that is not a number or infinite.
    std::optional<Fault> firstFault(std::string const& file) const;

    /// Makes everything opaque where nothing can be seen at all: such a file means opacity where it says
    /// transparency, as the programs do that wrote it, or its importer knows none. Only for meshes without
    /// faults.
    void makeVisible();

    bool hasNormal(unsigned int vertex) const;  ///< The file gives one.
    std::size_t missingNormalCount() const;     ///< Vertices without a normal of the file.

    /// The smallest upright box around all vertices; empty meshes give a box of size 0 at the origin.
    Box3<double> box() const;
};

}  // namespace vellum::viewport
