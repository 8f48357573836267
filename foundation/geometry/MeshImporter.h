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
///     importer.weld();                        // where the format repeats the vertices at seams
///     Mesh mesh;
///     MeshFault_ns::type const fault = importer.toMesh(mesh);
///     if (fault != MeshFault_ns::NONE) std::cerr << path << ": " << MeshFault_ns::text(fault) << '\n';
class VL_FOUNDATION_EXPORT MeshImporter {
public:
    /// Indices into the positions.
    Array<Tuple3<unsigned int>> triangles;

    /// For each triangle: at its three corners; then one unused. Empty: the file has none.
    Array<Tuple4<Vector3<double>>> cornerNormals;

    Array<Vector3<double>> positions;

    // == Preparing ==
    // These edit the three arrays in place and are not needed for toMesh(). An import that toMesh() would
    // reject stays as it is.

    /// Makes one vertex of all at exactly the same position, so that the seams at which formats repeat
    /// vertices are not borders. Triangles that then name a vertex twice have no area and are removed, with
    /// their normals. The order of vertices and triangles stays.
    /// \return for each triangle that is left, the index it had; empty where the import was rejected.
    Array<unsigned int> weld();

    /// Makes corner normals at the same vertex equal where the cosine of the angle between them is above
    /// `leastCosine`: the first of them, in the order of the triangles, replaces the others. Normals that
    /// differ by their rounding alone would otherwise make an edge hard.
    void shareNormals(double leastCosine);

    /// Fills the corner normals from the shape, as Mesh::workNormals() does, in place of those that are
    /// there.
    /// \return false, and nothing changes, where the import was rejected or there is no memory.
    bool workCornerNormals(float creaseAngle);

    // == To a mesh ==

    /// Fills a mesh that can be drawn in every mode: positions, triangles, both kinds of normals, adjacency
    /// and box. Corners at one vertex with the same normal share it. Without corner normals the surface is
    /// smooth everywhere (Mesh::workNormals).
    ///
    /// Triangles without area are kept: they have no face normal and show nothing.
    /// \return MeshFault_ns::NONE, or what is wrong with the import (NO_TRIANGLES, TOO_LARGE,
    ///     INDEX_OUT_OF_RANGE, POSITION_NOT_FINITE, CORNER_NORMAL_COUNT); then the mesh is as it was.
    MeshFault_ns::type toMesh(Mesh& mesh) const;

private:
    MeshFault_ns::type _fault() const;
};

}  // namespace vellum
