#pragma once

#include "foundation/basic/Array.h"
#include "foundation/basic/ArrayServer.h"
#include "foundation/basic/VL_String.h"
#include "foundation/export.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/MeshArrayInf.h"
#include "foundation/geometry/MeshFault.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/geometry/constants.h"

namespace vellum {

/// The bits of Mesh::flags().
enum MeshFlags : unsigned int {
    MESH_GOT_BOX = 1  ///< The box is that of the present positions.
};

/// A triangle mesh: typed arrays that live in VL_ArrayServer, so that renderers and editors share them.
///
/// The mesh keeps one reference to each of its arrays and names them by their identifiers. Beside the
/// positions and triangles there are two sets of normals: vertex normals, which the normal triangles name
/// corner by corner (so that the faces on both sides of a hard edge can have their own), and one normal for
/// each face. The adjacency tells for each edge of a triangle which triangle lies beyond it. Further arrays,
/// such as texture channels, have a name.
///
/// Use:
///
///     Mesh mesh;
///     mesh.setPositions(positions);
///     mesh.setTriangles(triangles);
///     mesh.workAdjacency();
///     mesh.workNormals(0.7F);                 // hard edges from about 40 degrees on
///     if (mesh.fault() != MeshFault_ns::NONE) report(MeshFault_ns::text(mesh.fault()));
///
///     VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[0] = {0, 0, 1};
///     mesh.markModified(mesh.positions());    // renderers see the change with the next drawing
///
/// Adjacency: entry k of a triangle belongs to its edge from corner k to the next corner. It is
/// ADJACENCY_NONE at a border, else neighbor * 4 + corner, where `corner` is the neighbor's corner that lies
/// on the own corner k:
///
///            2                 triangle t = (a, b, c), its edge 0 runs from a to b
///           / \                triangle u = (b, a, d)
///          / t \               entry 0 of t: u * 4 + 1, because corner 1 of u is a
///       0 a-----b 1            entry 0 of u: t * 4 + 1, because corner 1 of t is b
///       1  \ u / 0
///           \ /
///            d 2
///
/// What is accepted: the arrays may be set in any order, and those that are not needed may be left out. No
/// setter looks at the other arrays; fault() tells whether they fit together. A renderer
/// draws nothing that reads an array with a fault. Triangles without area are no fault: they have no normal
/// and show nothing.
///
/// Arrays that were derived (work...) are not derived anew when their sources change. Everything must be
/// called on the thread of the server.
class VL_FOUNDATION_EXPORT Mesh {
public:
    /// An adjacency entry of a border edge.
    static constexpr unsigned int ADJACENCY_NONE = 0xFFFFFFFFU;

    /// The most triangles of a mesh: six indices for each can still be drawn with one 31-bit count.
    static constexpr unsigned int MOST_TRIANGLES = 1U << 28;

    /// The crease angle at which no edge is hard, pi.
    static constexpr float NO_CREASE = constants::f::PI;

    Mesh();   ///< Empty, and without a fault.
    ~Mesh();  ///< Gives its references back; arrays that somebody else holds live on.

    Mesh(Mesh const&) = delete;
    Mesh& operator=(Mesh const&) = delete;

    // == Filling ==
    // Each setter puts a copy of the values in the place of the array that the mesh had, and raises its
    // modified bit. An empty array counts as a missing one.
    // Result: false when there is no memory for it, or there are more than MOST_TRIANGLES; then nothing
    // changes.

    bool setPositions(Array<Vector3<double>> const& values);
    bool setTriangles(Array<Tuple3<unsigned int>> const& values);        ///< Position indices.
    bool setNormalTriangles(Array<Tuple3<unsigned int>> const& values);  ///< Vertex normal indices.
    bool setAdjacency(Array<Tuple3<unsigned int>> const& values);        ///< Three entries for each triangle.
    bool setVertexNormals(Array<Vector3<float>> const& values);          ///< Taken as they are.
    bool setFaceNormals(Array<Color4<float>> const& values);             ///< x, y, z in r, g, b; a is unused.

    /// Adds an array under a name, or replaces the one with the same name and the same bits under
    /// MeshArrayInf_ns::SEARCH_MASK. Renderers read texture coordinates (Vector2<float>), the triangles of a
    /// texture channel (Tuple3<unsigned int>), points (Vector3<double>) and vectors (Color4<float>, x, y, z
    /// in r, g, b).
    template <class T>
    bool addNamedArray(unsigned int const& bits, char const* name, Array<T> const& values) {
        return _addNamed(bits, name, VL_ArrayServer.create(values));
    }

    /// Says that the contents of an array were changed in place.
    /// \return false when there is no such array.
    bool markModified(ArrayId const& identifier);

    // == Deriving ==
    // Result: false, and nothing changes, when the triangles name vertices that do not exist or there is no
    // memory for the result.

