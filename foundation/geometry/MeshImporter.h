#pragma once

#include "foundation/basic/Array.h"
#include "foundation/export.h"
#include "foundation/geometry/MeshFault.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Tuple4.h"
#include "foundation/geometry/Vector3.h"

namespace vellum {

class Mesh;

/// The raw result of reading a mesh file, before it becomes a Mesh: whoever reads a format fills the three
/// arrays, and toMesh() makes something drawable of them.
///
/// Use:
///
///     MeshImporter importer;
///     readFile(path, importer);               // fills positions, triangles and, if the file has them, normals
///     Mesh mesh;
///     MeshFault_ns::type const fault = importer.toMesh(mesh);
///     if (fault != MeshFault_ns::NONE) std::cerr << path << ": " << MeshFault_ns::text(fault) << '\n';
class VL_FOUNDATION_EXPORT MeshImporter {
public:
    Array<Tuple3<unsigned int>> triangles;  ///< Indices into the positions.
    Array<Tuple4<Vector3<double>>>
        cornerNormals;  ///< For each triangle: at its three corners; then one unused.
    Array<Vector3<double>> positions;

    /// Fills a mesh that can be drawn in every mode: positions, triangles, both kinds of normals, adjacency and
    /// box. Corners at one vertex with the same normal share it. Without corner normals the surface is smooth
    /// everywhere (Mesh::workNormals).
    ///
    /// Triangles without area are kept: they have no face normal and show nothing.
    /// \return MeshFault_ns::NONE, or what is wrong with the import (NO_TRIANGLES, TOO_LARGE,
    ///     INDEX_OUT_OF_RANGE, POSITION_NOT_FINITE, CORNER_NORMAL_COUNT); then the mesh is as it was.
    MeshFault_ns::type toMesh(Mesh& mesh) const;

private:
    MeshFault_ns::type _fault() const;
};

}  // namespace vellum