    /// The box of all positions; a mesh without positions has one of size 0 at the origin. Coordinates that
    /// are not numbers are passed over. Sets MESH_GOT_BOX.
    void workBox();

    /// Vertex normals, normal triangles and face normals from the shape.
    ///
    /// A vertex normal is the mean of the normals of the faces around the vertex, each weighted by its angle
    /// there. Faces that meet at an edge with more than `creaseAngle` (radians) between their normals do not
    /// share normals across it: the vertex then has several, and the normal triangles differ from the
    /// triangles. An edge is hard too where it is a border, where more than two triangles meet and where the
    /// sides of the surface are swapped; with NO_CREASE or more no edge is hard, and the normal triangles are
    /// the triangles.
    ///
    /// Normal i belongs to vertex i; the further normals of creased vertices follow behind. Vertices and
    /// triangles without area have the normal (0, 0, 0).
    ///
    /// Cost: one pass over the triangles without a crease, three with one; adjacency is derived on the way,
    /// and not kept, when the mesh has none that is newer than its triangles. So derive it first.
    bool workNormals(float const& creaseAngle = NO_CREASE);

    /// Only the face normals.
    bool workFaceNormals();

    /// The adjacency, from the position indices that triangles have in common; linear time. Edges at which
    /// more than two triangles meet are borders, and so are all edges of a triangle that names a vertex
    /// twice.
    bool workAdjacency();

    // == Reading ==

    unsigned int triangleCount() const;
    unsigned int const& flags() const { return flagBits; }  ///< MeshFlags
    Box3<double> const& box() const { return cachedBox; }   ///< Meaningful while MESH_GOT_BOX is set.

    // The identifiers of the arrays, ARRAY_ID_NONE for those that were never set.
    ArrayId const& positions() const { return positionsId; }              ///< Vector3<double>
    ArrayId const& vertexNormals() const { return vertexNormalsId; }      ///< Vector3<float>
    ArrayId const& faceNormals() const { return faceNormalsId; }          ///< Color4<float>
    ArrayId const& triangles() const { return trianglesId; }              ///< Tuple3<unsigned int>
    ArrayId const& normalTriangles() const { return normalTrianglesId; }  ///< Tuple3<unsigned int>
    ArrayId const& adjacency() const { return adjacencyId; }              ///< Tuple3<unsigned int>

    /// The array of a name whose bits under MeshArrayInf_ns::SEARCH_MASK are exactly these; ARRAY_ID_NONE
    /// when there is none. Names are compared byte for byte.
    ArrayId namedArray(unsigned int const& bits, char const* name) const;

    /// Whether the arrays fit together: the first fault, or MeshFault_ns::NONE. Indices are looked through
    /// once, and again while their array carries ARRAY_TYPEABLE_MODIFIED_CONTROL_0.
    MeshFault_ns::type fault() const;

    MeshFault_ns::type surfaceFault() const;       ///< The same without the adjacency.
    MeshFault_ns::type triangleFault() const;      ///< The triangles and the positions they name.
    MeshFault_ns::type vertexNormalFault() const;  ///< The normal triangles and the vertex normals they name.
    MeshFault_ns::type faceNormalFault() const;    ///< The face normals alone.
    MeshFault_ns::type adjacencyFault() const;     ///< The adjacency alone.

private:
    struct NamedArray {
        unsigned int bits = 0;  // MeshArrayInf_ns
        VL_String name;
        ArrayId id = ARRAY_ID_NONE;
    };

    /// What the indices of an array reach up to, as long as they do not change.
    struct IndexReach {
        ArrayId id = ARRAY_ID_NONE;
        unsigned int size = 0;
        unsigned int end = 0;  // one above the largest index
    };

    template <class T>
    bool _replace(ArrayId& id, Array<T> const& values);
    bool _addNamed(unsigned int const& bits, char const* name, ArrayId id);
    unsigned int _indexOfNamed(unsigned int const& bits, char const* name) const;
    bool _reachesBeyond(IndexReach& reach, ArrayId const& id, unsigned int const& count) const;

    unsigned int flagBits = 0;
    Box3<double> cachedBox{};

    ArrayId positionsId = ARRAY_ID_NONE;
    ArrayId vertexNormalsId = ARRAY_ID_NONE;
    ArrayId faceNormalsId = ARRAY_ID_NONE;
    ArrayId trianglesId = ARRAY_ID_NONE;
    ArrayId normalTrianglesId = ARRAY_ID_NONE;
    ArrayId adjacencyId = ARRAY_ID_NONE;
    Array<NamedArray> namedArrays;

    bool isAdjacencyCurrent = false;  // it was set after the triangles
    mutable IndexReach triangleReach;
    mutable IndexReach normalTriangleReach;
    mutable IndexReach adjacencyReach;  // in triangles
};

}  // namespace vellum
